#include "Snmp/Frame/FrameTrace.h"
#include "Snmp/Frame/SnmpAgent.h"

namespace {

constexpr char kStarRow[] = "***************************************************";
static_assert(sizeof kStarRow - 1 == 51);

/// Prepares this thread for component calls over a scope.
class CComponentApartment {
public:
    CComponentApartment() noexcept : m_entered(Platform::EnterComponentApartment()) {}
    CComponentApartment(CComponentApartment const &) = delete;
    CComponentApartment & operator=(CComponentApartment const &) = delete;
    void Leave() noexcept
    {
        if (m_entered) Platform::LeaveComponentApartment();
    }

private:
    bool m_entered;
};

} // namespace

std::uint32_t CSnmpAgent::Thread_AgentMain(void * argument) noexcept
{
    CSnmpAgent & agent = *static_cast<CSnmpAgent *>(argument);
    Platform::NameCurrentThread(agent.m_thread.name.c_str());
    PLAIN_TRACE(2, "\n\n%-20s: *** START THREAD Thread_AgentMain() ***\n", g_moduleName);
    CComponentApartment apartment;
    try {
        if (!agent.RunPasses()) return 0;
        PLAIN_TRACE(4, "\n\n%-20s: Start CoUninitialize() ...", g_moduleName);
        apartment.Leave();
        PLAIN_TRACE(4, "\n\n%-20s: ... CoUninitialize() done.", g_moduleName);
    } catch (...) {
        EXCEPTION_TRACE(FRAME_HASH_LINE_78,
                        "\n####                   Exception in MIB Init Thread !!                    ####");
        SetAgentStatus(11);
    }
    PLAIN_TRACE(2, "\n\n%-20s: *** EXIT THREAD Thread_AgentMain() ***\n", g_moduleName);
    return 0;
}

bool CSnmpAgent::RunPasses()
{
    do {
        SetAgentStatus(3);
        g_agentShutdown = 0;
        m_requestsEnabled = 0;
        m_restartDelay = 0;
        if (g_agentShutdown == 0 && !RunPass()) return false;
        if (m_restartDelay != 0 && !AwaitRestart()) {
            FRAME_TRACE(2, "Agent shutdown signaled - restart aborted!");
            g_agentShutdown = 1;
        }
    } while (g_agentShutdown == 0);
    return true;
}

bool CSnmpAgent::RunPass()
{
    FRAME_TRACE(3, "Calling the agent's InitializeMib()...");
    InitializeMib();
    // Where a killed thread goes on, it must not touch what belongs to its successor.
    if (m_thread.WasTerminated()) return false;
    FRAME_TRACE(3, "...agent's InitializeMib() completed");
    if (g_agentShutdown == 0) {
        m_requestsEnabled = 1;
        PLAIN_TRACE(1, "\n\n%-20s: **** Agent initialization finished - SNMP requests now enabled ****\n",
                    g_moduleName);
    }
    SetAgentStatus(4);
    // Ended by SignalAgentShutdown, at the latest by StopAgent.
    if (m_shutdownEvent) Platform::WaitForOne(m_shutdownEvent.Get(), Platform::Infinite, /*wakeable=*/false);
    FRAME_TRACE(1, "Shutdown SNMP agent signaled!!");
    SetAgentStatus(5);
    g_agentShutdown = 1;
    FRAME_TRACE(3, "Calling the agent's CloseMib()...");
    CloseMib();
    if (m_thread.WasTerminated()) return false;
    FRAME_TRACE(3, "... CloseMib() done");
    m_requestsEnabled = 0;
    FRAME_TRACE(3, "delete MIB...");
    MibClear();
    FRAME_TRACE(3, "... MIB deleted.");
    SetAgentStatus(6);
    FRAME_TRACE(2, "Agent shutdown finished.");
    return true;
}

bool CSnmpAgent::AwaitRestart()
{
    const std::uint32_t delayMs = m_restartDelay;
    FRAME_TRACE(2, "Agent will internally restart in %d seconds", static_cast<int>(delayMs / 1000));
    if (!m_restartAbortEvent) return false;
    if (Platform::WaitForOne(m_restartAbortEvent.Get(), delayMs, /*wakeable=*/false).result !=
        Platform::WaitResult::Timeout)
        return false;
    g_agentShutdown = 0;
    if (m_shutdownEvent) Platform::ResetEvent(m_shutdownEvent.Get());
    FRAME_TRACE(1, "%s", kStarRow);
    FRAME_TRACE(1, "Initiate agent restart");
    FRAME_TRACE(1, "%s", kStarRow);
    return true;
}
