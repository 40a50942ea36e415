#include "Platform/Clock.h"

#include <time.h>

namespace Platform {

namespace {

constexpr std::uint64_t NsPerSecond = 1000000000;

timespec Read(clockid_t clock) noexcept
{
    timespec now{};
    ::clock_gettime(clock, &now);
    return now;
}

std::uint64_t Milliseconds(timespec const & time) noexcept
{
    return static_cast<std::uint64_t>(time.tv_sec) * 1000 + static_cast<std::uint64_t>(time.tv_nsec) / 1000000;
}

} // namespace

std::uint64_t MonotonicMs() noexcept
{
    return Milliseconds(Read(CLOCK_MONOTONIC));
}

std::uint64_t TickCountMs() noexcept
{
    return Milliseconds(Read(CLOCK_BOOTTIME));
}

std::uint64_t PerformanceCounter() noexcept
{
    const timespec now = Read(CLOCK_MONOTONIC);
    return static_cast<std::uint64_t>(now.tv_sec) * NsPerSecond + static_cast<std::uint64_t>(now.tv_nsec);
}

std::uint64_t PerformanceFrequency() noexcept
{
    return NsPerSecond;
}

std::uint64_t UnixTimeMs() noexcept
{
    return Milliseconds(Read(CLOCK_REALTIME));
}

SLocalTime LocalTime() noexcept
{
    const timespec now = Read(CLOCK_REALTIME);
    tm broken{};
    ::localtime_r(&now.tv_sec, &broken);
    const auto part = [](int value) { return static_cast<unsigned>(value); };
    return {part(broken.tm_year + 1900),
            part(broken.tm_mon + 1),
            part(broken.tm_mday),
            part(broken.tm_hour),
            part(broken.tm_min),
            part(broken.tm_sec),
            static_cast<unsigned>(now.tv_nsec / 1000000)};
}

} // namespace Platform
