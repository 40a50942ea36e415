#ifndef PLATFORM_WINDOWS_UNBIASED_TIME_H
#define PLATFORM_WINDOWS_UNBIASED_TIME_H

#include <cstdint>

namespace Platform {

/// Working time of the machine in steps of 100 ns: the clock by which the system's own waits count. As fine as the
/// system can tell it, where MonotonicMs goes in ticks of the system of up to 16 ms.
std::uint64_t UnbiasedTime() noexcept;

} // namespace Platform

#endif
