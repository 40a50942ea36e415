#include "VLK/WaitObjects.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "Foundation.h"
#include "VLK/ThreadCB.h"
#include "VLK/Waiter.h"

using namespace VLK;
using namespace VLK::Threading;

class EventTest : public CFoundationTest {};
class MutexTest : public CFoundationTest {};
class SemaphoreTest : public CFoundationTest {};
class SyncGuardTest : public CFoundationTest {};

struct SEventKind {
    char const * name;
    bool initialState;
    bool manualReset;
    unsigned int waits[3]; ///< results of three looks
};

class EventKindTest : public testing::TestWithParam<SEventKind> {
private:
    CCallBackGuard m_Guard;
};

TEST_P(EventKindTest, StartsAndResetsAsItsKindSays)
{
    CEvent event;
    EXPECT_EQ(URET_OK, event.Init(GetParam().initialState, GetParam().manualReset));
    for (const unsigned int expected : GetParam().waits)
        EXPECT_EQ(expected, event.Wait(0));
}

INSTANTIATE_TEST_SUITE_P(
    All, EventKindTest,
    testing::Values(SEventKind{"SetAutomatic", true, false, {URET_OK, URET_Timeout, URET_Timeout}},
                    SEventKind{"SetManual", true, true, {URET_OK, URET_OK, URET_OK}},
                    SEventKind{"ClearAutomatic", false, false, {URET_Timeout, URET_Timeout, URET_Timeout}},
                    SEventKind{"ClearManual", false, true, {URET_Timeout, URET_Timeout, URET_Timeout}}),
    [](const auto & test) { return std::string(test.param.name); });

TEST_F(EventTest, SetAndResetChangeIt)
{
    CEvent event;
    event.Init(/*initialState=*/false, /*manualReset=*/true);
    EXPECT_EQ(URET_OK, event.Set());
    EXPECT_EQ(URET_OK, event.Wait(0));
    EXPECT_EQ(URET_OK, event.Reset());
    EXPECT_EQ(URET_Timeout, event.Wait(1));
}

TEST_F(EventTest, SetEndsAWaitOfAnotherThread)
{
    CEvent event, entered;
    event.Init(false, false);
    entered.Init(false, false);
    unsigned int result = 0;
    CThread thread;
    StartThread(thread, [&] {
        entered.Set();
        result = event.Wait(kDeadlineMs);
    });
    ASSERT_EQ(URET_OK, entered.Wait(kDeadlineMs));
    event.Set();
    ASSERT_EQ(URET_OK, thread.Wait(kDeadlineMs));
    EXPECT_EQ(URET_OK, result);
}

TEST_F(EventTest, ACopyWaitsForTheSameObject)
{
    CEvent event;
    event.Init(false, false);
    CEvent copy(event);
    CEvent assigned;
    assigned = event;
    event.Set();
    EXPECT_EQ(URET_OK, copy.Wait(0));
    EXPECT_EQ(URET_Timeout, assigned.Wait(0));
    event = CEvent();
    EXPECT_EQ(URET_OK, copy.Set());
    EXPECT_EQ(URET_OK, assigned.Wait(0));
    assigned = *&assigned;
    EXPECT_EQ(URET_Timeout, assigned.Wait(0));
}

TEST_F(EventTest, AWaitHandleOutlivesThePublicObject)
{
    CWaiter waiter;
    {
        CEvent event;
        event.Init(true, true);
        waiter << event;
    }
    EXPECT_EQ(URET_WaitObject0, waiter.Wait(0, false));
}

TEST_F(EventTest, InitTwiceRaisesAlreadyInitialized)
{
    CEvent event;
    event.Init(true, true);
    EXPECT_EQ(Errors::SyncAlreadyInitialized, RaisedBy([&] { event.Init(false, false); }));
    EXPECT_EQ(URET_OK, event.Wait(0)); // and it is as it was
}

TEST_F(EventTest, TakesOverAHandleOfTheSystem)
{
    Platform::WaitHandle origin = nullptr;
    ASSERT_EQ(Platform::Success, Platform::NewEvent(origin, false, false));
    CEvent event;
    EXPECT_EQ(Errors::SyncCreate, RaisedBy([&] { event.Init(nullptr); })); // none at all
    Platform::CloseWaitable(origin);
    EXPECT_EQ(URET_OK, event.Init(false, false)); // a failed Init leaves it open for another
}

struct SUninitialised {
    char const * name;
    void (*use)();
    std::uint32_t error;
};

class UninitialisedTest : public testing::TestWithParam<SUninitialised> {
private:
    CCallBackGuard m_Guard;
};

TEST_P(UninitialisedTest, Raises)
{
    EXPECT_EQ(GetParam().error, RaisedBy(GetParam().use));
}

TEST_P(UninitialisedTest, ReturnsWithThrowingDisabled)
{
    Exceptions::CThrowState state;
    state.DisableThrow();
    GetParam().use();
    EXPECT_EQ(GetParam().error, CCurrentThread().GetErrorLog().GetError());
}

INSTANTIATE_TEST_SUITE_P(
    All, UninitialisedTest,
    testing::Values(SUninitialised{"EventSet", [] { CEvent().Set(); }, Errors::SyncNotInitialized},
                    SUninitialised{"EventReset", [] { CEvent().Reset(); }, Errors::SyncNotInitialized},
                    SUninitialised{"EventWait", [] { CEvent().Wait(0); }, Errors::SyncNotInitialized},
                    SUninitialised{"MutexWait", [] { CMutex().Wait(0); }, Errors::SyncNotInitialized},
                    SUninitialised{"MutexWaitWithGuard",
                                   [] {
                                       CSyncGuard guard;
                                       CMutex().Wait(guard, 0);
                                   },
                                   Errors::SyncNotInitialized},
                    SUninitialised{"MutexRelease", [] { CMutex().Release(); }, Errors::SyncNotInitialized},
                    SUninitialised{"SemaphoreWait", [] { CSemaphore().Wait(0); }, Errors::SyncNotInitialized},
                    SUninitialised{"SemaphoreRelease", [] { CSemaphore().Release(); }, Errors::SyncNotInitialized},
                    SUninitialised{"InterruptSet", [] { CWaitInterrupt().Set(); }, Errors::SyncNotInitialized},
                    SUninitialised{"InterruptReset", [] { CWaitInterrupt().Reset(); }, Errors::SyncNotInitialized},
                    SUninitialised{"ThreadWait", [] { CThread().Wait(0); }, Errors::SyncNotInitialized},
                    SUninitialised{"ThreadCancel", [] { CThread().Cancel(); }, Errors::NoThread},
                    SUninitialised{"ThreadSuspend", [] { CThread().Suspend(); }, Errors::NoThread},
                    SUninitialised{"ThreadResume", [] { CThread().Resume(); }, Errors::NoThread}),
    [](const auto & test) { return std::string(test.param.name); });

TEST_F(MutexTest, IsRecursiveForItsOwner)
{
    CMutex mutex;
    EXPECT_EQ(URET_OK, mutex.Init(/*initialOwner=*/true));
    EXPECT_EQ(URET_OK, mutex.Wait(0));
    EXPECT_EQ(URET_OK, mutex.Release());
    RunToItsEnd([&] { EXPECT_EQ(URET_Timeout, mutex.Wait(0)); });
    EXPECT_EQ(URET_OK, mutex.Release());
    RunToItsEnd([&] {
        EXPECT_EQ(URET_OK, mutex.Wait(0));
        EXPECT_EQ(URET_OK, mutex.Release());
    });
}

TEST_F(MutexTest, AReleaseByAnyoneElseReturnsZeroWithoutRaising)
{
    CMutex mutex;
    mutex.Init(true);
    RunToItsEnd([&] { EXPECT_EQ(URET_Error, mutex.Release()); });
    EXPECT_EQ(URET_OK, mutex.Release());
    EXPECT_EQ(URET_Error, mutex.Release());
}

TEST_F(MutexTest, WaitReportsAbandonedOnceWhenTheOwnerEndedWithoutRelease)
{
    CMutex mutex;
    mutex.Init(/*initialOwner=*/false);
    RunToItsEnd([&] { ASSERT_EQ(URET_OK, mutex.Wait(kDeadlineMs)); });
    EXPECT_EQ(URET_WaitAbandoned, mutex.Wait(kDeadlineMs));
    EXPECT_EQ(URET_OK, mutex.Release());
    EXPECT_EQ(URET_OK, mutex.Wait(0));
    EXPECT_EQ(URET_OK, mutex.Release());
}

TEST_F(MutexTest, AnAbandonedOneIsGivenBackByTheGuard)
{
    CMutex mutex;
    mutex.Init(false);
    RunToItsEnd([&] { mutex.Wait(kDeadlineMs); });
    {
        CSyncGuard guard;
        EXPECT_EQ(URET_WaitAbandoned, mutex.Wait(guard, kDeadlineMs));
    }
    RunToItsEnd([&] { EXPECT_EQ(URET_OK, mutex.Wait(0)); });
}

TEST_F(MutexTest, TheGuardReleasesAtItsEnd)
{
    CMutex mutex;
    mutex.Init(false);
    {
        CSyncGuard guard;
        EXPECT_EQ(URET_OK, mutex.Wait(guard, 0));
        RunToItsEnd([&] { EXPECT_EQ(URET_Timeout, mutex.Wait(0)); });
    }
    RunToItsEnd([&] {
        CSyncGuard guard;
        EXPECT_EQ(URET_OK, mutex.Wait(guard, 0));
    });
}

TEST_F(MutexTest, AGuardOfAWaitThatTimedOutHoldsNothing)
{
    CMutex mutex;
    mutex.Init(true);
    RunToItsEnd([&] {
        CSyncGuard guard;
        EXPECT_EQ(URET_Timeout, mutex.Wait(guard, 0));
        EXPECT_EQ(URET_OK, guard.Restore());
    });
    EXPECT_EQ(URET_OK, mutex.Release());
}

TEST_F(MutexTest, InitTwiceRaises)
{
    CMutex mutex;
    mutex.Init(false);
    EXPECT_EQ(Errors::SyncAlreadyInitialized, RaisedBy([&] { mutex.Init(true); }));
}

TEST_F(SemaphoreTest, CountsDownAndUpToItsMaximum)
{
    CSemaphore semaphore;
    EXPECT_EQ(URET_OK, semaphore.Init(/*initial=*/1, /*maximum=*/2));
    EXPECT_EQ(URET_OK, semaphore.Wait(0));
    EXPECT_EQ(URET_Timeout, semaphore.Wait(0));
    EXPECT_EQ(URET_OK, semaphore.Release());
    EXPECT_EQ(URET_OK, semaphore.Release());
    EXPECT_EQ(Errors::SyncGeneral, RaisedBy([&] { semaphore.Release(); }));
    EXPECT_EQ(URET_OK, semaphore.Wait(0));
    EXPECT_EQ(URET_OK, semaphore.Wait(0));
    EXPECT_EQ(URET_Timeout, semaphore.Wait(0));
}

TEST_F(SemaphoreTest, TheGuardReleases)
{
    CSemaphore semaphore;
    semaphore.Init(1, 1);
    {
        CSyncGuard guard;
        EXPECT_EQ(URET_OK, semaphore.Wait(guard, 0));
        EXPECT_EQ(URET_Timeout, semaphore.Wait(0));
    }
    EXPECT_EQ(URET_OK, semaphore.Wait(0));
}

struct SSemaphoreNumbers {
    char const * name;
    unsigned int initial, maximum;
    std::uint32_t error;
};

class SemaphoreNumbersTest : public testing::TestWithParam<SSemaphoreNumbers> {
private:
    CCallBackGuard m_Guard;
};

TEST_P(SemaphoreNumbersTest, AreChecked)
{
    CSemaphore semaphore;
    Exceptions::CErrorLog log;
    EXPECT_EQ(GetParam().error, RaisedBy([&] { semaphore.Init(GetParam().initial, GetParam().maximum); }, log));
    Exceptions::NATIVE_ERROR native;
    log.GetError(native);
    EXPECT_EQ(GetParam().error != 0 ? Exceptions::NativeOs : Exceptions::NativeNone, native.kind);
}

INSTANTIATE_TEST_SUITE_P(Edges, SemaphoreNumbersTest,
                         testing::Values(SSemaphoreNumbers{"Empty", 0, 1, 0}, SSemaphoreNumbers{"Full", 5, 5, 0},
                                         SSemaphoreNumbers{"Largest", 0, 0x7FFFFFFF, 0},
                                         SSemaphoreNumbers{"NoMaximum", 0, 0, Errors::SyncCreate},
                                         SSemaphoreNumbers{"AboveMaximum", 2, 1, Errors::SyncCreate},
                                         SSemaphoreNumbers{"MaximumTooLarge", 0, 0x80000000, Errors::SyncCreate}),
                         [](const auto & test) { return std::string(test.param.name); });

TEST_F(SemaphoreTest, InitTwiceRaises)
{
    CSemaphore semaphore;
    semaphore.Init(0, 1);
    EXPECT_EQ(Errors::SyncAlreadyInitialized, RaisedBy([&] { semaphore.Init(0, 1); }));
}

TEST_F(SyncGuardTest, EmptyRestoresNothing)
{
    CSyncGuard guard;
    EXPECT_EQ(URET_OK, guard.Restore());
}

TEST_F(SyncGuardTest, RestoredAndThenDestroyedReleasesOnce)
{
    CSemaphore semaphore;
    semaphore.Init(1, 2);
    {
        CSyncGuard guard;
        semaphore.Wait(guard, 0);
        EXPECT_EQ(URET_OK, guard.Restore());
        EXPECT_EQ(URET_OK, guard.Restore());
    }
    EXPECT_EQ(URET_OK, semaphore.Wait(0));
    EXPECT_EQ(URET_Timeout, semaphore.Wait(0));
}

TEST_F(SyncGuardTest, DoNotRestoreForgets)
{
    CSemaphore semaphore;
    semaphore.Init(1, 1);
    {
        CSyncGuard guard;
        semaphore.Wait(guard, 0);
        guard.DoNotRestore();
    }
    EXPECT_EQ(URET_Timeout, semaphore.Wait(0));
}

TEST_F(SyncGuardTest, WhatItsEndRaisesGoesToTheThreadsErrorLog)
{
    CSemaphore semaphore;
    semaphore.Init(1, 1);
    {
        CSyncGuard guard;
        semaphore.Wait(guard, 0);
        semaphore.Release(); // now the guard's own release goes beyond the maximum
    }
    EXPECT_EQ(Errors::SyncGeneral, CCurrentThread().GetErrorLog().GetError());
}

TEST_F(SyncGuardTest, ReturnsTheResultOfTheRelease)
{
    CMutex mutex;
    mutex.Init(false);
    CSyncGuard guard;
    mutex.Wait(guard, 0);
    mutex.Release();
    EXPECT_EQ(URET_Error, guard.Restore());
}

TEST_F(EventTest, AWaitForABlockWithoutAHandleIsAnErrorOfTheSystem)
{
    CWaitInterrupt interrupt;
    interrupt.Init();
    const CWaitHandle handle = interrupt;
    Exceptions::CErrorLog log;
    EXPECT_EQ(Errors::OperatingSystem, RaisedBy([&] { handle.Block()->Wait(0); }, log));
    Exceptions::NATIVE_ERROR native;
    log.GetError(native);
    EXPECT_EQ(Exceptions::NativeOs, native.kind);
}

TEST_F(EventTest, WaitsWorkOnAForeignThreadToo)
{
    CEvent event;
    event.Init(true, false);
    std::thread([&] {
        EXPECT_EQ(URET_OK, event.Wait(0));
        EXPECT_EQ(URET_Timeout, event.Wait(0));
        EXPECT_EQ(nullptr, Internals::CThreadCB::Current());
    }).join();
}
