#ifndef PLATFORM_WINDOWS_NETWORK_EVENT_H
#define PLATFORM_WINDOWS_NETWORK_EVENT_H

#include "Platform/Socket.h"

/// What the socket calls tell the network events.
namespace Platform {

/// The socket is about to be closed, or new under a number that another one had.
void ForgetSocket(SocketHandle socket) noexcept;
/// A receive has taken something: a close that stood behind it may be due.
void SocketReceived(SocketHandle socket) noexcept;

} // namespace Platform

#endif
