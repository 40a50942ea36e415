#include "VLK/CriticalSection.h"

#include <gtest/gtest.h>

#include <thread>

#include "Foundation.h"
#include "VLK/Trace.h"

using namespace VLK;
using namespace VLK::Threading;

class CriticalSectionTest : public CFoundationTest {
protected:
    /// What TryEnter gives on another thread, which leaves again.
    unsigned int TryElsewhere()
    {
        unsigned int result = 0;
        std::thread([&] {
            CSyncGuard guard;
            result = m_Section.TryEnter(guard);
        }).join();
        return result;
    }
    CCriticalSection m_Section;
};

TEST_F(CriticalSectionTest, ComesIntoBeingWithTheFirstEnter)
{
    EXPECT_EQ(URET_OK, m_Section.Enter());
    EXPECT_EQ(URET_Timeout, TryElsewhere());
    EXPECT_EQ(URET_OK, m_Section.Leave());
    EXPECT_EQ(URET_OK, TryElsewhere());
}

TEST_F(CriticalSectionTest, ComesIntoBeingWithTheFirstTryEnter)
{
    EXPECT_EQ(URET_OK, m_Section.TryEnter());
    EXPECT_EQ(URET_Timeout, TryElsewhere());
    EXPECT_EQ(URET_OK, m_Section.Leave());
}

TEST_F(CriticalSectionTest, IsRecursive)
{
    m_Section.Init(100);
    m_Section.Enter();
    EXPECT_EQ(URET_OK, m_Section.TryEnter());
    m_Section.Leave();
    EXPECT_EQ(URET_Timeout, TryElsewhere());
    m_Section.Leave();
    EXPECT_EQ(URET_OK, TryElsewhere());
}

TEST_F(CriticalSectionTest, LeaveOfANeverEnteredOneDoesNothing)
{
    EXPECT_EQ(URET_OK, m_Section.Leave());
    EXPECT_EQ(URET_OK, TryElsewhere());
}

TEST_F(CriticalSectionTest, LeaveByAnyoneElseDoesNothing)
{
    m_Section.Enter();
    std::thread([&] { EXPECT_EQ(URET_OK, m_Section.Leave()); }).join();
    EXPECT_EQ(URET_Timeout, TryElsewhere());
    m_Section.Leave();
}

TEST_F(CriticalSectionTest, TheGuardLeaves)
{
    {
        CSyncGuard guard;
        EXPECT_EQ(URET_OK, m_Section.Enter(guard));
        EXPECT_EQ(URET_Timeout, TryElsewhere());
    }
    EXPECT_EQ(URET_OK, TryElsewhere());
    CSyncGuard guard;
    EXPECT_EQ(URET_OK, m_Section.Enter(&guard));
    EXPECT_EQ(URET_OK, guard.Restore());
    EXPECT_EQ(URET_OK, TryElsewhere());
}

TEST_F(CriticalSectionTest, ATakenSectionLeavesTheGuardAlone)
{
    m_Section.Enter();
    std::thread([&] {
        CSyncGuard guard;
        EXPECT_EQ(URET_Timeout, m_Section.TryEnter(&guard));
        EXPECT_EQ(URET_OK, guard.Restore());
    }).join();
    EXPECT_EQ(URET_Timeout, TryElsewhere());
    m_Section.Leave();
}

TEST_F(CriticalSectionTest, SetSpinCountTellsTheFormer)
{
    m_Section.Init(7);
    unsigned int old = 0;
    EXPECT_EQ(URET_OK, m_Section.SetSpinCount(9, &old));
    EXPECT_EQ(7u, old);
    EXPECT_EQ(URET_OK, m_Section.SetSpinCount(11, nullptr));
    EXPECT_EQ(URET_OK, m_Section.SetSpinCount(0, &old));
    EXPECT_EQ(11u, old);
}

TEST_F(CriticalSectionTest, InitAgainIsAllowed)
{
    EXPECT_EQ(URET_OK, m_Section.Init(0));
    EXPECT_EQ(URET_OK, m_Section.Init(5));
}

TEST_F(CriticalSectionTest, ExcludesOtherThreads)
{
    constexpr int rounds = 5000;
    int value = 0;
    const auto count = [&] {
        for (int i = 0; i < rounds; ++i) {
            CSyncGuard guard;
            m_Section.Enter(guard);
            ++value;
        }
    };
    std::thread other(count);
    count();
    other.join();
    EXPECT_EQ(2 * rounds, value);
}

class FastMutexTest : public CFoundationTest {
protected:
    unsigned int WaitElsewhere()
    {
        unsigned int result = 0;
        RunToItsEnd([&] {
            CSyncGuard guard;
            result = m_Mutex.Wait(guard, 0);
        });
        return result;
    }
    unsigned int ReadElsewhere()
    {
        unsigned int result = 0;
        RunToItsEnd([&] {
            CSyncGuard guard;
            result = m_Mutex.WaitForRead(guard, 0);
        });
        return result;
    }
    CFastMutex m_Mutex;
};

TEST_F(FastMutexTest, WithoutInitRaises)
{
    EXPECT_EQ(Errors::SyncNotInitialized, RaisedBy([&] { m_Mutex.Wait(0); }));
    EXPECT_EQ(Errors::SyncNotInitialized, RaisedBy([&] { m_Mutex.WaitForRead(0); }));
    EXPECT_EQ(Errors::SyncNotInitialized, RaisedBy([&] { m_Mutex.Release(); }));
    EXPECT_EQ(Errors::SyncNotInitialized, RaisedBy([&] { m_Mutex.ReadRelease(); }));
}

TEST_F(FastMutexTest, ExcludesOtherThreads)
{
    EXPECT_EQ(URET_OK, m_Mutex.Init());
    EXPECT_EQ(URET_OK, m_Mutex.Wait(0));
    EXPECT_EQ(URET_OK, m_Mutex.Wait(0)); // recursive
    EXPECT_EQ(URET_Timeout, WaitElsewhere());
    EXPECT_EQ(URET_OK, m_Mutex.Release());
    EXPECT_EQ(URET_OK, m_Mutex.Release());
    EXPECT_EQ(URET_Error, m_Mutex.Release());
    EXPECT_EQ(URET_OK, WaitElsewhere());
}

TEST_F(FastMutexTest, ReportsAbandoned)
{
    m_Mutex.Init();
    RunToItsEnd([&] { m_Mutex.Wait(0); });
    CSyncGuard guard;
    EXPECT_EQ(URET_WaitAbandoned, m_Mutex.Wait(guard, 0));
    EXPECT_EQ(URET_OK, guard.Restore());
    EXPECT_EQ(URET_OK, WaitElsewhere());
}

TEST_F(FastMutexTest, WithoutAGateReadersAreWriters)
{
    m_Mutex.Init();
    CSyncGuard guard;
    EXPECT_EQ(URET_OK, m_Mutex.WaitForRead(guard, 0));
    EXPECT_EQ(URET_Timeout, ReadElsewhere());
    EXPECT_EQ(URET_OK, guard.Restore());
    EXPECT_EQ(URET_OK, m_Mutex.WaitForRead(0));
    EXPECT_EQ(URET_OK, m_Mutex.ReadRelease());
    EXPECT_EQ(URET_OK, ReadElsewhere());
}

TEST_F(FastMutexTest, ReadersShareAndKeepWritersOut)
{
    EXPECT_EQ(URET_OK, m_Mutex.InitForReadWrite());
    CSyncGuard first;
    EXPECT_EQ(URET_OK, m_Mutex.WaitForRead(&first, 0));
    EXPECT_EQ(URET_OK, ReadElsewhere());
    EXPECT_EQ(URET_Timeout, WaitElsewhere());
    EXPECT_EQ(URET_OK, first.Restore());
    EXPECT_EQ(URET_OK, WaitElsewhere());
}

TEST_F(FastMutexTest, AWriterKeepsReadersOutAndTheirGuardEmpty)
{
    m_Mutex.InitForReadWrite();
    m_Mutex.Wait(0);
    RunToItsEnd([&] {
        CSyncGuard guard;
        EXPECT_EQ(URET_Timeout, m_Mutex.WaitForRead(guard, 0));
        EXPECT_EQ(URET_OK, guard.Restore());
        EXPECT_EQ(URET_Timeout, m_Mutex.WaitForRead(nullptr, 0)); // the gate was left
    });
    EXPECT_EQ(URET_OK, m_Mutex.Release());
    EXPECT_EQ(URET_OK, ReadElsewhere());
}

TEST_F(FastMutexTest, TheLastReaderReleasesOnTheThreadOfTheFirst)
{
    m_Mutex.InitForReadWrite();
    m_Mutex.WaitForRead(0);
    m_Mutex.WaitForRead(0);
    EXPECT_EQ(URET_OK, m_Mutex.ReadRelease());
    EXPECT_EQ(URET_Timeout, WaitElsewhere());
    EXPECT_EQ(URET_OK, m_Mutex.ReadRelease());
    EXPECT_EQ(URET_OK, WaitElsewhere());
    EXPECT_EQ(URET_OK, m_Mutex.ReadRelease()); // one too many
    EXPECT_EQ(URET_OK, WaitElsewhere());
}

TEST_F(FastMutexTest, AnInterruptedReaderTakesNothing)
{
    m_Mutex.InitForReadWrite();
    m_Mutex.Wait(0);
    CWaitInterrupt interrupt;
    interrupt.Init();
    CThread thread;
    CEvent ready;
    ready.Init(false, false);
    std::uint32_t raised = 0;
    StartThread(thread, [&] {
        CCurrentThread().SetWaitInterrupt(interrupt);
        ready.Set();
        raised = RaisedBy([&] { m_Mutex.WaitForRead(kDeadlineMs); });
    });
    ASSERT_EQ(URET_OK, ready.Wait(kDeadlineMs));
    interrupt.Set();
    ASSERT_EQ(URET_OK, thread.Wait(kDeadlineMs));
    EXPECT_EQ(Errors::WaitInterrupt, raised);
    m_Mutex.Release();
    EXPECT_EQ(URET_OK, WaitElsewhere());
    EXPECT_EQ(URET_OK, ReadElsewhere());
}

TEST_F(FastMutexTest, AnInterruptDoesNotKeepAReaderFromReleasing)
{
    m_Mutex.InitForReadWrite();
    RunToItsEnd([&] {
        CWaitInterrupt interrupt;
        interrupt.Init();
        CSyncGuard guard;
        m_Mutex.WaitForRead(guard, 0);
        CCurrentThread().SetWaitInterrupt(interrupt);
        interrupt.Set();
        EXPECT_EQ(URET_OK, guard.Restore());
    });
    EXPECT_EQ(URET_OK, WaitElsewhere());
}

class FastEventTest : public CFoundationTest {
protected:
    CFastEvent m_Event;
};

TEST_F(FastEventTest, WithoutInitRaises)
{
    EXPECT_EQ(Errors::SyncNotInitialized, RaisedBy([&] { m_Event.Set(); }));
    EXPECT_EQ(Errors::SyncNotInitialized, RaisedBy([&] { m_Event.Reset(); }));
    EXPECT_EQ(Errors::SyncNotInitialized, RaisedBy([&] { m_Event.Wait(0); }));
}

TEST_F(FastEventTest, StartsClear)
{
    EXPECT_EQ(URET_OK, m_Event.Init(/*manualReset=*/1));
    EXPECT_EQ(URET_Timeout, m_Event.Wait(0));
    EXPECT_EQ(URET_OK, m_Event.Set());
    EXPECT_EQ(URET_OK, m_Event.Wait(0));
    EXPECT_EQ(URET_OK, m_Event.Wait(0));
    EXPECT_EQ(URET_OK, m_Event.Reset());
    EXPECT_EQ(URET_Timeout, m_Event.Wait(1));
}

TEST_F(FastEventTest, AutomaticResetLetsOneThrough)
{
    m_Event.Init(/*manualReset=*/0);
    m_Event.Set();
    EXPECT_EQ(URET_OK, m_Event.Wait(0));
    EXPECT_EQ(URET_Timeout, m_Event.Wait(0));
}

TEST_F(FastEventTest, InitAgainStartsAnew)
{
    m_Event.Init(1);
    m_Event.Set();
    EXPECT_EQ(URET_OK, m_Event.Init(0));
    EXPECT_EQ(URET_Timeout, m_Event.Wait(0));
}

TEST_F(FastEventTest, ItsTracesChangeNothing)
{
    Misc::VLK_MODULE_INFO_VlkLib.SetTrcPoints(TraceEvents);
    {
        CFastEvent event;
        EXPECT_EQ(URET_OK, event.Init(1));
        EXPECT_EQ(URET_Timeout, event.Wait(0));
        event.Set();
        EXPECT_EQ(URET_OK, event.Wait(0));
    }
    Misc::VLK_MODULE_INFO_VlkLib.SetTrcPoints(0);
}
