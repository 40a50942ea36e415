#include "Platform/Wait.h"

#include <gtest/gtest.h>

#include <utility>

#include "Platform/Windows/ReplacedImport.h"
#include "Platform/Windows/ThreadWaker.h"
#include "Support/Deadline.h"

namespace {

using Platform::CurrentThreadWaker;
using Platform::CWakerHandle;
using Platform::Infinite;
using Platform::WaitResult;
using Platform::WakeableSleep;
using Platform::WakerHandle;
using Platform::WakeThread;

using QueueFn = decltype(::QueueUserAPC);
using SleepFn = decltype(::SleepEx);

QueueFn * g_queue = nullptr;
int g_calls = 0;
bool g_refused = false;

DWORD WINAPI QueueCounted(PAPCFUNC call, HANDLE thread, ULONG_PTR argument)
{
    ++g_calls;
    if (!g_refused) return g_queue(call, thread, argument);
    ::SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return 0;
}

/// Counts the calls that wake-ups queue, and refuses them at will.
class WakeUpCallTest : public testing::Test {
protected:
    WakeUpCallTest()
    {
        g_queue = m_queue.System();
        g_calls = 0;
        g_refused = false;
    }

    const CWakerHandle m_waker{CurrentThreadWaker()};

private:
    const TReplacedImport<QueueFn> m_queue{"QueueUserAPC", &QueueCounted};
};

SleepFn * g_sleep = nullptr;
WakerHandle g_waker = nullptr; ///< of the thread that is woken between its look for wake-ups and its wait

DWORD WINAPI SleepBehindAWakeUp(DWORD ms, BOOL alertable)
{
    if (ms != 0) WakeThread(std::exchange(g_waker, nullptr));
    return g_sleep(ms, alertable);
}

void CALLBACK LateCall(ULONG_PTR) {}

/// A thread that wakes the calling one and stands still between the mark and the call for so long that the mark is
/// answered meanwhile.
void WakeWithALateCall(Platform::SThreadWaker & self)
{
    self.pending = true;
    EXPECT_EQ(WaitResult::Woken, WakeableSleep(Infinite).result);
    self.queued = true;
    EXPECT_NE(0u, ::QueueUserAPC(&LateCall, ::GetCurrentThread(), 0));
}

/// Whether a wake-up is noticed that comes when the thread is about to wait.
WaitResult SleepWoken(WakerHandle self)
{
    const TReplacedImport<SleepFn> replaced("SleepEx", &SleepBehindAWakeUp);
    g_sleep = replaced.System();
    g_waker = self;
    return WakeableSleep(kDeadlineMs).result;
}

} // namespace

TEST_F(WakeUpCallTest, AThreadThatDoesNotWaitGetsOneCallHoweverOftenItIsWoken)
{
    for (int i = 0; i < 10; ++i)
        WakeThread(m_waker.Get());
    EXPECT_EQ(1, g_calls);
    EXPECT_EQ(WaitResult::Woken, WakeableSleep(Infinite).result);
    WakeThread(m_waker.Get());
    EXPECT_EQ(2, g_calls);
    EXPECT_EQ(WaitResult::Woken, WakeableSleep(Infinite).result);
}

TEST_F(WakeUpCallTest, AWakeUpThatGotNoCallStaysPendingAndTheNextAsksForOneAgain)
{
    g_refused = true;
    WakeThread(m_waker.Get());
    g_refused = false;
    WakeThread(m_waker.Get());
    EXPECT_EQ(2, g_calls);
    EXPECT_EQ(WaitResult::Woken, WakeableSleep(Infinite).result);
    g_refused = true;
    WakeThread(m_waker.Get());
    EXPECT_EQ(WaitResult::Woken, WakeableSleep(Infinite).result);
    EXPECT_EQ(WaitResult::Timeout, WakeableSleep(0).result);
}

TEST_F(WakeUpCallTest, AWakeUpBetweenTheLookForOneAndTheWaitEndsTheWait)
{
    EXPECT_EQ(WaitResult::Woken, SleepWoken(m_waker.Get()));
}

TEST_F(WakeUpCallTest, BehindACallThatCameLaterThanItsAnswerAWakeUpStillEndsTheWait)
{
    WakeWithALateCall(*m_waker.Get());
    EXPECT_EQ(WaitResult::Timeout, WakeableSleep(1).result) << "which has run the late call";
    EXPECT_EQ(WaitResult::Woken, SleepWoken(m_waker.Get()));
}

TEST_F(WakeUpCallTest, BehindALateCallThatAWaitOfSomebodyElseHasRunAWakeUpStillEndsTheWait)
{
    WakeWithALateCall(*m_waker.Get());
    EXPECT_EQ(static_cast<DWORD>(WAIT_IO_COMPLETION), ::SleepEx(0, TRUE));
    EXPECT_EQ(WaitResult::Woken, SleepWoken(m_waker.Get()));
}
