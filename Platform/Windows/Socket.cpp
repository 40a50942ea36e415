#include "Platform/Socket.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <memory>

#include "NetworkEvent.h"
#include "System.h"

namespace Platform {

namespace {

constexpr WORD SocketsVersion = MAKEWORD(2, 2);

struct SOptionName {
    int level;
    int name;
};

constexpr SOptionName OptionNames[] = {{IPPROTO_TCP, TCP_NODELAY},   // NoDelay
                                       {SOL_SOCKET, SO_REUSEADDR},   // ReuseAddress
                                       {IPPROTO_IPV6, IPV6_V6ONLY}}; // IPv6Only

static_assert(NoSocket == INVALID_SOCKET);

int LengthOf(sockaddr_storage const & address) noexcept
{
    return address.ss_family == AF_INET    ? int{sizeof(sockaddr_in)}
           : address.ss_family == AF_INET6 ? int{sizeof(sockaddr_in6)}
                                           : int{sizeof address};
}

sockaddr const * Generic(sockaddr_storage const & address) noexcept
{
    return reinterpret_cast<sockaddr const *>(&address);
}

ErrorCode SocketError() noexcept
{
    return static_cast<ErrorCode>(::WSAGetLastError());
}

ErrorCode ResultOf(int result) noexcept
{
    return result == SOCKET_ERROR ? SocketError() : Success;
}

/// Bytes that are sent in one call. The system takes a piece whole or refuses it, and one that is too large for its
/// memory it refuses with an error in place of a "not now".
constexpr std::size_t MostPerSend = std::size_t{1} << 20;

int Piece(std::size_t size, std::size_t most) noexcept
{
    return static_cast<int>(std::min(size, most));
}

/// Takes over a new socket.
ErrorCode TakeSocket(SocketHandle & out, SOCKET made) noexcept
{
    if (made == INVALID_SOCKET) return SocketError();
    CSocketHandle owner(made);
    ForgetSocket(made);
    u_long nonBlocking = 1;
    if (::ioctlsocket(made, static_cast<long>(FIONBIO), &nonBlocking) != 0) return SocketError();
    out = owner.Release();
    return Success;
}

} // namespace

ErrorCode StartSockets() noexcept
{
    WSADATA data{};
    return static_cast<ErrorCode>(::WSAStartup(SocketsVersion, &data));
}

void StopSockets() noexcept
{
    ::WSACleanup();
}

ErrorCode OpenTcpSocket(SocketHandle & out, SocketFamily family) noexcept
{
    if (family == SocketFamily::Other) return WSAEAFNOSUPPORT;
    const int domain = family == SocketFamily::IPv6 ? AF_INET6 : AF_INET;
    // As socket() does it, but never inherited.
    constexpr DWORD flags = WSA_FLAG_OVERLAPPED | WSA_FLAG_NO_HANDLE_INHERIT;
    return TakeSocket(out, ::WSASocketW(domain, SOCK_STREAM, IPPROTO_TCP, nullptr, 0, flags));
}

void CloseSocket(SocketHandle socket) noexcept
{
    if (socket == NoSocket) return;
    ForgetSocket(socket);
    ::closesocket(socket);
}

ErrorCode ConnectSocket(SocketHandle socket, sockaddr_storage const & address) noexcept
{
    return ResultOf(::connect(socket, Generic(address), LengthOf(address)));
}

ErrorCode BindSocket(SocketHandle socket, sockaddr_storage const & address) noexcept
{
    return ResultOf(::bind(socket, Generic(address), int{sizeof address}));
}

ErrorCode ListenSocket(SocketHandle socket, int backlog) noexcept
{
    return ResultOf(::listen(socket, backlog));
}

ErrorCode AcceptSocket(SocketHandle listener, SocketHandle & out) noexcept
{
    SOCKET accepted = INVALID_SOCKET;
    do {
        accepted = ::accept(listener, nullptr, nullptr);
        // A connection that went away in the queue was never there.
    } while (accepted == INVALID_SOCKET && SocketError() == WSAECONNRESET);
    if (accepted != INVALID_SOCKET) {
        // It comes with the listener's binding, and so would set the listener's event.
        ::WSAEventSelect(accepted, nullptr, 0);
        ::SetHandleInformation(reinterpret_cast<HANDLE>(accepted), HANDLE_FLAG_INHERIT, 0);
    }
    return TakeSocket(out, accepted);
}

std::int64_t SendSocket(SocketHandle socket, void const * data, std::size_t size, ErrorCode & error) noexcept
{
    auto const * const bytes = static_cast<char const *>(data);
    std::size_t done = 0;
    for (;;) {
        const int sent = ::send(socket, bytes + done, Piece(size - done, MostPerSend), 0);
        if (sent == SOCKET_ERROR) {
            error = SocketError();
            if (done == 0) return -1;
            break;
        }
        done += static_cast<std::size_t>(sent);
        // Only a refusal lets the system report writable again, so a rest is offered until it is refused.
        if (done == size) break;
    }
    error = Success;
    return static_cast<std::int64_t>(done);
}

std::int64_t ReceiveSocket(SocketHandle socket, void * data, std::size_t size, bool peek, ErrorCode & error) noexcept
{
    const int received = ::recv(socket, static_cast<char *>(data), Piece(size, INT_MAX), peek ? MSG_PEEK : 0);
    error = received == SOCKET_ERROR ? SocketError() : Success;
    if (received > 0) SocketReceived(socket);
    return received;
}

ErrorCode ShutdownSocket(SocketHandle socket, std::uint32_t how) noexcept
{
    return how <= SD_BOTH ? ResultOf(::shutdown(socket, static_cast<int>(how))) : ErrorCode{WSAEINVAL};
}

ErrorCode SetSocketOption(SocketHandle socket, SocketOption option, bool on) noexcept
{
    const SOptionName & name = OptionNames[static_cast<std::size_t>(option)];
    const DWORD value = on ? 1 : 0;
    return ResultOf(
        ::setsockopt(socket, name.level, name.name, reinterpret_cast<char const *>(&value), int{sizeof value}));
}

ErrorCode PeerAddress(SocketHandle socket, sockaddr_storage & out) noexcept
{
    int length = sizeof out;
    return ResultOf(::getpeername(socket, reinterpret_cast<sockaddr *>(&out), &length));
}

ErrorCode LocalAddress(SocketHandle socket, sockaddr_storage & out) noexcept
{
    int length = sizeof out;
    return ResultOf(::getsockname(socket, reinterpret_cast<sockaddr *>(&out), &length));
}

SResolveResult ResolveHost(char const * host, char const * service, std::vector<sockaddr_storage> & out)
{
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_protocol = IPPROTO_TCP;
    addrinfo * list = nullptr;
    const int result = ::getaddrinfo(host, service, &hints, &list);
    ::WSASetLastError(result);
    if (result != 0) return {static_cast<ErrorCode>(result), result == WSAHOST_NOT_FOUND};
    const std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> owner(list, &::freeaddrinfo);
    for (addrinfo const * entry = list; entry != nullptr; entry = entry->ai_next) {
        sockaddr_storage address{};
        std::memcpy(&address, entry->ai_addr, std::min<std::size_t>(entry->ai_addrlen, sizeof address));
        out.push_back(address);
    }
    return {Success, false};
}

} // namespace Platform
