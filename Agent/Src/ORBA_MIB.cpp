#include "Agent/Src/ORBA_MIB.h"

#include "Agent/Src/Configuration.h"
#include "Agent/Src/Failure.h"
#include "Agent/Src/Intervals.h"
#include "Agent/Src/PollHandler.h"
#include "Platform/Clock.h"
#include "Platform/Host.h"
#include "Platform/Socket.h"
#include "Snmp/Host/Debug.h"
#include "VLK/Threads.h"

namespace SNMP {

std::uint64_t CKestrixRAIDAgent::m_StartTime = 0;
std::int32_t CKestrixRAIDAgent::m_ASRunning = 60000;
std::int32_t CKestrixRAIDAgent::m_ASIniting = 180000;
std::uint32_t CKestrixRAIDAgent::m_PortNumber = 3173;
std::vector<ORBA_EVENTINFO> CKestrixRAIDAgent::m_TrapQueue;
std::atomic<std::int32_t> CKestrixRAIDAgent::m_AgentState{0};
std::atomic<std::int32_t> CKestrixRAIDAgent::m_AdapterNr{0};
std::atomic<std::int32_t> CKestrixRAIDAgent::m_LogicalDrive{0};
VLK::Threading::CEvent CKestrixRAIDAgent::m_ProgressRequest;
VLK::Threading::CEvent CKestrixRAIDAgent::m_ProgressReply;
VLK::Threading::CEvent CKestrixRAIDAgent::m_Terminate;
VLK::Threading::CWaitInterrupt CKestrixRAIDAgent::m_BreakOff;

namespace {

/// Whether the host's service hardening keeps the agent from its connection unless there is a rule for it.
bool NeedsFirewallRules()
{
    Platform::SOsVersion version{};
    Platform::OsVersion(version);
    return Platform::HasManagedFirewall() && (version.major > 6 || (version.major == 6 && version.minor >= 2));
}

} // namespace

CKestrixRAIDAgent::CKestrixRAIDAgent()
{
    if (CDebug::Enabled()) CDebug::Trace(2, "\nCKestrixRAIDAgent(): c'tor...");
    Platform::StartSockets();
    if (NeedsFirewallRules()) {
        if (CDebug::Enabled()) CDebug::Trace(2, "\nCKestrixRAIDAgent(): Manage Windows Service Hardening");
        ManageWSH();
    }
    StartAnew();
    ReadConfiguration();
}

CKestrixRAIDAgent::~CKestrixRAIDAgent()
{
    if (CDebug::Enabled()) CDebug::Trace(2, "\n~CKestrixRAIDAgent():\t cleanup...");
    Platform::StopSockets();
    if (CDebug::Enabled()) {
        CDebug::Trace(4, "\n~CKestrixRAIDAgent(): cleanup done.");
        CDebug::Trace(1, "\n");
    }
}

void CKestrixRAIDAgent::StartAnew()
{
    // Class-wide, but nothing of it outlives its object.
    m_TrapQueue.clear();
    m_AgentState.store(0, std::memory_order_relaxed);
    m_AdapterNr.store(0, std::memory_order_relaxed);
    m_LogicalDrive.store(0, std::memory_order_relaxed);
    m_ProgressRequest = VLK::Threading::CEvent();
    m_ProgressReply = VLK::Threading::CEvent();
    m_Terminate = VLK::Threading::CEvent();
    m_BreakOff = VLK::Threading::CWaitInterrupt();
    m_ProgressRequest.Init(/*initialState=*/false, /*manualReset=*/false);
    m_ProgressReply.Init(/*initialState=*/false, /*manualReset=*/false);
    m_Terminate.Init(/*initialState=*/false, /*manualReset=*/true);
    m_BreakOff.Init();
}

void CKestrixRAIDAgent::ReadConfiguration()
{
    m_StartTime = ManagementServicesInstalled() ? Platform::UnixTimeMs() : 0;
    m_ASRunning = g_agentIntervals.listenerSpanMs;
    m_ASIniting = g_agentIntervals.listenerInitMs;
    if (m_StartTime > 0) ReadDelays(m_ASRunning, m_ASIniting);
    m_PortNumber = ReadPort();
    if (CDebug::Enabled()) {
        CDebug::Trace(2, "\nCKestrixRAIDAgent(): m_ASRunning = %d, m_ASIniting = %d, m_PortNumber = %d", m_ASRunning,
                      m_ASIniting, static_cast<int>(m_PortNumber));
    }
}

void CKestrixRAIDAgent::InitializeMib()
{
    VLK::Threading::CCallBackGuard const guard;
    VLK::Exceptions::CThrowState state;
    try {
        if (CDebug::Enabled()) CDebug::Trace(1, "\n\nStarting Kestrix RAID Agent initialization...");
        bool const success = BuildAndStart();
        m_AgentState.store(success ? kStateStarted : kStateNotStarted, std::memory_order_relaxed);
        SetAgentStatusCode(success ? kStateStarted : kStateNotStarted);
        if (success) SetAgentStatusText("");
        if (CDebug::Enabled()) {
            CDebug::Trace(1, "\nSet Kestrix RAID Agent status to %s.", success ? "OK" : "FAILED");
            CDebug::Trace(1, "\nKestrix RAID Agent initialization done!\n");
        }
    } catch (...) {
        VLK_CONTINUE(state, log);
        VLK::Exceptions::CErrorLog errorLog;
        log >> errorLog;
        if (CDebug::Enabled()) CDebug::Trace(1, "%s", CrashText(errorLog).c_str());
        m_AgentState.store(kStateBroken, std::memory_order_relaxed);
        SetAgentStatusCode(kStateBroken);
    }
}

bool CKestrixRAIDAgent::BuildAndStart()
{
    bool const success = InsertAgentInfoGroup();
    if (g_agentShutdown != 0) {
        // Reported as success, though nothing was started.
        if (CDebug::Enabled()) {
            CDebug::Trace(2, "\n\n## Kestrix RAID Agent shutdown - initialization aborted!");
        }
        return success;
    }
    bool const started = m_PollThread.Start(&Thread_PollHandler, this, /*stackBytes=*/0);
    if (CDebug::Enabled()) {
        CDebug::Trace(2, "\nKestrix RAID Agent specific thread %sstarted.", started ? "" : "NOT ");
    }
    return started;
}

std::uint32_t CKestrixRAIDAgent::Thread_PollHandler(void * agent) noexcept
{
    RunPollHandler(*static_cast<CKestrixRAIDAgent *>(agent));
    return 0;
}

void CKestrixRAIDAgent::CloseMib()
{
    if (CDebug::Enabled()) CDebug::Trace(1, "\n\nTerminating Kestrix RAID Agent...");
    m_Terminate.Set();
    unsigned int looks = g_agentIntervals.closeLooks;
    while (m_PollThread.IsRunning() && looks != 0) {
        Platform::Sleep(g_agentIntervals.closeLookMs);
        --looks;
    }
    if (looks == 0) {
        if (CDebug::Enabled()) CDebug::Trace(1, "\nKill Thread_PollHandler.");
        // A thread that hangs in a read is made to leave it, so that force, which has its price, is the last resort.
        m_BreakOff.Set();
        m_PollThread.WaitForThreadExit(g_agentIntervals.breakOffMs);
        m_PollThread.KillThread(0);
    }
    if (CDebug::Enabled()) CDebug::Trace(1, "\nKestrix RAID Agent termination done!\n");
}

} // namespace SNMP
