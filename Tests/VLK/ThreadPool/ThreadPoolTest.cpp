#include "VLK/ThreadPool.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <future>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "Platform/Thread.h"
#include "PoolUnderTest.h"
#include "RecordedTrace.h"
#include "Support/AllocationFault.h"
#include "Support/MatchesPattern.h"
#include "VLK/ThreadCB.h"
#include "VLK/WaitableCall.h"
#include "VLK/Waiter.h"

using namespace VLK;
using namespace VLK::Threading;
using Delegates_and_Calls::CDelegate;
using Exceptions::CThrowState;
using Internals::CThreadCB;
using SState = CPoolUnderTest::SState;

namespace {

constexpr unsigned int Forever = 0xFFFFFFFF;
constexpr char RunFunction[] = "VLK::Threading::CThreadPool::CPoolThread::Run";
constexpr char StopFunction[] = "VLK::Threading::CThreadPool::Stop";

void RaiseOutOfBounds()
{
    CThrowState state;
    try {
        VLK_RAISE(state, Errors::IndexOutOfBounds);
    }
    VLK_THROW_NEXT_VOID(state)
}

/// Runs the function as a job and waits for its end.
template <class TFunction>
void RunAsJob(CThreadPool & pool, TFunction && function)
{
    CEvent done;
    done.Init(false, false);
    ASSERT_EQ(URET_OK, pool.Enqueue(DelegateOf([&] {
        function();
        done.Set();
    })));
    ASSERT_EQ(URET_OK, done.Wait(kDeadlineMs));
}

/// Waits until the pool is in the state, and shows where it stays otherwise.
void ExpectState(CPoolUnderTest & pool, SState const & state)
{
    HoldsWithin(kDeadline, [&] { return pool.State() == state; });
    EXPECT_EQ(state, pool.State());
}

bool AwaitIdle(CPoolUnderTest & pool, std::size_t count)
{
    return HoldsWithin(kDeadline, [&] { return pool.State().idleQueue == count; });
}

} // namespace

class ThreadPoolTest : public CFoundationTest {
protected:
    CHeldJobs m_Held; ///< outlives the pool, whose end waits for jobs
    CPoolUnderTest m_Pool;
};

TEST_F(ThreadPoolTest, EnqueueOnAClosedPoolRaisesNotInitialized)
{
    bool ran = false;
    EXPECT_EQ(Errors::PoolNotInitialized, RaisedBy([&] { m_Pool.Enqueue(DelegateOf([&] { ran = true; })); }));
    EXPECT_FALSE(ran);
}

TEST_F(ThreadPoolTest, WithThrowingDisabledAFailureIsAResult)
{
    CThrowState state;
    state.DisableThrow();
    EXPECT_EQ(URET_Error, m_Pool.Enqueue(CDelegate()));
    EXPECT_EQ(Errors::PoolNotInitialized, CCurrentThread().GetErrorLog().GetError());
}

TEST_F(ThreadPoolTest, InitOfAnOpenPoolRaisesAlreadyInitializedAndChangesNothing)
{
    EXPECT_EQ(URET_OK, m_Pool.Init(0, 1, Forever));
    EXPECT_EQ(Errors::PoolAlreadyInitialized, RaisedBy([&] { m_Pool.Init(5, 50, 0); }));
    for (int i = 0; i < 3; ++i)
        m_Held.Enqueue(m_Pool);
    EXPECT_EQ((SState{2, 0, 0, 2, 0, 1}), m_Pool.State());
    m_Held.LetAllGo();
}

TEST_F(ThreadPoolTest, RunsAJobOnAThreadOfTheFoundation)
{
    m_Pool.Init(0, 0, Forever);
    RunAsJob(m_Pool, [caller = CCurrentThread().GetThreadID()] {
        EXPECT_NE(caller, CCurrentThread().GetThreadID());
        EXPECT_EQ(InterruptAll, CCurrentThread().GetInterruptMask());
    });
}

TEST_F(ThreadPoolTest, ANullJobRunsNothing)
{
    m_Pool.Init(0, 0, Forever);
    EXPECT_EQ(URET_OK, m_Pool.Enqueue(CDelegate()));
    ExpectState(m_Pool, {1, 1, 1, 0, 0, 0});
}

TEST_F(ThreadPoolTest, AJobGoesToTheIdleThread)
{
    m_Pool.Init(0, 0, Forever);
    unsigned int ids[2] = {};
    for (unsigned int & id : ids) {
        RunAsJob(m_Pool, [&] { id = CCurrentThread().GetThreadID(); });
        ASSERT_TRUE(AwaitIdle(m_Pool, 1));
    }
    EXPECT_EQ(ids[0], ids[1]);
    EXPECT_EQ((SState{1, 1, 1, 0, 0, 0}), m_Pool.State());
}

TEST_F(ThreadPoolTest, TheThreadThatHasBeenIdleLongestComesFirst)
{
    m_Pool.Init(3, 0, Forever);
    std::vector<unsigned int> idle;
    for (int i = 0; i < 3; ++i)
        m_Held.Enqueue(m_Pool, [&] { idle.push_back(CCurrentThread().GetThreadID()); });
    m_Held.AwaitEntered(3);
    for (std::size_t i = 1; i <= 3; ++i) {
        m_Held.LetOneGo();
        ASSERT_TRUE(AwaitIdle(m_Pool, i));
    }
    std::vector<unsigned int> taken;
    for (int i = 0; i < 3; ++i) {
        ASSERT_EQ(URET_OK, m_Pool.Enqueue(DelegateOf([&] { taken.push_back(CCurrentThread().GetThreadID()); })));
        ASSERT_TRUE(AwaitIdle(m_Pool, 3));
    }
    EXPECT_EQ(idle, taken);
}

TEST_F(ThreadPoolTest, OneThreadBeyondTheMaximumIsMadeBeforeJobsQueueUp)
{
    m_Pool.Init(0, 2, Forever);
    for (unsigned int i = 1; i <= 3; ++i) {
        m_Held.Enqueue(m_Pool);
        EXPECT_EQ((SState{i, 0, 0, i, 0, 0}), m_Pool.State());
    }
    m_Held.Enqueue(m_Pool);
    EXPECT_EQ((SState{3, 0, 0, 3, 0, 1}), m_Pool.State());
    m_Held.LetAllGo();
    m_Held.AwaitEntered(4);
}

TEST_F(ThreadPoolTest, QueuedJobsRunInTheirOrderOnTheNextFreeThread)
{
    m_Pool.Init(0, 1, Forever);
    m_Held.Enqueue(m_Pool);
    m_Held.Enqueue(m_Pool);
    m_Held.AwaitEntered(2);
    std::vector<int> order;
    for (int i = 0; i < 5; ++i)
        m_Pool.Enqueue(DelegateOf([&order, i] { order.push_back(i); }));
    EXPECT_EQ((SState{2, 0, 0, 2, 0, 5}), m_Pool.State());
    m_Held.LetOneGo();
    ASSERT_TRUE(AwaitIdle(m_Pool, 1));
    EXPECT_EQ((std::vector<int>{0, 1, 2, 3, 4}), order);
    EXPECT_EQ((SState{2, 1, 1, 1, 0, 0}), m_Pool.State());
    m_Held.LetAllGo();
}

TEST_F(ThreadPoolTest, WithoutALimitEveryJobFindsAThread)
{
    m_Pool.Init(0, 0, Forever);
    for (int i = 0; i < 20; ++i)
        m_Held.Enqueue(m_Pool);
    m_Held.AwaitEntered(20);
    EXPECT_EQ((SState{20, 0, 0, 20, 0, 0}), m_Pool.State());
    m_Held.LetAllGo();
}

TEST_F(ThreadPoolTest, AnIdleThreadEndsWhenItsTimeIsOver)
{
    m_Pool.Init(0, 0, /*idleTime=*/1);
    RunAsJob(m_Pool, [] {});
    ExpectState(m_Pool, {0, 0, 0, 0, 1, 0});
}

TEST_F(ThreadPoolTest, WithAMinimumOfNoneTheSecondToFinishEndsAtOnce)
{
    m_Pool.Init(0, 0, Forever);
    m_Held.Enqueue(m_Pool);
    m_Held.Enqueue(m_Pool);
    m_Held.AwaitEntered(2);
    m_Held.LetOneGo();
    ASSERT_TRUE(AwaitIdle(m_Pool, 1)); // 0 is not above 0
    m_Held.LetOneGo();
    ExpectState(m_Pool, {1, 1, 1, 0, 1, 0}); // but 1 is
}

TEST_F(ThreadPoolTest, OneIdleThreadMoreThanTheMinimumStays)
{
    m_Pool.Init(2, 0, Forever);
    for (int i = 0; i < 5; ++i)
        m_Held.Enqueue(m_Pool);
    m_Held.AwaitEntered(5);
    m_Held.LetAllGo();
    ExpectState(m_Pool, {3, 3, 3, 0, 2, 0});
}

TEST_F(ThreadPoolTest, TheIdleCountIsTooHighUntilAThreadThatGotAJobWakes)
{
    m_Pool.Init(0, 0, Forever);
    RunAsJob(m_Pool, [] {});
    ASSERT_TRUE(AwaitIdle(m_Pool, 1));
    {
        CSyncGuard guard; // the thread can't count itself out as long as this is held
        m_Pool.m_Lock.Enter(guard);
        m_Held.Enqueue(m_Pool);
        EXPECT_EQ((SState{1, 1, 0, 1, 0, 0}), m_Pool.State());
    }
    m_Held.AwaitEntered(1);
    EXPECT_EQ((SState{1, 0, 0, 1, 0, 0}), m_Pool.State());
    m_Held.LetAllGo();
}

TEST_F(ThreadPoolTest, AThreadWhoseEventIsSetBetweenTimeOutAndLockTakesTheJob)
{
    std::promise<void> timedOut, enqueued;
    std::atomic<bool> once{false};
    CRecordedTrace const trace(TraceEvents, [&](std::string const & text) {
        if (text != "After Wait()=130" || once.exchange(true)) return;
        timedOut.set_value(); // the thread is in front of the lock
        enqueued.get_future().wait_for(kDeadline);
    });
    m_Pool.Init(0, 0, /*idleTime=*/1);
    unsigned int ids[2] = {};
    RunAsJob(m_Pool, [&] { ids[0] = CCurrentThread().GetThreadID(); });
    ASSERT_EQ(std::future_status::ready, timedOut.get_future().wait_for(kDeadline));
    m_Pool.SetIdleTime(Forever);
    CEvent done;
    done.Init(false, false);
    EXPECT_EQ(URET_OK, m_Pool.Enqueue(DelegateOf([&] {
        ids[1] = CCurrentThread().GetThreadID();
        done.Set();
    })));
    enqueued.set_value();
    ASSERT_EQ(URET_OK, done.Wait(kDeadlineMs));
    EXPECT_EQ(ids[0], ids[1]);
    ExpectState(m_Pool, {1, 1, 1, 0, 0, 0});
    EXPECT_FALSE(CRecordedTrace::Has(RunFunction, "Timeout - leave for() loop"));
}

TEST_F(ThreadPoolTest, SetIdleTimeHoldsFromTheNextWaitOn)
{
    m_Pool.Init(0, 0, Forever);
    RunAsJob(m_Pool, [] {});
    ASSERT_TRUE(AwaitIdle(m_Pool, 1));
    EXPECT_EQ(URET_OK, m_Pool.SetIdleTime(1));
    EXPECT_EQ((SState{1, 1, 1, 0, 0, 0}), m_Pool.State());
    RunAsJob(m_Pool, [] {});
    ExpectState(m_Pool, {0, 0, 0, 0, 1, 0});
}

TEST_F(ThreadPoolTest, AnEndedThreadIsDeletedByALaterEnqueue)
{
    m_Pool.Init(0, 0, /*idleTime=*/1);
    RunAsJob(m_Pool, [] {});
    ExpectState(m_Pool, {0, 0, 0, 0, 1, 0});
    m_Pool.SetIdleTime(Forever);
    // It may still be on its way out of the lock at the first.
    EXPECT_TRUE(HoldsWithin(kDeadline, [&] {
        m_Pool.Enqueue(CDelegate());
        return m_Pool.State().ended == 0;
    }));
}

TEST_F(ThreadPoolTest, AJobIsDestroyedWhenItIsDoneAndOutsideTheLock)
{
    struct SProbe {
        CPoolUnderTest & pool;
        CEvent & gone;
        bool & held;
        ~SProbe()
        {
            // Another thread gets the lock while the job is destroyed.
            RunToItsEnd([this] {
                CSyncGuard guard;
                held = pool.m_Lock.TryEnter(guard) == URET_Timeout;
            });
            gone.Set();
        }
    };
    CEvent gone;
    gone.Init(false, false);
    bool held = true;
    m_Pool.Init(0, 0, Forever);
    m_Pool.Enqueue(DelegateOf([probe = std::make_shared<SProbe>(m_Pool, gone, held)] {}));
    ASSERT_EQ(URET_OK, gone.Wait(kDeadlineMs));
    EXPECT_FALSE(held);
}

TEST_F(ThreadPoolTest, AJobMayEnqueueAnother)
{
    m_Pool.Init(0, 0, Forever);
    CEvent done;
    done.Init(false, false);
    RunAsJob(m_Pool, [&] { m_Pool.Enqueue(DelegateOf([&] { done.Set(); })); });
    EXPECT_EQ(URET_OK, done.Wait(kDeadlineMs));
}

TEST_F(ThreadPoolTest, AJobLeavesNoInterruptBehind)
{
    CWaitInterrupt interrupt;
    interrupt.Init();
    interrupt.Set();
    m_Pool.Init(0, 0, Forever);
    unsigned int ids[2] = {};
    RunAsJob(m_Pool, [&] {
        CCurrentThread current;
        ids[0] = current.GetThreadID();
        current.SetWaitInterrupt(interrupt); // pending at once
        current.SetInterruptMask(InterruptCancel);
    });
    ASSERT_TRUE(AwaitIdle(m_Pool, 1));
    RunAsJob(m_Pool, [&] {
        CCurrentThread current;
        ids[1] = current.GetThreadID();
        EXPECT_EQ(InterruptAll, current.GetInterruptMask());
        EXPECT_EQ(URET_OK, current.CheckInterrupt());
        EXPECT_EQ(nullptr, CWaitHandle(current.SetWaitInterrupt(nullptr)).Block());
    });
    EXPECT_EQ(ids[0], ids[1]);
}

TEST_F(ThreadPoolTest, RunPassesOnWhatTheJobRaises)
{
    CDelegate job = DelegateOf(&RaiseOutOfBounds);
    EXPECT_EQ(Errors::IndexOutOfBounds, RaisedBy([&] { m_Pool.Run(job); }));
}

TEST_F(ThreadPoolTest, AJobThatRaisesEndsItsThreadAndNothingElse)
{
    CRecordedTrace const trace(TraceErrors);
    m_Pool.Init(0, 0, Forever);
    m_Held.Enqueue(m_Pool);
    m_Held.AwaitEntered(1);
    m_Pool.Enqueue(DelegateOf(&RaiseOutOfBounds));
    ExpectState(m_Pool, {1, 0, 0, 1, 1, 0});
    m_Pool.Enqueue(DelegateOf([] { throw std::runtime_error("foreign"); }));
    EXPECT_TRUE(HoldsWithin(kDeadline, [&] { return m_Pool.State().running == 1; }));
    m_Held.LetAllGo();
    RunAsJob(m_Pool, [] {});
    EXPECT_EQ(URET_OK, m_Pool.Stop());
    EXPECT_EQ(2u, CRecordedTrace::TextsOf("TraceEnd").size()); // what any thread says that an exception ends
}

TEST_F(ThreadPoolTest, QueuedJobsDoNotWaitForThreadsThatExceptionsEnded)
{
    m_Pool.Init(0, 1, Forever);
    for (int i = 0; i < 4; ++i)
        m_Held.Enqueue(m_Pool, &RaiseOutOfBounds);
    m_Held.AwaitEntered(2);
    CEvent done;
    done.Init(false, false);
    m_Pool.Enqueue(DelegateOf([&] { done.Set(); }));
    EXPECT_EQ((SState{2, 0, 0, 2, 0, 3}), m_Pool.State());
    m_Held.LetAllGo();
    EXPECT_EQ(URET_OK, done.Wait(kDeadlineMs));
}

TEST_F(ThreadPoolTest, StopOfAPoolWithoutThreadsLeavesItOpen)
{
    m_Pool.Init(0, 0, Forever);
    EXPECT_EQ(URET_OK, m_Pool.Stop());
    EXPECT_FALSE(m_Pool.IsClosed());
    RunAsJob(m_Pool, [] {});
}

TEST_F(ThreadPoolTest, StopOfAClosedPoolReturnsAtOnce)
{
    EXPECT_EQ(URET_OK, m_Pool.Stop());
    EXPECT_TRUE(m_Pool.IsClosed());
}

TEST_F(ThreadPoolTest, StopEndsIdleThreadsBeforeTheirTimeAndInitOpensThePoolAgain)
{
    for (int round = 0; round < 3; ++round) {
        ASSERT_EQ(URET_OK, m_Pool.Init(4, 0, Forever));
        CHeldJobs held;
        for (int i = 0; i < 5; ++i)
            held.Enqueue(m_Pool);
        held.AwaitEntered(5);
        held.LetAllGo();
        ASSERT_TRUE(AwaitIdle(m_Pool, 5));
        EXPECT_EQ(URET_OK, m_Pool.Stop());
        EXPECT_EQ((SState{0, 0, 0, 0, 0, 0}), m_Pool.State());
        EXPECT_EQ(Errors::PoolNotInitialized, RaisedBy([&] { m_Pool.Enqueue(CDelegate()); }));
        EXPECT_EQ(URET_OK, m_Pool.Stop());
    }
}

TEST_F(ThreadPoolTest, StopWaitsForTheJobThatRuns)
{
    m_Pool.Init(0, 0, Forever);
    std::atomic<bool> done{false};
    m_Held.Enqueue(m_Pool, [&] { done = true; });
    m_Held.AwaitEntered(1);
    CThread stopping;
    bool doneAtTheEnd = false;
    StartThread(stopping, [&] {
        m_Pool.Stop();
        doneAtTheEnd = done;
    });
    ASSERT_TRUE(HoldsWithin(kDeadline, [&] { return m_Pool.IsClosed(); }));
    m_Held.LetAllGo();
    ASSERT_EQ(URET_OK, stopping.Wait(kDeadlineMs));
    EXPECT_TRUE(doneAtTheEnd);
}

TEST_F(ThreadPoolTest, EnqueueAndInitWhileAStopIsUnderWayRaise)
{
    m_Pool.Init(0, 0, Forever);
    m_Held.Enqueue(m_Pool);
    CThread stopping;
    StartThread(stopping, [&] { m_Pool.Stop(); });
    ASSERT_TRUE(HoldsWithin(kDeadline, [&] { return m_Pool.IsClosed(); }));
    EXPECT_EQ(Errors::PoolNotInitialized, RaisedBy([&] { m_Pool.Enqueue(CDelegate()); }));
    EXPECT_EQ(Errors::PoolAlreadyInitialized, RaisedBy([&] { m_Pool.Init(0, 0, 0); }));
    EXPECT_EQ(URET_OK, m_Pool.Stop()); // a second one doesn't wait
    m_Held.LetAllGo();
    ASSERT_EQ(URET_OK, stopping.Wait(kDeadlineMs));
    EXPECT_EQ(URET_OK, m_Pool.Init(0, 0, Forever));
}

TEST_F(ThreadPoolTest, StopIsContentWithTheFirstOfTheRunningThreadsToEnd)
{
    m_Pool.Init(0, 0, Forever);
    m_Held.Enqueue(m_Pool);
    m_Held.Enqueue(m_Pool);
    m_Held.AwaitEntered(2);
    CThread stopping;
    StartThread(stopping, [&] { m_Pool.Stop(); });
    ASSERT_TRUE(HoldsWithin(kDeadline, [&] { return m_Pool.IsClosed(); }));
    m_Held.LetOneGo();
    ASSERT_EQ(URET_OK, stopping.Wait(kDeadlineMs));
    EXPECT_EQ((SState{1, 0, 0, 1, 0, 0}), m_Pool.State());
    // The other one belongs to the pool again, should that be opened before its job is done.
    EXPECT_EQ(URET_OK, m_Pool.Init(0, 0, Forever));
    m_Held.LetAllGo();
    ExpectState(m_Pool, {1, 1, 1, 0, 0, 0});
}

TEST_F(ThreadPoolTest, JobsThatAStopLeavesInTheQueueRunAfterTheNextInit)
{
    m_Pool.Init(0, 1, Forever);
    m_Held.Enqueue(m_Pool);
    m_Held.Enqueue(m_Pool);
    m_Held.AwaitEntered(2);
    bool ran = false;
    CEvent done;
    done.Init(false, false);
    m_Pool.Enqueue(DelegateOf([&] {
        ran = true;
        done.Set();
    }));
    CThread stopping;
    StartThread(stopping, [&] { m_Pool.Stop(); });
    ASSERT_TRUE(HoldsWithin(kDeadline, [&] { return m_Pool.IsClosed(); }));
    m_Held.LetAllGo();
    ASSERT_EQ(URET_OK, stopping.Wait(kDeadlineMs));
    ASSERT_TRUE(HoldsWithin(kDeadline, [&] { return m_Pool.State().threads == 0; }));
    EXPECT_FALSE(ran);
    EXPECT_EQ(1u, m_Pool.State().jobs);
    m_Pool.Init(0, 1, Forever);
    m_Pool.Enqueue(CDelegate());
    EXPECT_EQ(URET_OK, done.Wait(kDeadlineMs));
}

TEST_F(ThreadPoolTest, StopCancelsNoMoreThanAHundredIdleThreads)
{
    constexpr std::size_t count = 101;
    CRecordedTrace const trace(TraceEvents);
    m_Pool.Init(count, 0, Forever);
    std::atomic<std::size_t> filled{0};
    std::vector<CThreadCB *> blocks(count);
    for (std::size_t i = 0; i < count; ++i)
        m_Held.Enqueue(m_Pool, [&] { blocks[filled++] = CThreadCB::GetCurrent(); });
    m_Held.AwaitEntered(count);
    m_Held.LetAllGo();
    ASSERT_TRUE(AwaitIdle(m_Pool, count));
    CThread stopping;
    StartThread(stopping, [&] { m_Pool.Stop(); });
    // The last one waits on, as its idle time never ends, and Stop with it.
    EXPECT_TRUE(HoldsWithin(kDeadline, [&] { return m_Pool.State().threads == 1; }));
    EXPECT_EQ(1u, m_Pool.State().idleQueue);
    ASSERT_TRUE(HoldsWithin(kDeadline, [] {
        std::vector<std::string> const texts = CRecordedTrace::TextsOf(StopFunction);
        return !texts.empty() && texts.back().find("Wait for idle thread: Thread-ID=0x") == 0;
    }));
    EXPECT_TRUE(CRecordedTrace::Has(StopFunction, "After pThread->m_Thread.Cancel() endless loop detected"));
    EXPECT_EQ(URET_Timeout, stopping.Wait(0));
    for (CThreadCB * const block : blocks) {
        block->Cancel();
        CThreadCB::Drop(block);
    }
    EXPECT_EQ(URET_OK, stopping.Wait(kDeadlineMs));
    EXPECT_EQ((SState{0, 0, 0, 0, 0, 0}), m_Pool.State());
}

TEST_F(ThreadPoolTest, AnInterruptBreaksStopAndThePoolIsClosedAllTheSame)
{
    m_Pool.Init(0, 0, Forever);
    m_Held.Enqueue(m_Pool);
    m_Held.AwaitEntered(1);
    std::uint32_t raised = 0;
    CThread stopping;
    StartThread(stopping, [&] { raised = RaisedBy([&] { m_Pool.Stop(); }); });
    ASSERT_TRUE(HoldsWithin(kDeadline, [&] { return m_Pool.IsClosed(); }));
    stopping.Cancel();
    ASSERT_EQ(URET_OK, stopping.Wait(kDeadlineMs));
    EXPECT_EQ(Errors::ThreadInterrupt, raised);
    EXPECT_EQ(Errors::PoolNotInitialized, RaisedBy([&] { m_Pool.Enqueue(CDelegate()); }));
    EXPECT_EQ(URET_OK, m_Pool.Init(0, 0, Forever));
    m_Held.LetAllGo();
    ExpectState(m_Pool, {1, 1, 1, 0, 0, 0});
}

TEST_F(ThreadPoolTest, ACancelledThreadRunsTheJobThatItGotMeanwhileAndEnds)
{
    m_Pool.Init(0, 0, Forever);
    RunAsJob(m_Pool, [] {});
    ASSERT_TRUE(AwaitIdle(m_Pool, 1));
    CWaitInterrupt interrupt;
    interrupt.Init();
    interrupt.Set();
    CEvent done;
    done.Init(false, false);
    std::uint32_t raised = 1;
    RunToItsEnd([&] {
        CSyncGuard guard; // so that the thread can't end before it gets the job
        m_Pool.m_Lock.Enter(guard);
        CCurrentThread().SetWaitInterrupt(interrupt);
        EXPECT_EQ(Errors::WaitInterrupt, RaisedBy([&] { m_Pool.Stop(); }));
        CCurrentThread().SetWaitInterrupt(nullptr);
        EXPECT_EQ(URET_OK, m_Pool.Init(0, 0, Forever));
        EXPECT_EQ(URET_OK, m_Pool.Enqueue(DelegateOf([&] {
            raised = RaisedBy([] { CCurrentThread().CheckInterrupt(); });
            done.Set();
        })));
        EXPECT_EQ((SState{1, 1, 0, 1, 0, 0}), m_Pool.State());
    });
    ASSERT_EQ(URET_OK, done.Wait(kDeadlineMs));
    EXPECT_EQ(0u, raised);
    ExpectState(m_Pool, {0, 0, 0, 0, 1, 0});
}

TEST_F(ThreadPoolTest, TheEndOfThePoolWaitsForRunningJobsAndDropsQueuedOnes)
{
    const auto alive = std::make_shared<int>(0);
    std::atomic<int> done{0};
    bool queuedRan = false;
    CThread destroying;
    {
        auto pool = std::make_unique<CPoolUnderTest>();
        pool->Init(0, 1, Forever);
        m_Held.Enqueue(*pool, [&] { ++done; });
        m_Held.Enqueue(*pool, [&] { ++done; });
        m_Held.AwaitEntered(2);
        pool->Enqueue(DelegateOf([alive, &queuedRan] { queuedRan = true; }));
        CPoolUnderTest * const going = pool.get();
        StartThread(destroying,
                    [owned = std::make_shared<std::unique_ptr<CPoolUnderTest>>(std::move(pool))] { owned->reset(); });
        ASSERT_TRUE(HoldsWithin(kDeadline, [going] { return going->IsClosed(); }));
    }
    m_Held.LetAllGo();
    ASSERT_EQ(URET_OK, destroying.Wait(kDeadlineMs));
    EXPECT_EQ(2, done);
    EXPECT_FALSE(queuedRan);
    EXPECT_EQ(1, alive.use_count());
}

namespace {

/// What the platform has no more of.
enum class Missing { Nothing, Events, Threads };
std::atomic<Missing> g_missing{Missing::Nothing};

/// Takes a means away from the process, for a scope.
class CShortage {
public:
    explicit CShortage(Missing means) { g_missing = means; }
    ~CShortage() { g_missing = Missing::Nothing; }
    CShortage(CShortage const &) = delete;
    CShortage & operator=(CShortage const &) = delete;
};

struct SShortage {
    char const * name;
    Missing means;
    std::uint32_t raised;
};

} // namespace

class ThreadPoolWithoutMeansTest : public ThreadPoolTest, public testing::WithParamInterface<SShortage> {};

// The linker puts these in the place of the platform's functions.
#define REAL(name) __real_##name
#define WRAP(name) __wrap_##name
#define NEW_EVENT(kind) kind(_ZN8Platform8NewEventERPNS_9SWaitableEbb)
#define START_THREAD(kind) kind(_ZN8Platform11StartThreadERPNS_9SWaitableERjPDoFjPvES4_jb)

extern "C" {

Platform::ErrorCode NEW_EVENT(REAL)(Platform::WaitHandle & out, bool initialState, bool manualReset) noexcept;
Platform::ErrorCode NEW_EVENT(WRAP)(Platform::WaitHandle & out, bool initialState, bool manualReset) noexcept
{
    if (g_missing == Missing::Events) return Platform::ErrorNotSupported();
    return NEW_EVENT(REAL)(out, initialState, manualReset);
}

Platform::ErrorCode START_THREAD(REAL)(Platform::WaitHandle & out, std::uint32_t & id, Platform::ThreadEntry entry,
                                       void * argument, std::uint32_t stackBytes, bool suspended) noexcept;
Platform::ErrorCode START_THREAD(WRAP)(Platform::WaitHandle & out, std::uint32_t & id, Platform::ThreadEntry entry,
                                       void * argument, std::uint32_t stackBytes, bool suspended) noexcept
{
    if (g_missing == Missing::Threads) return Platform::ErrorNotSupported();
    return START_THREAD(REAL)(out, id, entry, argument, stackBytes, suspended);
}
}

TEST_P(ThreadPoolWithoutMeansTest, AJobThatFindsNoThreadIsNotTaken)
{
    const auto alive = std::make_shared<int>(0);
    m_Pool.Init(0, 0, Forever);
    {
        CShortage const shortage(GetParam().means);
        EXPECT_EQ(GetParam().raised, RaisedBy([&] { m_Pool.Enqueue(DelegateOf([alive] { ++*alive; })); }));
    }
    EXPECT_EQ((SState{0, 0, 0, 0, 0, 0}), m_Pool.State());
    EXPECT_EQ(1, alive.use_count());
    EXPECT_EQ(0, *alive);
    RunAsJob(m_Pool, [] {});
}

INSTANTIATE_TEST_SUITE_P(Shortages, ThreadPoolWithoutMeansTest,
                         testing::Values(SShortage{"NoEventForTheWakeUp", Missing::Events, Errors::SyncCreate},
                                         SShortage{"NoThread", Missing::Threads, Errors::ThreadStart}),
                         [](const auto & test) { return std::string(test.param.name); });

namespace {

/// Enqueues `job` with each allocation of that failing in turn, until none is left to fail; `check` looks at the pool
/// after each failure. Returns how many there were.
template <class TCheck>
unsigned int SweepAllocations(CPoolUnderTest & pool, CDelegate const & job, TCheck const & check)
{
    for (unsigned int n = 1; n < 100; ++n) {
        SCOPED_TRACE("allocation " + std::to_string(n));
        bool fired = false;
        std::uint32_t const raised = RaisedBy([&] {
            CAllocationFault const fault(n);
            struct SFired {
                ~SFired() { fired = fault.Fired(); }
                CAllocationFault const & fault;
                bool & fired;
            } const tell{fault, fired};
            pool.Enqueue(job);
        });
        if (!fired) {
            EXPECT_EQ(0u, raised);
            return n - 1;
        }
        EXPECT_THAT(raised, testing::AnyOf(Errors::OutOfMemory, Errors::SyncCreate, Errors::ThreadStart))
            << std::hex << raised;
        check();
    }
    ADD_FAILURE() << "no end of allocations";
    return 0;
}

} // namespace

TEST_F(ThreadPoolTest, AJobForWhoseThreadThereIsNoMemoryIsNotTaken)
{
    const auto calls = std::make_shared<std::atomic<int>>(0);
    CDelegate const job = DelegateOf([calls] { ++*calls; });
    m_Pool.Init(0, 0, Forever);
    EXPECT_LT(2u, SweepAllocations(m_Pool, job, [&] { // the thread's object, what it waits for and what it runs
                  EXPECT_EQ((SState{0, 0, 0, 0, 0, 0}), m_Pool.State());
                  EXPECT_EQ(2, calls.use_count()); // the caller's own
              }));
    ExpectState(m_Pool, {1, 1, 1, 0, 0, 0});
    EXPECT_EQ(1, *calls);
}

TEST_F(ThreadPoolTest, AJobThatCannotBeQueuedForWantOfMemoryIsNotTaken)
{
    const auto calls = std::make_shared<std::atomic<int>>(0);
    m_Pool.Init(0, 1, Forever);
    m_Held.Enqueue(m_Pool);
    m_Held.Enqueue(m_Pool);
    m_Held.AwaitEntered(2);
    CDelegate const job = DelegateOf([calls] { ++*calls; });
    EXPECT_EQ(1u, SweepAllocations(m_Pool, job, [&] {
                  EXPECT_EQ((SState{2, 0, 0, 2, 0, 0}), m_Pool.State());
                  EXPECT_EQ(2, calls.use_count());
              }));
    EXPECT_EQ((SState{2, 0, 0, 2, 0, 1}), m_Pool.State());
    m_Held.LetAllGo();
    ExpectState(m_Pool, {1, 1, 1, 0, 1, 0});
    EXPECT_EQ(1, *calls);
}

TEST_F(ThreadPoolTest, AJobGoesToAnIdleThreadWithoutAnAllocation)
{
    m_Pool.Init(0, 0, Forever);
    RunAsJob(m_Pool, [] {});
    ASSERT_TRUE(AwaitIdle(m_Pool, 1));
    EXPECT_EQ(0u, SweepAllocations(m_Pool, DelegateOf([] {}), [] {}));
}

TEST_F(ThreadPoolTest, AWaitableCallWithoutAnEventRaisesAndIsNull)
{
    Delegates_and_Calls::TDelegate<Delegates_and_Calls::CWaitableCall> call;
    const auto alive = std::make_shared<int>(0);
    {
        CShortage const shortage(Missing::Events);
        EXPECT_EQ(Errors::SyncCreate, RaisedBy([&] {
                      call = Delegates_and_Calls::TDelegate<Delegates_and_Calls::CWaitableCall>([alive] { ++*alive; });
                  }));
    }
    EXPECT_FALSE(call.IsValid());
    EXPECT_EQ(1, alive.use_count()); // the block is gone
    EXPECT_EQ(Errors::SyncNotInitialized, RaisedBy([&] { call.Wait(0); }));
}

TEST_F(ThreadPoolTest, InitThatFailsLeavesThePoolClosed)
{
    {
        CShortage const shortage(Missing::Events);
        EXPECT_EQ(Errors::SyncCreate, RaisedBy([&] { m_Pool.Init(0, 0, 0); }));
    }
    EXPECT_TRUE(m_Pool.IsClosed());
    EXPECT_EQ(URET_OK, m_Pool.Init(0, 0, 0));
}

TEST_F(ThreadPoolTest, AQueuedJobThatFindsNoThreadAfterAnExceptionWaitsForTheNext)
{
    CHeldJobs other;
    m_Pool.Init(0, 1, Forever);
    m_Held.Enqueue(m_Pool, &RaiseOutOfBounds);
    other.Enqueue(m_Pool);
    m_Held.AwaitEntered(1);
    other.AwaitEntered(1);
    CEvent done;
    done.Init(false, false);
    m_Pool.Enqueue(DelegateOf([&] { done.Set(); }));
    {
        CShortage const shortage(Missing::Events);
        m_Held.LetAllGo();
        ExpectState(m_Pool, {1, 0, 0, 1, 1, 1});
    }
    other.LetAllGo();
    EXPECT_EQ(URET_OK, done.Wait(kDeadlineMs));
}

namespace {

/// A text with the thread's number at its end, as the traces show it.
std::string With(char const * text, unsigned int thread)
{
    char whole[128];
    std::snprintf(whole, sizeof(whole), "%s0x%x", text, thread);
    return whole;
}

} // namespace

TEST_F(ThreadPoolTest, TracesTheWayOfAJob)
{
    CRecordedTrace const trace(TraceEvents);
    m_Pool.Init(1, 3, 4711000);
    unsigned int id = 0;
    RunAsJob(m_Pool, [&] {
        id = CCurrentThread().GetThreadID();
        CCurrentThread().SetThreadName("worker");
    });
    ASSERT_TRUE(AwaitIdle(m_Pool, 1));
    RunAsJob(m_Pool, [] {});
    ASSERT_TRUE(AwaitIdle(m_Pool, 1));
    ASSERT_EQ(URET_OK, m_Pool.Stop());

    using Texts = std::vector<std::string>;
    EXPECT_EQ((Texts{"Enter CThreadPool::Enqueue", "Before m_Lock.Enter(SG)", "After m_Lock.Enter(SG)",
                     "We have following threads: act=0 max=3",
                     With("Create new pool thread: Thread-ID=", id) + " act=1 max=3",
                     With("Add thread: Thread-ID=", id) + " to running queue and wake up to run",
                     "LEAVE CThreadPool::Enqueue", //
                     "Enter CThreadPool::Enqueue", "Before m_Lock.Enter(SG)", "After m_Lock.Enter(SG)",
                     With("Unlink idle thread: Thread-ID=", id),
                     With("Add thread: Thread-ID=", id) + " to running queue and wake up to run",
                     "LEAVE CThreadPool::Enqueue"}),
              CRecordedTrace::TextsOf("VLK::Threading::CThreadPool::Enqueue"));
    Texts const job = {"Before m_Pool.Run()", "After m_Pool.Run()", "Run () - Thread (worker) arbeitslos",
                       With("Move running thread: Thread-ID=", id) + " to idle queue"};
    Texts run = {"ENTER CThreadPool::CPoolThread::Run()", "", "Before Wait(4711000)", "After Wait()=1"};
    run.insert(run.end(), job.begin(), job.end());
    Texts const again = {"Threads=1, Idle=1", "Before Wait(4711000)", "After Wait()=1",
                         With("Move idle thread: Thread-ID=", id) + " to running queue"};
    run.insert(run.end(), again.begin(), again.end());
    run.insert(run.end(), job.begin(), job.end());
    Texts const end = {"Threads=1, Idle=1", "Before Wait(4711000)",
                       With("Move idle thread: Thread-ID=", id) + " to delete queue", "Threads=0, Idle=0, m_uStopReq=1",
                       "LEAVE CThreadPool::CPoolThread::Run()"};
    run.insert(run.end(), end.begin(), end.end());
    Texts seen = CRecordedTrace::TextsOf(RunFunction);
    ASSERT_LT(1u, seen.size());
    EXPECT_THAT(seen[1], MatchesPattern("Threads=[01], Idle=0")); // Enqueue is still at its counting
    seen[1].clear();
    EXPECT_EQ(run, seen);
    EXPECT_EQ((Texts{"Pool-Thread hat einen neuen Job erhalten", "Pool-Thread hat einen neuen Job ausgeführt",
                     "Pool-Thread hat einen neuen Job erhalten", "Pool-Thread hat einen neuen Job ausgeführt"}),
              CRecordedTrace::TextsOf("VLK::Threading::CThreadPool::Run"));
}

TEST_F(ThreadPoolTest, TracesAStop)
{
    CRecordedTrace const trace(TraceEvents);
    m_Pool.Stop();
    EXPECT_EQ((std::vector<std::string>{"ENTER CThreadPool::Stop()", "LEAVE CThreadPool::Stop()"}),
              CRecordedTrace::TextsOf(StopFunction));
    m_Pool.Init(1, 0, Forever);
    unsigned int id = 0;
    RunAsJob(m_Pool, [&] { id = CCurrentThread().GetThreadID(); });
    ASSERT_TRUE(AwaitIdle(m_Pool, 1));
    m_Pool.Stop();
    std::vector<std::string> const seen = CRecordedTrace::TextsOf(StopFunction);
    EXPECT_THAT(seen,
                testing::IsSupersetOf(
                    {std::string("ENTER CThreadPool::Stop()"), std::string("LEAVE CThreadPool::Stop()"),
                     std::string("It seems that we still have 1 threads"), With("Cancel idle thread: Thread-ID=", id),
                     std::string("After pThread->m_Thread.Cancel()"), std::string("All threads are gone")}));
}

TEST_F(ThreadPoolTest, TracesQueuedJobsAndTheQueuesAtAThreadsEnd)
{
    CRecordedTrace const trace(TraceEvents);
    m_Pool.Init(0, 1, Forever);
    unsigned int ids[2] = {};
    m_Held.Enqueue(m_Pool, [&] { ids[0] = CCurrentThread().GetThreadID(); });
    m_Held.AwaitEntered(1);
    m_Held.Enqueue(m_Pool, [&] { ids[1] = CCurrentThread().GetThreadID(); });
    m_Held.AwaitEntered(1);
    m_Pool.Enqueue(CDelegate());
    m_Pool.Enqueue(CDelegate());
    EXPECT_TRUE(CRecordedTrace::Has("VLK::Threading::CThreadPool::Enqueue", "We have following threads: act=2 max=1"));
    EXPECT_TRUE(
        CRecordedTrace::Has("VLK::Threading::CThreadPool::Enqueue", "Create new queued job/thread: Thread-ID=0x0"));
    m_Held.LetOneGo();
    ASSERT_TRUE(AwaitIdle(m_Pool, 1));
    unsigned int const idle = ids[0] != 0 ? ids[0] : ids[1];
    EXPECT_TRUE(
        CRecordedTrace::Has(RunFunction, With("Delete queued job/thread: Thread-ID=", idle) + " and force to run"));
    m_Held.LetOneGo();
    ExpectState(m_Pool, {1, 1, 1, 0, 1, 0});
    unsigned int const ended = ids[0] + ids[1] - idle;
    EXPECT_TRUE(CRecordedTrace::Has(RunFunction, "m_uIdleThreads=1 > m_uMinThreads=0 - leave for() loop"));
    EXPECT_TRUE(CRecordedTrace::Has(RunFunction, With("Move running thread: Thread-ID=", ended) + " to delete queue"));
    EXPECT_TRUE(CRecordedTrace::Has(RunFunction, "Threads=1, Idle=1, m_uStopReq=0"));
    EXPECT_TRUE(CRecordedTrace::Has(RunFunction, With("Idle queue thread: [01] Thread-ID=", idle)));
    EXPECT_TRUE(CRecordedTrace::Has(RunFunction, With("Delete queue thread: [01] Thread-ID=", ended)));
}

TEST_F(ThreadPoolTest, TracesNoMoreLinesOfAQueueThanThereAreThreads)
{
    CRecordedTrace const trace(TraceEvents);
    m_Pool.Init(0, 1, Forever);
    unsigned int id = 0;
    m_Held.Enqueue(m_Pool);
    m_Held.Enqueue(m_Pool, [&] { id = CCurrentThread().GetThreadID(); });
    m_Held.AwaitEntered(2);
    for (int i = 0; i < 3; ++i)
        m_Pool.Enqueue(CDelegate());
    CThread stopping;
    StartThread(stopping, [&] { m_Pool.Stop(); });
    ASSERT_TRUE(HoldsWithin(kDeadline, [&] { return m_Pool.IsClosed(); }));
    m_Held.LetOneGo();
    ASSERT_EQ(URET_OK, stopping.Wait(kDeadlineMs));
    EXPECT_TRUE(CRecordedTrace::Has(RunFunction, "m_Pool.m_uStopReq - leave for() loop"));
    EXPECT_TRUE(CRecordedTrace::Has(RunFunction, "Threads=1, Idle=0, m_uStopReq=1"));
    EXPECT_TRUE(CRecordedTrace::Has(RunFunction, "Queued job/thread: [01] Thread-ID=0x0"));
    EXPECT_FALSE(CRecordedTrace::Has(RunFunction, "Queued job/thread: [02] Thread-ID=0x0"));
    std::vector<std::string> const texts = CRecordedTrace::TextsOf(RunFunction);
    EXPECT_EQ(1, std::count_if(texts.begin(), texts.end(), [](std::string const & text) {
                  return text.find("Running queue thread: [01] Thread-ID=0x") == 0;
              }));
    m_Held.LetAllGo();
}

TEST_F(ThreadPoolTest, TracesATimeOutAndTheDeletionOfTheEndedThread)
{
    CRecordedTrace const trace(TraceEvents);
    m_Pool.Init(0, 0, /*idleTime=*/1);
    unsigned int id = 0;
    RunAsJob(m_Pool, [&] { id = CCurrentThread().GetThreadID(); });
    ExpectState(m_Pool, {0, 0, 0, 0, 1, 0});
    std::vector<std::string> const run = CRecordedTrace::TextsOf(RunFunction);
    auto const over = std::find(run.begin(), run.end(), "Timeout - leave for() loop");
    ASSERT_LE(2, over - run.begin());
    ASSERT_NE(run.end(), over);
    EXPECT_EQ("After Wait()=130", over[-1]); // the second look is silent
    EXPECT_EQ("Before Wait(1)", over[-2]);
    m_Pool.SetIdleTime(Forever);
    EXPECT_TRUE(HoldsWithin(kDeadline, [&] {
        m_Pool.Enqueue(CDelegate());
        return CRecordedTrace::Has("VLK::Threading::CThreadPool::Enqueue", With("Delete thread: Thread-ID=", id));
    }));
}
