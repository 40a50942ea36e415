#ifndef TOOLS_WORKER_H
#define TOOLS_WORKER_H

#include <atomic>

#include "VLK/Delegates.h"
#include "VLK/Threads.h"

namespace Coresim {

/// A thread that ends at its next wait once it is told to, however early that is. (The foundation's Cancel is lost on a
/// thread that hasn't begun, or that has disabled it for a while.)
/// Threads: Start and Stop from one at a time; IsStopping from any.
class CWorker {
public:
    CWorker() = default;
    /// Stops.
    ~CWorker();
    CWorker(CWorker const &) = delete;
    CWorker & operator=(CWorker const &) = delete;

    /// Runs the body on a thread of its own; once. Raises what CThread::Create raises.
    void Start(VLK::Delegates_and_Calls::CDelegate const & body);
    /// Interrupts the thread, if one was started, and waits for its end. A wait interrupt of the calling thread, which
    /// may be a worker itself, doesn't keep it from that; it is there again afterwards.
    void Stop();
    bool IsStopping() const noexcept { return m_stopping.load(std::memory_order_relaxed); }

private:
    void Run();

    VLK::Delegates_and_Calls::CDelegate m_body;
    VLK::Threading::CThread m_thread;
    VLK::Threading::CWaitInterrupt m_interrupt; ///< reaches a thread also when it was set before it is installed
    std::atomic<bool> m_stopping{false};
};

} // namespace Coresim

#endif
