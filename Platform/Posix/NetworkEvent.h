#ifndef PLATFORM_POSIX_NETWORK_EVENT_H
#define PLATFORM_POSIX_NETWORK_EVENT_H

#include "Platform/Socket.h"

/// What the socket calls tell the network events. Each takes a descriptor, and does nothing when the socket is
/// bound to no event. The thread that owns the socket.
namespace Platform {

/// The descriptor is a new socket, or about to be closed.
void ForgetSocket(int descriptor) noexcept;
/// The socket was opened here and must stay unwatched until it connects or listens.
void MarkFresh(int descriptor) noexcept;
/// connect has begun. Only now the system may look at the socket: it reports one that is neither connected nor
/// connecting as hung up.
ErrorCode SocketConnects(int descriptor) noexcept;
ErrorCode SocketListens(int descriptor) noexcept;
/// A call that makes the system report the same condition again.
void SocketAccepted(int descriptor) noexcept;
void SocketSendBlocked(int descriptor) noexcept;
void SocketReceived(int descriptor, bool mayLeaveData) noexcept;

} // namespace Platform

#endif
