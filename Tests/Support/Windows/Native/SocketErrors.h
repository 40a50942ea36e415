#ifndef TESTS_SUPPORT_NATIVE_SOCKET_ERRORS_H
#define TESTS_SUPPORT_NATIVE_SOCKET_ERRORS_H

#include "Platform/Native/SockAddr.h"

#include "Platform/Error.h"

/// What the system's sockets answer.
inline constexpr Platform::ErrorCode kConnectionRefused = WSAECONNREFUSED;
inline constexpr Platform::ErrorCode kConnectionReset = WSAECONNRESET;
inline constexpr Platform::ErrorCode kNoSocket = WSAENOTSOCK; ///< to a number that is none
inline constexpr Platform::ErrorCode kWouldBlock = WSAEWOULDBLOCK;
inline constexpr Platform::ErrorCode kForeignAddress = WSAEADDRNOTAVAIL; ///< to an address of no interface here
/// To a send over a connection whose reset has been told before.
inline constexpr Platform::ErrorCode kSentIntoReset = WSAECONNRESET;

#endif
