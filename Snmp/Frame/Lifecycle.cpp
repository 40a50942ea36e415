#include <cstring>

#include "Platform/SnmpUtil.h"
#include "Snmp/Frame/FrameTrace.h"
#include "Snmp/Frame/Intervals.h"
#include "Snmp/Frame/RegionText.h"
#include "Snmp/Frame/SnmpAgent.h"
#include "Snmp/Mib/Oid.h"

namespace {

constexpr std::uint32_t kMainStackBytes = 1048576;
constexpr std::size_t kThreadNameRoom = 64;
constexpr char kMainThreadSuffix[] = ":Thread_AgentMain";

std::string MainThreadName()
{
    std::string name(g_moduleName, strnlen(g_moduleName, kThreadNameRoom - 2));
    if (name.size() + sizeof kMainThreadSuffix - 1 < kThreadNameRoom) name += kMainThreadSuffix;
    return name;
}

void ReplaceOid(AsnObjectIdentifier * target, AsnObjectIdentifier const & source)
{
    SnmpUtilOidFree(target);
    SnmpUtilOidCpy(target, &source);
}

} // namespace

std::int32_t CSnmpAgent::SnmpInit(std::uint32_t uptimeReference, SnmpHandle * phTrapEvent,
                                  AsnObjectIdentifier * pFirstRegion)
try {
    FRAME_TRACE(2, "SnmpInit(): Initializing agent...");
    SetAgentStatus(2);
    m_startTime = uptimeReference;
    FRAME_TRACE(4, " Agent start time = %u...", uptimeReference);
    *phTrapEvent = Platform::EventForHost(m_trapEvent.Get());
    if (*phTrapEvent == nullptr) PLAIN_TRACE(1, "\n##%-20s: ERROR: Could not create trap event!", g_moduleName);
    m_requestsEnabled = 0;
    DefineRegions();
    if (GrowVarBindList(m_regions, 1) != 0) ReplaceOid(pFirstRegion, m_regions.list[0].name);
    m_nextRegion = 1;
    FRAME_TRACE(3, "Storing agent parameters...");
    StartAgent();
    FRAME_TRACE(5, "-> SnmpInit()");
    return 1;
} catch (...) {
    EXCEPTION_TRACE(FRAME_HASH_LINE_78,
                    "\n####                   Exception in SnmpExtensionInit !!                  ####");
    SetAgentStatus(10);
    return 0;
}

void CSnmpAgent::DefineRegions()
{
    if (m_regions.list != nullptr && m_regions.len != 0) {
        FRAME_TRACE(4, "InitSupportedRegions() not needed to be called because MIB root already defined");
        return;
    }
    if (InitSupportedRegions() != 0) return;
    PLAIN_TRACE(1, "\n\n## FATAL ERROR: InitSupportedRegions() function not implemented or failed!!\n");
    PLAIN_TRACE(1, "\nThe agent needs the MIB root OIDs to be defined in InitSupportedRegions()!");
    PLAIN_TRACE(1, "\nCall AddMibRegion() for every MIB root OID there.\n"
                   "Exception raised to abort initialization!\n");
    throw 0;
}

std::int32_t CSnmpAgent::SnmpInitEx(AsnObjectIdentifier * pNextRegion)
try {
    FRAME_TRACE(2, "SnmpInitEx(): Get next MIB region [%d]", m_nextRegion);
    const std::uint32_t next = static_cast<std::uint32_t>(m_nextRegion);
    if (m_regions.len <= next) {
        FRAME_TRACE(3, "no additional MIB regions available");
        return 0;
    }
    RFC1157VarBind const & region = m_regions.list[next];
    if (CDebug::Enabled()) {
        std::string value;
        RegionToPlainText(region, value);
        std::string oid;
        OidToStr(oid, &region.name);
        FRAME_TRACE(3, " supplying additional MIB region: %s %s", value.c_str(), oid.c_str());
    }
    ReplaceOid(pNextRegion, region.name);
    ++m_nextRegion;
    return 1;
} catch (...) {
    EXCEPTION_TRACE(FRAME_HASH_LINE_78,
                    "\n####                   Exception in SnmpExtensionInitEx !!                ####");
    SetAgentStatus(10);
    return 0;
}

std::int32_t CSnmpAgent::StartAgent()
try {
    // A host that starts twice keeps the one main thread; a second one would share its events.
    if (m_thread.IsRunning()) return 1;
    g_agentClosed = 0;
    if (m_shutdownEvent) Platform::ResetEvent(m_shutdownEvent.Get());
    FRAME_TRACE(3, "Starting MIB main thread...");
    if (*g_moduleName != '\0') m_thread.name = MainThreadName();
    m_thread.Start(&CSnmpAgent::Thread_AgentMain, this, kMainStackBytes);
    FRAME_TRACE(3, "...MIB main thread started");
    return 1;
} catch (...) {
    EXCEPTION_TRACE(FRAME_HASH_LINE_75,
                    "\n####                   Exception in StartAgent !!                        ####");
    SetAgentStatus(11);
    return 0;
}

std::int32_t CSnmpAgent::StopAgent()
try {
    FRAME_TRACE(2, "Shutting down agent");
    if (!m_thread.IsRunning()) {
        FRAME_TRACE(3, "Agent main thread did already exit");
    } else {
        if (m_restartAbortEvent) Platform::SetEvent(m_restartAbortEvent.Get());
        SignalAgentShutdown();
        FRAME_TRACE(3, "Waiting for exit of agents main thread ...");
        if (m_thread.WaitForThreadExit(g_frameIntervals.stopMs) != 0) {
            FRAME_TRACE(3, "Agent main thread did exit in time!");
        } else {
            PLAIN_TRACE(1,
                        "\n\n##%-20s: ERROR! Agent main thread did not terminate within 30 seconds! Thread is being "
                        "killed!\n",
                        g_moduleName);
            m_thread.KillThread(0);
        }
    }
    FRAME_TRACE(2, "Shut down agent completed");
    return 1;
} catch (...) {
    PLAIN_TRACE(1, "\n%-20s: ####  Exception in StopAgent() #### ", g_moduleName);
    SetAgentStatus(12);
    return 0;
}

void CSnmpAgent::SignalAgentShutdown()
{
    FRAME_TRACE(3, "Set agents shutdown flag");
    g_agentShutdown = 1;
    FRAME_TRACE(3, "Signale shutdown to agents main thread ...");
    if (m_shutdownEvent) Platform::SetEvent(m_shutdownEvent.Get());
    FRAME_TRACE(1, "##### AGENT SHUTDOWN SIGNALED #####");
}

std::int32_t CSnmpAgent::RestartAgent(std::uint32_t delayMs)
{
    if (!m_thread.IsRunning()) return 0;
    FRAME_TRACE(1, "Restart agent in %d seconds ..", static_cast<int>(delayMs / 1000));
    m_restartDelay = delayMs;
    SignalAgentShutdown();
    return 1;
}

void SnmpClose()
{
    if (g_agentClosed.Exchange(1) != 0) return;
    FRAME_TRACE(2, "SnmpClose()");
    if (g_pAgent != nullptr) g_pAgent->StopAgent();
}
