#include <memory>
#include <new>

#include "Platform/SnmpUtil.h"
#include "Snmp/Frame/ErrorText.h"
#include "Snmp/Frame/FrameTrace.h"
#include "Snmp/Frame/SnmpAgent.h"
#include "Snmp/Mib/Oid.h"
#include "Snmp/Mib/VarBind.h"

namespace {

/// Object names of a request's bindings, kept for the closing trace alone. One for each binding; null when
/// nothing is traced or there is no memory for them.
using Names = std::unique_ptr<std::string[]>;

std::string OidText(RFC1157VarBind const & binding)
{
    std::string text;
    OidToStr(text, &binding.name);
    return text;
}

std::string ValueText(RFC1157VarBind const & binding)
{
    std::string text;
    VarBindValueToText(text, &binding.value);
    return text;
}

void TraceBindings(RFC1157VarBindList const & list, char const * requestName, bool isSet)
{
    FRAME_TRACE(2, "%s", requestName);
    for (std::uint32_t i = 0; i < list.len; ++i) {
        const unsigned number = i + 1;
        if (isSet) {
            FRAME_TRACE(2, "Set[%d] Oid:  %s", number, OidText(list.list[i]).c_str());
            FRAME_TRACE(2, "    Value:     %s", ValueText(list.list[i]).c_str());
        } else {
            FRAME_TRACE(2, "Req[%d] Oid:  %s", number, OidText(list.list[i]).c_str());
        }
    }
}

/// The opening trace of a request. Only with debug output on.
Names TraceRequest(std::uint8_t requestType, RFC1157VarBindList const & list)
{
    PLAIN_TRACE(2, "\n\n%-20s: SNMP query: number queries=%d", g_moduleName, static_cast<int>(list.len));
    switch (requestType) {
    case SNMP_PDU_GET:
        TraceBindings(list, "RequestType: GET", /*isSet=*/false);
        break;
    case SNMP_PDU_GETNEXT:
        TraceBindings(list, "RequestType: GETNEXT", /*isSet=*/false);
        break;
    case SNMP_PDU_SET:
        TraceBindings(list, "RequestType: SET", /*isSet=*/true);
        break;
    default:
        break;
    }
    return Names(new (std::nothrow) std::string[list.len]);
}

/// The closing trace of a request. Only with debug output on.
void TraceAnswer(std::uint8_t requestType, RFC1157VarBindList const & list, std::uint32_t status, std::uint32_t index,
                 std::string const * names)
{
    for (std::uint32_t i = 0; i < list.len; ++i) {
        FRAME_TRACE(2, "Ret[%d] Oid:  %s", i + 1, OidText(list.list[i]).c_str());
        if (names != nullptr) FRAME_TRACE(2, "  Object:      %s", names[i].c_str());
        FRAME_TRACE(2, "  Ret Value:   %s", ValueText(list.list[i]).c_str());
    }
    if (status != SNMP_ERRORSTATUS_NOERROR) {
        FRAME_TRACE(1, "## SNMP error status: <<%s>> at varbind [%d]", SnmpErrorText(status), static_cast<int>(index));
    } else if (requestType == SNMP_PDU_SET) {
        FRAME_TRACE(2, "SNMP Set done, no errors");
    }
    PLAIN_TRACE(2, "\n");
}

std::string * NameAt(std::string * names, std::uint32_t place) noexcept
{
    return names != nullptr ? names + place : nullptr;
}

} // namespace

std::int32_t CSnmpAgent::SnmpQuery(std::uint8_t requestType, RFC1157VarBindList * pVarBindList,
                                   std::uint32_t * pErrorStatus, std::uint32_t * pErrorIndex)
try {
    std::int32_t result = 1;
    *pErrorStatus = SNMP_ERRORSTATUS_NOERROR;
    *pErrorIndex = 0;
    Names names;
    if (CDebug::Enabled()) names = TraceRequest(requestType, *pVarBindList);

    if (m_requestsEnabled == 0 || g_agentShutdown != 0) {
        FRAME_TRACE(2, "## Init not completed or agent shutdown; request refused; ERROR status: <<no such name>>");
        *pErrorStatus = SNMP_ERRORSTATUS_NOSUCHNAME;
        *pErrorIndex = 1;
    } else {
        FRAME_TRACE(5, "SNMP query: call OnPreSnmpQuery...");
        if (OnPreSnmpQuery(requestType, pVarBindList, pErrorStatus, pErrorIndex) == 0) {
            FRAME_TRACE(4, "SnmpQuery() skipped because OnPreSnmpQuery handled the request!");
        } else {
            *pErrorStatus = SNMP_ERRORSTATUS_NOERROR;
            *pErrorIndex = 0;
            result = AnswerRequest(requestType, *pVarBindList, *pErrorStatus, *pErrorIndex, names.get());
        }
        FRAME_TRACE(5, "SNMP query: call OnPostSnmpQuery...");
        OnPostSnmpQuery(requestType, pVarBindList, pErrorStatus, pErrorIndex);
    }
    if (CDebug::Enabled()) TraceAnswer(requestType, *pVarBindList, *pErrorStatus, *pErrorIndex, names.get());
    return result;
} catch (...) {
    PLAIN_TRACE(1, "\n\n%-20s: ##### EXCEPTION in SnmpQuery() !! #####\n", g_moduleName);
    SetAgentStatus(13);
    return 0;
}

std::int32_t CSnmpAgent::AnswerRequest(std::uint8_t requestType, RFC1157VarBindList & list, std::uint32_t & status,
                                       std::uint32_t & index, std::string * names)
{
    FRAME_TRACE(5, "SNMP query: lock MIB...");
    // Left by hand: after an exception the lock stays held, and requests and rebuilds block.
    m_requestLock.Enter();
    FRAME_TRACE(5, "SNMP query: ... MIB locked");
    std::int32_t result = 1;
    std::uint32_t position = 0;
    switch (requestType) {
    case SNMP_PDU_GET:
        position = AnswerGet(list, status, names);
        break;
    case SNMP_PDU_GETNEXT:
        position = AnswerGetNext(list, status, names);
        break;
    case SNMP_PDU_SET:
        result = CheckSet(list, status, names);
        position = CommitSet(list, status, result);
        break;
    default:
        PLAIN_TRACE(1, "\n\n%-20s: ## ERROR! Unknown request type (%d).\n", g_moduleName, requestType);
        result = 0;
        break;
    }
    FRAME_TRACE(5, "SNMP query: unlock MIB...");
    m_requestLock.Leave();
    FRAME_TRACE(5, "SNMP query: ... MIB unlocked");
    if (status != SNMP_ERRORSTATUS_NOERROR) index = position;
    return result;
}

std::uint32_t CSnmpAgent::AnswerGet(RFC1157VarBindList & list, std::uint32_t & status, std::string * names)
{
    std::uint32_t position = 0;
    while (position < list.len && status == SNMP_ERRORSTATUS_NOERROR) {
        MibGetVarbind(&list.list[position], SNMP_PDU_GET, &status, NameAt(names, position));
        ++position;
    }
    return position;
}

std::uint32_t CSnmpAgent::AnswerGetNext(RFC1157VarBindList & list, std::uint32_t & status, std::string * names)
{
    std::uint32_t position = 0;
    while (position < list.len && status == SNMP_ERRORSTATUS_NOERROR) {
        FindNext(list.list[position], position + 1, status, NameAt(names, position));
        ++position;
    }
    return position;
}

void CSnmpAgent::FindNext(RFC1157VarBind & binding, std::uint32_t number, std::uint32_t & status, std::string * name)
{
    bool found = false;
    do {
        if (g_agentShutdown != 0) return;
        found = MibGetVarbind(&binding, SNMP_PDU_GETNEXT, &status, name) != 0;
        // The binding carries the OID of the object that can't be read, so the next call finds what is behind it.
        if (found && status != SNMP_ERRORSTATUS_NOERROR)
            FRAME_TRACE(2, "  Ret[%d] Oid:  %s - GETNEXT SNMP Error %d (callback failed) -> find next object",
                        static_cast<int>(number), OidText(binding).c_str(), static_cast<int>(status));
    } while (found && status != SNMP_ERRORSTATUS_NOERROR);
    if (found || g_agentShutdown != 0) return;
    FRAME_TRACE(2, "  Ret[%d] - End of MIB tree -> reply OID outside of this MIB", static_cast<int>(number));
    LeaveRegion(binding);
    status = SNMP_ERRORSTATUS_NOERROR;
}

void CSnmpAgent::LeaveRegion(RFC1157VarBind & binding)
{
    for (std::uint32_t i = 0; i < m_regions.len; ++i) {
        AsnObjectIdentifier const & region = m_regions.list[i].name;
        if (region.idLength == 0 || SnmpUtilOidNCmp(&binding.name, &region, region.idLength) != 0) continue;
        AsnObjectIdentifier behind{};
        if (SnmpUtilOidCpy(&behind, &region) == 0) return;
        ++behind.ids[behind.idLength - 1];
        SnmpUtilOidFree(&binding.name);
        binding.name = behind;
        return;
    }
}

std::int32_t CSnmpAgent::CheckSet(RFC1157VarBindList & list, std::uint32_t & status, std::string * names)
{
    std::int32_t anyFound = 0;
    for (std::uint32_t i = 0; i < list.len && status == SNMP_ERRORSTATUS_NOERROR; ++i) {
        if (MibCheckSetVarbind(&list.list[i], &status, NameAt(names, i)) != 0) {
            anyFound = 1;
            FRAME_TRACE(3, "MibCheckSetVarbind returned %d (%s)", static_cast<int>(status), SnmpErrorText(status));
        } else {
            FRAME_TRACE(1, "Execution of MibCheckSetVarbind FAILED!");
        }
    }
    return anyFound;
}

std::uint32_t CSnmpAgent::CommitSet(RFC1157VarBindList & list, std::uint32_t & status, std::int32_t & anyFound)
{
    // Counted anew: a failed check leaves nothing to commit, and so reports index 0.
    std::uint32_t position = 0;
    while (position < list.len && status == SNMP_ERRORSTATUS_NOERROR) {
        if (MibSetVarbind(&list.list[position], &status) != 0) {
            anyFound = 1;
            FRAME_TRACE(3, "MibSetVarbind returned %d (%s)", static_cast<int>(status), SnmpErrorText(status));
        } else {
            FRAME_TRACE(1, "Execution of MibSetVarbind FAILED!");
        }
        ++position;
    }
    return position;
}
