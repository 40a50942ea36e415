#ifndef PLATFORM_POSIX_QUIET_WRITE_H
#define PLATFORM_POSIX_QUIET_WRITE_H

#include <cstddef>

namespace Platform {

/// Writes to a descriptor as far as it goes. Raises no SIGPIPE, leaves errno and the signal mask as they were.
void WriteQuietly(int descriptor, char const * text, std::size_t size) noexcept;

} // namespace Platform

#endif
