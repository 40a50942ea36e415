#include "Platform/Clock.h"

#include <gtest/gtest.h>

#include <ctime>

#include "Support/Deadline.h"

namespace {

using Clock = std::uint64_t (*)() noexcept;

struct SClock {
    char const * name;
    Clock read;
};

class RisingClockTest : public testing::TestWithParam<SClock> {};

TEST_P(RisingClockTest, GoesOnAndNeverBack)
{
    const std::uint64_t start = GetParam().read();
    std::uint64_t last = start;
    EXPECT_TRUE(HoldsWithin(kDeadline, [&] {
        const std::uint64_t now = GetParam().read();
        EXPECT_GE(now, last);
        last = now;
        return now > start;
    }));
}

INSTANTIATE_TEST_SUITE_P(Clocks, RisingClockTest,
                         testing::Values(SClock{"Monotonic", &Platform::MonotonicMs},
                                         SClock{"TickCount", &Platform::TickCountMs},
                                         SClock{"PerformanceCounter", &Platform::PerformanceCounter}),
                         [](auto const & test) { return std::string(test.param.name); });

/// Clocks may go in ticks of the system's.
constexpr std::uint64_t TickMs = 16;

TEST(ClockTest, TheTickCountHasAtLeastTheWorkingTime)
{
    const std::uint64_t working = Platform::MonotonicMs();
    EXPECT_GE(Platform::TickCountMs() + TickMs, working);
}

/// A reading of the performance counter between two of the clock.
struct SReading {
    std::uint64_t msBefore = Platform::MonotonicMs();
    std::uint64_t counter = Platform::PerformanceCounter();
    std::uint64_t msAfter = Platform::MonotonicMs();
};

TEST(ClockTest, ThePerformanceCounterCountsAtItsFrequency)
{
    const std::uint64_t frequency = Platform::PerformanceFrequency();
    ASSERT_NE(0u, frequency);
    const SReading first;
    ASSERT_TRUE(HoldsWithin(kDeadline, [&] { return Platform::MonotonicMs() >= first.msAfter + 10 * TickMs; }));
    const SReading second;
    const std::uint64_t elapsedMs = (second.counter - first.counter) * 1000 / frequency;
    EXPECT_GE(elapsedMs + TickMs, second.msBefore - first.msAfter);
    EXPECT_LE(elapsedMs, second.msAfter - first.msBefore + TickMs);
}

TEST(ClockTest, TheWallClockCountsFrom1970)
{
    const auto before = static_cast<std::uint64_t>(std::time(nullptr));
    const std::uint64_t now = Platform::UnixTimeMs() / 1000;
    EXPECT_GE(now + 1, before);
    EXPECT_LE(now, static_cast<std::uint64_t>(std::time(nullptr)) + 1);
}

TEST(ClockTest, LocalTimeIsTheWallClockBrokenDown)
{
    const std::time_t before = std::time(nullptr);
    const Platform::SLocalTime local = Platform::LocalTime();
    std::tm broken{};
    broken.tm_year = static_cast<int>(local.year) - 1900;
    broken.tm_mon = static_cast<int>(local.month) - 1;
    broken.tm_mday = static_cast<int>(local.day);
    broken.tm_hour = static_cast<int>(local.hour);
    broken.tm_min = static_cast<int>(local.minute);
    broken.tm_sec = static_cast<int>(local.second);
    broken.tm_isdst = -1;
    const std::time_t seen = std::mktime(&broken);
    EXPECT_GE(seen + 1, before);
    EXPECT_LE(seen, std::time(nullptr) + 1);
    EXPECT_LT(local.millisecond, 1000u);
}

} // namespace
