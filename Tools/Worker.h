#ifndef TOOLS_WORKER_H
#define TOOLS_WORKER_H

#include "VLK/Delegates.h"
#include "VLK/Threads.h"

namespace Coresim {

/// A thread that ends at its next wait once it is told to, however early that is. (The foundation's Cancel is lost on a
/// thread that hasn't begun.)
/// Threads: Start and Stop from one at a time.
class CWorker {
public:
    CWorker() = default;
    /// Stops.
    ~CWorker();
    CWorker(CWorker const &) = delete;
    CWorker & operator=(CWorker const &) = delete;

    /// Runs the body on a thread of its own; once. Raises what CThread::Create raises.
    void Start(VLK::Delegates_and_Calls::CDelegate const & body);
    /// Cancels the thread, if one was started, and waits for its end. An interrupt of the calling thread doesn't keep
    /// it from that.
    void Stop();

private:
    void Run();

    VLK::Delegates_and_Calls::CDelegate m_body;
    VLK::Threading::CThread m_thread;
    VLK::Threading::CEvent m_begun; ///< set, for good, by the thread, which can be cancelled then
};

} // namespace Coresim

#endif
