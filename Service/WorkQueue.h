#ifndef SERVICE_WORK_QUEUE_H
#define SERVICE_WORK_QUEUE_H

#include <deque>
#include <memory>

#include "ExtensionLibrary.h"
#include "Job.h"

namespace Service {

/// Requests that may wait for one extension. Each holds a packet, so this bounds the memory that managers can
/// make us use while the extension is busy.
inline constexpr std::size_t kMaxWaiting = 256;

/// The work of one extension: one job at most is being called, the others wait in their order.
/// Threads: only the one that runs the loop.
class CWorkQueue {
public:
    /// library: what Library gives, and nothing else happens with it.
    explicit CWorkQueue(CExtensionLibrary * library) : m_library(library) {}

    CExtensionLibrary & Library() const noexcept { return *m_library; }

    /// Takes the job over unless the queue is full or has no memory; then false, and the job is still the caller's.
    bool Push(JobPtr & job) noexcept;
    bool IsBusy() const noexcept { return m_running != nullptr; }
    bool IsReady() const noexcept { return !IsBusy() && !m_waiting.empty(); }
    /// Makes the oldest job the running one.
    CJob & Begin(std::uint64_t nowMs);
    /// Ends the running one. again: it has to run once more, before all others.
    void End(bool again);
    CJob * Running() const noexcept { return m_running.get(); }
    std::uint64_t CallStartMs() const noexcept { return m_callStartMs; }

    /// Answers every request that arrived before `arrivedBeforeMs` with the status. Whether there was one.
    bool RefuseOlder(std::uint64_t arrivedBeforeMs, int status);
    /// When the oldest unanswered request arrived; false: there is none.
    bool OldestArrival(std::uint64_t & arrivedMs) const noexcept;
    /// Forgets all requests without an answer: who asked has gone.
    void ForgetRequests();

private:
    CExtensionLibrary * m_library;
    std::deque<JobPtr> m_waiting;
    JobPtr m_running;
    std::uint64_t m_callStartMs = 0;
};

} // namespace Service

#endif
