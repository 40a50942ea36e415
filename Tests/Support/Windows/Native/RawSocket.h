#ifndef TESTS_SUPPORT_NATIVE_RAW_SOCKET_H
#define TESTS_SUPPORT_NATIVE_RAW_SOCKET_H

#include "Platform/Native/SockAddr.h"

/// A socket as the system's own calls take it.
using RawSocket = SOCKET;

/// Whether a network event may fire once more with nothing to report.
inline constexpr bool kFiresForNothing = true;

#endif
