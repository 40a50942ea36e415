#include "Platform/Wait.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "Platform/Waitables.h"

#include <windows.h>

namespace {

using Platform::AdoptEvent;
using Platform::CurrentThreadWaker;
using Platform::CWaitableHandle;
using Platform::CWakerHandle;
using Platform::EventForHost;
using Platform::Infinite;
using Platform::Success;
using Platform::WaitHandle;
using Platform::WaitResult;
using Platform::WakerHandle;
using Platform::WakeThread;

std::atomic<int> g_foreignCalls{0};

void CALLBACK ForeignCall(ULONG_PTR)
{
    ++g_foreignCalls;
}

/// What code that knows nothing of ours queues to the calling thread.
void QueueForeignCall()
{
    ASSERT_NE(0u, ::QueueUserAPC(&ForeignCall, ::GetCurrentThread(), 0));
}

TEST(WaitHandleTest, TheHostsHandleIsTheEventItself)
{
    const CWaitableHandle event = Event(true, false);
    const HANDLE handle = EventForHost(event.Get());
    EXPECT_EQ(WAIT_OBJECT_0, ::WaitForSingleObject(handle, 0));
    EXPECT_EQ(WaitResult::Timeout, Look(event));
    EXPECT_NE(0, ::SetEvent(handle));
    EXPECT_EQ(WaitResult::Signaled, Look(event));
    EXPECT_EQ(nullptr, EventForHost(nullptr));
}

TEST(WaitHandleTest, AnAdoptedHandleIsAnEventAndClosedWithIt)
{
    const HANDLE made = ::CreateEventA(nullptr, /*bManualReset=*/FALSE, /*bInitialState=*/TRUE, nullptr);
    WaitHandle handle = nullptr;
    ASSERT_EQ(Success, AdoptEvent(handle, made));
    CWaitableHandle event(handle);
    EXPECT_EQ(WaitResult::Signaled, Look(event));
    EXPECT_EQ(WaitResult::Timeout, Look(event));
    EXPECT_EQ(Success, Platform::SetEvent(event.Get()));
    EXPECT_EQ(WaitResult::Signaled, Look(event));
    event.Reset();
    DWORD flags = 0;
    EXPECT_EQ(0, ::GetHandleInformation(made, &flags));
}

TEST(WaitHandleTest, HandlesAreNotInherited)
{
    const CWaitableHandle event = Event(false, false);
    DWORD flags = HANDLE_FLAG_INHERIT;
    ASSERT_NE(0, ::GetHandleInformation(EventForHost(event.Get()), &flags));
    EXPECT_EQ(0u, flags & HANDLE_FLAG_INHERIT);
}

TEST(QueuedCallTest, ACallOfSomebodyElseRunsInAWakeableWaitAndEndsNone)
{
    const CWaitableHandle event = Event(false, false);
    const CWakerHandle waker(CurrentThreadWaker());
    const int before = g_foreignCalls;
    QueueForeignCall();
    EXPECT_EQ(WaitResult::Timeout, WaitForOne(event.Get(), 20, true).result);
    QueueForeignCall();
    EXPECT_EQ(WaitResult::Timeout, WaitForOne(event.Get(), 0, true).result);
    QueueForeignCall();
    EXPECT_EQ(WaitResult::Timeout, (CObjects() << event).Wait(false, 20, true).result);
    QueueForeignCall();
    EXPECT_EQ(WaitResult::Timeout, Platform::WakeableSleep(20).result);
    EXPECT_EQ(before + 4, g_foreignCalls);
}

TEST(QueuedCallTest, AWaitThatIsNotWakeableRunsNone)
{
    const CWaitableHandle event = Event(false, false);
    const int before = g_foreignCalls;
    QueueForeignCall();
    EXPECT_EQ(WaitResult::Timeout, WaitForOne(event.Get(), 5, false).result);
    Platform::Sleep(1);
    EXPECT_EQ(before, g_foreignCalls);
    EXPECT_EQ(static_cast<DWORD>(WAIT_IO_COMPLETION), ::SleepEx(0, TRUE));
    EXPECT_EQ(before + 1, g_foreignCalls);
}

TEST(QueuedCallTest, AWakeUpThatAWaitOfSomebodyElseHasSeenStaysPending)
{
    const CWaitableHandle event = Event(false, false);
    const CWakerHandle waker(CurrentThreadWaker());
    WakeThread(waker.Get());
    EXPECT_EQ(static_cast<DWORD>(WAIT_IO_COMPLETION), ::SleepEx(INFINITE, TRUE));
    EXPECT_EQ(WaitResult::Woken, WaitForOne(event.Get(), Infinite, true).result);
    EXPECT_EQ(WaitResult::Timeout, WaitForOne(event.Get(), 0, true).result);
}

TEST(QueuedCallTest, AWakeUpBehindACallOfSomebodyElseEndsTheWait)
{
    const CWaitableHandle event = Event(false, false);
    const CWakerHandle waker(CurrentThreadWaker());
    QueueForeignCall();
    WakeThread(waker.Get());
    EXPECT_EQ(WaitResult::Woken, WaitForOne(event.Get(), Infinite, true).result);
    EXPECT_EQ(WaitResult::Timeout, WaitForOne(event.Get(), 0, true).result);
}

TEST(QueuedCallTest, WakeUpsOutsideOfAWaitLeaveNoCallsBehind)
{
    const CWakerHandle waker(CurrentThreadWaker());
    for (int i = 0; i < 100; ++i) {
        WakeThread(waker.Get());
        WakeThread(waker.Get());
        EXPECT_EQ(WaitResult::Woken, Platform::WakeableSleep(Infinite).result);
    }
    EXPECT_EQ(0u, ::SleepEx(0, TRUE));
}

TEST(QueuedCallTest, WakingKeepsTheLastError)
{
    CWakerHandle waker;
    std::thread([&] { waker.Reset(CurrentThreadWaker()); }).join();
    ::SetLastError(4711);
    WakeThread(waker.Get()); // of a thread that has ended, which the system refuses
    EXPECT_EQ(4711u, ::GetLastError());
}

TEST(QueuedCallTest, AMutexOfAnEndedThreadIsAbandonedToAWakeableWait)
{
    const CWaitableHandle mutex = Mutex(false);
    const CWakerHandle waker(CurrentThreadWaker());
    RunToItsEnd([&] { Look(mutex); });
    WakeThread(waker.Get());
    EXPECT_EQ(WaitResult::Abandoned, WaitForOne(mutex.Get(), Infinite, true).result) << "the object wins";
    EXPECT_EQ(WaitResult::Woken, Platform::WakeableSleep(Infinite).result);
    EXPECT_EQ(Success, Platform::ReleaseMutex(mutex.Get()));
}

} // namespace
