#include "Platform/LoopEvents.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "Platform/Error.h"
#include "Waitables.h"

using namespace Platform;

TEST(WakeUpTest, IsReadableFromItsSignalUntilItIsCleared)
{
    const CWakeUp wakeUp;
    const CWakeUp other;
    ASSERT_TRUE(wakeUp.IsValid());
    EXPECT_NE(wakeUp.Descriptor(), other.Descriptor());
    EXPECT_EQ(0u, ReadableNow(wakeUp.Descriptor(), other.Descriptor()));
    wakeUp.Signal();
    wakeUp.Signal();
    EXPECT_TRUE(HoldsWithin(kDeadline, [&] { return ReadableNow(wakeUp.Descriptor(), other.Descriptor()) == 1u; }));
    EXPECT_EQ(2u, ReadableNow(other.Descriptor(), wakeUp.Descriptor()));
    wakeUp.Clear();
    EXPECT_EQ(0u, ReadableNow(wakeUp.Descriptor(), other.Descriptor()));
    wakeUp.Clear();
    wakeUp.Signal();
    EXPECT_TRUE(HoldsWithin(kDeadline, [&] { return ReadableNow(other.Descriptor(), wakeUp.Descriptor()) == 2u; }));
}

TEST(WakeUpTest, ManySignalsNeverBlockAndAreClearedTogether)
{
    const CWakeUp wakeUp;
    for (int i = 0; i < 10000; ++i)
        wakeUp.Signal();
    wakeUp.Clear();
    // One that was still on its way is cleared as well.
    EXPECT_TRUE(HoldsWithin(kDeadline, [&] {
        wakeUp.Clear();
        return ReadableNow(wakeUp.Descriptor(), -1) == 0u;
    }));
}

TEST(WakeUpTest, SignallingKeepsTheLastError)
{
    const CWakeUp wakeUp;
    SetLastError(4711);
    wakeUp.Signal();
    EXPECT_EQ(4711u, LastError());
}

TEST(AlarmClockTest, ARingThatNobodyWaitedForIsKept)
{
    const CAlarmClock alarm;
    ASSERT_TRUE(alarm.IsValid());
    alarm.Arm(0);
    alarm.Wait();
    alarm.Arm(10);
    alarm.Wait();
}

TEST(AlarmClockTest, ALaterSettingTakesThePlaceOfTheFirst)
{
    const CAlarmClock alarm;
    std::atomic<bool> rang{false};
    alarm.Arm(3600000);
    std::thread sleeper([&] {
        alarm.Wait();
        rang = true;
    });
    EXPECT_FALSE(HoldsWithin(std::chrono::milliseconds(20), [&] { return rang.load(); }));
    alarm.Arm(1);
    EXPECT_TRUE(HoldsWithin(kDeadline, [&] { return rang.load(); }));
    sleeper.join();
}

TEST(EventDescriptorTest, ShowsTheSignalOfAnEventThatAHostGot)
{
    const CWaitableHandle event = Event(false, false);
    const CWaitableHandle other = Event(true, false);
    const int descriptor = EventDescriptor(EventForHost(event.Get()));
    const int signalled = EventDescriptor(EventForHost(other.Get()));
    EXPECT_EQ(2u, ReadableNow(descriptor, signalled));
    SetEvent(event.Get());
    EXPECT_EQ(3u, ReadableNow(descriptor, signalled));
    TakeEventSignal(descriptor);
    EXPECT_EQ(2u, ReadableNow(descriptor, signalled));
    EXPECT_EQ(WaitResult::Timeout, Look(event));
    EXPECT_EQ(WaitResult::Signaled, Look(other)) << "looking took nothing";
    EXPECT_EQ(-1, EventDescriptor(nullptr));
}
