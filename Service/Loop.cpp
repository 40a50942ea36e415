#include "Loop.h"

#include <algorithm>
#include <limits>
#include <thread>

#include "Log.h"
#include "Platform/Clock.h"
#include "Platform/Signals.h"
#include "Platform/Supervisor.h"
#include "Platform/Thread.h"
#include "RequestJob.h"

namespace Service {

namespace {
/// How long ready calls may keep sockets waiting.
constexpr std::uint64_t kCallsAtOnceMs = 2;
} // namespace

CLoop::CLoop(std::vector<std::unique_ptr<CExtensionLibrary>> const & libraries, SLoopTimes times,
             Platform::CWakeUp const & wakeUp, STrapOptions traps)
    : m_times(times),
      m_wakeUp(wakeUp),
      m_isSubagent(traps.isSubagent),
      m_traps(traps),
      m_nowMs(Platform::MonotonicMs()),
      m_lifeEveryMs(Platform::SupervisorWatchdogMs() / 2)
{
    m_pump.Watch(wakeUp.Descriptor());
    for (auto const & library : libraries) {
        m_queues.push_back(std::make_unique<CWorkQueue>(library.get()));
        if (library->TrapDescriptor() >= 0) m_pump.Watch(library->TrapDescriptor());
    }
}

CWorkQueue & CLoop::QueueOf(CExtensionLibrary const & library)
{
    return **std::find_if(m_queues.begin(), m_queues.end(),
                          [&](auto const & queue) { return &queue->Library() == &library; });
}

void CLoop::Submit(CExtensionLibrary const & library, JobPtr job)
{
    job->SetArrivedMs(Platform::MonotonicMs());
    if (!QueueOf(library).Push(job)) job->Refuse(SNMP_ERR_RESOURCEUNAVAILABLE);
}

void CLoop::SendLastTraps(CExtensionLibrary const & library)
{
    m_traps.SendLast(library.Functions());
}

void CLoop::SetMaster(netsnmp_session * master)
{
    m_traps.SetMaster(master);
    if (master != nullptr) return;
    for (auto const & queue : m_queues)
        queue->ForgetRequests();
    // Their answers would go to a session that is being closed.
    while (agent_delegated_list != nullptr)
        netsnmp_remove_and_free_agent_snmp_session(agent_delegated_list);
}

void CLoop::Run(std::function<void(std::vector<bool> const &)> endNow)
{
    m_endNow = std::move(endNow);
    std::vector<std::thread> helpers;
    for (std::size_t i = 0; i < m_queues.size(); ++i)
        helpers.emplace_back([this] { HelperMain(); });
    Own();
    StandBy();
    for (std::thread & helper : helpers)
        helper.join();
}

void CLoop::HelperMain() noexcept
{
    Platform::NameCurrentThread("kxra-standby");
    StandBy();
}

void CLoop::StandBy()
{
    while (WaitToWatch()) {
        const bool owns = m_standby.Watch();
        LeaveWatch();
        if (owns) Own();
    }
}

bool CLoop::WaitToWatch()
{
    std::unique_lock lock(m_mutex);
    m_watchFree.wait(lock, [this] { return m_ended || !m_watched; });
    if (m_ended) return false;
    m_watched = true;
    return true;
}

void CLoop::LeaveWatch()
{
    {
        const std::lock_guard lock(m_mutex);
        m_watched = false;
    }
    m_watchFree.notify_one();
}

void CLoop::Own()
{
    for (;;) {
        m_pump.Turn(WaitMs());
        m_nowMs = Platform::MonotonicMs();
        if (m_pump.WasReadable(m_wakeUp.Descriptor())) m_wakeUp.Clear();
        CollectTraps();
        TakeLateAnswers();
        if (!MakeCalls()) return;
        m_traps.Turn(m_nowMs);
        LetOthersPass();
        KeepDeadlines();
        ShowLife();
        if (MayStop()) break;
    }
    {
        const std::lock_guard lock(m_mutex);
        m_ended = true;
    }
    m_watchFree.notify_all();
    m_standby.Stop();
}

int CLoop::WaitMs() const
{
    if (HasReadyJob() || m_hasLate.load()) return 0;
    std::uint64_t next = std::numeric_limits<std::uint64_t>::max();
    const auto before = [&next](std::uint64_t timeMs) { next = std::min(next, timeMs); };
    std::uint64_t timeMs = 0;
    for (auto const & queue : m_queues) {
        if (!queue->IsBusy()) continue;
        if (m_times.watchdogMs != 0) before(queue->CallStartMs() + m_times.watchdogMs);
        if (queue->OldestArrival(timeMs)) before(timeMs + m_times.answerWithinMs);
    }
    if (m_traps.NextTurnMs(timeMs)) before(timeMs);
    if (m_stopByMs != 0) before(m_stopByMs);
    if (m_lifeEveryMs != 0) before(m_nextLifeMs);
    if (next == std::numeric_limits<std::uint64_t>::max()) return -1;
    if (next <= m_nowMs) return 0;
    return static_cast<int>(std::min<std::uint64_t>(next - m_nowMs, std::numeric_limits<int>::max()));
}

bool CLoop::HasReadyJob() const
{
    return std::any_of(m_queues.begin(), m_queues.end(), [](auto const & queue) { return queue->IsReady(); });
}

bool CLoop::IsAnyBusy() const
{
    return std::any_of(m_queues.begin(), m_queues.end(), [](auto const & queue) { return queue->IsBusy(); });
}

bool CLoop::MakeCalls()
{
    const std::uint64_t endMs = m_nowMs + kCallsAtOnceMs;
    bool again = true;
    while (again) {
        again = false;
        for (auto const & queue : m_queues) {
            if (!queue->IsReady()) continue;
            if (!MakeCall(*queue)) return false;
            again = true;
        }
        if (again) m_nowMs = Platform::MonotonicMs();
        if (m_nowMs >= endMs) return true;
    }
    return true;
}

bool CLoop::MakeCall(CWorkQueue & queue)
{
    CQuery & query = queue.Begin(m_nowMs).Query();
    const std::uint64_t call = m_standby.BeginCall(m_nowMs);
    query.Run(queue.Library().Functions());
    if (m_standby.EndCall(call)) {
        FinishJob(queue);
        return true;
    }
    // From here on everything but the lock's belongs to another thread.
    {
        const std::lock_guard lock(m_mutex);
        m_late.push_back(&queue);
        m_hasLate = true;
    }
    m_wakeUp.Signal();
    return false;
}

void CLoop::FinishJob(CWorkQueue & queue)
{
    CJob & job = *queue.Running();
    const bool again = !job.IsAnswered() && !job.Finish();
    queue.End(again);
    if (again) return;
    netsnmp_check_outstanding_agent_requests();
    m_pump.ServeInside();
}

void CLoop::TakeLateAnswers()
{
    if (!m_hasLate.load()) return;
    std::vector<CWorkQueue *> late;
    {
        const std::lock_guard lock(m_mutex);
        late.swap(m_late);
        m_hasLate = false;
    }
    for (CWorkQueue * queue : late)
        FinishJob(*queue);
}

void CLoop::LetOthersPass()
{
    // Net-SNMP lets a SET wait for every request that is held back, and all that follow wait for the SET. An
    // extension keeps its own requests in order, and the other objects must not wait for it.
    if (m_isSubagent || !IsAnyBusy()) return;
    if (netsnmp_processing_set != nullptr && netsnmp_check_delegated_chain_for(netsnmp_processing_set) != 0)
        netsnmp_processing_set = nullptr;
    while (netsnmp_agent_queued_list != nullptr) {
        netsnmp_agent_session * session = netsnmp_agent_queued_list;
        netsnmp_agent_queued_list = session->next;
        session->next = nullptr;
        netsnmp_processing_set = session->pdu->command == SNMP_MSG_SET ? session : nullptr;
        netsnmp_handle_request(session, session->status);
        netsnmp_processing_set = nullptr;
    }
}

void CLoop::CollectTraps()
{
    for (auto const & queue : m_queues) {
        const int descriptor = queue->Library().TrapDescriptor();
        if (descriptor < 0 || !m_pump.WasReadable(descriptor)) continue;
        // Before the traps are taken: one that is queued meanwhile signals again.
        Platform::TakeEventSignal(descriptor);
        m_traps.Signal(*queue);
    }
}

void CLoop::KeepDeadlines()
{
    if (!IsAnyBusy()) return;
    bool refused = false;
    for (auto const & queue : m_queues) {
        if (!queue->IsBusy()) continue;
        if (m_times.watchdogMs != 0 && m_nowMs >= queue->CallStartMs() + m_times.watchdogMs) {
            CLog::Write(EPriority::Error, "a call into " + queue->Library().File() + " hasn't returned for " +
                                              std::to_string(m_times.watchdogMs / 1000) +
                                              " s; ending with status 75 to be started again");
            std::_Exit(kWatchdogStatus);
        }
        if (m_nowMs >= m_times.answerWithinMs)
            refused |= queue->RefuseOlder(m_nowMs - m_times.answerWithinMs + 1, SNMP_ERR_GENERR);
    }
    if (refused) netsnmp_check_outstanding_agent_requests();
}

void CLoop::ShowLife()
{
    if (m_lifeEveryMs == 0 || m_nowMs < m_nextLifeMs) return;
    Platform::TellSupervisor("WATCHDOG=1");
    m_nextLifeMs = m_nowMs + m_lifeEveryMs;
}

bool CLoop::MayStop()
{
    if (!Platform::StopRequested()) return false;
    if (m_stopByMs == 0) {
        Platform::TellSupervisor("STOPPING=1");
        m_stopByMs = m_nowMs + m_times.answerWithinMs;
    }
    if (!IsAnyBusy()) return true;
    if (m_nowMs < m_stopByMs) return false;
    std::vector<bool> busy;
    for (auto const & queue : m_queues)
        busy.push_back(queue->IsBusy());
    m_endNow(busy);
    return true;
}

} // namespace Service
