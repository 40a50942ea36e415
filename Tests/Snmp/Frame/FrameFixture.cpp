#include "FrameFixture.h"

#include <algorithm>

#include "Platform/Host.h"
#include "Platform/Process.h"
#include "Platform/SnmpUtil.h"
#include "Snmp/Frame/Extension.h"
#include "Snmp/Frame/Intervals.h"
#include "Snmp/Mib/Oid.h"
#include "Snmp/Mib/VarBind.h"

SExtensionHooks g_extension;

CSnmpAgent * NewExtensionAgent()
{
    return g_extension.newAgent ? g_extension.newAgent() : nullptr;
}

char const * ExtensionRegistryName()
{
    return g_extension.registryName;
}

char const * ExtensionRegion()
{
    return g_extension.region;
}

Fake::STraceLine Frame(unsigned level, std::string const & text)
{
    std::string name = g_moduleName;
    name.resize(std::max<std::size_t>(name.size(), 20), ' ');
    return {level, "\n" + name + ": " + text};
}

std::string NativePath(std::string path)
{
    std::replace(path.begin(), path.end(), '/', Platform::PathSeparator());
    return path;
}

Lines Traced()
{
    Lines lines = Fake::TraceLines();
    std::erase_if(lines, [](Fake::STraceLine const & line) { return line.text.starts_with("\nCSnmpMibTree"); });
    return lines;
}

bool Traced(Fake::STraceLine const & line)
{
    const Lines lines = Fake::TraceLines();
    return std::find(lines.begin(), lines.end(), line) != lines.end();
}

std::size_t CountTraced(std::string const & part)
{
    const Lines lines = Fake::TraceLines();
    return static_cast<std::size_t>(std::count_if(lines.begin(), lines.end(), [&](Fake::STraceLine const & line) {
        return line.text.find(part) != std::string::npos;
    }));
}

testing::AssertionResult TracedInOrder(Lines const & lines)
{
    const Lines traced = Fake::TraceLines();
    auto place = traced.begin();
    for (Fake::STraceLine const & line : lines) {
        place = std::find(place, traced.end(), line);
        if (place == traced.end()) {
            testing::AssertionResult failure = testing::AssertionFailure();
            failure << "missing, or too early: " << line.level << " [" << line.text << "] in";
            for (Fake::STraceLine const & present : traced)
                failure << "\n  " << present.level << " [" << present.text << "]";
            return failure;
        }
        ++place;
    }
    return testing::AssertionSuccess();
}

void CTestRegistry::Text(std::string const & key, std::string const & name, std::string const & text)
{
    Raw(key, "\"" + name + "\"=" + CRegistryFixture::Quoted(text));
}

void CTestRegistry::Number(std::string const & key, std::string const & name, std::uint32_t number)
{
    char digits[16];
    std::snprintf(digits, sizeof digits, "%08x", number);
    Raw(key, "\"" + name + "\"=dword:" + digits);
}

void CTestRegistry::Raw(std::string const & key, std::string const & line)
{
    m_lines += "[HKEY_LOCAL_MACHINE\\" + key + "]\n" + line + "\n";
    m_registry.Write(m_lines);
}

FrameTest::FrameTest()
{
    g_fakes = {};
    g_extension = {};
    g_agentShutdown = 0;
    g_agentClosed = 0;
    SetModuleName(NativePath("/opt/kestrix/FRAME_MIB.so").c_str());
    g_frameIntervals = {};
    Fake::EnableTrace(true);
    Fake::ClearTrace();
}

FrameTest::~FrameTest()
{
    Fake::EnableTrace(false);
    Fake::ClearTrace();
}

std::string Text(AsnObjectIdentifier const & oid)
{
    std::string text;
    OidToStr(text, &oid);
    return text;
}

CBindings::CBindings(std::vector<std::string> const & oids)
{
    GrowVarBindList(m_list, static_cast<std::uint32_t>(oids.size()));
    for (std::size_t i = 0; i < oids.size(); ++i)
        StrToOid(oids[i].c_str(), &m_list.list[i].name);
}

CBindings::~CBindings()
{
    SnmpUtilVarBindListFree(&m_list);
}

void CBindings::SetNumber(std::size_t i, std::int32_t number)
{
    SetVarBindNumber(&m_list.list[i], static_cast<std::uint32_t>(number), ASN_INTEGER);
}
