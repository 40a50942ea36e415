#ifndef TESTS_VLK_WINDOWS_SOCKET_ERRORS_H
#define TESTS_VLK_WINDOWS_SOCKET_ERRORS_H

#include <winsock2.h>

#include <cstdint>

/// The system's numbers of what happens to sockets.
inline constexpr std::uint32_t kWouldBlock = WSAEWOULDBLOCK;
inline constexpr std::uint32_t kRefused = WSAECONNREFUSED;
inline constexpr std::uint32_t kReset = WSAECONNRESET;
inline constexpr std::uint32_t kGone = WSAECONNRESET; ///< a write behind the one that saw the reset
inline constexpr std::uint32_t kNoSocket = WSAENOTSOCK;
inline constexpr std::uint32_t kForeignAddress = WSAEADDRNOTAVAIL;

#endif
