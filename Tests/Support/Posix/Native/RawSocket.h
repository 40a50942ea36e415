#ifndef TESTS_SUPPORT_NATIVE_RAW_SOCKET_H
#define TESTS_SUPPORT_NATIVE_RAW_SOCKET_H

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

/// A socket as the system's own calls take it.
using RawSocket = int;

/// Whether a network event may fire once more with nothing to report.
inline constexpr bool kFiresForNothing = false;

#endif
