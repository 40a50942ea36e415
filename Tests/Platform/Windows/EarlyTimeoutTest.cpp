#include "Platform/Wait.h"

#include <gtest/gtest.h>

#include "Platform/Clock.h"
#include "Platform/Waitables.h"
#include "Platform/Windows/ReplacedImport.h"

// The system counts time in ticks, and may say that it is over a part of one ahead of the end.

namespace {

using Platform::WaitResult;

constexpr std::uint32_t PassingMs = 20; ///< of each call; more than a tick

int g_calls = 0;
std::uint32_t g_lastMs = 0;

/// Twice the system is early, by far; then the object is there.
DWORD Answer(DWORD ms, DWORD last)
{
    g_lastMs = ms;
    const std::uint64_t begun = Platform::MonotonicMs();
    while (ms != 0 && Platform::MonotonicMs() - begun < PassingMs) {
    }
    return ++g_calls < 3 ? WAIT_TIMEOUT : last;
}
DWORD WINAPI WaitForOneEarly(HANDLE, DWORD ms, BOOL)
{
    return Answer(ms, WAIT_OBJECT_0);
}
DWORD WINAPI WaitForManyEarly(DWORD, HANDLE const *, BOOL, DWORD ms, BOOL)
{
    return Answer(ms, WAIT_OBJECT_0 + 1);
}

class EarlyTimeoutTest : public testing::Test {
protected:
    EarlyTimeoutTest()
    {
        g_calls = 0;
        g_lastMs = 0;
    }
    static void ExpectThreeCallsForTheTimeLeft()
    {
        EXPECT_EQ(3, g_calls);
        EXPECT_GT(g_lastMs, 0u);
        EXPECT_LT(g_lastMs, kDeadlineMs - PassingMs) << "of two such calls, each short of a tick at most";
    }
    const Platform::CWaitableHandle m_first = Event(false, false);
    const Platform::CWaitableHandle m_second = Event(false, false);
};

} // namespace

TEST_F(EarlyTimeoutTest, AWaitForOneGoesOnForTheTimeThatIsLeft)
{
    const TReplacedImport<decltype(::WaitForSingleObjectEx)> early("WaitForSingleObjectEx", &WaitForOneEarly);
    EXPECT_EQ(WaitResult::Signaled, Await(m_first));
    ExpectThreeCallsForTheTimeLeft();
}

TEST_F(EarlyTimeoutTest, AWaitForManyGoesOnForTheTimeThatIsLeft)
{
    const TReplacedImport<decltype(::WaitForMultipleObjectsEx)> early("WaitForMultipleObjectsEx", &WaitForManyEarly);
    const Platform::SWaitOutcome outcome = (CObjects() << m_first << m_second).First(kDeadlineMs);
    EXPECT_EQ(WaitResult::Signaled, outcome.result);
    EXPECT_EQ(1u, outcome.index);
    ExpectThreeCallsForTheTimeLeft();
}

TEST_F(EarlyTimeoutTest, WhatHadNoTimeAtAllIsAskedOnce)
{
    const TReplacedImport<decltype(::WaitForSingleObjectEx)> early("WaitForSingleObjectEx", &WaitForOneEarly);
    EXPECT_EQ(WaitResult::Timeout, Look(m_first));
    EXPECT_EQ(1, g_calls);
}
