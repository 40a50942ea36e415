#include "Snmp/Frame/SnmpAgent.h"

#include "Platform/SnmpUtil.h"
#include "Snmp/Frame/FrameTrace.h"
#include "Snmp/Mib/VarBind.h"

namespace {

Platform::ErrorCode MakeEvent(Platform::CWaitableHandle & event, bool manualReset) noexcept
{
    event.Reset();
    Platform::WaitHandle made = nullptr;
    const Platform::ErrorCode error = Platform::NewEvent(made, /*initialState=*/false, manualReset);
    if (error == Platform::Success) event.Reset(made);
    return error;
}

void SetInteger(RFC1157VarBind * binding, std::int32_t number)
{
    ClearVarBindValue(binding);
    binding->value.asnType = ASN_INTEGER;
    binding->value.asnValue.number = number;
}

} // namespace

CSnmpAgent::CSnmpAgent()
    : m_shutdownEventError(Platform::Success),
      m_indexAppendMode(0),
      m_regions{},
      m_trapEventError(Platform::Success),
      m_nextRegion(0),
      m_restartAbortEventError(Platform::Success)
{
    g_agentShutdown = 0;
    m_trapEventError = MakeEvent(m_trapEvent, /*manualReset=*/false);
    m_shutdownEventError = MakeEvent(m_shutdownEvent, /*manualReset=*/true);
    m_restartAbortEventError = MakeEvent(m_restartAbortEvent, /*manualReset=*/true);
}

CSnmpAgent::~CSnmpAgent()
{
    m_shutdownEvent.Reset();
    m_restartAbortEvent.Reset();
    SetAgentStatus(8);
    m_trapEvent.Reset();
    SnmpUtilVarBindListFree(&m_regions);
    // A request that failed inside its lock has left it held.
    if (m_requestLock.IsHeld()) m_requestLock.Leave();
    m_trapQueue.AbandonLock();
}

void CSnmpAgent::CloseMib() {}

char const * CSnmpAgent::GetAgentName()
{
    return g_moduleName;
}

bool CSnmpAgent::QueryAgentEnabled()
{
    return true;
}

std::int32_t CSnmpAgent::OnPreSnmpQuery(std::uint8_t, RFC1157VarBindList *, std::uint32_t *, std::uint32_t *)
{
    return 1;
}

void CSnmpAgent::OnPostSnmpQuery(std::uint8_t, RFC1157VarBindList *, std::uint32_t *, std::uint32_t *) {}

std::int32_t CSnmpAgent::InitSupportedRegions()
{
    return 0;
}

void CSnmpAgent::SetRegistryName(char const * text)
{
    if (text != nullptr && *text != '\0') m_registryName = text;
}

std::int32_t CSnmpAgent::SetAgentStatusCode(std::int32_t)
{
    return 0;
}

std::int32_t CSnmpAgent::SetAgentStatusText(char const *)
{
    return 0;
}

std::uint32_t CSnmpAgent::fGetUnknownEnumValue(RFC1157VarBind * binding, std::uint8_t)
{
    FRAME_TRACE(4, "fGetUnknownEnumValue() -> return unknown(1) value");
    SetInteger(binding, 1);
    return SNMP_ERRORSTATUS_NOERROR;
}

std::uint32_t CSnmpAgent::fGetNullValue(RFC1157VarBind * binding, std::uint8_t)
{
    FRAME_TRACE(4, "fGetNullValue() -> return 0 value");
    SetInteger(binding, 0);
    return SNMP_ERRORSTATUS_NOERROR;
}
