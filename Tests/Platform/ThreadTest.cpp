#include "Platform/Thread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "StartedThreads.h"
#include "Support/ProcessThreads.h"

namespace {

using namespace Platform;

std::uint32_t ReturnSeven(void *) noexcept
{
    return 7;
}

std::uint32_t Count(void * counter) noexcept
{
    ++*static_cast<std::atomic<int> *>(counter);
    return 0;
}

TEST(ThreadTest, EndsWithTheResultOfItsBody)
{
    const SStarted thread = Start(&ReturnSeven, nullptr);
    EXPECT_EQ(WaitResult::Signaled, AwaitEnd(thread));
    EXPECT_EQ(7u, ExitCode(thread));
    EXPECT_EQ(WaitResult::Signaled, AwaitEnd(thread, 0)) << "signalled for good";
}

TEST(ThreadTest, IsStillActiveWhileItRuns)
{
    const CWaitableHandle event = ManualEvent();
    const SStarted thread = Start(&WaitForIt, event.Get());
    EXPECT_EQ(StillActive, ExitCode(thread));
    EXPECT_EQ(WaitResult::Timeout, AwaitEnd(thread, 0));
    SetEvent(event.Get());
    EXPECT_EQ(WaitResult::Signaled, AwaitEnd(thread));
    EXPECT_EQ(1u, ExitCode(thread));
}

TEST(ThreadTest, ItsEndIsOneOfManyObjects)
{
    const CWaitableHandle event = ManualEvent();
    const SStarted thread = Start(&WaitForIt, event.Get());
    const CWaitableHandle never = ManualEvent();
    const WaitHandle handles[] = {never.Get(), thread.handle.Get()};
    EXPECT_EQ(WaitResult::Timeout, WaitForMany(handles, 2, false, 0, false).result);
    SetEvent(event.Get());
    const SWaitOutcome outcome = WaitForMany(handles, 2, false, kDeadlineMs, false);
    EXPECT_EQ(WaitResult::Signaled, outcome.result);
    EXPECT_EQ(1u, outcome.index);
}

TEST(ThreadTest, TellsItsIdAtTheStart)
{
    std::atomic<std::uint32_t> own{0};
    const SStarted thread = Start(
        [](void * place) noexcept -> std::uint32_t {
            *static_cast<std::atomic<std::uint32_t> *>(place) = CurrentThreadId();
            return 0;
        },
        &own);
    ASSERT_EQ(WaitResult::Signaled, AwaitEnd(thread));
    EXPECT_EQ(own, thread.id);
    EXPECT_NE(CurrentThreadId(), thread.id);
}

TEST(ThreadTest, ASuspendedThreadBeginsWithItsLastResume)
{
    std::atomic<int> runs{0};
    const SStarted thread = Start(&Count, &runs, /*suspended=*/true);
    std::uint32_t previous = 99;
    EXPECT_EQ(Success, SuspendThread(thread.handle.Get(), previous));
    EXPECT_EQ(1u, previous);
    EXPECT_EQ(Success, ResumeThread(thread.handle.Get(), previous));
    EXPECT_EQ(2u, previous);
    EXPECT_EQ(WaitResult::Timeout, AwaitEnd(thread, 20));
    EXPECT_EQ(0, runs);
    EXPECT_EQ(StillActive, ExitCode(thread));
    EXPECT_EQ(Success, ResumeThread(thread.handle.Get(), previous));
    EXPECT_EQ(1u, previous);
    EXPECT_EQ(WaitResult::Signaled, AwaitEnd(thread));
    EXPECT_EQ(1, runs);
}

TEST(ThreadTest, ClosingTheHandleOfAThreadThatNobodyResumedEndsItWithoutItsBody)
{
    std::atomic<int> runs{0};
    std::size_t withIt = 0;
    {
        const SStarted thread = Start(&Count, &runs, /*suspended=*/true);
        withIt = ProcessThreads();
    }
    EXPECT_TRUE(HoldsWithin(kDeadline, [&] { return ProcessThreads() < withIt; }));
    EXPECT_EQ(0, runs);
    StartThreadsThatWineMayRefuse();
}

TEST(ThreadTest, ClosingTheHandleLeavesARunningThreadAlone)
{
    const CWaitableHandle event = ManualEvent();
    const CWaitableHandle done = ManualEvent();
    struct SArgument {
        WaitHandle event, done;
    } argument{event.Get(), done.Get()};
    {
        const SStarted thread = Start(
            [](void * pointer) noexcept -> std::uint32_t {
                const auto & it = *static_cast<SArgument *>(pointer);
                WaitForIt(it.event);
                SetEvent(it.done);
                return 0;
            },
            &argument);
    }
    SetEvent(event.Get());
    EXPECT_EQ(WaitResult::Signaled, WaitForOne(done.Get(), kDeadlineMs, false).result);
}

TEST(ThreadTest, OfTwoWhoResumeItAtOnceOneLetsItBeginAndItRunsToItsEnd)
{
    struct SArgument {
        CWaitableHandle go = ManualEvent();
        CWaitableHandle done = ManualEvent();
    };
    for (int round = 0; round < 50; ++round) {
        SArgument argument;
        std::atomic<int> ready{0};
        std::atomic<int> letItBegin{0};
        {
            const SStarted thread = Start(
                [](void * pointer) noexcept -> std::uint32_t {
                    const auto & it = *static_cast<SArgument *>(pointer);
                    WaitForIt(it.go.Get());
                    SetEvent(it.done.Get());
                    return 0;
                },
                &argument, /*suspended=*/true);
            const auto resume = [&] {
                ++ready;
                while (ready != 2) {
                }
                std::uint32_t previous = 0;
                EXPECT_EQ(Success, ResumeThread(thread.handle.Get(), previous));
                if (previous == 1) ++letItBegin;
            };
            std::thread other(resume);
            resume();
            other.join();
        }
        EXPECT_EQ(1, letItBegin);
        SetEvent(argument.go.Get());
        ASSERT_EQ(WaitResult::Signaled, WaitForOne(argument.done.Get(), kDeadlineMs, false).result) << round;
    }
}

TEST(ThreadTest, AThreadMayCloseItsOwnHandle)
{
    struct SArgument {
        std::atomic<WaitHandle> self{nullptr};
        CWaitableHandle done = ManualEvent();
    } argument;
    SStarted thread = Start(
        [](void * pointer) noexcept -> std::uint32_t {
            auto & it = *static_cast<SArgument *>(pointer);
            CloseWaitable(it.self);
            SetEvent(it.done.Get());
            return 0;
        },
        &argument, /*suspended=*/true);
    argument.self = thread.handle.Get();
    std::uint32_t previous = 0;
    ResumeThread(thread.handle.Release(), previous);
    EXPECT_EQ(WaitResult::Signaled, WaitForOne(argument.done.Get(), kDeadlineMs, false).result);
}

TEST(ThreadTest, ItsMutexesAreAbandonedBeforeItsEndIsSeen)
{
    WaitHandle handle = nullptr;
    ASSERT_EQ(Success, NewMutex(handle, false));
    const CWaitableHandle mutex(handle);
    const SStarted thread = Start(&WaitForIt, mutex.Get());
    ASSERT_EQ(WaitResult::Signaled, AwaitEnd(thread));
    EXPECT_EQ(WaitResult::Abandoned, WaitForOne(mutex.Get(), 0, false).result);
    ReleaseMutex(mutex.Get());
}

TEST(ThreadTest, SmallAndLargeStacksAreGiven)
{
    for (const std::uint32_t bytes : {1u, 1048576u, 1048577u}) {
        const SStarted thread = Start(&ReturnSeven, nullptr, false, bytes);
        EXPECT_EQ(WaitResult::Signaled, AwaitEnd(thread)) << bytes;
        EXPECT_EQ(7u, ExitCode(thread));
    }
}

TEST(ThreadTest, OperationsOnWhatIsNoThreadAreRefused)
{
    const CWaitableHandle event = ManualEvent();
    std::uint32_t value = 5;
    EXPECT_NE(Success, ResumeThread(event.Get(), value));
    EXPECT_NE(Success, Platform::SuspendThread(nullptr, value));
    EXPECT_NE(Success, ThreadExitCode(event.Get(), value));
    EXPECT_NE(Success, Platform::TerminateThread(nullptr, 1));
    EXPECT_EQ(5u, value);
}

// --- Forced end

TEST(TerminateThreadTest, AThreadThatHasNotBegunEndsWithoutItsBody)
{
    std::atomic<int> runs{0};
    const SStarted thread = Start(&Count, &runs, /*suspended=*/true);
    EXPECT_EQ(Success, TerminateThread(thread.handle.Get(), 33));
    EXPECT_EQ(WaitResult::Signaled, AwaitEnd(thread));
    EXPECT_EQ(33u, ExitCode(thread));
    EXPECT_EQ(0, runs);
    StartThreadsThatWineMayRefuse();
}

TEST(TerminateThreadTest, AnEndedThreadKeepsItsExitCode)
{
    const SStarted thread = Start(&ReturnSeven, nullptr);
    ASSERT_EQ(WaitResult::Signaled, AwaitEnd(thread));
    EXPECT_EQ(Success, TerminateThread(thread.handle.Get(), 33));
    EXPECT_EQ(7u, ExitCode(thread));
}

TEST(TerminateThreadTest, ARunningThreadCountsAsEndedAndGoesNoFurtherThanItsWait)
{
    SAbandoned * const shared = NewAbandoned();
    WaitHandle handle = nullptr;
    ASSERT_EQ(Success, NewMutex(handle, false));
    shared->mutex.Reset(handle);
    const SStarted thread = Start(
        [](void * argument) noexcept -> std::uint32_t {
            auto * const its = static_cast<SAbandoned *>(argument);
            WaitForOne(its->mutex.Get(), 0, false);
            SetEvent(its->begun.Get());
            WaitForOne(its->never.Get(), Infinite, true);
            ++its->behindTheWait;
            return 1;
        },
        shared);
    ASSERT_EQ(WaitResult::Signaled, WaitForOne(shared->begun.Get(), kDeadlineMs, false).result);

    EXPECT_EQ(Success, TerminateThread(thread.handle.Get(), 77));
    EXPECT_EQ(WaitResult::Signaled, AwaitEnd(thread));
    EXPECT_EQ(77u, ExitCode(thread));
    EXPECT_EQ(WaitResult::Abandoned, WaitForOne(shared->mutex.Get(), 0, false).result);
    SetEvent(shared->never.Get());
    EXPECT_FALSE(HoldsWithin(std::chrono::milliseconds(30), [&] { return shared->behindTheWait != 0; }));
    EXPECT_EQ(Success, TerminateThread(thread.handle.Get(), 78));
    EXPECT_EQ(77u, ExitCode(thread));
}

// --- Slots

TEST(ThreadSlotTest, EachThreadHasItsOwnWord)
{
    std::uint32_t slot = 0;
    ASSERT_EQ(Success, NewThreadSlot(slot));
    EXPECT_EQ(nullptr, ThreadSlotValue(slot));
    int mine = 0;
    EXPECT_EQ(Success, SetThreadSlotValue(slot, &mine));
    std::thread([&] {
        EXPECT_EQ(nullptr, ThreadSlotValue(slot));
        int other = 0;
        EXPECT_EQ(Success, SetThreadSlotValue(slot, &other));
        EXPECT_EQ(&other, ThreadSlotValue(slot));
    }).join();
    EXPECT_EQ(&mine, ThreadSlotValue(slot));
    FreeThreadSlot(slot);
}

} // namespace
