// The callbacks of kxrLogicalDriveProgress.

#include "Agent/Src/ORBA_MIB.h"
#include "Platform/Wait.h"
#include "Snmp/Host/Debug.h"
#include "VLK/Threads.h"

namespace SNMP {

namespace {

/// The arc that stands `fromTheEnd` places before the last one; 0 where the OID has no such arc.
std::int32_t TailArc(AsnObjectIdentifier const & oid, std::uint32_t fromTheEnd)
{
    std::uint32_t const length = oid.idLength;
    std::uint32_t const * const arcs = oid.ids;
    return length > fromTheEnd ? static_cast<std::int32_t>(arcs[length - 1 - fromTheEnd]) : 0;
}

} // namespace

std::uint32_t CKestrixRAIDAgent::fGetProgress(RFC1157VarBind * varbind, std::uint8_t)
{
    VLK::Threading::CCallBackGuard const guard;
    Platform::CCriticalLock const lock(m_requestLock);

    std::int32_t const controller = TailArc(varbind->name, 1);
    std::int32_t const drive = TailArc(varbind->name, 0);
    if (CDebug::Enabled()) {
        CDebug::Trace(1, "\n-- Call \"fGetProgress for Index2 %d\" --", controller);
        CDebug::Trace(1, "\n-- Call \"fGetProgress for Index1 %d\" --", drive);
    }
    m_AdapterNr.store(controller, std::memory_order_relaxed);
    m_LogicalDrive.store(drive, std::memory_order_relaxed);

    m_ProgressReply.Reset();
    m_ProgressRequest.Set();
    // Ended by the poll thread: by the answer, or by the exception that took the connection.
    m_ProgressReply.Wait(Platform::Infinite);

    std::int32_t const counter = m_AdapterNr.load(std::memory_order_relaxed);
    if (CDebug::Enabled()) CDebug::Trace(1, "\n-- Call \"fGetProgress ret = %d\" --", counter);
    if (m_AgentState.load(std::memory_order_relaxed) == kStateStarted) {
        ClearVarBindValue(varbind);
        SetVarBindNumber(varbind, static_cast<std::uint32_t>(counter), ASN_INTEGER);
    }
    return SNMP_ERRORSTATUS_NOERROR;
}

std::uint32_t CKestrixRAIDAgent::fSetReadOnly(RFC1157VarBind *, std::uint8_t)
{
    return SNMP_ERRORSTATUS_READONLY;
}

std::uint32_t CKestrixRAIDAgent::fCheckSetReadOnly(RFC1157VarBind *, std::uint8_t)
{
    return SNMP_ERRORSTATUS_READONLY;
}

} // namespace SNMP
