#include "VLK/ThreadPool.h"

#include <memory>
#include <new>

#include "Platform/Wait.h"
#include "VLK/Exceptions.h"
#include "VLK/Trace.h"

namespace VLK::Threading {

using Delegates_and_Calls::CCall;
using Delegates_and_Calls::CDelegate;
using Delegates_and_Calls::TDelegate;
using Exceptions::CThrowState;

// What readers of traces look for: the functions with their classes.
#define POOL_TRACE(function, ...) VLK_TRACE_AS(TraceEvents, "VLK::Threading::CThreadPool::" function, __VA_ARGS__)

namespace {

constexpr unsigned int NoLimit = 0xFFFFFFFF;
constexpr unsigned int MaxCancelled = 100; ///< idle threads that one Stop cancels

unsigned int Load(std::atomic<unsigned int> const & word) noexcept
{
    return word.load(std::memory_order_relaxed);
}

/// By the holder of the pool's lock, so that nothing comes in between.
void Raise(std::atomic<unsigned int> & count) noexcept
{
    count.store(Load(count) + 1, std::memory_order_relaxed);
}

void Lower(std::atomic<unsigned int> & count) noexcept
{
    count.store(Load(count) - 1, std::memory_order_relaxed);
}

} // namespace

CThreadPool::CThreadPool() noexcept
    : m_uMaxThreads(NoLimit),
      m_uMinThreads(0),
      m_uIdleTime(0),
      m_uThreads(0),
      m_uIdleThreads(0),
      m_uStopReq(1),
      m_uStopping(0)
{
}

CThreadPool::~CThreadPool()
{
    {
        CThrowState state;
        state.DisableThrow();
        Stop(); // an interrupt of the caller may break it
    }
    AwaitAll();
    while (CJob * const job = m_Jobs.First())
        delete job;
}

unsigned int CThreadPool::Init(unsigned int minThreads, unsigned int maxThreads, unsigned int idleTime)
{
    CThrowState state;
    try {
        m_Lock.Init(/*spinCount=*/0);
        CSyncGuard guard;
        m_Lock.Enter(guard);
        if (Load(m_uStopReq) == 0 || m_uStopping != 0) VLK_RAISE(state, Errors::PoolAlreadyInitialized);
        m_StopEvent.Init(/*manualReset=*/1);
        m_uMinThreads = minThreads;
        m_uMaxThreads = maxThreads != 0 ? maxThreads : NoLimit;
        SetIdleTime(idleTime);
        // The counts are 0, but for threads whose jobs outlasted the last Stop: those belong to the pool again.
        m_uStopReq.store(0, std::memory_order_relaxed);
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

unsigned int CThreadPool::SetIdleTime(unsigned int idleTime) noexcept
{
    m_uIdleTime.store(idleTime, std::memory_order_relaxed);
    return URET_OK;
}

void CThreadPool::CheckOpen(CThrowState & state) const
{
    if (Load(m_uStopReq) != 0) VLK_RAISE(state, Errors::PoolNotInitialized);
}

unsigned int CThreadPool::Enqueue(CDelegate job)
{
    CThrowState state;
    try {
        POOL_TRACE("Enqueue", "Enter CThreadPool::Enqueue");
        CheckOpen(state);
        CSyncGuard guard;
        POOL_TRACE("Enqueue", "Before m_Lock.Enter(SG)");
        m_Lock.Enter(guard);
        POOL_TRACE("Enqueue", "After m_Lock.Enter(SG)");
        CheckOpen(state); // a Stop may have been faster
        DeleteEnded();
        Dispatch(job);
        POOL_TRACE("Enqueue", "LEAVE CThreadPool::Enqueue");
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

void CThreadPool::DeleteEnded()
{
    for (CPoolThread * thread = m_Ended.First(); thread != nullptr;) {
        CPoolThread * const next = m_Ended.Next(*thread);
        // One that is still on its way out of the lock has its turn next time.
        if (thread->HasEnded()) {
            POOL_TRACE("Enqueue", "Delete thread: Thread-ID=0x%x", thread->m_Thread.GetThreadID());
            delete thread;
        }
        thread = next;
    }
}

void CThreadPool::Dispatch(CDelegate const & job)
{
    if (CPoolThread * const idle = m_Idle.First()) {
        POOL_TRACE("Enqueue", "Unlink idle thread: Thread-ID=0x%x", idle->m_Thread.GetThreadID());
        HandOver(*idle, job);
        return;
    }
    POOL_TRACE("Enqueue", "We have following threads: act=%d max=%d", Load(m_uThreads), m_uMaxThreads);
    if (m_uMaxThreads < Load(m_uThreads))
        QueueJob(job);
    else
        StartThread(job);
}

void CThreadPool::QueueJob(CDelegate const & job)
{
    CThrowState state;
    try {
        CJob * const queued = new (std::nothrow) CJob(job);
        if (queued == nullptr) VLK_RAISE(state, Errors::OutOfMemory);
        POOL_TRACE("Enqueue", "Create new queued job/thread: Thread-ID=0x%x", CJob::ThreadId);
        m_Jobs.AddLast(*queued);
    }
    VLK_THROW_NEXT_VOID(state)
}

void CThreadPool::StartThread(CDelegate const & job)
{
    CThrowState state;
    try {
        std::unique_ptr<CPoolThread> thread(new (std::nothrow) CPoolThread(*this));
        if (thread == nullptr) VLK_RAISE(state, Errors::OutOfMemory);
        thread->Start();
        Raise(m_uThreads);
        POOL_TRACE("Enqueue", "Create new pool thread: Thread-ID=0x%x act=%d max=%d", thread->m_Thread.GetThreadID(),
                   Load(m_uThreads), m_uMaxThreads);
        HandOver(*thread.release(), job);
    }
    VLK_THROW_NEXT_VOID(state)
}

void CThreadPool::HandOver(CPoolThread & thread, CDelegate const & job)
{
    thread.m_Job = job;
    POOL_TRACE("Enqueue", "Add thread: Thread-ID=0x%x to running queue and wake up to run",
               thread.m_Thread.GetThreadID());
    m_Running.AddLast(thread);
    thread.m_WakeUp.Set();
}

void CThreadPool::ServeQueue() noexcept
{
    CThrowState state;
    try {
        CJob * const job = m_Jobs.First();
        if (job == nullptr || Load(m_uStopReq) != 0) return;
        StartThread(job->m_Job);
        delete job;
        return;
    }
    VLK_END_EXCEPTION(state) // it waits for the next thread then
}

void CThreadPool::Run(CDelegate & job)
{
    POOL_TRACE("Run", "Pool-Thread hat einen neuen Job erhalten");
    if (job.m_pBlock != nullptr) job.m_pBlock->Call();
    POOL_TRACE("Run", "Pool-Thread hat einen neuen Job ausgeführt");
}

unsigned int CThreadPool::Stop()
{
    CThrowState state;
    try {
        POOL_TRACE("Stop", "ENTER CThreadPool::Stop()");
        if (BeginStop()) {
            // Init must not renew the stop event while it is waited for.
            struct SStopping {
                CThreadPool & pool;
                ~SStopping()
                {
                    CSyncGuard guard;
                    pool.m_Lock.Enter(guard);
                    --pool.m_uStopping;
                }
            } const stopping{*this};
            AwaitFirstEnd();
            AwaitIdle();
            DeleteAllEnded();
            POOL_TRACE("Stop", "All threads are gone");
        }
        POOL_TRACE("Stop", "LEAVE CThreadPool::Stop()");
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

bool CThreadPool::BeginStop()
{
    CSyncGuard guard;
    m_Lock.Enter(guard);
    if (Load(m_uStopReq) != 0 || Load(m_uThreads) == 0) return false;
    POOL_TRACE("Stop", "It seems that we still have %d threads", Load(m_uThreads));
    m_uStopReq.store(1, std::memory_order_relaxed);
    ++m_uStopping;
    CancelIdle();
    return true;
}

void CThreadPool::CancelIdle()
{
    unsigned int cancelled = 0;
    for (CPoolThread * thread = m_Idle.First(); thread != nullptr; thread = m_Idle.Next(*thread)) {
        if (cancelled++ == MaxCancelled) {
            POOL_TRACE("Stop", "After pThread->m_Thread.Cancel() endless loop detected");
            return;
        }
        POOL_TRACE("Stop", "Cancel idle thread: Thread-ID=0x%x", thread->m_Thread.GetThreadID());
        thread->m_Thread.Cancel();
        thread->m_bLastJobs = true; // a thread can be cancelled only once
        POOL_TRACE("Stop", "After pThread->m_Thread.Cancel()");
    }
}

void CThreadPool::AwaitFirstEnd()
{
    if (Load(m_uThreads) == 0) return;
    POOL_TRACE("Stop", "It seems that we still have %d threads", Load(m_uThreads));
    m_StopEvent.Wait(Platform::Infinite); // ended by the first thread to end
}

void CThreadPool::AwaitIdle()
{
    CSyncGuard guard;
    m_Lock.Enter(guard);
    while (CPoolThread * const idle = m_Idle.First()) {
        CThread thread(idle->m_Thread);
        guard.Restore();
        if (Load(m_uThreads) == 0) return;
        POOL_TRACE("Stop", "It seems that we still have %d threads", Load(m_uThreads));
        POOL_TRACE("Stop", "Wait for idle thread: Thread-ID=0x%x", thread.GetThreadID());
        thread.Wait(Platform::Infinite); // cancelled, or at the end of its idle time
        m_Lock.Enter(guard);
        delete idle; // it stands among the ended ones now, and only a Stop takes threads from there on a closed pool
    }
}

void CThreadPool::DeleteAllEnded() noexcept
{
    CSyncGuard guard;
    m_Lock.Enter(guard);
    while (CPoolThread * const thread = m_Ended.First()) {
        guard.Restore();
        thread->AwaitEnd(); // at most a few instructions away
        m_Lock.Enter(guard);
        delete thread;
    }
}

CThreadPool::CPoolThread * CThreadPool::AnyThread() const noexcept
{
    for (CThreadQueue const * const queue : {&m_Idle, &m_Running, &m_Ended}) {
        if (!queue->IsEmpty()) return queue->First();
    }
    return nullptr;
}

void CThreadPool::AwaitAll() noexcept
{
    CSyncGuard guard;
    m_Lock.Enter(guard);
    while (CPoolThread * const thread = AnyThread()) {
        guard.Restore();
        thread->AwaitEnd();
        m_Lock.Enter(guard);
        delete thread;
    }
}

void CThreadPool::TraceQueues() const
{
    struct SQueue {
        char const * format;
        CThreadQueue const & threads;
    };
    unsigned int const most = Load(m_uThreads);
    POOL_TRACE("CPoolThread::Run", "Threads=%d, Idle=%d, m_uStopReq=%d", most, Load(m_uIdleThreads), Load(m_uStopReq));
    for (SQueue const & queue : {SQueue{"Running queue thread: [%02d] Thread-ID=0x%x", m_Running},
                                 SQueue{"Idle queue thread: [%02d] Thread-ID=0x%x", m_Idle},
                                 SQueue{"Delete queue thread: [%02d] Thread-ID=0x%x", m_Ended}}) {
        unsigned int number = 0;
        for (CPoolThread const * thread = queue.threads.First(); thread != nullptr && number < most;
             thread = queue.threads.Next(*thread))
            POOL_TRACE("CPoolThread::Run", queue.format, ++number, thread->m_Thread.GetThreadID());
    }
    unsigned int number = 0;
    for (CJob const * job = m_Jobs.First(); job != nullptr && number < most; job = m_Jobs.Next(*job))
        POOL_TRACE("CPoolThread::Run", "Queued job/thread: [%02d] Thread-ID=0x%x", ++number, CJob::ThreadId);
}

CThreadPool::CPoolThread::CPoolThread(CThreadPool & pool) : m_Pool(pool)
{
    m_WakeUp.Init(/*manualReset=*/1);
}

CThreadPool::CPoolThread::~CPoolThread() = default;

void CThreadPool::CPoolThread::Start()
{
    m_Thread.Create(TDelegate<CCall>(this, &CPoolThread::Run), /*suspended=*/false);
}

void CThreadPool::CPoolThread::Run()
{
    POOL_TRACE("CPoolThread::Run", "ENTER CThreadPool::CPoolThread::Run()");
    CSyncGuard guard; // of the pool's lock. Behind its end this object may be gone.
    CThrowState state;
    try {
        while (AwaitWork(guard) && RunJobs(guard) && GoIdle()) {
        }
    } catch (...) {
        m_Job.Release();
        m_Pool.m_Lock.Enter(guard);
        End();
        m_Pool.ServeQueue(); // what is queued must not wait for a thread that has gone
        VLK_SOURCE(source);
        state.ThrowNext(source);
        return;
    }
    End();
}

bool CThreadPool::CPoolThread::AwaitWork(CSyncGuard & guard)
{
    POOL_TRACE("CPoolThread::Run", "Threads=%d, Idle=%d", Load(m_Pool.m_uThreads), Load(m_Pool.m_uIdleThreads));
    guard.Restore();
    unsigned int const idleTime = Load(m_Pool.m_uIdleTime);
    POOL_TRACE("CPoolThread::Run", "Before Wait(%d)", idleTime);
    unsigned int result = WaitForWakeUp(idleTime);
    if (result != URET_Error) POOL_TRACE("CPoolThread::Run", "After Wait()=%d", result);
    m_Pool.m_Lock.Enter(guard);
    // Enqueue may have set the event between the time-out and the lock.
    if (result == URET_Timeout) result = WaitForWakeUp(0);
    m_WakeUp.Reset();
    if (result == URET_Timeout) {
        POOL_TRACE("CPoolThread::Run", "Timeout - leave for() loop");
        return false;
    }
    if (result == URET_Error && !m_Job.IsValid()) return false;
    if (result == URET_Error) m_bLastJobs = true;
    // The interrupt was for the wait, not for the job that came all the same.
    if (m_bLastJobs) CCurrentThread().ClearInterrupt(InterruptAll);
    if (!m_bIdle) return true;
    POOL_TRACE("CPoolThread::Run", "Move idle thread: Thread-ID=0x%x to running queue", m_Thread.GetThreadID());
    m_Pool.m_Running.AddLast(*this);
    Lower(m_Pool.m_uIdleThreads);
    m_bIdle = false;
    return true;
}

/// URET_OK, URET_Timeout, or URET_Error: broken by an interrupt.
unsigned int CThreadPool::CPoolThread::WaitForWakeUp(unsigned int timeout)
{
    CThrowState state;
    try {
        return m_WakeUp.Wait(timeout);
    }
    VLK_END_EXCEPTION(state)
    return URET_Error;
}

/// Runs its job and then the queued ones. False: the pool is being stopped.
bool CThreadPool::CPoolThread::RunJobs(CSyncGuard & guard)
{
    for (;;) {
        RunJob(guard);
        if (Load(m_Pool.m_uStopReq) != 0) {
            POOL_TRACE("CPoolThread::Run", "m_Pool.m_uStopReq - leave for() loop");
            return false;
        }
        CJob * const next = m_Pool.m_Jobs.First();
        if (next == nullptr) return true;
        POOL_TRACE("CPoolThread::Run", "Delete queued job/thread: Thread-ID=0x%x and force to run",
                   m_Thread.GetThreadID());
        m_Job = next->m_Job;
        delete next;
    }
}

/// Gives the lock away for the job and comes back with it.
void CThreadPool::CPoolThread::RunJob(CSyncGuard & guard)
{
    guard.Restore();
    POOL_TRACE("CPoolThread::Run", "Before m_Pool.Run()");
    m_Pool.Run(m_Job);
    POOL_TRACE("CPoolThread::Run", "After m_Pool.Run()");
    {
        CCurrentThread current;
        current.ClearInterrupt(InterruptAll);
        current.SetWaitInterrupt(nullptr);
        POOL_TRACE("CPoolThread::Run", "Run () - Thread (%s) arbeitslos", current.GetThreadName());
    }
    m_Job.Release();
    m_Pool.m_Lock.Enter(guard);
}

bool CThreadPool::CPoolThread::GoIdle()
{
    if (m_bLastJobs) return false;
    // It doesn't count itself here, so one more than the minimum stays.
    if (Load(m_Pool.m_uIdleThreads) > m_Pool.m_uMinThreads) {
        POOL_TRACE("CPoolThread::Run", "m_uIdleThreads=%d > m_uMinThreads=%d - leave for() loop",
                   Load(m_Pool.m_uIdleThreads), m_Pool.m_uMinThreads);
        return false;
    }
    POOL_TRACE("CPoolThread::Run", "Move running thread: Thread-ID=0x%x to idle queue", m_Thread.GetThreadID());
    m_Pool.m_Idle.AddLast(*this);
    Raise(m_Pool.m_uIdleThreads);
    m_bIdle = true;
    return true;
}

/// The last that it does, with the lock held.
void CThreadPool::CPoolThread::End()
{
    POOL_TRACE("CPoolThread::Run",
               m_bIdle ? "Move idle thread: Thread-ID=0x%x to delete queue"
                       : "Move running thread: Thread-ID=0x%x to delete queue",
               m_Thread.GetThreadID());
    m_Pool.m_Ended.AddLast(*this);
    if (m_bIdle) Lower(m_Pool.m_uIdleThreads);
    Lower(m_Pool.m_uThreads);
    if (VLK_TRACE_ON(TraceEvents)) m_Pool.TraceQueues();
    if (Load(m_Pool.m_uStopReq) != 0) m_Pool.m_StopEvent.Set();
    POOL_TRACE("CPoolThread::Run", "LEAVE CThreadPool::CPoolThread::Run()");
}

bool CThreadPool::CPoolThread::HasEnded() const noexcept
{
    CWaitHandle const handle(m_Thread);
    return Platform::WaitForOne(handle.Block()->GetHandle(), 0, /*wakeable=*/false).result ==
           Platform::WaitResult::Signaled;
}

void CThreadPool::CPoolThread::AwaitEnd() const noexcept
{
    CWaitHandle const handle(m_Thread);
    Platform::WaitForOne(handle.Block()->GetHandle(), Platform::Infinite, /*wakeable=*/false);
}

} // namespace VLK::Threading
