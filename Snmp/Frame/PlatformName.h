#ifndef SNMP_FRAME_PLATFORM_NAME_H
#define SNMP_FRAME_PLATFORM_NAME_H

#include <cstdint>

/// Name of a processor architecture for the banner. architecture: the platform's number, see
/// Platform::Architecture. Static text. Any thread.
char const * PlatformName(std::uint32_t architecture) noexcept;

#endif
