#include "Standby.h"

#include <gtest/gtest.h>

#include <thread>

#include "Platform/Clock.h"
#include "Support/Deadline.h"

namespace {

using Service::CStandby;

TEST(StandbyTest, ACallThatComesBackInTimeKeepsTheLoop)
{
    CStandby standby;
    ASSERT_TRUE(standby.IsValid());
    for (int i = 0; i < 1000; ++i)
        ASSERT_TRUE(standby.EndCall(standby.BeginCall(Platform::MonotonicMs())));
}

TEST(StandbyTest, ALateCallLosesTheLoopToTheWatcherOnce)
{
    CStandby standby;
    std::atomic<int> taken{0};
    std::thread watcher([&] {
        while (standby.Watch())
            ++taken;
    });
    const std::uint64_t call = standby.BeginCall(Platform::MonotonicMs());
    EXPECT_TRUE(HoldsWithin(kDeadline, [&] { return taken == 1; }));
    EXPECT_FALSE(standby.EndCall(call));
    EXPECT_EQ(1, taken);
    standby.Stop();
    watcher.join();
}

TEST(StandbyTest, EachLateCallIsTakenOver)
{
    CStandby standby;
    std::atomic<int> taken{0};
    std::thread watcher([&] {
        while (standby.Watch())
            ++taken;
    });
    for (int i = 1; i <= 3; ++i) {
        const std::uint64_t call = standby.BeginCall(Platform::MonotonicMs());
        EXPECT_TRUE(HoldsWithin(kDeadline, [&] { return taken == i; }));
        EXPECT_FALSE(standby.EndCall(call));
    }
    standby.Stop();
    watcher.join();
}

TEST(StandbyTest, StopEndsTheWatch)
{
    CStandby standby;
    std::thread watcher([&] { EXPECT_FALSE(standby.Watch()); });
    standby.Stop();
    watcher.join();
}

} // namespace
