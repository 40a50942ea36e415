#include <cctype>
#include <cstdio>

#include "Platform/Host.h"
#include "Platform/Module.h"
#include "Snmp/Frame/Build.h"
#include "Snmp/Frame/FrameTrace.h"
#include "Snmp/Frame/PlatformName.h"
#include "Snmp/Frame/RegistryReader.h"
#include "Snmp/Frame/SnmpAgent.h"

namespace {

constexpr char kRootsKey[] = "SYSTEM\\CurrentControlSet\\Control\\UUID\\5E2D7A14-3B90-4C6E-9F21-7A1C0D4B8E36";
constexpr char kDefaultRoot[] = "SOFTWARE\\Halvorn Systems";
constexpr std::uint32_t kComputerNameRoom = 16;

/// Removes one backslash at the end, but not that of a drive's root.
void CutTrailingBackslash(std::string & directory)
{
    if (directory.size() > 3 && directory.back() == '\\') directory.pop_back();
}

bool IsAbsolute(std::string const & path)
{
    if (path.empty()) return false;
    if (path[0] == '\\' || path[0] == Platform::PathSeparator()) return true;
    return path.size() > 3 && std::isalpha(static_cast<unsigned char>(path[0])) != 0 && path[1] == ':' &&
           path[2] == '\\';
}

/// The numbers of the file version with dots; empty where there are none.
std::string FileVersion(CFileVersionInfo const & version)
{
    Platform::SFixedVersion fixed{};
    if (!version.GetFixed(fixed)) return {};
    char text[48];
    std::snprintf(text, sizeof text, "%u.%u.%u.%u", fixed.fileVersionMS >> 16, fixed.fileVersionMS & 0xFFFF,
                  fixed.fileVersionLS >> 16, fixed.fileVersionLS & 0xFFFF);
    return text;
}

struct SPlatformName {
    std::uint32_t architecture;
    char const * text;
};

constexpr SPlatformName kPlatformNames[] = {{6, "iA64"}, {9, "x64"}, {0, "x86"}};

} // namespace

char const * PlatformName(std::uint32_t architecture) noexcept
{
    for (SPlatformName const & name : kPlatformNames)
        if (name.architecture == architecture) return name.text;
    return "<< Unknown!! >>";
}

void CSnmpAgent::InitializeModule(void const * addressInside)
{
    if (Platform::ModulePath(addressInside, m_modulePath) != Platform::Success) return;
    m_version.Load(m_modulePath.c_str());
    ReadRoots();
    SetModuleName(m_modulePath);
    if (*g_moduleName != '\0') {
        m_agentRoot = m_commonRoot + "\\" + g_moduleName;
        SetAgentStatus(1);
    }
    Platform::ComputerName(m_computerName, kComputerNameRoom);
    if (CDebug::Enabled()) PrintBanner();
    LockDirtyModules();
}

void CSnmpAgent::ReadRoots()
{
    CRegistryReader registry;
    std::string root = kDefaultRoot;
    registry.ReadText(kRootsKey, m_registryName, root);
    const std::string setup = root + "\\#Setup";
    std::string fileRoot;
    if (registry.ReadText(setup, "FileRoot", fileRoot) || registry.ReadText(setup, "AgentRoot", fileRoot))
        CutTrailingBackslash(fileRoot);
    std::string dataRoot;
    if (registry.ReadText(setup, "DataRoot", dataRoot)) CutTrailingBackslash(dataRoot);
    m_commonRoot = root;
    m_dataRoot = dataRoot;
    m_fileRoot = fileRoot;
}

void CSnmpAgent::PrintBanner()
{
    PLAIN_TRACE(1, "\n\n*** SNMP agent module \"%s\" loaded ***\n", g_moduleName);
    PLAIN_TRACE(1, "\n      Computer name : %s", m_computerName.c_str());
    PLAIN_TRACE(1, "\n   Operating system : %s", "Windows");
    PLAIN_TRACE(1, "\n        OS platform : %s", PlatformName(Platform::Architecture()));
    PrintVersion();
    PLAIN_TRACE(1, "\n           Encoding : MBC");
    PLAIN_TRACE(1, "\n    Build date/time : %s %s", g_buildDate, g_buildTime);
    PLAIN_TRACE(2, "\n");
    PLAIN_TRACE(2, "\n        Module path : %s", m_modulePath.c_str());
    PLAIN_TRACE(2, "\n        Common root : %s", m_commonRoot.c_str());
    PLAIN_TRACE(2, "\n         Agent root : %s", m_agentRoot.c_str());
    PLAIN_TRACE(1, "\n\n");
}

void CSnmpAgent::PrintVersion()
{
    std::string text;
    m_version.GetString(text, "FileDescription", 0, 0);
    PLAIN_TRACE(1, "\n  Agent description : %s", text.c_str());
    text.clear();
    m_version.GetString(text, "CompanyName", 0, 0);
    PLAIN_TRACE(2, "\n       Company name : %s", text.c_str());
    text.clear();
    m_version.GetString(text, "ProductVersion", 0, 0);
    PLAIN_TRACE(1, "\n      Agent version : %s", text.c_str());
    PLAIN_TRACE(1, "\n       File version : %s", FileVersion(m_version).c_str());
}

std::int32_t CSnmpAgent::GetAgentRegFilePath(char const * valueName, std::string & outPath, char const * moduleName)
{
    char const * const module = moduleName != nullptr ? moduleName : g_moduleName;
    if (*module == '\0' || valueName == nullptr) return 0;
    CRegistryReader registry;
    std::string value;
    if (!registry.ReadText(m_commonRoot + "\\" + module + "\\FILE", valueName, value)) return 0;
    FRAME_TRACE(5, "GetAgentRegFilePath(): registry value %s = %s", valueName, value.c_str());
    if (IsAbsolute(value)) {
        PLAIN_TRACE(5, "\n    absolute INI file path...");
        outPath = value;
    } else {
        PLAIN_TRACE(5, "\n    relative INI file path, add data root path %s...", m_dataRoot.c_str());
        outPath = m_dataRoot + "\\" + value;
    }
    FRAME_TRACE(4, "GetAgentRegFilePath(): return file path for %s = %s", valueName, outPath.c_str());
    return 1;
}

namespace {

void TraceMissingParam(char const * valueName, std::string const & key)
{
    FRAME_TRACE(1, "GetAgentRegParam(): ## ERROR! Could not read agent param \"%s\" from \"%s\"!", valueName,
                key.c_str());
}

} // namespace

std::int32_t CSnmpAgent::GetAgentRegParam(char const * valueName, std::string & outText, bool traceError)
{
    const std::string key = m_agentRoot + "\\Parameters";
    if (valueName == nullptr) return 0;
    if (!CRegistryReader().ReadText(key, valueName, outText)) {
        if (traceError) TraceMissingParam(valueName, key);
        return 0;
    }
    FRAME_TRACE(4, "GetAgentRegParam(): return parameter value for %s = \"%s\"", valueName, outText.c_str());
    return 1;
}

std::int32_t CSnmpAgent::GetAgentRegParam(char const * valueName, std::uint32_t * outNumber, bool traceError)
{
    const std::string key = m_agentRoot + "\\Parameters";
    if (valueName == nullptr || outNumber == nullptr) return 0;
    if (!CRegistryReader().ReadNumber(key, valueName, *outNumber)) {
        if (traceError) TraceMissingParam(valueName, key);
        return 0;
    }
    FRAME_TRACE(4, "GetAgentRegParam(): return parameter value for %s = %d", valueName, static_cast<int>(*outNumber));
    return 1;
}
