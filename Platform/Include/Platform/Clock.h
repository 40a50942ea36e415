#ifndef PLATFORM_CLOCK_H
#define PLATFORM_CLOCK_H

#include <cstdint>

/// Clocks. Any thread. None of them can fail.
namespace Platform {

/// Milliseconds of working time since an unspecified start. Never runs backwards, ignores changes of the wall
/// clock, stands still while the machine sleeps.
std::uint64_t MonotonicMs() noexcept;

/// The agent's tick count: milliseconds since the machine started, sleep included. Never runs backwards.
std::uint64_t TickCountMs() noexcept;

/// A fast, fine counter and its steps in a second. Never runs backwards. A frequency of 0: there is none.
std::uint64_t PerformanceCounter() noexcept;
std::uint64_t PerformanceFrequency() noexcept;

/// Wall clock, milliseconds since 1970-01-01 UTC.
std::uint64_t UnixTimeMs() noexcept;

/// Broken-down time of the wall clock in the process's time zone.
struct SLocalTime {
    unsigned year, month, day, hour, minute, second, millisecond; ///< month and day from 1
};
SLocalTime LocalTime() noexcept;

} // namespace Platform

#endif
