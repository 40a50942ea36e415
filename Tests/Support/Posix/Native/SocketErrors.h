#ifndef TESTS_SUPPORT_NATIVE_SOCKET_ERRORS_H
#define TESTS_SUPPORT_NATIVE_SOCKET_ERRORS_H

#include <cerrno>

#include "Platform/Error.h"

/// What the system's sockets answer.
inline constexpr Platform::ErrorCode kConnectionRefused = ECONNREFUSED;
inline constexpr Platform::ErrorCode kConnectionReset = ECONNRESET;
inline constexpr Platform::ErrorCode kNoSocket = EBADF; ///< to a number that is none
inline constexpr Platform::ErrorCode kWouldBlock = EAGAIN;
inline constexpr Platform::ErrorCode kForeignAddress = EADDRNOTAVAIL; ///< to an address of no interface here
/// To a send over a connection whose reset has been told before.
inline constexpr Platform::ErrorCode kSentIntoReset = EPIPE;

#endif
