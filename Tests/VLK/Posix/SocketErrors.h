#ifndef TESTS_VLK_POSIX_SOCKET_ERRORS_H
#define TESTS_VLK_POSIX_SOCKET_ERRORS_H

#include <cerrno>
#include <cstdint>

/// The system's numbers of what happens to sockets.
inline constexpr std::uint32_t kWouldBlock = EAGAIN;
inline constexpr std::uint32_t kRefused = ECONNREFUSED;
inline constexpr std::uint32_t kReset = ECONNRESET;
inline constexpr std::uint32_t kGone = EPIPE; ///< a write behind the one that saw the reset
inline constexpr std::uint32_t kNoSocket = EBADF;
inline constexpr std::uint32_t kForeignAddress = EADDRNOTAVAIL;

#endif
