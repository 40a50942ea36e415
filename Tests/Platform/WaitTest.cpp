#include "Platform/Wait.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <thread>
#include <vector>

#include "Waitables.h"

namespace {

using namespace Platform;

// --- Events

TEST(WaitEventTest, AutoResetEventIsConsumedByOneWait)
{
    const CWaitableHandle event = Event(/*initialState=*/true, /*manualReset=*/false);
    EXPECT_EQ(WaitResult::Signaled, Look(event));
    EXPECT_EQ(WaitResult::Timeout, Look(event));
}

TEST(WaitEventTest, SettingTwiceIsOneSignalForAnAutoResetEvent)
{
    const CWaitableHandle event = Event(false, false);
    EXPECT_EQ(Success, SetEvent(event.Get()));
    EXPECT_EQ(Success, SetEvent(event.Get()));
    EXPECT_EQ(WaitResult::Signaled, Look(event));
    EXPECT_EQ(WaitResult::Timeout, Look(event));
}

TEST(WaitEventTest, ManualResetEventStaysUntilItIsReset)
{
    const CWaitableHandle event = Event(true, true);
    EXPECT_EQ(WaitResult::Signaled, Look(event));
    EXPECT_EQ(WaitResult::Signaled, Look(event));
    EXPECT_EQ(Success, ResetEvent(event.Get()));
    EXPECT_EQ(WaitResult::Timeout, Look(event));
    EXPECT_EQ(Success, ResetEvent(event.Get()));
}

TEST(WaitEventTest, ResetTakesASignalBackFromAnAutoResetEvent)
{
    const CWaitableHandle event = Event(true, false);
    EXPECT_EQ(Success, ResetEvent(event.Get()));
    EXPECT_EQ(WaitResult::Timeout, Look(event));
}

TEST(WaitEventTest, SettingReleasesAThreadThatWaits)
{
    const CWaitableHandle event = Event(false, false);
    int written = 0;
    std::thread setter([&] {
        written = 42;
        SetEvent(event.Get());
    });
    EXPECT_EQ(WaitResult::Signaled, Await(event));
    EXPECT_EQ(42, written); // what came before Set is visible behind the wait
    setter.join();
}

TEST(WaitEventTest, WhatCameBeforeSettingAManualEventIsVisibleToEveryWaiter)
{
    const CWaitableHandle event = Event(false, true);
    int written = 0;
    std::atomic<int> seen{0};
    std::vector<std::thread> waiters;
    for (int i = 0; i < 4; ++i)
        waiters.emplace_back([&] {
            if (Await(event) == WaitResult::Signaled) seen += written;
        });
    written = 10;
    SetEvent(event.Get());
    for (std::thread & waiter : waiters)
        waiter.join();
    EXPECT_EQ(40, seen);
}

TEST(WaitEventTest, EachSignalIsConsumedExactlyOnceByManyWaiters)
{
    constexpr int Waiters = 6;
    constexpr int Signals = 2000;
    const CWaitableHandle event = Event(false, false);
    const CWaitableHandle taken = Event(false, false);
    const CWaitableHandle stop = Event(false, true);
    std::atomic<int> consumed{0};
    std::vector<std::thread> waiters;
    for (int i = 0; i < Waiters; ++i)
        waiters.emplace_back([&, i] {
            const WaitHandle handles[] = {event.Get(), stop.Get()};
            for (;;) {
                // One half waits for one object, the other for many: both ways take the same signals.
                const SWaitOutcome outcome =
                    i % 2 == 0 ? WaitForMany(handles, 2, false, Infinite, false) : WaitForOne(event.Get(), 1, false);
                if (outcome.result == WaitResult::Signaled && outcome.index == 0) {
                    ++consumed;
                    SetEvent(taken.Get());
                } else if (Look(stop) == WaitResult::Signaled) {
                    return;
                }
            }
        });
    for (int i = 0; i < Signals; ++i) {
        SetEvent(event.Get());
        ASSERT_EQ(WaitResult::Signaled, Await(taken)) << i;
    }
    SetEvent(stop.Get());
    for (std::thread & waiter : waiters)
        waiter.join();
    EXPECT_EQ(Signals, consumed);
    EXPECT_EQ(WaitResult::Timeout, Look(event));
}

TEST(WaitEventTest, AdoptingWhatIsNoHandleFails)
{
    WaitHandle handle = nullptr;
    EXPECT_NE(Success, AdoptEvent(handle, nullptr));
    EXPECT_NE(Success, AdoptEvent(handle, reinterpret_cast<void *>(std::intptr_t{0x7FFFFFF0})));
    EXPECT_NE(Success, AdoptEvent(handle, reinterpret_cast<void *>(std::intptr_t{-1})));
    EXPECT_EQ(nullptr, handle);
}

TEST(WaitEventTest, OperationsOfAnotherKindOrOnNothingAreRefused)
{
    const CWaitableHandle event = Event(false, false);
    const CWaitableHandle mutex = Mutex(false);
    EXPECT_NE(Success, SetEvent(mutex.Get()));
    EXPECT_NE(Success, ResetEvent(nullptr));
    EXPECT_NE(Success, ReleaseMutex(event.Get()));
    EXPECT_NE(Success, ReleaseSemaphore(mutex.Get()));
    EXPECT_EQ(nullptr, EventForHost(mutex.Get()));
    CloseWaitable(nullptr);
    EXPECT_EQ(WaitResult::Timeout, Look(event));
}

// --- Timeouts

TEST(WaitTimeoutTest, LookingDoesNotWait)
{
    const CWaitableHandle event = Event(false, true);
    EXPECT_EQ(WaitResult::Timeout, WaitForOne(event.Get(), 0, true).result);
    EXPECT_EQ(WaitResult::Timeout, (CObjects() << event).First(0).result);
    EXPECT_EQ(WaitResult::Timeout, (CObjects() << event).All(0).result);
}

TEST(WaitTimeoutTest, AWaitThatNothingEndsTimesOut)
{
    const CWaitableHandle automatic = Event(false, false);
    const CWaitableHandle manual = Event(false, true);
    EXPECT_EQ(WaitResult::Timeout, WaitForOne(automatic.Get(), 20, false).result);
    EXPECT_EQ(WaitResult::Timeout, WaitForOne(manual.Get(), 20, true).result);
    EXPECT_EQ(WaitResult::Timeout, (CObjects() << automatic << manual).First(20).result);
    EXPECT_EQ(WaitResult::Timeout, (CObjects() << automatic << manual).All(20).result);
}

TEST(WaitTimeoutTest, TheDeadlineIsNeverEarly)
{
    const CWaitableHandle event = Event(false, false);
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(30);
    EXPECT_EQ(WaitResult::Timeout, WaitForOne(event.Get(), 30, true).result);
    EXPECT_GE(std::chrono::steady_clock::now(), end);
}

TEST(WaitTimeoutTest, TheLongestFiniteWaitIsNoShortOne)
{
    const CWaitableHandle event = Event(false, false);
    const CWaitableHandle never = Event(false, false);
    const CWaitableHandle ready = Event(true, true);
    const auto setMeanwhile = [&](auto const & wait) {
        std::thread setter([&] { SetEvent(event.Get()); });
        EXPECT_EQ(WaitResult::Signaled, wait().result);
        setter.join();
    };
    setMeanwhile([&] { return WaitForOne(event.Get(), Infinite - 1, /*wakeable=*/true); });
    setMeanwhile([&] { return (CObjects() << event << never).First(Infinite - 1); });
    setMeanwhile([&] { return (CObjects() << event << ready).All(Infinite - 1); });
}

TEST(WaitTimeoutTest, LostRacesDoNotProlongTheWait)
{
    // Another thread consumes each signal; the wait has to end at its deadline all the same.
    const CWaitableHandle event = Event(false, false);
    std::atomic<bool> stop{false};
    std::thread other([&] {
        while (!stop) {
            SetEvent(event.Get());
            Look(event);
        }
    });
    const CWaitableHandle never = Event(false, false);
    EXPECT_EQ(WaitResult::Timeout, (CObjects() << event << never).All(50).result);
    stop = true;
    other.join();
}

TEST(WaitTimeoutTest, WaitsForNothingOrTooMuchFail)
{
    const CWaitableHandle event = Event(true, true);
    const std::vector<WaitHandle> many(MaxWaitObjects + 1, event.Get());
    EXPECT_EQ(WaitResult::Failed, WaitForOne(nullptr, 0, false).result);
    EXPECT_EQ(WaitResult::Failed, WaitForMany(many.data(), 0, false, 0, false).result);
    EXPECT_EQ(WaitResult::Failed, WaitForMany(many.data(), MaxWaitObjects + 1, false, 0, false).result);
    EXPECT_EQ(WaitResult::Signaled, WaitForMany(many.data(), MaxWaitObjects, false, 0, false).result);
    const WaitHandle holed[] = {event.Get(), nullptr};
    EXPECT_EQ(WaitResult::Failed, WaitForMany(holed, 2, false, 0, false).result);
    EXPECT_NE(Success, WaitForMany(holed, 2, true, 0, false).error);
}

// --- Semaphores

struct SSemaphoreCase {
    char const * name;
    std::uint32_t initial;
    std::uint32_t maximum;
    bool valid;
};

class SemaphoreRangeTest : public testing::TestWithParam<SSemaphoreCase> {};

TEST_P(SemaphoreRangeTest, IsCreatedOnlyWithNumbersThatGoTogether)
{
    WaitHandle handle = nullptr;
    const ErrorCode error = NewSemaphore(handle, GetParam().initial, GetParam().maximum);
    const CWaitableHandle owner(handle);
    EXPECT_EQ(GetParam().valid, error == Success);
    EXPECT_EQ(GetParam().valid, handle != nullptr);
}

INSTANTIATE_TEST_SUITE_P(Edges, SemaphoreRangeTest,
                         testing::Values(SSemaphoreCase{"EmptyOfOne", 0, 1, true}, SSemaphoreCase{"Full", 3, 3, true},
                                         SSemaphoreCase{"LargestMaximum", 0, 0x7FFFFFFF, true},
                                         SSemaphoreCase{"AllOfTheLargest", 0x7FFFFFFF, 0x7FFFFFFF, true},
                                         SSemaphoreCase{"MaximumZero", 0, 0, false},
                                         SSemaphoreCase{"InitialAboveMaximum", 4, 3, false},
                                         SSemaphoreCase{"MaximumTooLarge", 0, 0x80000000, false}),
                         [](auto const & test) { return std::string(test.param.name); });

TEST(SemaphoreTest, GivesAsManyAsItHasAndNotMoreThanItsMaximum)
{
    const CWaitableHandle semaphore = Semaphore(2, 3);
    EXPECT_EQ(Success, ReleaseSemaphore(semaphore.Get()));
    EXPECT_NE(Success, ReleaseSemaphore(semaphore.Get()));
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(WaitResult::Signaled, Look(semaphore));
    EXPECT_EQ(WaitResult::Timeout, Look(semaphore));
    EXPECT_EQ(Success, ReleaseSemaphore(semaphore.Get()));
    EXPECT_EQ(WaitResult::Signaled, Look(semaphore));
}

TEST(SemaphoreTest, ManyThreadsNeverGetMoreThanWasReleased)
{
    constexpr int Threads = 4;
    constexpr int PerThread = 500;
    const CWaitableHandle semaphore = Semaphore(0, Threads * PerThread);
    std::atomic<int> taken{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < Threads; ++i) {
        threads.emplace_back([&] {
            for (int n = 0; n < PerThread; ++n)
                ReleaseSemaphore(semaphore.Get());
        });
        threads.emplace_back([&] {
            for (int n = 0; n < PerThread; ++n)
                taken += Await(semaphore) == WaitResult::Signaled ? 1 : 0;
        });
    }
    for (std::thread & thread : threads)
        thread.join();
    EXPECT_EQ(Threads * PerThread, taken);
    EXPECT_EQ(WaitResult::Timeout, Look(semaphore));
}

// --- Mutexes

TEST(MutexTest, IsRecursiveForItsOwnerAndClosedToOthers)
{
    const CWaitableHandle mutex = Mutex(/*initialOwner=*/true);
    EXPECT_EQ(WaitResult::Signaled, Look(mutex));
    RunToItsEnd([&] {
        EXPECT_EQ(WaitResult::Timeout, Look(mutex));
        EXPECT_NE(Success, ReleaseMutex(mutex.Get()));
    });
    EXPECT_EQ(Success, ReleaseMutex(mutex.Get()));
    RunToItsEnd([&] { EXPECT_EQ(WaitResult::Timeout, Look(mutex)); });
    EXPECT_EQ(Success, ReleaseMutex(mutex.Get()));
    EXPECT_NE(Success, ReleaseMutex(mutex.Get()));
    RunToItsEnd([&] {
        EXPECT_EQ(WaitResult::Signaled, Look(mutex));
        EXPECT_EQ(Success, ReleaseMutex(mutex.Get()));
    });
}

TEST(MutexTest, OwnersExcludeEachOther)
{
    const CWaitableHandle mutex = Mutex(false);
    int counter = 0; // guarded by the mutex
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&] {
            for (int n = 0; n < 500; ++n) {
                ASSERT_EQ(WaitResult::Signaled, Await(mutex));
                ++counter;
                ReleaseMutex(mutex.Get());
            }
        });
    for (std::thread & thread : threads)
        thread.join();
    EXPECT_EQ(2000, counter);
}

TEST(MutexTest, ReportsAbandonmentOnceWhenItsOwnerEndedWithoutRelease)
{
    const CWaitableHandle mutex = Mutex(false);
    RunToItsEnd([&] {
        EXPECT_EQ(WaitResult::Signaled, Look(mutex));
        EXPECT_EQ(WaitResult::Signaled, Look(mutex)); // the depth goes with the owner
    });
    EXPECT_EQ(WaitResult::Abandoned, Await(mutex));
    EXPECT_EQ(Success, ReleaseMutex(mutex.Get()));
    EXPECT_NE(Success, ReleaseMutex(mutex.Get()));
    EXPECT_EQ(WaitResult::Signaled, Look(mutex));
    EXPECT_EQ(Success, ReleaseMutex(mutex.Get()));
}

TEST(MutexTest, AbandonmentReleasesAThreadThatWaits)
{
    const CWaitableHandle mutex = Mutex(false);
    const CWaitableHandle owned = Event(false, false);
    const CWaitableHandle end = Event(false, false);
    std::thread owner([&] {
        Look(mutex);
        SetEvent(owned.Get());
        Await(end);
    });
    ASSERT_EQ(WaitResult::Signaled, Await(owned));
    std::atomic<WaitResult> result{WaitResult::Timeout};
    std::thread waiter([&] {
        const WaitHandle handles[] = {mutex.Get()};
        result = WaitForMany(handles, 1, false, kDeadlineMs, false).result;
    });
    SetEvent(end.Get());
    owner.join();
    waiter.join();
    EXPECT_EQ(WaitResult::Abandoned, result);
    EXPECT_EQ(WaitResult::Abandoned, Await(mutex)); // the waiter ended as its owner, too
    ReleaseMutex(mutex.Get());
}

TEST(MutexTest, SeveralMutexesOfOneThreadAreAbandonedTogether)
{
    const CWaitableHandle first = Mutex(false);
    const CWaitableHandle second = Mutex(false);
    const CWaitableHandle released = Mutex(false);
    RunToItsEnd([&] {
        Look(first);
        Look(released);
        Look(second);
        ReleaseMutex(released.Get());
    });
    EXPECT_EQ(WaitResult::Abandoned, Look(first));
    EXPECT_EQ(WaitResult::Abandoned, Look(second));
    EXPECT_EQ(WaitResult::Signaled, Look(released));
}

TEST(MutexTest, AnAbandonedOneAmongManyIsReportedByItsIndex)
{
    const CWaitableHandle event = Event(false, false);
    const CWaitableHandle other = Mutex(false);
    const CWaitableHandle mutex = Mutex(false);
    RunToItsEnd([&] { Look(mutex); });
    Look(other);
    ASSERT_EQ(Success, ReleaseMutex(other.Get()));
    const SWaitOutcome outcome = (CObjects() << event << mutex << other).First();
    EXPECT_EQ(WaitResult::Abandoned, outcome.result);
    EXPECT_EQ(1u, outcome.index);
    EXPECT_EQ(Success, ReleaseMutex(mutex.Get()));
}

TEST(MutexTest, ClosingAnOwnedMutexIsSafeForItsOwner)
{
    RunToItsEnd([] {
        CWaitableHandle owned = Mutex(true);
        const CWaitableHandle other = Mutex(true);
        owned.Reset();
        EXPECT_EQ(WaitResult::Signaled, Look(other));
    });
}

TEST(MutexTest, MayBeClosedWhileItsOwnerEnds)
{
    for (int round = 0; round < 50; ++round) {
        std::vector<CWaitableHandle> mutexes;
        for (int i = 0; i < 200; ++i)
            mutexes.push_back(Mutex(false));
        const CWaitableHandle owned = Event(false, false);
        std::thread owner([&] {
            for (CWaitableHandle const & mutex : mutexes)
                EXPECT_EQ(WaitResult::Signaled, Look(mutex));
            SetEvent(owned.Get());
        });
        EXPECT_EQ(WaitResult::Signaled, Await(owned));
        for (CWaitableHandle & mutex : mutexes)
            mutex.Reset();
        owner.join();
    }
}

TEST(MutexTest, AWaitForManyKnowsTheMutexOfTheCaller)
{
    const CWaitableHandle event = Event(false, false);
    const CWaitableHandle mutex = Mutex(true);
    const SWaitOutcome outcome = (CObjects() << event << mutex).First(kDeadlineMs);
    EXPECT_EQ(WaitResult::Signaled, outcome.result);
    EXPECT_EQ(1u, outcome.index);
    EXPECT_EQ(Success, ReleaseMutex(mutex.Get()));
    EXPECT_EQ(Success, ReleaseMutex(mutex.Get()));
    EXPECT_NE(Success, ReleaseMutex(mutex.Get()));
}

// --- Many objects

TEST(WaitForManyTest, TheLowestIndexWins)
{
    const CWaitableHandle a = Event(false, false);
    const CWaitableHandle b = Event(true, false);
    const CWaitableHandle c = Event(true, false);
    EXPECT_EQ(1u, (CObjects() << a << b << c).First().index);
    EXPECT_EQ(2u, (CObjects() << a << b << c).First().index);
    EXPECT_EQ(WaitResult::Timeout, (CObjects() << a << b << c).First().result);
}

TEST(WaitForManyTest, OnlyTheReportedObjectIsTaken)
{
    const CWaitableHandle a = Event(true, false);
    const CWaitableHandle b = Event(true, false);
    EXPECT_EQ(0u, (CObjects() << a << b).First().index);
    EXPECT_EQ(WaitResult::Timeout, Look(a));
    EXPECT_EQ(WaitResult::Signaled, Look(b));
}

class WaitForManyPlaceTest : public testing::TestWithParam<unsigned> {};

TEST_P(WaitForManyPlaceTest, ReportsTheObjectThatFires)
{
    const unsigned fired = GetParam();
    std::vector<CWaitableHandle> owners;
    CObjects objects;
    for (unsigned i = 0; i < MaxWaitObjects; ++i) {
        owners.push_back(Event(false, i % 2 == 0));
        objects << owners.back();
    }
    std::thread setter([&] { SetEvent(owners[fired].Get()); });
    const SWaitOutcome outcome = objects.First(kDeadlineMs);
    setter.join();
    EXPECT_EQ(WaitResult::Signaled, outcome.result);
    EXPECT_EQ(fired, outcome.index);
}

INSTANTIATE_TEST_SUITE_P(Places, WaitForManyPlaceTest, testing::Values(0u, 1u, 15u, 16u, 62u, 63u));

TEST(WaitForAllTest, TakesAllTogether)
{
    const CWaitableHandle a = Event(true, false);
    const CWaitableHandle b = Semaphore(1, 1);
    const CWaitableHandle c = Event(true, true);
    const CWaitableHandle d = Mutex(false);
    const SWaitOutcome outcome = (CObjects() << a << b << c << d).All();
    EXPECT_EQ(WaitResult::Signaled, outcome.result);
    EXPECT_EQ(0u, outcome.index);
    EXPECT_EQ(WaitResult::Timeout, Look(a));
    EXPECT_EQ(WaitResult::Timeout, Look(b));
    EXPECT_EQ(WaitResult::Signaled, Look(c));
    EXPECT_EQ(Success, ReleaseMutex(d.Get()));
}

TEST(WaitForAllTest, TakesNoneWhenOneIsMissing)
{
    const CWaitableHandle a = Event(true, false);
    const CWaitableHandle missing = Event(false, false);
    const CWaitableHandle c = Semaphore(1, 1);
    const CWaitableHandle d = Mutex(false);
    EXPECT_EQ(WaitResult::Timeout, (CObjects() << a << missing << c << d).All(10).result);
    EXPECT_NE(Success, ReleaseMutex(d.Get()));
    EXPECT_EQ(WaitResult::Signaled, Look(a));
    EXPECT_EQ(WaitResult::Signaled, Look(c));
}

TEST(WaitForAllTest, WaitsForThoseThatAreMissing)
{
    const CWaitableHandle a = Event(true, false);
    const CWaitableHandle b = Event(false, false);
    const CWaitableHandle c = Event(false, true);
    std::thread setter([&] {
        SetEvent(c.Get());
        SetEvent(b.Get());
    });
    EXPECT_EQ(WaitResult::Signaled, (CObjects() << a << b << c).All(kDeadlineMs).result);
    setter.join();
    EXPECT_EQ(WaitResult::Timeout, Look(a));
    EXPECT_EQ(WaitResult::Timeout, Look(b));
}

TEST(WaitForAllTest, AMutexOfTheCallerCountsAsReady)
{
    const CWaitableHandle mutex = Mutex(true);
    const CWaitableHandle event = Event(true, false);
    EXPECT_EQ(WaitResult::Signaled, (CObjects() << mutex << event).All().result);
    EXPECT_EQ(WaitResult::Timeout, (CObjects() << mutex << event).All(10).result);
    EXPECT_EQ(Success, ReleaseMutex(mutex.Get()));
    EXPECT_EQ(Success, ReleaseMutex(mutex.Get()));
    EXPECT_NE(Success, ReleaseMutex(mutex.Get()));
}

TEST(WaitForAllTest, AnAbandonedMutexAmongThemIsReported)
{
    const CWaitableHandle mutex = Mutex(false);
    const CWaitableHandle event = Event(false, false);
    RunToItsEnd([&] { Look(mutex); });
    EXPECT_EQ(WaitResult::Timeout, (CObjects() << event << mutex).All(10).result);
    SetEvent(event.Get());
    EXPECT_EQ(WaitResult::Abandoned, (CObjects() << event << mutex).All().result);
    EXPECT_EQ(Success, ReleaseMutex(mutex.Get()));
    EXPECT_EQ(WaitResult::Signaled, Look(mutex));
    ReleaseMutex(mutex.Get());
}

TEST(WaitForAllTest, RefusesTheSameObjectTwice)
{
    const CWaitableHandle event = Event(true, true);
    EXPECT_EQ(WaitResult::Failed, (CObjects() << event << event).All().result);
}

TEST(WaitForAllTest, WaitersInOppositeOrdersNeitherLockUpNorShare)
{
    const CWaitableHandle a = Event(true, false);
    const CWaitableHandle b = Event(true, false);
    int inside = 0; // guarded by holding both events
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&, i] {
            const CWaitableHandle & first = i % 2 == 0 ? a : b;
            const CWaitableHandle & second = i % 2 == 0 ? b : a;
            for (int n = 0; n < 200; ++n) {
                ASSERT_EQ(WaitResult::Signaled, (CObjects() << first << second).All(kDeadlineMs).result);
                ++inside;
                SetEvent(first.Get());
                SetEvent(second.Get());
            }
        });
    for (std::thread & thread : threads)
        thread.join();
    EXPECT_EQ(800, inside);
}

// --- Wake-ups

TEST(WakeTest, APendingWakeUpEndsTheNextWakeableWaitAndOnlyThat)
{
    const CWaitableHandle event = Event(false, true);
    const CWakerHandle waker(CurrentThreadWaker());
    WakeThread(waker.Get());
    WakeThread(waker.Get());
    EXPECT_EQ(WaitResult::Woken, WaitForOne(event.Get(), Infinite, true).result);
    EXPECT_EQ(WaitResult::Timeout, WaitForOne(event.Get(), 0, true).result);
}

TEST(WakeTest, EveryFormOfWaitIsWoken)
{
    const CWaitableHandle event = Event(false, false);
    const CWakerHandle waker(CurrentThreadWaker());
    WakeThread(waker.Get());
    EXPECT_EQ(WaitResult::Woken, WaitForOne(event.Get(), 0, true).result);
    WakeThread(waker.Get());
    EXPECT_EQ(WaitResult::Woken, (CObjects() << event).Wait(false, Infinite, true).result);
    WakeThread(waker.Get());
    EXPECT_EQ(WaitResult::Woken, (CObjects() << event).Wait(true, Infinite, true).result);
    WakeThread(waker.Get());
    EXPECT_EQ(WaitResult::Woken, WakeableSleep(Infinite).result);
    WakeThread(waker.Get());
    EXPECT_EQ(WaitResult::Woken, WakeableSleep(0).result);
    EXPECT_EQ(WaitResult::Timeout, WakeableSleep(0).result);
    EXPECT_EQ(WaitResult::Timeout, WakeableSleep(5).result);
}

TEST(WakeTest, AWokenWaitTellsWhatWasLeftOfItsTime)
{
    const CWaitableHandle event = Event(false, false);
    const CWakerHandle waker(CurrentThreadWaker());
    constexpr std::uint32_t longest = Infinite - 1;
    constexpr auto deadlineMs = static_cast<std::uint32_t>(kDeadlineMs);
    for (const std::uint32_t timeout : {std::uint32_t{0}, deadlineMs, longest - 1, longest}) {
        WakeThread(waker.Get());
        const SWaitOutcome one = WaitForOne(event.Get(), timeout, true);
        WakeThread(waker.Get());
        const SWaitOutcome all = (CObjects() << event).Wait(true, timeout, true);
        for (SWaitOutcome const & outcome : {one, all}) {
            EXPECT_EQ(WaitResult::Woken, outcome.result);
            EXPECT_LE(outcome.leftMs, timeout);
            EXPECT_LE(timeout - outcome.leftMs, deadlineMs);
        }
    }
    WakeThread(waker.Get());
    EXPECT_EQ(Infinite, WaitForOne(event.Get(), Infinite, true).leftMs);
}

TEST(WakeTest, ASignalledObjectWinsAndTheWakeUpStaysPending)
{
    const CWaitableHandle event = Event(true, false);
    const CWakerHandle waker(CurrentThreadWaker());
    WakeThread(waker.Get());
    EXPECT_EQ(WaitResult::Signaled, WaitForOne(event.Get(), Infinite, true).result);
    SetEvent(event.Get());
    EXPECT_EQ(WaitResult::Signaled, (CObjects() << event).Wait(false, Infinite, true).result);
    SetEvent(event.Get());
    EXPECT_EQ(WaitResult::Signaled, (CObjects() << event).Wait(true, Infinite, true).result);
    EXPECT_EQ(WaitResult::Woken, WaitForOne(event.Get(), Infinite, true).result);
}

TEST(WakeTest, WaitsThatAreNotWakeableLeaveTheWakeUpPending)
{
    const CWaitableHandle event = Event(false, false);
    const CWakerHandle waker(CurrentThreadWaker());
    WakeThread(waker.Get());
    EXPECT_EQ(WaitResult::Timeout, WaitForOne(event.Get(), 5, false).result);
    Sleep(1);
    Sleep(0);
    EXPECT_EQ(WaitResult::Woken, WaitForOne(event.Get(), Infinite, true).result);
}

TEST(WakeTest, AnotherThreadEndsABlockingWait)
{
    const CWaitableHandle never = Event(false, false);
    const CWaitableHandle ready = Event(false, false);
    std::atomic<WakerHandle> waker{nullptr};
    std::atomic<int> woken{0};
    std::thread waiter([&] {
        waker = CurrentThreadWaker();
        for (int i = 0; i < 100; ++i) {
            SetEvent(ready.Get());
            if (WaitForOne(never.Get(), kDeadlineMs, true).result == WaitResult::Woken) ++woken;
        }
    });
    for (int i = 0; i < 100; ++i) {
        ASSERT_EQ(WaitResult::Signaled, Await(ready));
        WakeThread(waker);
    }
    waiter.join();
    EXPECT_EQ(100, woken);
    WakeThread(waker); // its thread has ended; nothing happens
    CloseWaker(waker);
}

TEST(WakeTest, TheWakerOfOneThreadIsOneObject)
{
    const CWakerHandle first(CurrentThreadWaker());
    const CWakerHandle second(CurrentThreadWaker());
    EXPECT_NE(nullptr, first.Get());
    EXPECT_EQ(first.Get(), second.Get());
    WakeThread(nullptr);
    CloseWaker(nullptr);
}

} // namespace
