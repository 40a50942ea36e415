#include "VLK/Threads.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "Foundation.h"
#include "Platform/Thread.h"
#include "Support/ProcessThreads.h"
#include "VLK/Application.h"
#include "VLK/FormatStream.h"
#include "VLK/ThreadCB.h"
#include "VLK/Trace.h"
#include "VLK/Waiter.h"

using namespace VLK;
using namespace VLK::Threading;
using Delegates_and_Calls::CDelegate;
using Exceptions::CThrowState;
using Internals::CThreadCB;

class ThreadTest : public CFoundationTest {};
class CurrentThreadTest : public CFoundationTest {};
class InterruptTest : public CFoundationTest {};
class CallBackGuardTest : public testing::Test {};

TEST_F(ThreadTest, RunsTheDelegateAndIsSignalledAtItsEnd)
{
    bool ran = false;
    CThread thread;
    EXPECT_EQ(URET_OK, thread.Create(DelegateOf([&] { ran = true; }), /*suspended=*/false));
    EXPECT_EQ(URET_OK, thread.Wait(kDeadlineMs));
    EXPECT_TRUE(ran);
    EXPECT_EQ(URET_OK, thread.Wait(0)); // for good
}

TEST_F(ThreadTest, HasTheIdThatItSeesItself)
{
    unsigned int seen = 0;
    CThread thread;
    EXPECT_EQ(0u, thread.GetThreadID());
    StartThread(thread, [&] {
        seen = CCurrentThread().GetThreadID();
        EXPECT_EQ(Platform::CurrentThreadId(), seen);
    });
    EXPECT_NE(0u, thread.GetThreadID());
    ASSERT_EQ(URET_OK, thread.Wait(kDeadlineMs));
    EXPECT_EQ(thread.GetThreadID(), seen);
}

TEST_F(ThreadTest, ANullDelegateRunsNothing)
{
    CThread thread;
    EXPECT_EQ(URET_OK, thread.Create(CDelegate(), false));
    EXPECT_EQ(URET_OK, thread.Wait(kDeadlineMs));
}

TEST_F(ThreadTest, TheDelegateGoesWithTheLastReference)
{
    const auto alive = std::make_shared<int>(0);
    {
        CThread thread;
        StartThread(thread, [alive] {});
        CThread copy(thread);
        ASSERT_EQ(URET_OK, copy.Wait(kDeadlineMs));
        EXPECT_TRUE(HoldsWithin(kDeadline, [&] { return alive.use_count() == 2; }));
    }
    EXPECT_EQ(1, alive.use_count());
}

TEST_F(ThreadTest, TheObjectMayGoWhileTheThreadRuns)
{
    std::thread([] {}).join(); // what watches a program may start a thread of its own with the first one
    const std::size_t threads = ProcessThreads();
    CEvent go, done;
    go.Init(false, false);
    done.Init(false, false);
    {
        CThread thread;
        StartThread(thread, [&] {
            go.Wait(kDeadlineMs);
            done.Set();
        });
    }
    go.Set();
    EXPECT_EQ(URET_OK, done.Wait(kDeadlineMs));
    EXPECT_TRUE(HoldsWithin(kDeadline, [threads] { return ProcessThreads() == threads; }));
    // The platform lets go of such a thread at its next chance, which is the end of another.
    CThread other;
    StartThread(other, [] {});
    EXPECT_EQ(URET_OK, other.Wait(kDeadlineMs));
}

TEST_F(ThreadTest, CreateWhileTheFormerRunsRaisesStillRunning)
{
    CEvent go;
    go.Init(false, true);
    CThread thread;
    StartThread(thread, [&] { go.Wait(kDeadlineMs); });
    EXPECT_EQ(Errors::ThreadRunning, RaisedBy([&] { thread.Create(CDelegate(), false); }));
    EXPECT_EQ(Errors::ThreadRunning, RaisedBy([&] { thread.initialize(); }));
    go.Set();
    EXPECT_EQ(URET_OK, thread.Wait(kDeadlineMs));
}

TEST_F(ThreadTest, CreateAfterTheEndStartsANewThread)
{
    int runs = 0;
    CThread thread;
    for (int i = 0; i < 3; ++i) {
        StartThread(thread, [&] { ++runs; });
        ASSERT_EQ(URET_OK, thread.Wait(kDeadlineMs));
    }
    EXPECT_EQ(3, runs);
}

TEST_F(ThreadTest, SuspendedItBeginsWithResume)
{
    std::atomic<bool> ran{false};
    CThread thread;
    thread.Create(DelegateOf([&] { ran = true; }), /*suspended=*/true);
    EXPECT_EQ(URET_Timeout, thread.Wait(5));
    EXPECT_FALSE(ran);
    EXPECT_EQ(Errors::ThreadRunning, RaisedBy([&] { thread.Create(CDelegate(), false); }));
    EXPECT_EQ(URET_OK, thread.Resume());
    EXPECT_EQ(URET_OK, thread.Wait(kDeadlineMs));
    EXPECT_TRUE(ran);
}

TEST_F(ThreadTest, SuspendBeforeTheStartNeedsOneMoreResume)
{
    CThread thread;
    thread.Create(DelegateOf([] {}), true);
    EXPECT_EQ(URET_OK, thread.Suspend());
    EXPECT_EQ(URET_OK, thread.Resume());
    EXPECT_EQ(URET_Timeout, thread.Wait(5));
    EXPECT_EQ(URET_OK, thread.Resume());
    EXPECT_EQ(URET_OK, thread.Wait(kDeadlineMs));
}

TEST_F(ThreadTest, OneThatIsNeverResumedEndsWithItsLastReferenceWithoutRunning)
{
    const auto alive = std::make_shared<int>(0);
    {
        CThread thread;
        thread.Create(DelegateOf([alive] { ++*alive; }), true);
        thread.Suspend();
        thread.Resume();
    }
    EXPECT_EQ(1, alive.use_count());
    EXPECT_EQ(0, *alive);
}

TEST_F(ThreadTest, SuspendAndResumeOfAnEndedThreadRaiseAlreadyStopped)
{
    CThread thread;
    StartThread(thread, [] {});
    ASSERT_EQ(URET_OK, thread.Wait(kDeadlineMs));
    EXPECT_EQ(Errors::ThreadStopped, RaisedBy([&] { thread.Suspend(); }));
    EXPECT_EQ(Errors::ThreadStopped, RaisedBy([&] { thread.Resume(); }));
}

TEST_F(ThreadTest, InitializeGivesABlockWithoutAThread)
{
    CThread thread;
    EXPECT_EQ(URET_OK, thread.initialize());
    EXPECT_EQ(0u, thread.GetThreadID());
    EXPECT_EQ(URET_OK, thread.Cancel()); // nobody is there to hear it
    EXPECT_EQ(Errors::NoThread, RaisedBy([&] { thread.Resume(); }));
    EXPECT_EQ(Errors::NoThread, RaisedBy([&] { thread.Suspend(); }));
    EXPECT_EQ(Errors::OperatingSystem, RaisedBy([&] { thread.Wait(0); }));
    EXPECT_EQ(URET_OK, thread.initialize());
    StartThread(thread, [] {});
    EXPECT_EQ(URET_OK, thread.Wait(kDeadlineMs));
}

TEST_F(ThreadTest, AnExceptionInTheDelegateEndsTheThreadQuietly)
{
    bool behind = false;
    CThread thread;
    StartThread(thread, [&] {
        CEvent().Set();
        behind = true;
    });
    EXPECT_EQ(URET_OK, thread.Wait(kDeadlineMs));
    EXPECT_FALSE(behind);
}

TEST_F(ThreadTest, NoOtherExceptionLeavesTheThreadEither)
{
    CThread thread;
    StartThread(thread, [] { throw std::string("foreign"); });
    EXPECT_EQ(URET_OK, thread.Wait(kDeadlineMs));
    StartThread(thread, [] { throw std::bad_alloc(); });
    EXPECT_EQ(URET_OK, thread.Wait(kDeadlineMs));
}

TEST_F(ThreadTest, TheTraceOfAnExceptionAtTheEndChangesNothing)
{
    Misc::VLK_MODULE_INFO_VlkLib.SetTrcPoints(TraceErrors);
    RunToItsEnd([] { CEvent().Set(); });
    Misc::VLK_MODULE_INFO_VlkLib.SetTrcPoints(0);
}

TEST_F(ThreadTest, WithDebugWaitItRunsAndEndsAsWithout)
{
    Misc::pVlkApp->SetDebugWait(true);
    bool ran = false;
    bool behind = false;
    RunToItsEnd([&] { ran = true; });
    RunToItsEnd([&] {
        CEvent().Set();
        behind = true;
    });
    Misc::pVlkApp->SetDebugWait(false);
    EXPECT_TRUE(ran);
    EXPECT_FALSE(behind);
}

TEST_F(ThreadTest, WaitFromTheThreadItselfBlocksUntilTheTimeout)
{
    CThread thread;
    unsigned int result = 0;
    thread.Create(DelegateOf([&] { result = thread.Wait(5); }), true);
    thread.Resume();
    ASSERT_TRUE(HoldsWithin(kDeadline, [&] {
        CThrowState state;
        return thread.Wait(100) == URET_OK;
    }));
    EXPECT_EQ(URET_Timeout, result);
}

TEST_F(ThreadTest, ManyThreadsStartAndEndWithoutATrace)
{
    std::atomic<int> runs{0};
    for (int round = 0; round < 20; ++round) {
        CThread threads[8];
        for (CThread & thread : threads)
            StartThread(thread, [&] { ++runs; });
        for (CThread & thread : threads)
            ASSERT_EQ(URET_OK, thread.Wait(kDeadlineMs));
    }
    EXPECT_EQ(160, runs);
}

TEST_F(CurrentThreadTest, ANewThreadHasBothInterruptsEnabledAndDefaults)
{
    RunToItsEnd([] {
        CCurrentThread current;
        EXPECT_EQ(InterruptAll, current.GetInterruptMask());
        EXPECT_EQ(0u, current.GetLngId());
        EXPECT_EQ(0u, current.GetErrorLog().GetError());
        EXPECT_STREQ("", current.GetThreadName().C_Str());
    });
}

TEST_F(CurrentThreadTest, LanguageIdIsTheThreadsOwn)
{
    CCurrentThread current;
    current.SetLngId(25966);
    RunToItsEnd([] { EXPECT_EQ(0u, CCurrentThread().GetLngId()); });
    EXPECT_EQ(25966u, current.GetLngId());
}

TEST_F(CurrentThreadTest, TheNameIsReplacedByWhatIsStreamed)
{
    RunToItsEnd([] {
        CCurrentThread current;
        current.SetThreadName("worker %d") << 3;
        EXPECT_STREQ("worker 3", current.GetThreadName().C_Str());
        current.SetThreadName("poll");
        EXPECT_STREQ("poll", current.GetThreadName().C_Str());
        const std::string longName(200, 'n');
        current.SetThreadName("%s") << longName;
        EXPECT_EQ(longName, current.GetThreadName().C_Str());
    });
}

struct SRandom {
    char const * name;
    int seed, next;
};

class RandomTest : public testing::TestWithParam<SRandom> {};

TEST_P(RandomTest, FollowsTheSeed)
{
    CThreadCB * const block = CThreadCB::New();
    block->m_iRandomSeed = GetParam().seed;
    EXPECT_EQ(GetParam().next, block->NextRandom());
    EXPECT_EQ(GetParam().next, block->m_iRandomSeed);
    Internals::Windows::CWaitCB::Drop(block);
}

INSTANTIATE_TEST_SUITE_P(Edges, RandomTest,
                         testing::Values(SRandom{"One", 1, 16807}, SRandom{"Next", 16807, 282475249},
                                         SRandom{"Zero", 0, 0x7FFFFFFF}, SRandom{"FixedPoint", 0x7FFFFFFF, 0x7FFFFFFF},
                                         SRandom{"BelowTheModulus", 0x7FFFFFFE, 2147466840},
                                         SRandom{"Negative", -1, 2147466840},
                                         SRandom{"Lowest", -2147483647 - 1, 2147466840}),
                         [](const auto & test) { return std::string(test.param.name); });

TEST(RandomTest, TheTenThousandthNumberIsTheKnownOne)
{
    CThreadCB * const block = CThreadCB::New();
    block->m_iRandomSeed = 1;
    for (int i = 0; i < 9999; ++i)
        block->NextRandom();
    EXPECT_EQ(1043618065, block->NextRandom());
    Internals::Windows::CWaitCB::Drop(block);
}

TEST_F(CurrentThreadTest, RandomNumbersAreInRange)
{
    CCurrentThread current;
    for (int i = 0; i < 1000; ++i)
        EXPECT_GE(current.LCG_Rand(), 1);
}

TEST_F(CurrentThreadTest, SleepZeroNeverRaises)
{
    CWaitInterrupt interrupt;
    interrupt.Init();
    RunToItsEnd([&] {
        CCurrentThread current;
        current.SetWaitInterrupt(interrupt);
        interrupt.Set();
        EXPECT_EQ(URET_OK, current.Sleep(0));
        EXPECT_EQ(Errors::WaitInterrupt, RaisedBy([&] { current.CheckInterrupt(); }));
    });
}

TEST_F(CurrentThreadTest, SleepRunsOut)
{
    EXPECT_EQ(URET_OK, CCurrentThread().Sleep(1));
}

TEST_F(CurrentThreadTest, SleepIsInterruptible)
{
    CEvent entered;
    entered.Init(false, false);
    CThread thread;
    std::uint32_t raised = 0;
    StartThread(thread, [&] {
        raised = RaisedBy([&] {
            entered.Set();
            CCurrentThread().Sleep(kDeadlineMs);
        });
    });
    ASSERT_EQ(URET_OK, entered.Wait(kDeadlineMs));
    thread.Cancel();
    EXPECT_EQ(URET_OK, thread.Wait(kDeadlineMs));
    EXPECT_EQ(Errors::ThreadInterrupt, raised);
}

TEST_F(CurrentThreadTest, AWakeUpThatRaisesNothingDoesNotShortenSleep)
{
    CWaitInterrupt interrupt;
    interrupt.Init();
    RunToItsEnd([&] {
        CCurrentThread current;
        current.SetWaitInterrupt(interrupt);
        interrupt.Set(); // wakes, but is taken back before the sleep
        current.ClearInterrupt(InterruptUser);
        const CWaitInterval interval(20);
        EXPECT_EQ(URET_OK, current.Sleep(20));
        EXPECT_EQ(0u, static_cast<unsigned int>(interval));
    });
}

TEST_F(InterruptTest, AWakeUpThatRaisesNothingDoesNotShortenAWait)
{
    CWaitInterrupt interrupt;
    interrupt.Init();
    CEvent never;
    never.Init(false, false);
    RunToItsEnd([&] {
        CCurrentThread current;
        current.SetWaitInterrupt(interrupt);
        CWaiter waiter;
        waiter << never << never;
        for (const bool single : {true, false}) {
            interrupt.Set(); // wakes, but is taken back before the wait
            current.ClearInterrupt(InterruptUser);
            interrupt.Reset();
            const CWaitInterval interval(20);
            EXPECT_EQ(URET_Timeout, single ? never.Wait(20) : waiter.Wait(20, false));
            EXPECT_EQ(0u, static_cast<unsigned int>(interval));
        }
    });
}

TEST_F(InterruptTest, ManyWakeUpsThatRaiseNothingDoNotKeepAWaitFromEnding)
{
    CEvent never;
    never.Init(false, false);
    std::atomic<bool> stop{false};
    CThread thread;
    unsigned int result = 0;
    std::atomic<Platform::WakerHandle> waker{nullptr};
    StartThread(thread, [&] {
        waker = Platform::CurrentThreadWaker();
        result = never.Wait(50);
    });
    std::thread waking([&] {
        while (!stop) {
            if (Platform::WakerHandle const handle = waker) Platform::WakeThread(handle);
        }
    });
    EXPECT_EQ(URET_OK, thread.Wait(kDeadlineMs));
    stop = true;
    waking.join();
    Platform::CloseWaker(waker);
    EXPECT_EQ(URET_Timeout, result);
}

TEST_F(InterruptTest, AWakeUpThatRaisesNothingDoesNotEndAnEndlessWait)
{
    CWaitInterrupt interrupt;
    interrupt.Init();
    CEvent entered, event;
    entered.Init(false, false);
    event.Init(false, false);
    CThread thread;
    unsigned int result = 0;
    StartThread(thread, [&] {
        CCurrentThread current;
        current.SetWaitInterrupt(interrupt);
        interrupt.Set();
        current.ClearInterrupt(InterruptUser);
        entered.Set();
        result = event.Wait(Platform::Infinite);
    });
    ASSERT_EQ(URET_OK, entered.Wait(kDeadlineMs));
    EXPECT_EQ(URET_Timeout, thread.Wait(20));
    event.Set();
    EXPECT_EQ(URET_OK, thread.Wait(kDeadlineMs));
    EXPECT_EQ(URET_OK, result);
}

TEST_F(InterruptTest, CancelBreaksAWaitUnderWay)
{
    CEvent never, entered;
    never.Init(false, false);
    entered.Init(false, false);
    CThread thread;
    std::uint32_t raised = 0;
    StartThread(thread, [&] {
        entered.Set();
        raised = RaisedBy([&] { never.Wait(Platform::Infinite); });
    });
    ASSERT_EQ(URET_OK, entered.Wait(kDeadlineMs));
    EXPECT_EQ(URET_OK, thread.Cancel());
    EXPECT_EQ(URET_OK, thread.Wait(kDeadlineMs));
    EXPECT_EQ(Errors::ThreadInterrupt, raised);
}

TEST_F(InterruptTest, CancelBreaksAWaitOfSeveralObjects)
{
    CEvent never, entered;
    never.Init(false, false);
    entered.Init(false, false);
    CThread thread;
    std::uint32_t raised[2] = {};
    StartThread(thread, [&] {
        CWaiter waiter;
        waiter << never << never;
        CWaiter single;
        single << never;
        entered.Set();
        raised[0] = RaisedBy([&] { waiter.Wait(Platform::Infinite, false); });
        raised[1] = RaisedBy([&] { single.Wait(Platform::Infinite, true); });
    });
    ASSERT_EQ(URET_OK, entered.Wait(kDeadlineMs));
    thread.Cancel();
    EXPECT_EQ(URET_OK, thread.Wait(kDeadlineMs));
    EXPECT_EQ(Errors::ThreadInterrupt, raised[0]);
    EXPECT_EQ(Errors::ThreadInterrupt, raised[1]); // it stays pending
}

TEST_F(InterruptTest, APendingInterruptRaisesBeforeLookingAtASignalledObject)
{
    CEvent ready;
    ready.Init(true, false);
    CWaitInterrupt interrupt;
    interrupt.Init();
    RunToItsEnd([&] {
        CCurrentThread current;
        current.SetWaitInterrupt(interrupt);
        interrupt.Set();
        EXPECT_EQ(Errors::WaitInterrupt, RaisedBy([&] { ready.Wait(0); }));
        CWaiter waiter;
        waiter << ready;
        EXPECT_EQ(Errors::WaitInterrupt, RaisedBy([&] { waiter.Wait(0, false); }));
        current.ClearInterrupt(InterruptUser);
        EXPECT_EQ(URET_OK, ready.Wait(0)); // nobody has taken it
    });
}

TEST_F(InterruptTest, WithBothPendingTheThreadInterruptIsTheOneRaised)
{
    CEvent entered, go;
    entered.Init(false, false);
    go.Init(false, true);
    CWaitInterrupt interrupt;
    interrupt.Init();
    CThread thread;
    std::uint32_t raised[2] = {};
    StartThread(thread, [&] {
        CCurrentThread current;
        current.SetWaitInterrupt(interrupt);
        entered.Set();
        // Not through the thread's block, so that nothing is raised before both are posted.
        Platform::WaitForOne(CWaitHandle(go).Block()->GetHandle(), kDeadlineMs, /*wakeable=*/false);
        raised[0] = RaisedBy([&] { current.CheckInterrupt(); });
        current.ClearInterrupt(InterruptCancel);
        raised[1] = RaisedBy([&] { current.CheckInterrupt(); });
    });
    ASSERT_EQ(URET_OK, entered.Wait(kDeadlineMs));
    interrupt.Set();
    thread.Cancel();
    go.Set();
    EXPECT_EQ(URET_OK, thread.Wait(kDeadlineMs));
    EXPECT_EQ(Errors::ThreadInterrupt, raised[0]);
    EXPECT_EQ(Errors::WaitInterrupt, raised[1]);
}

TEST_F(InterruptTest, PendingButDisabledDoesNotRaise)
{
    CWaitInterrupt interrupt;
    interrupt.Init();
    RunToItsEnd([&] {
        CCurrentThread current;
        current.SetWaitInterrupt(interrupt);
        interrupt.Set();
        current.SetInterruptMask(InterruptCancel);
        EXPECT_EQ(URET_OK, current.CheckInterrupt());
        current.SetInterruptMask(InterruptAll);
        EXPECT_EQ(Errors::WaitInterrupt, RaisedBy([&] { current.CheckInterrupt(); }));
    });
}

TEST_F(InterruptTest, CancelOfAThreadThatDisabledItIsLostAlsoAfterEnablingAndForTheNextCancel)
{
    CEvent disabled, cancelled, enabled, again;
    for (CEvent * const event : {&disabled, &cancelled, &enabled, &again})
        event->Init(false, false);
    CThread thread;
    std::uint32_t raised[2] = {1, 1};
    StartThread(thread, [&] {
        CCurrentThread current;
        current.SetInterruptMask(0);
        disabled.Set();
        cancelled.Wait(kDeadlineMs);
        current.SetInterruptMask(InterruptAll);
        raised[0] = RaisedBy([&] { current.CheckInterrupt(); });
        enabled.Set();
        again.Wait(kDeadlineMs);
        raised[1] = RaisedBy([&] { current.CheckInterrupt(); });
    });
    ASSERT_EQ(URET_OK, disabled.Wait(kDeadlineMs));
    thread.Cancel();
    cancelled.Set();
    ASSERT_EQ(URET_OK, enabled.Wait(kDeadlineMs));
    thread.Cancel();
    again.Set();
    ASSERT_EQ(URET_OK, thread.Wait(kDeadlineMs));
    EXPECT_EQ(0u, raised[0]); // the set flag isn't copied when the thread enters the list
    EXPECT_EQ(0u, raised[1]); // and a set interrupt reaches nobody
}

TEST_F(InterruptTest, AUserInterruptThatIsSetAlreadyIsTakenOver)
{
    CWaitInterrupt interrupt;
    interrupt.Init();
    interrupt.Set();
    RunToItsEnd([&] {
        CCurrentThread current;
        current.SetWaitInterrupt(interrupt);
        EXPECT_EQ(Errors::WaitInterrupt, RaisedBy([&] { current.CheckInterrupt(); }));
        current.SetWaitInterrupt(nullptr); // takes away what is pending
        EXPECT_EQ(URET_OK, current.CheckInterrupt());
    });
}

TEST_F(InterruptTest, AClearedInterruptCanInterruptAgain)
{
    CWaitInterrupt interrupt;
    interrupt.Init();
    RunToItsEnd([&] {
        CCurrentThread current;
        current.SetWaitInterrupt(interrupt);
        interrupt.Set();
        current.ClearInterrupt(InterruptUser);
        interrupt.Set(); // it is set already
        EXPECT_EQ(URET_OK, current.CheckInterrupt());
        interrupt.Reset();
        EXPECT_EQ(URET_OK, current.CheckInterrupt());
        interrupt.Set();
        EXPECT_EQ(Errors::WaitInterrupt, RaisedBy([&] { current.CheckInterrupt(); }));
    });
}

TEST_F(InterruptTest, OneInterruptReachesAllWhoInstalledIt)
{
    constexpr int count = 4;
    CWaitInterrupt interrupt;
    interrupt.Init();
    CSemaphore entered;
    entered.Init(0, count);
    CEvent never;
    never.Init(false, true);
    std::atomic<int> raised{0};
    CThread threads[count];
    for (CThread & thread : threads)
        StartThread(thread, [&] {
            CCurrentThread().SetWaitInterrupt(interrupt);
            entered.Release();
            if (RaisedBy([&] { never.Wait(kDeadlineMs); }) == Errors::WaitInterrupt) ++raised;
        });
    for (int i = 0; i < count; ++i)
        ASSERT_EQ(URET_OK, entered.Wait(kDeadlineMs));
    interrupt.Set();
    for (CThread & thread : threads)
        EXPECT_EQ(URET_OK, thread.Wait(kDeadlineMs));
    EXPECT_EQ(count, raised);
}

TEST_F(InterruptTest, SetWaitInterruptReturnsTheFormerOne)
{
    CWaitInterrupt first, second;
    first.Init();
    second.Init();
    RunToItsEnd([&] {
        CCurrentThread current;
        EXPECT_EQ(nullptr, CWaitHandle(current.SetWaitInterrupt(first)).Block());
        EXPECT_EQ(CWaitHandle(first).Block(), CWaitHandle(current.SetWaitInterrupt(second)).Block());
        EXPECT_EQ(CWaitHandle(second).Block(), CWaitHandle(current.SetWaitInterrupt(second)).Block());
        EXPECT_EQ(CWaitHandle(second).Block(), CWaitHandle(current.SetWaitInterrupt(nullptr)).Block());
        first.Set();
        EXPECT_EQ(URET_OK, current.CheckInterrupt());
    });
}

TEST_F(InterruptTest, TheThreadKeepsItsInterruptAlive)
{
    RunToItsEnd([] {
        CCurrentThread current;
        {
            CWaitInterrupt shortLived;
            shortLived.Init();
            current.SetWaitInterrupt(shortLived);
        }
        CWaitInterrupt installed = current.SetWaitInterrupt(nullptr);
        EXPECT_EQ(URET_OK, installed.Set());
    });
}

TEST_F(InterruptTest, AnInterruptMayOutliveItsThreads)
{
    CWaitInterrupt interrupt;
    interrupt.Init();
    RunToItsEnd([&] { CCurrentThread().SetWaitInterrupt(interrupt); });
    EXPECT_EQ(URET_OK, interrupt.Set());
}

TEST_F(InterruptTest, InitTwiceRaises)
{
    CWaitInterrupt interrupt;
    interrupt.Init();
    EXPECT_EQ(Errors::SyncAlreadyInitialized, RaisedBy([&] { interrupt.Init(); }));
}

TEST_F(InterruptTest, CancelAfterTheEndReachesNobody)
{
    CThread thread;
    StartThread(thread, [] {});
    ASSERT_EQ(URET_OK, thread.Wait(kDeadlineMs));
    EXPECT_EQ(URET_OK, thread.Cancel());
    EXPECT_EQ(URET_OK, thread.Wait(0));
}

struct SMask {
    char const * name;
    unsigned int former, argument, enabled, disabled;
};

class InterruptMaskTest : public testing::TestWithParam<SMask> {
private:
    CCallBackGuard m_Guard;
};

TEST_P(InterruptMaskTest, EnableSetsTheValueAndTheGuardRestores)
{
    CCurrentThread current;
    current.SetInterruptMask(GetParam().former);
    {
        CSyncGuard guard;
        EXPECT_EQ(URET_OK, current.EnableInterrupt(guard, GetParam().argument));
        EXPECT_EQ(GetParam().enabled, current.GetInterruptMask());
    }
    EXPECT_EQ(GetParam().former, current.GetInterruptMask());
}

TEST_P(InterruptMaskTest, DisableTurnsBitsOffAnAllOnState)
{
    CCurrentThread current;
    current.SetInterruptMask(GetParam().former);
    {
        CSyncGuard guard;
        EXPECT_EQ(URET_OK, current.DisableInterrupt(&guard, GetParam().argument));
        EXPECT_EQ(GetParam().disabled, current.GetInterruptMask());
    }
    EXPECT_EQ(GetParam().former, current.GetInterruptMask());
    current.DisableInterrupt(nullptr, GetParam().argument); // without a guard it stays
    EXPECT_EQ(GetParam().disabled, current.SetInterruptMask(3));
}

INSTANTIATE_TEST_SUITE_P(All, InterruptMaskTest,
                         testing::Values(SMask{"None", 0, 0, 0, 3}, SMask{"Cancel", 1, 1, 1, 2},
                                         SMask{"User", 2, 2, 2, 1}, SMask{"Both", 3, 3, 3, 0},
                                         SMask{"OtherBit", 1, 2, 2, 1}, SMask{"AllFromNone", 0, 3, 3, 0}),
                         [](const auto & test) { return std::string(test.param.name); });

TEST_F(InterruptTest, ClearInterruptEnablesTheBits)
{
    CCurrentThread current;
    current.SetInterruptMask(0);
    EXPECT_EQ(URET_OK, current.ClearInterrupt(InterruptUser));
    EXPECT_EQ(InterruptUser, current.GetInterruptMask());
}

TEST_F(InterruptTest, AnInterruptGuardInstallsForItsScope)
{
    CWaitInterrupt outer, inner;
    outer.Init();
    inner.Init();
    RunToItsEnd([&] {
        CCurrentThread current;
        current.SetWaitInterrupt(outer);
        current.SetInterruptMask(InterruptCancel);
        {
            CInterruptGuard guard;
            EXPECT_EQ(URET_OK, guard.SetWaitInterrupt(inner));
            EXPECT_EQ(InterruptAll, current.GetInterruptMask());
            inner.Set();
            EXPECT_EQ(Errors::WaitInterrupt, RaisedBy([&] { current.CheckInterrupt(); }));
        }
        EXPECT_EQ(InterruptCancel, current.GetInterruptMask());
        EXPECT_EQ(URET_OK, current.CheckInterrupt());
        EXPECT_EQ(CWaitHandle(outer).Block(), CWaitHandle(current.SetWaitInterrupt(nullptr)).Block());
    });
}

TEST_F(InterruptTest, AnInterruptGuardThatWasNotUsedRestoresNothing)
{
    RunToItsEnd([] {
        CCurrentThread current;
        {
            const CInterruptGuard guard;
            current.SetInterruptMask(InterruptCancel);
        }
        EXPECT_EQ(InterruptCancel, current.GetInterruptMask());
    });
}

TEST_F(InterruptTest, AnInterruptGuardUsedTwiceRestoresTheFirstState)
{
    CWaitInterrupt first, second;
    first.Init();
    second.Init();
    RunToItsEnd([&] {
        CCurrentThread current;
        {
            CInterruptGuard guard;
            guard.SetWaitInterrupt(first);
            guard.SetWaitInterrupt(second);
        }
        EXPECT_EQ(nullptr, CWaitHandle(current.SetWaitInterrupt(nullptr)).Block());
        EXPECT_EQ(InterruptAll, current.GetInterruptMask());
    });
}

TEST_F(InterruptTest, SetAndResetFromManyThreadsWhileOthersComeAndGo)
{
    CWaitInterrupt interrupt;
    interrupt.Init();
    std::atomic<bool> stop{false};
    std::thread setter([&] {
        while (!stop) {
            interrupt.Set();
            interrupt.Reset();
        }
    });
    for (int i = 0; i < 50; ++i) {
        CThread threads[2];
        for (CThread & thread : threads)
            StartThread(thread, [&] {
                CCurrentThread current;
                for (int j = 0; j < 20; ++j) {
                    CInterruptGuard guard;
                    guard.SetWaitInterrupt(interrupt);
                    RaisedBy([&] { current.CheckInterrupt(); });
                }
            });
        for (CThread & thread : threads)
            ASSERT_EQ(URET_OK, thread.Wait(kDeadlineMs));
    }
    stop = true;
    setter.join();
}

TEST_F(CallBackGuardTest, MakesAForeignThreadAFullOneForItsLife)
{
    EXPECT_EQ(nullptr, CThreadCB::Current());
    {
        const CCallBackGuard guard;
        ASSERT_NE(nullptr, CThreadCB::Current());
        EXPECT_EQ(InterruptAll, CCurrentThread().GetInterruptMask());
        EXPECT_EQ(Platform::CurrentThreadId(), CCurrentThread().GetThreadID());
        EXPECT_NE(0, CThreadCB::Current()->m_iRandomSeed);
    }
    EXPECT_EQ(nullptr, CThreadCB::Current());
}

TEST_F(CallBackGuardTest, NestedItOnlyCounts)
{
    const CCallBackGuard outer;
    CThreadCB * const block = CThreadCB::Current();
    CCurrentThread().SetInterruptMask(InterruptCancel);
    const int count = block->Count();
    {
        const CCallBackGuard inner;
        EXPECT_EQ(block, CThreadCB::Current());
        EXPECT_EQ(count + 1, block->Count());
        EXPECT_EQ(InterruptCancel, CCurrentThread().GetInterruptMask());
    }
    EXPECT_EQ(block, CThreadCB::Current());
    EXPECT_EQ(count, block->Count());
}

TEST_F(CallBackGuardTest, WithoutAGuardABlockLastsAsLongAsItsHolder)
{
    {
        CCurrentThread current;
        EXPECT_EQ(0u, current.GetInterruptMask()); // a new block has all interrupts disabled
        EXPECT_EQ(current.operator->(), CThreadCB::Current());
    }
    EXPECT_EQ(nullptr, CThreadCB::Current());
}

TEST_F(CallBackGuardTest, TheRecordsOfAThreadGoWithItsBlock)
{
    {
        const CCallBackGuard guard;
        CThrowState state;
        state.DisableThrow();
        EXPECT_EQ(URET_Error, CEvent().Set());
        EXPECT_EQ(Errors::SyncNotInitialized, CCurrentThread().GetErrorLog().GetError());
    }
    const CCallBackGuard guard;
    EXPECT_EQ(0u, CCurrentThread().GetErrorLog().GetError());
}

TEST(TlsTest, EachThreadHasItsOwnWord)
{
    TTls<int> slot;
    int mine = 1, other = 2;
    EXPECT_EQ(nullptr, slot.Get());
    EXPECT_EQ(URET_OK, slot.Set(&mine));
    std::thread([&] {
        EXPECT_EQ(nullptr, slot.Get());
        slot.Set(&other);
        EXPECT_EQ(&other, slot.Get());
    }).join();
    EXPECT_EQ(&mine, slot.Get());
    EXPECT_EQ(URET_OK, slot.Set(nullptr));
    EXPECT_EQ(nullptr, slot.Get());
}

TEST(TlsTest, ASlotTooManyRaisesAndTheOthersAreGivenBack)
{
    const CCallBackGuard guard;
    constexpr int beyond = 5000; // more slots than a system has
    for (int round = 0; round < 2; ++round) {
        std::vector<std::unique_ptr<CTls>> slots;
        std::uint32_t raised = 0;
        for (int i = 0; i < beyond && raised == 0; ++i)
            raised = RaisedBy([&] { slots.push_back(std::make_unique<CTls>()); });
        EXPECT_EQ(Errors::ThreadLocalStorage, raised);
        Exceptions::CThrowState state;
        state.DisableThrow();
        CTls none;
        EXPECT_EQ(nullptr, none.Get());
        EXPECT_EQ(URET_Error, none.Set(&none));
    }
}
