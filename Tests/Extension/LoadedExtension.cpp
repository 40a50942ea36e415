#include "LoadedExtension.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <map>

#include "Platform/Module.h"
#include "Platform/SnmpUtil.h"
#include "Support/Deadline.h"
#include "Tests/Extension/OidText.h"
#include "Tests/Extension/TrapEvent.h"

namespace {

std::string Bytes(AsnOctetString const & octets)
{
    return std::string(reinterpret_cast<char const *>(octets.stream), octets.length);
}

std::string Address(AsnOctetString const & octets)
{
    std::string text;
    for (std::uint32_t i = 0; i < octets.length; ++i)
        text += (i == 0 ? "" : ".") + std::to_string(unsigned{octets.stream[i]});
    return text;
}

std::string ValueText(AsnAny const & value)
{
    switch (value.asnType) {
    case ASN_INTEGER:
        return std::to_string(value.asnValue.number + 0);
    case ASN_COUNTER32:
    case ASN_GAUGE32:
    case ASN_TIMETICKS:
    case ASN_UINTEGER32:
        return std::to_string(value.asnValue.unsigned32 + 0u);
    case ASN_COUNTER64:
        return std::to_string(value.asnValue.counter64.quadPart + 0u);
    case ASN_OBJECTIDENTIFIER:
        return OidText(value.asnValue.object);
    case ASN_IPADDRESS:
        return Address(value.asnValue.address);
    case ASN_OCTETSTRING:
    case ASN_OPAQUE:
        return Bytes(value.asnValue.string);
    default:
        return {};
    }
}

SAnswer AnswerOf(RFC1157VarBind const & binding)
{
    SAnswer answer;
    answer.oid = OidText(binding.name);
    answer.type = binding.value.asnType;
    answer.value = ValueText(binding.value);
    return answer;
}

} // namespace

CLoadedExtension::CLoadedExtension(char const * file)
{
    std::string reason;
    m_library.Reset(Platform::LoadModule(file, reason));
    if (!m_library) {
        ADD_FAILURE() << reason;
        return;
    }
    init = reinterpret_cast<SnmpExtensionInitFn>(Function("SnmpExtensionInit"));
    initEx = reinterpret_cast<SnmpExtensionInitExFn>(Function("SnmpExtensionInitEx"));
    query = reinterpret_cast<SnmpExtensionQueryFn>(Function("SnmpExtensionQuery"));
    trap = reinterpret_cast<SnmpExtensionTrapFn>(Function("SnmpExtensionTrap"));
    close = reinterpret_cast<SnmpExtensionCloseFn>(Function("SnmpExtensionClose"));
    dllMain = reinterpret_cast<DllMainFn>(Platform::ModuleSymbol(m_library.Get(), "DllMain"));
}

void CLoadedExtension::Call(std::uint32_t reason)
{
    if (dllMain != nullptr) {
        EXPECT_EQ(1, dllMain(nullptr, reason, nullptr));
    }
}

void * CLoadedExtension::Function(char const * name)
{
    void * const function = Platform::ModuleSymbol(m_library.Get(), name);
    if (function == nullptr) ADD_FAILURE() << name << " is missing";
    return function;
}

bool IsLoaded(char const * file)
{
    std::map<std::string, void *> modules;
    EXPECT_EQ(Platform::Success, Platform::LoadedModules(modules));
    return modules.contains(std::filesystem::path(file).filename().string());
}

CSession::CSession(CLoadedExtension & extension, std::uint32_t uptimeReference) : m_extension(extension)
{
    m_extension.Call(DLL_PROCESS_ATTACH);
    AsnObjectIdentifier region{};
    m_started = m_extension.init(uptimeReference, &m_trapEvent, &region);
    if (m_started == 0) return;
    do {
        m_regions.push_back(OidText(region));
        SnmpUtilOidFree(&region);
    } while (m_extension.initEx(&region) != 0);
}

CSession::~CSession()
{
    Close();
    m_extension.Call(DLL_PROCESS_DETACH);
}

bool CSession::IsReady()
{
    return HoldsWithin(kDeadline, [this] { return GetNext("1.3").status == SNMP_ERRORSTATUS_NOERROR; });
}

SAnswer CSession::SetNumber(std::string const & oid, std::int32_t number)
{
    RFC1157VarBind binding{};
    binding.name = ParseOid(oid);
    binding.value.asnType = ASN_INTEGER;
    binding.value.asnValue.number = number;
    return Send(SNMP_PDU_SET, binding);
}

SAnswer CSession::SetText(std::string const & oid, std::string const & text)
{
    RFC1157VarBind binding{};
    binding.name = ParseOid(oid);
    binding.value.asnType = ASN_OCTETSTRING;
    const std::uint32_t length = static_cast<std::uint32_t>(text.size());
    auto * const bytes = static_cast<std::uint8_t *>(SnmpUtilMemAlloc(length));
    std::memcpy(bytes, text.data(), length);
    binding.value.asnValue.string = {bytes, length, 1};
    return Send(SNMP_PDU_SET, binding);
}

SAnswer CSession::Ask(std::uint8_t type, std::string const & oid)
{
    RFC1157VarBind binding{};
    binding.name = ParseOid(oid);
    binding.value.asnType = ASN_NULL;
    return Send(type, binding);
}

SAnswer CSession::Send(std::uint8_t type, RFC1157VarBind & binding)
{
    RFC1157VarBindList list{&binding, 1};
    std::uint32_t status = 0;
    std::uint32_t index = 0;
    const std::int32_t result = m_extension.query(type, &list, &status, &index);
    SAnswer answer = AnswerOf(binding);
    answer.result = result;
    answer.status = status;
    answer.index = index;
    SnmpUtilVarBindFree(&binding);
    return answer;
}

bool CSession::AwaitTrapEvent(int ms)
{
    return AwaitAndTake(m_trapEvent, ms);
}

bool CSession::TakeTrap(STrap & out)
{
    AsnObjectIdentifier enterprise{};
    RFC1157VarBindList bindings{};
    out = {};
    if (m_extension.trap(&enterprise, &out.generic, &out.specific, &out.timeStamp, &bindings) == 0) return false;
    out.enterprise = OidText(enterprise);
    for (std::uint32_t i = 0; i < bindings.len; ++i)
        out.bindings.push_back(AnswerOf(bindings.list[i]));
    SnmpUtilOidFree(&enterprise);
    SnmpUtilVarBindListFree(&bindings);
    return true;
}
