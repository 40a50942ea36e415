#include "VLK/Waiter.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Foundation.h"
#include "Platform/Clock.h"

using namespace VLK;
using namespace VLK::Threading;
using Internals::Windows::CWaitCB;

namespace {

/// A waitable that notes what a wait tells it.
class CNotingCB : public CWaitCB {
public:
    explicit CNotingCB(bool signaled)
    {
        Platform::WaitHandle handle = nullptr;
        Platform::NewEvent(handle, signaled, /*manualReset=*/true);
        m_Handle.Reset(handle);
    }
    unsigned int SetMask(unsigned int mask) override
    {
        notes += "mask " + std::to_string(mask) + ";";
        return URET_OK;
    }
    unsigned int SignaledAfterWait(unsigned int mask) override
    {
        notes += "signaled " + std::to_string(mask) + ";";
        return URET_OK;
    }
    std::string notes;
};

class CNoting {
public:
    explicit CNoting(bool signaled) : m_pBlock(new CNotingCB(signaled)) {}
    ~CNoting() { CWaitCB::Drop(m_pBlock); }
    CNoting(CNoting const &) = delete;
    CNoting & operator=(CNoting const &) = delete;
    CWaitHandle With(unsigned int mask) const { return CWaitHandle(m_pBlock, mask); }
    std::string const & Notes() const { return m_pBlock->notes; }

private:
    CNotingCB * m_pBlock;
};

std::vector<CEvent> Events(std::size_t count)
{
    std::vector<CEvent> events(count);
    for (CEvent & event : events)
        event.Init(/*initialState=*/false, /*manualReset=*/true);
    return events;
}

} // namespace

class WaiterTest : public CFoundationTest {
protected:
    CWaiter m_Waiter;
};

class WaiterCountTest : public testing::TestWithParam<std::size_t> {
private:
    CCallBackGuard m_Guard;
};

TEST_P(WaiterCountTest, EachObjectHasItsOwnResult)
{
    std::vector<CEvent> events = Events(GetParam());
    CWaiter waiter;
    for (CEvent & event : events)
        waiter << event;
    ASSERT_EQ(GetParam(), waiter.Count());
    EXPECT_EQ(URET_Timeout, waiter.Wait(0, false));
    for (std::size_t i = 0; i < events.size(); ++i) {
        events[i].Set();
        EXPECT_EQ(URET_WaitObject0 + i, waiter.Wait(0, false));
        events[i].Reset();
    }
}

TEST_P(WaiterCountTest, AllNeedsEveryOne)
{
    std::vector<CEvent> events = Events(GetParam());
    CWaiter waiter;
    for (CEvent & event : events)
        waiter << event;
    for (CEvent & event : events) {
        EXPECT_EQ(URET_Timeout, waiter.Wait(0, true));
        event.Set();
    }
    EXPECT_EQ(URET_WaitObject0, waiter.Wait(0, true));
}

INSTANTIATE_TEST_SUITE_P(Edges, WaiterCountTest, testing::Values(1u, 2u, 15u, 16u, 17u, 62u, 63u),
                         testing::PrintToStringParamName());

TEST_F(WaiterTest, TheLowestOfSeveralWins)
{
    std::vector<CEvent> events = Events(3);
    for (CEvent & event : events)
        m_Waiter << event;
    events[2].Set();
    events[1].Set();
    EXPECT_EQ(URET_WaitObject1, m_Waiter.Wait(kDeadlineMs, false));
    events[0].Set();
    EXPECT_EQ(URET_WaitObject0, m_Waiter.Wait(kDeadlineMs, false));
}

TEST_F(WaiterTest, The64thIsAcceptedAndRaisesAtTheWait)
{
    std::vector<CEvent> events = Events(1);
    events[0].Set();
    for (int i = 0; i < 64; ++i)
        m_Waiter << events[0];
    EXPECT_EQ(64u, m_Waiter.Count());
    EXPECT_EQ(Errors::MaxCount, RaisedBy([&] { m_Waiter.Wait(0, false); }));
}

TEST_F(WaiterTest, The65thRaisesAtOnce)
{
    std::vector<CEvent> events = Events(1);
    for (int i = 0; i < 64; ++i)
        m_Waiter << events[0];
    EXPECT_EQ(Errors::MaxCount, RaisedBy([&] { m_Waiter << events[0]; }));
    EXPECT_EQ(64u, m_Waiter.Count());
    EXPECT_EQ(Errors::ObjectInErrorState, RaisedBy([&] { m_Waiter << events[0]; }));
}

TEST_F(WaiterTest, AnObjectWithoutABlockRaisesWithTheCountAndClearForgetsIt)
{
    std::vector<CEvent> events = Events(1);
    m_Waiter << events[0];
    Exceptions::CErrorLog log;
    EXPECT_EQ(Errors::SyncNotInitialized, RaisedBy([&] { m_Waiter << CEvent(); }, log));
    EXPECT_STREQ("urrent count=1\n", log.GetErrorMsg(0)); // the first character of a message isn't shown
    EXPECT_EQ(Errors::ObjectInErrorState, RaisedBy([&] { m_Waiter << events[0]; }));
    EXPECT_EQ(1u, m_Waiter.Count());
    m_Waiter.Clear();
    EXPECT_EQ(0u, m_Waiter.Count());
    m_Waiter << events[0];
    events[0].Set();
    EXPECT_EQ(URET_WaitObject0, m_Waiter.Wait(0, false));
}

TEST_F(WaiterTest, WithThrowingDisabledAFailedAddStillMarksTheWaiter)
{
    Exceptions::CThrowState state;
    state.DisableThrow();
    std::vector<CEvent> events = Events(1);
    m_Waiter << CEvent() << events[0];
    EXPECT_EQ(0u, m_Waiter.Count());
    EXPECT_EQ(Errors::ObjectInErrorState, CCurrentThread().GetErrorLog().GetError());
}

TEST_F(WaiterTest, AnEmptyListCannotBeWaitedFor)
{
    EXPECT_EQ(Errors::OperatingSystem, RaisedBy([&] { m_Waiter.Wait(0, false); }));
}

TEST_F(WaiterTest, AnObjectWithoutAHandleIsAnInvalidHandle)
{
    std::vector<CEvent> events = Events(1);
    events[0].Set();
    CWaitInterrupt interrupt;
    interrupt.Init();
    m_Waiter << events[0] << interrupt;
    EXPECT_EQ(Errors::InvalidHandle, RaisedBy([&] { m_Waiter.Wait(0, false); }));
}

TEST_F(WaiterTest, ClearDropsTheReferencesAndTheListCanGrowAgain)
{
    for (int round = 0; round < 3; ++round) {
        std::vector<CEvent> events = Events(40);
        for (CEvent & event : events)
            m_Waiter << event;
        events[39].Set();
        EXPECT_EQ(40u, m_Waiter.Wait(0, false));
        m_Waiter.Clear();
    }
    EXPECT_EQ(0u, m_Waiter.Count());
}

TEST_F(WaiterTest, AnAbandonedMutexCountsAsFired)
{
    std::vector<CEvent> events = Events(1);
    CMutex mutex;
    mutex.Init(false);
    RunToItsEnd([&] { mutex.Wait(kDeadlineMs); });
    m_Waiter << events[0] << mutex;
    EXPECT_EQ(URET_WaitObject1, m_Waiter.Wait(kDeadlineMs, false));
    EXPECT_EQ(URET_OK, mutex.Release());
}

TEST_F(WaiterTest, AThreadsEndFires)
{
    CThread thread;
    StartThread(thread, [] {});
    m_Waiter << thread;
    EXPECT_EQ(URET_WaitObject0, m_Waiter.Wait(kDeadlineMs, false));
    EXPECT_EQ(URET_WaitObject0, m_Waiter.Wait(0, true));
}

TEST_F(WaiterTest, TakesAnAutomaticEventOnlyWhenItIsTheOneReported)
{
    CEvent first, second;
    first.Init(true, false);
    second.Init(true, false);
    m_Waiter << first << second;
    EXPECT_EQ(URET_WaitObject0, m_Waiter.Wait(0, false));
    EXPECT_EQ(URET_Timeout, first.Wait(0));
    EXPECT_EQ(URET_WaitObject1, m_Waiter.Wait(0, false));
    EXPECT_EQ(URET_Timeout, m_Waiter.Wait(0, false));
}

TEST_F(WaiterTest, AllTakesAllOrNone)
{
    CEvent event;
    event.Init(true, false);
    CSemaphore semaphore;
    semaphore.Init(0, 1);
    m_Waiter << event << semaphore;
    EXPECT_EQ(URET_Timeout, m_Waiter.Wait(0, true));
    semaphore.Release();
    EXPECT_EQ(URET_WaitObject0, m_Waiter.Wait(0, true));
    EXPECT_EQ(URET_Timeout, event.Wait(0));
    EXPECT_EQ(URET_Timeout, semaphore.Wait(0));
}

TEST_F(WaiterTest, MasksAreSetBeforeAndToldTheOneThatFired)
{
    const CNoting silent(false), fires(true);
    m_Waiter << silent.With(3) << fires.With(5);
    EXPECT_EQ(URET_WaitObject1, m_Waiter.Wait(0, false));
    EXPECT_EQ("mask 3;", silent.Notes());
    EXPECT_EQ("mask 5;signaled 5;", fires.Notes());
}

TEST_F(WaiterTest, TheOneThatFiredIsToldWhateverItsMaskWhenAnyHasOne)
{
    const CNoting fires(true), silent(false);
    m_Waiter << fires.With(0) << silent.With(1);
    EXPECT_EQ(URET_WaitObject0, m_Waiter.Wait(0, false));
    EXPECT_EQ("signaled 0;", fires.Notes());
    EXPECT_EQ("mask 1;", silent.Notes());
}

TEST_F(WaiterTest, WithoutAnyMaskNobodyIsTold)
{
    const CNoting fires(true);
    m_Waiter << fires.With(0);
    EXPECT_EQ(URET_WaitObject0, m_Waiter.Wait(0, false));
    EXPECT_EQ("", fires.Notes());
}

TEST_F(WaiterTest, AllTellsThoseWithAMask)
{
    const CNoting first(true), second(true), third(true);
    m_Waiter << first.With(1) << second.With(0) << third.With(2);
    EXPECT_EQ(URET_WaitObject0, m_Waiter.Wait(0, true));
    EXPECT_EQ("mask 1;signaled 1;", first.Notes());
    EXPECT_EQ("", second.Notes());
    EXPECT_EQ("mask 2;signaled 2;", third.Notes());
}

TEST_F(WaiterTest, ATimeoutTellsNobody)
{
    const CNoting silent(false);
    m_Waiter << silent.With(1);
    EXPECT_EQ(URET_Timeout, m_Waiter.Wait(0, false));
    EXPECT_EQ("mask 1;", silent.Notes());
}

TEST_F(WaiterTest, TheDefaultBlockAcceptsMasks)
{
    std::vector<CEvent> events = Events(1);
    events[0].Set();
    const CWaitHandle plain = events[0];
    EXPECT_EQ(0u, plain.Mask());
    EXPECT_EQ(URET_OK, plain.Block()->SetMask(1));
    EXPECT_EQ(URET_OK, plain.Block()->SignaledAfterWait(1));
}

TEST(WaitIntervalTest, AnEmptyIntervalIsOverAtOnce)
{
    const CWaitInterval interval(0);
    EXPECT_EQ(0u, static_cast<unsigned int>(interval));
}

TEST(WaitIntervalTest, GivesWhatIsLeft)
{
    const CWaitInterval interval(1000000);
    EXPECT_LE(static_cast<unsigned int>(interval), 1000000u);
    EXPECT_GT(static_cast<unsigned int>(interval), 900000u);
}

TEST(WaitIntervalTest, EndsAndStaysAtZero)
{
    const CWaitInterval interval(2);
    EXPECT_TRUE(HoldsWithin(kDeadline, [&] { return static_cast<unsigned int>(interval) == 0; }));
    EXPECT_EQ(0u, static_cast<unsigned int>(interval));
}

TEST(WaitIntervalTest, RestartForgetsTheOldDeadline)
{
    CWaitInterval interval(1);
    ASSERT_TRUE(HoldsWithin(kDeadline, [&] { return static_cast<unsigned int>(interval) == 0; }));
    interval.Restart(1000000);
    EXPECT_GT(static_cast<unsigned int>(interval), 900000u);
    interval.Restart(0);
    EXPECT_EQ(0u, static_cast<unsigned int>(interval));
    interval.Restart();
    EXPECT_EQ(0u, static_cast<unsigned int>(interval));
}

TEST(WaitIntervalTest, InfiniteIsAnIntervalLikeAnyOther)
{
    const CWaitInterval interval(0xFFFFFFFF);
    EXPECT_TRUE(HoldsWithin(kDeadline, [&] { return static_cast<unsigned int>(interval) < 0xFFFFFFFF; }));
}
