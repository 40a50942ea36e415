#ifndef SERVICE_LOOP_H
#define SERVICE_LOOP_H

#include "NetSnmp.h"

#include <atomic>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "Platform/LoopEvents.h"
#include "Pump.h"
#include "Standby.h"
#include "TrapForwarder.h"
#include "WorkQueue.h"

namespace Service {

/// Times that the loop keeps, in milliseconds.
struct SLoopTimes {
    std::uint64_t answerWithinMs;
    std::uint64_t watchdogMs; ///< 0: never
};

/// Status of the process when the watchdog ended it, for its supervisor to start it again.
inline constexpr int kWatchdogStatus = 75;

/// The service's loop: serves Net-SNMP, calls the extensions, forwards their traps.
///
/// One thread owns the loop at any moment; everything here except what a comment names is the owner's. The owner
/// makes the calls into extensions itself. When one is late the standby thread takes the loop over (CStandby),
/// and the thread that comes back hands its job to m_late and stands by. There is one thread more than there are
/// extensions, so somebody can always take over.
/// Lock: m_mutex guards m_late and m_watched. Nothing foreign is called under it.
class CLoop {
public:
    CLoop(std::vector<std::unique_ptr<CExtensionLibrary>> const & libraries, SLoopTimes times,
          Platform::CWakeUp const & wakeUp, STrapOptions traps);

    /// Whether the system had the descriptors that the loop needs; otherwise it must not run.
    bool IsValid() const noexcept { return m_standby.IsValid(); }

    /// Gives the job to the extension's queue, or answers it at once when that is full.
    void Submit(CExtensionLibrary const & library, JobPtr job);
    /// The AgentX master has come, or null: it has gone, and its requests with it.
    void SetMaster(netsnmp_session * master);

    /// Behind Run: sends the last traps of an extension that has been closed.
    void SendLastTraps(CExtensionLibrary const & library);

    /// Runs until a stop is requested, on the calling thread and as many others as are needed. True: all is at
    /// rest. False never comes back: `endNow` was called by the owner of the loop because an extension hasn't
    /// returned, and must not return.
    void Run(std::function<void(std::vector<bool> const & busy)> endNow);

private:
    void HelperMain() noexcept;
    /// Stands by, and owns the loop whenever it falls to this thread, until the end.
    void StandBy();
    /// The owner's work; returns when the loop has gone to another thread or ended.
    void Own();
    bool WaitToWatch();
    void LeaveWatch();

    /// Makes calls until none is ready or other work has waited long enough. False: this thread isn't the
    /// owner any more.
    bool MakeCalls();
    bool MakeCall(CWorkQueue & queue);
    void FinishJob(CWorkQueue & queue);
    void TakeLateAnswers();
    void LetOthersPass();
    void CollectTraps();
    void KeepDeadlines();
    void ShowLife();
    int WaitMs() const;
    bool HasReadyJob() const;
    bool IsAnyBusy() const;
    bool MayStop();
    CWorkQueue & QueueOf(CExtensionLibrary const & library);

    SLoopTimes m_times;
    Platform::CWakeUp const & m_wakeUp;
    bool m_isSubagent;
    std::vector<std::unique_ptr<CWorkQueue>> m_queues;
    CPump m_pump;
    CTrapForwarder m_traps;
    std::function<void(std::vector<bool> const &)> m_endNow;
    std::uint64_t m_nowMs;        ///< a recent look at the clock
    std::uint64_t m_stopByMs = 0; ///< once a stop is requested: when patience with extensions ends
    std::uint64_t m_lifeEveryMs;  ///< 0: no supervisor wants signs of life
    std::uint64_t m_nextLifeMs = 0;

    CStandby m_standby;
    std::atomic<bool> m_ended{false};
    std::mutex m_mutex;
    std::condition_variable m_watchFree; ///< m_watched became false, or m_ended true
    bool m_watched = false;              ///< a thread stands by
    std::vector<CWorkQueue *> m_late;    ///< whose calls came back after the loop had been taken over
    std::atomic<bool> m_hasLate{false};
};

} // namespace Service

#endif
