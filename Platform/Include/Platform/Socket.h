#ifndef PLATFORM_SOCKET_H
#define PLATFORM_SOCKET_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "Platform/Native/SockAddr.h" // sockaddr and sockaddr_storage of the system
#include "Platform/Wait.h"

/// TCP sockets that report network events through one waitable object each.
///
/// All sockets are non-blocking and not inherited by child processes. Nothing here raises a signal. A socket
/// belongs to one thread at a time.
namespace Platform {

using SocketHandle = std::uint64_t;
inline constexpr SocketHandle NoSocket = ~SocketHandle{0};

/// Network events, with the numbers that the stored state flags of the layer above use.
enum NetworkEvent : std::uint32_t {
    NetRead = 0x01,
    NetWrite = 0x02,
    NetAccept = 0x08,
    NetConnect = 0x10,
    NetClose = 0x20
};

/// What happened since the last report, and an error code for each event bit (index: bit number).
struct SNetworkEvents {
    std::uint32_t events;
    ErrorCode errors[6];
};

/// Prepares and gives up the socket library, which on Windows all sockets and ResolveHost need. Windows advises against
/// doing so while a library is being loaded; the agent, which has no other place for it, does. Calls may nest. The
/// result of StartSockets is 0 on success.
ErrorCode StartSockets() noexcept;
void StopSockets() noexcept;

enum class SocketFamily : std::uint8_t { IPv4, IPv6, Other };
/// The family of an address of the system.
SocketFamily FamilyOf(sockaddr const & address) noexcept;
/// Port and address, both in network byte order as they stand in the system's structure; family IPv4 takes 4
/// bytes, IPv6 16.
void FillAddress(sockaddr_storage & out, SocketFamily family, std::uint16_t portHostOrder,
                 void const * address) noexcept;
void ReadAddress(sockaddr_storage const & in, std::uint16_t & portHostOrder, void * address) noexcept;

/// Copies an address of the system, as far as its family goes; nothing but the family of one that is Other.
void CopyAddress(sockaddr_storage & out, sockaddr const & address) noexcept;

/// Opens a TCP socket for the family of the address.
ErrorCode OpenTcpSocket(SocketHandle & out, SocketFamily family) noexcept;
void CloseSocket(SocketHandle socket) noexcept;

/// The waitable object for a socket's network events, initially clear; auto reset by ReportNetworkEvents, on Windows
/// by a wait as well. It may fire with nothing to report.
ErrorCode NewNetworkEvent(WaitHandle & out) noexcept;
/// Forgets what was recorded, and the binding. The object must not be bound to an open socket of another use.
ErrorCode ResetNetworkEvent(WaitHandle event) noexcept;
/// Binds the socket to the event for the events of `mask`; a further call replaces the binding.
ErrorCode SelectNetworkEvents(SocketHandle socket, WaitHandle event, std::uint32_t mask) noexcept;
/// Reports and clears the recorded events. As on every system here: readable is recorded once when data
/// arrives and again after a Receive that leaves data behind; writable once after connecting and again after
/// a Send that would have blocked or took a part only; closed once, and not before the data in front of it has been
/// received (with NetRead in the mask; without it Windows may hold the close back for good). A failed connect gives
/// NetConnect with its error and nothing more. Fails for a socket that isn't bound to this event.
ErrorCode ReportNetworkEvents(SocketHandle socket, WaitHandle event, SNetworkEvents & out) noexcept;

/// Starts connecting. ErrorWouldBlock when it goes on in the background; NetConnect reports its end.
ErrorCode ConnectSocket(SocketHandle socket, sockaddr_storage const & address) noexcept;
ErrorCode BindSocket(SocketHandle socket, sockaddr_storage const & address) noexcept;
ErrorCode ListenSocket(SocketHandle socket, int backlog) noexcept;
ErrorCode AcceptSocket(SocketHandle listener, SocketHandle & out) noexcept;

/// Number of bytes moved, or -1 with the reason in `error`. Receive gives 0 when the peer has closed.
std::int64_t SendSocket(SocketHandle socket, void const * data, std::size_t size, ErrorCode & error) noexcept;
std::int64_t ReceiveSocket(SocketHandle socket, void * data, std::size_t size, bool peek, ErrorCode & error) noexcept;
/// how: 0 receiving, 1 sending, 2 both.
ErrorCode ShutdownSocket(SocketHandle socket, std::uint32_t how) noexcept;

enum class SocketOption : std::uint8_t { NoDelay, ReuseAddress, IPv6Only };
ErrorCode SetSocketOption(SocketHandle socket, SocketOption option, bool on) noexcept;

ErrorCode PeerAddress(SocketHandle socket, sockaddr_storage & out) noexcept;
ErrorCode LocalAddress(SocketHandle socket, sockaddr_storage & out) noexcept;

struct SResolveResult {
    ErrorCode error;   ///< 0 on success; the number of getaddrinfo
    bool hostNotFound; ///< the name is unknown
};
/// Adds the addresses for TCP of a host name (null: the local addresses) and a decimal port. May throw
/// std::bad_alloc.
SResolveResult ResolveHost(char const * host, char const * service, std::vector<sockaddr_storage> & out);

struct SSocketTraits {
    using Type = SocketHandle;
    static Type None() noexcept { return NoSocket; }
    static void Close(Type handle) noexcept { CloseSocket(handle); }
};
using CSocketHandle = THandle<SSocketTraits>;

} // namespace Platform

#endif
