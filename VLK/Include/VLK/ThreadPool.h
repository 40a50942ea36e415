#ifndef VLK_THREAD_POOL_H
#define VLK_THREAD_POOL_H

#include <atomic>

#include "VLK/CriticalSection.h"
#include "VLK/Delegates.h"
#include "VLK/DoubleLink.h"
#include "VLK/Export.h"
#include "VLK/Threads.h"

namespace VLK::Exceptions {
class CThrowState;
}

namespace VLK::Threading {

/// Runs jobs on a changing set of threads.
///
/// A job goes to the thread that has been idle longest; without one a new thread is made, up to the limit and one
/// more; beyond that jobs queue up. A thread that stays idle too long ends. The pool has no thread of its own: what
/// has to be cleared away goes at the next Enqueue or Stop.
///
/// Life     closed at construction, open after Init, closed after a Stop that found threads.
/// Threads  Init, Enqueue and Stop from any thread; the destructor when nobody else uses the pool any more. Stop and
///          the destructor wait for pool threads, so a job must call neither on its own pool.
/// Lock     m_Lock; jobs run outside it, and are destroyed outside it.
class VLK_API CThreadPool {
public:
    class CPoolThread;

    CThreadPool() noexcept;
    /// Stops, then waits for the jobs that still run and for the ends of all threads. Queued jobs go without being
    /// run.
    ~CThreadPool();
    CThreadPool(CThreadPool const &) = delete;
    CThreadPool & operator=(CThreadPool const &) = delete;

    /// Opens the pool; jobs that a Stop left in the queue are run then.
    ///
    /// minThreads  idle threads that are kept while their time isn't over; one more than that can stay
    /// maxThreads  limit on threads, 0 for none; it is exceeded by one before jobs queue up
    /// idleTime    milliseconds that a thread waits for work before it ends, 0xFFFFFFFF for ever
    /// Errors      PoolAlreadyInitialized on an open pool and while a Stop is at work; SyncCreate. The pool is as it
    ///             was then.
    unsigned int Init(unsigned int minThreads, unsigned int maxThreads, unsigned int idleTime);

    /// Takes a copy of the delegate and has it run once, on a thread of the foundation with both interrupts enabled.
    /// What a job raises ends the thread that it ran on, as it would end any other, and nothing else.
    /// Raises PoolNotInitialized on a closed pool, OutOfMemory, SyncCreate, ThreadStart; the job is not taken then.
    unsigned int Enqueue(Delegates_and_Calls::CDelegate job);

    /// Closes the pool: no further jobs are taken, and queued ones stay queued. On a pool without threads nothing
    /// happens: it stays open. Otherwise the idle threads are cancelled and waited for, while of the threads that run
    /// jobs the first to end is enough: the others end behind their jobs, and the destructor waits for them.
    /// Cancels at most 100 threads; further ones are waited for until their idle time is over.
    /// Raises the interrupts of the calling thread; the pool is closed then all the same.
    unsigned int Stop();

    /// Milliseconds; for a thread that is idle already it holds from its next wait on.
    unsigned int SetIdleTime(unsigned int idleTime) noexcept;

protected:
    /// Calls the job on a pool thread. Whatever the job raises goes on.
    void Run(Delegates_and_Calls::CDelegate & job);

    class CJob;
    using CThreadQueue = Misc::TDoubleLinkHead<CPoolThread>;

    CCriticalSection m_Lock; ///< guards everything below
    CFastEvent m_StopEvent;  ///< manual reset; set under the lock by each thread that ends during a stop
    unsigned int m_uMaxThreads;
    unsigned int m_uMinThreads;
    // Words that are also looked at without the lock, by traces and first tests: relaxed, since whatever is decided
    // by them is decided under the lock.
    std::atomic<unsigned int> m_uIdleTime; ///< milliseconds
    std::atomic<unsigned int> m_uThreads;  ///< those that exist and aren't in m_Ended
    /// Threads in m_Idle. For a moment above that list's length: a thread that got a job counts itself out when it
    /// wakes.
    std::atomic<unsigned int> m_uIdleThreads;
    std::atomic<unsigned int> m_uStopReq; ///< 1: no jobs accepted
    CThreadQueue m_Idle;                  ///< waiting threads, the oldest first
    CThreadQueue m_Running;               ///< threads with a job
    CThreadQueue m_Ended;                 ///< threads that have left their loop and wait to be deleted
    Misc::TDoubleLinkHead<CJob> m_Jobs;   ///< jobs for which no thread was free

private:
    void CheckOpen(Exceptions::CThrowState & state) const;
    void Dispatch(Delegates_and_Calls::CDelegate const & job);
    void QueueJob(Delegates_and_Calls::CDelegate const & job);
    void StartThread(Delegates_and_Calls::CDelegate const & job);
    void HandOver(CPoolThread & thread, Delegates_and_Calls::CDelegate const & job);
    void ServeQueue() noexcept;
    void DeleteEnded();
    bool BeginStop();
    void CancelIdle();
    void AwaitFirstEnd();
    void AwaitIdle();
    void DeleteAllEnded() noexcept;
    void AwaitAll() noexcept;
    CPoolThread * AnyThread() const noexcept;
    void TraceQueues() const;

    unsigned int m_uStopping; ///< calls of Stop that are at work
};

/// A job that waits for a thread. It belongs to the pool's queue.
class CThreadPool::CJob : public Misc::TDoubleLinkedObject<CJob> {
public:
    explicit CJob(Delegates_and_Calls::CDelegate const & job) noexcept : m_Job(job) {}
    /// For traces: the job has no thread yet.
    static constexpr unsigned int ThreadId = 0;

    Delegates_and_Calls::CDelegate m_Job;
};

/// A thread of a pool, in one of its queues. It belongs to the pool, which deletes it when it has ended.
class VLK_API CThreadPool::CPoolThread : public Misc::TDoubleLinkedObject<CPoolThread> {
public:
    /// Raises SyncCreate.
    explicit CPoolThread(CThreadPool & pool);
    virtual ~CPoolThread();

    /// The thread's whole life.
    void Run();

private:
    friend class CThreadPool;

    void Start();
    bool AwaitWork(CSyncGuard & guard);
    unsigned int WaitForWakeUp(unsigned int timeout);
    bool RunJobs(CSyncGuard & guard);
    void RunJob(CSyncGuard & guard);
    bool GoIdle();
    void End();
    bool HasEnded() const noexcept;
    void AwaitEnd() const noexcept;

    CFastEvent m_WakeUp; ///< reset by the thread after each wait
    CThread m_Thread;
    CThreadPool & m_Pool;
    Delegates_and_Calls::CDelegate m_Job; ///< given under the pool's lock; the thread's own from then on
    bool m_bIdle = false;                 ///< counted in m_uIdleThreads
    bool m_bLastJobs = false;             ///< cancelled, or its wait failed: it ends when it has nothing to do
};

} // namespace VLK::Threading

#endif
