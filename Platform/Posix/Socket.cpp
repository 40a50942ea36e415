#include "Platform/Socket.h"

#include <netdb.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <memory>

#include "Descriptor.h"
#include "NetworkEvent.h"

namespace Platform {

namespace {

struct SOptionName {
    int level;
    int name;
};

constexpr SOptionName OptionNames[] = {{IPPROTO_TCP, TCP_NODELAY},   // NoDelay
                                       {SOL_SOCKET, SO_REUSEADDR},   // ReuseAddress
                                       {IPPROTO_IPV6, IPV6_V6ONLY}}; // IPv6Only

/// The system's number of a socket; -1, which every call refuses, for what can't be one.
int DescriptorOf(SocketHandle socket) noexcept
{
    return socket <= INT_MAX ? static_cast<int>(socket) : -1;
}

socklen_t LengthOf(sockaddr_storage const & address) noexcept
{
    return address.ss_family == AF_INET    ? socklen_t{sizeof(sockaddr_in)}
           : address.ss_family == AF_INET6 ? socklen_t{sizeof(sockaddr_in6)}
                                           : socklen_t{sizeof address};
}

sockaddr const * Generic(sockaddr_storage const & address) noexcept
{
    return reinterpret_cast<sockaddr const *>(&address);
}

ErrorCode ResultOf(int result) noexcept
{
    return result < 0 ? LastErrno() : Success;
}

/// Takes over the descriptor of a new socket.
ErrorCode TakeSocket(SocketHandle & out, int descriptor) noexcept
{
    const int socket = BeyondStandardStreams(descriptor);
    if (socket < 0) return LastErrno();
    out = static_cast<SocketHandle>(socket);
    return Success;
}

} // namespace

ErrorCode StartSockets() noexcept
{
    return Success;
}

void StopSockets() noexcept {}

ErrorCode OpenTcpSocket(SocketHandle & out, SocketFamily family) noexcept
{
    if (family == SocketFamily::Other) return EAFNOSUPPORT;
    const int domain = family == SocketFamily::IPv6 ? AF_INET6 : AF_INET;
    const ErrorCode error = TakeSocket(out, ::socket(domain, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, IPPROTO_TCP));
    if (error == Success) {
        ForgetSocket(static_cast<int>(out));
        MarkFresh(static_cast<int>(out));
    }
    return error;
}

void CloseSocket(SocketHandle socket) noexcept
{
    const int descriptor = DescriptorOf(socket);
    if (descriptor < 0) return;
    ForgetSocket(descriptor);
    ::close(descriptor);
}

ErrorCode ConnectSocket(SocketHandle socket, sockaddr_storage const & address) noexcept
{
    const int descriptor = DescriptorOf(socket);
    const ErrorCode error = ResultOf(::connect(descriptor, Generic(address), LengthOf(address)));
    if (error == EAGAIN) return ENOBUFS; // of connect it means that a resource ran out, not that it goes on
    if (error != Success && error != EINPROGRESS && error != EINTR) return error;
    const ErrorCode armed = SocketConnects(descriptor);
    if (armed != Success) return armed;
    return error == Success ? Success : ErrorWouldBlock();
}

ErrorCode BindSocket(SocketHandle socket, sockaddr_storage const & address) noexcept
{
    return ResultOf(::bind(DescriptorOf(socket), Generic(address), LengthOf(address)));
}

ErrorCode ListenSocket(SocketHandle socket, int backlog) noexcept
{
    const int descriptor = DescriptorOf(socket);
    const ErrorCode error = ResultOf(::listen(descriptor, backlog));
    return error == Success ? SocketListens(descriptor) : error;
}

ErrorCode AcceptSocket(SocketHandle listener, SocketHandle & out) noexcept
{
    const int descriptor = DescriptorOf(listener);
    int accepted = -1;
    do {
        accepted = ::accept4(descriptor, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
        // A connection that went away in the queue was never there.
    } while (accepted < 0 && (errno == EINTR || errno == ECONNABORTED));
    const ErrorCode error = TakeSocket(out, accepted);
    if (error == Success) {
        ForgetSocket(static_cast<int>(out));
        SocketAccepted(descriptor);
    }
    return error;
}

std::int64_t SendSocket(SocketHandle socket, void const * data, std::size_t size, ErrorCode & error) noexcept
{
    const int descriptor = DescriptorOf(socket);
    ssize_t sent = -1;
    do {
        sent = ::send(descriptor, data, size, MSG_NOSIGNAL);
    } while (sent < 0 && errno == EINTR);
    error = sent < 0 ? LastErrno() : Success;
    const bool blocked = error == EAGAIN || (sent >= 0 && static_cast<std::size_t>(sent) < size);
    if (blocked) SocketSendBlocked(descriptor);
    return sent;
}

std::int64_t ReceiveSocket(SocketHandle socket, void * data, std::size_t size, bool peek, ErrorCode & error) noexcept
{
    const int descriptor = DescriptorOf(socket);
    ssize_t received = -1;
    do {
        received = ::recv(descriptor, data, size, peek ? MSG_PEEK : 0);
    } while (received < 0 && errno == EINTR);
    error = received < 0 ? LastErrno() : Success;
    // A short read has emptied the queue: what comes later is reported by itself.
    const bool mayLeaveData = received > 0 && (peek || static_cast<std::size_t>(received) == size);
    if (received > 0) SocketReceived(descriptor, mayLeaveData);
    return received;
}

ErrorCode ShutdownSocket(SocketHandle socket, std::uint32_t how) noexcept
{
    return how <= 2 ? ResultOf(::shutdown(DescriptorOf(socket), static_cast<int>(how))) : ErrorCode{EINVAL};
}

ErrorCode SetSocketOption(SocketHandle socket, SocketOption option, bool on) noexcept
{
    const SOptionName & name = OptionNames[static_cast<std::size_t>(option)];
    const int value = on ? 1 : 0;
    return ResultOf(::setsockopt(DescriptorOf(socket), name.level, name.name, &value, sizeof value));
}

ErrorCode PeerAddress(SocketHandle socket, sockaddr_storage & out) noexcept
{
    socklen_t length = sizeof out;
    return ResultOf(::getpeername(DescriptorOf(socket), reinterpret_cast<sockaddr *>(&out), &length));
}

ErrorCode LocalAddress(SocketHandle socket, sockaddr_storage & out) noexcept
{
    socklen_t length = sizeof out;
    return ResultOf(::getsockname(DescriptorOf(socket), reinterpret_cast<sockaddr *>(&out), &length));
}

SResolveResult ResolveHost(char const * host, char const * service, std::vector<sockaddr_storage> & out)
{
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_protocol = IPPROTO_TCP;
    addrinfo * list = nullptr;
    const int result = ::getaddrinfo(host, service, &hints, &list);
    const ErrorCode error = result == EAI_SYSTEM ? LastErrno() : static_cast<ErrorCode>(result);
    if (result != 0) return {error, result == EAI_NONAME};
    const std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> owner(list, &::freeaddrinfo);
    for (addrinfo const * entry = list; entry != nullptr; entry = entry->ai_next) {
        sockaddr_storage address{};
        std::memcpy(&address, entry->ai_addr, std::min<std::size_t>(entry->ai_addrlen, sizeof address));
        out.push_back(address);
    }
    return {Success, false};
}

} // namespace Platform
