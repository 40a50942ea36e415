#ifndef TESTS_VLK_THREAD_POOL_POOL_UNDER_TEST_H
#define TESTS_VLK_THREAD_POOL_POOL_UNDER_TEST_H

#include <atomic>
#include <functional>
#include <mutex>
#include <vector>

#include "VLK/Foundation.h"
#include "VLK/ThreadPool.h"
#include "VLK/Waiter.h"

/// A pool that shows its state.
class CPoolUnderTest : public VLK::Threading::CThreadPool {
public:
    struct SState {
        unsigned int threads, idle;                  ///< the counts
        std::size_t idleQueue, running, ended, jobs; ///< the lengths of the queues
        bool operator==(SState const &) const = default;
    };

    SState State()
    {
        VLK::Threading::CSyncGuard guard;
        m_Lock.Enter(guard);
        return {m_uThreads, m_uIdleThreads, Length(m_Idle), Length(m_Running), Length(m_Ended), Length(m_Jobs)};
    }
    bool IsClosed() const { return m_uStopReq != 0; }

    using CThreadPool::m_Lock;
    using CThreadPool::Run;

private:
    template <class T>
    static std::size_t Length(VLK::Misc::TDoubleLinkHead<T> const & queue)
    {
        std::size_t length = 0;
        for (T const * object = queue.First(); object != nullptr; object = queue.Next(*object))
            ++length;
        return length;
    }
};

inline void PrintTo(CPoolUnderTest::SState const & state, std::ostream * out)
{
    *out << "threads " << state.threads << ", idle " << state.idle << "; idle queue " << state.idleQueue << ", running "
         << state.running << ", ended " << state.ended << ", jobs " << state.jobs;
}

/// Jobs that stay until they are let go.
class CHeldJobs {
public:
    CHeldJobs()
    {
        m_Entered.Init(0, 0x7FFFFFFF);
        m_Go.Init(/*initialState=*/false, /*manualReset=*/true);
        m_GoOne.Init(0, 0x7FFFFFFF);
    }

    /// Enqueues one that also does `work` when it has been let go.
    void Enqueue(
        VLK::Threading::CThreadPool & pool, std::function<void()> work = [] {})
    {
        ASSERT_EQ(VLK::URET_OK, pool.Enqueue(DelegateOf([this, work] {
            m_Entered.Release();
            VLK::Threading::CWaiter waiter;
            waiter << m_Go << m_GoOne;
            waiter.Wait(kDeadlineMs, /*all=*/false);
            work();
        })));
    }
    void AwaitEntered(int count)
    {
        for (int i = 0; i < count; ++i)
            ASSERT_EQ(VLK::URET_OK, m_Entered.Wait(kDeadlineMs));
    }
    void LetOneGo() { m_GoOne.Release(); }
    void LetAllGo() { m_Go.Set(); }

private:
    VLK::Threading::CSemaphore m_Entered;
    VLK::Threading::CEvent m_Go;
    VLK::Threading::CSemaphore m_GoOne;
};

#endif
