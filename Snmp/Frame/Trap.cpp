#include "Platform/Clock.h"
#include "Platform/SnmpUtil.h"
#include "Snmp/Frame/FrameTrace.h"
#include "Snmp/Frame/SnmpAgent.h"
#include "Snmp/Mib/Oid.h"

namespace {

std::string OidText(AsnObjectIdentifier const & oid)
{
    std::string text;
    OidToStr(text, &oid);
    return text;
}

/// Time since the reference in hundredths of a second; back to 0 after 2^32 of them.
std::uint32_t TimeStamp(std::uint32_t reference) noexcept
{
    return static_cast<std::uint32_t>(Platform::TickCountMs() / 10) - reference;
}

} // namespace

std::int32_t CSnmpAgent::CreateTrap(char const * enterpriseOidText, std::uint32_t specificTrap,
                                    RFC1157VarBindList const * varBindList)
{
    FRAME_TRACE(3, "CreateTrap(): queue trap parameters to resolve it in agent framework...");
    m_trapsUsed = 1;
    m_trapQueue.Append(enterpriseOidText, specificTrap, varBindList);
    FRAME_TRACE(4, "CreateTrap(): trap parameters queued");
    return m_trapEvent && Platform::SetEvent(m_trapEvent.Get()) == Platform::Success ? 1 : 0;
}

std::int32_t CSnmpAgent::ResolveTrap(AsnObjectIdentifier * enterprise, std::int32_t * specificTrap,
                                     RFC1157VarBindList * varBindList)
{
    std::optional<STrapRecord> trap = m_trapQueue.Take();
    if (!trap) {
        FRAME_TRACE(3, "CSnmpAgent::ResolveTrap(): no (more) trap data in queue");
        return 0;
    }
    FRAME_TRACE(2, "SnmpAgent::ResolveTrap(): Found trap #%d in trap queue, resolve trap",
                static_cast<int>(trap->specificTrap));
    // The record's memory goes over to the caller; what the caller passed in goes with the record.
    std::swap(*enterprise, trap->enterprise);
    std::swap(*varBindList, trap->varBinds);
    *specificTrap = static_cast<std::int32_t>(trap->specificTrap);
    return 1;
}

std::int32_t CSnmpAgent::SnmpTrap(AsnObjectIdentifier * enterprise, std::int32_t * genericTrap,
                                  std::int32_t * specificTrap, std::uint32_t * timeStamp,
                                  RFC1157VarBindList * varBindList)
{
    std::int32_t result = 0;
    try {
        if (m_trapsUsed != 0) {
            FRAME_TRACE(4, "SnmpTrap(): SNMP trap and trap queue used, calling ResolveTrapFromQueue()...");
            result = ResolveTrap(enterprise, specificTrap, varBindList);
        }
        if (result != 0) {
            FRAME_TRACE(4, "SnmpTrap(): ResolveTrapEx() returned TRUE - trap to send...");
            *genericTrap = SNMP_GENERICTRAP_ENTERSPECIFIC;
            *timeStamp = TimeStamp(m_startTime);
            PLAIN_TRACE(1, "\n\n%-20s: ## Trap %d (Param: %d, OID: %s) ##\n", g_moduleName, *specificTrap,
                        static_cast<int>(varBindList->len), OidText(*enterprise).c_str());
            FRAME_TRACE(2, "SnmpTrap(): WARNING! Trap forwarding features not included!");
            FRAME_TRACE(3, "SnmpTrap(): trap handling finished, send the trap to SNMP service");
        } else {
            FRAME_TRACE(4, "SnmpTrap(): No (more) traps to send!");
        }
        FRAME_TRACE(4, "SnmpTrap(): SNMP trap exit (TrapToSend=%s)", result != 0 ? "TRUE" : "FALSE");
    } catch (...) {
        EXCEPTION_TRACE(FRAME_HASH_LINE_78,
                        "\n####                  %s - Exception in SnmpExtensionTrap !!                ####",
                        g_moduleName);
        // The host takes nothing from a call that failed.
        SnmpUtilOidFree(enterprise);
        SnmpUtilVarBindListFree(varBindList);
        result = 0;
        SetAgentStatus(14);
    }
    return result;
}
