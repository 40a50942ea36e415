#ifndef TESTS_PLATFORM_NETWORK_ENDS_H
#define TESTS_PLATFORM_NETWORK_ENDS_H

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "Native/RawSocket.h"
#include "Platform/Socket.h"
#include "Support/Deadline.h"
#include "Support/StartedSockets.h"

/// Connections over the loopback with their network events.
namespace NetworkEnds {

using namespace Platform;

inline constexpr std::uint32_t ClientMask = NetRead | NetWrite | NetConnect | NetClose;
inline constexpr std::uint32_t AttachedMask = NetRead | NetWrite | NetClose;
inline constexpr int ConnectBit = 4;
inline constexpr int CloseBit = 5;

inline sockaddr_storage Loopback(SocketFamily family, std::uint16_t port)
{
    static const unsigned char ip4[4] = {127, 0, 0, 1};
    static const unsigned char ip6[16] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
    sockaddr_storage address;
    FillAddress(address, family, port, family == SocketFamily::IPv6 ? ip6 : ip4);
    return address;
}

inline std::uint16_t PortOf(SocketHandle socket)
{
    sockaddr_storage address{};
    EXPECT_EQ(Success, LocalAddress(socket, address));
    std::uint16_t port = 0;
    unsigned char bytes[16];
    ReadAddress(address, port, bytes);
    return port;
}

inline CSocketHandle Open(SocketFamily family)
{
    SocketHandle socket = NoSocket;
    EXPECT_EQ(Success, OpenTcpSocket(socket, family));
    return CSocketHandle(socket);
}

inline CWaitableHandle UnboundEvent()
{
    WaitHandle handle = nullptr;
    EXPECT_EQ(Success, NewNetworkEvent(handle));
    return CWaitableHandle(handle);
}

inline bool Fires(CWaitableHandle const & event, std::uint32_t timeoutMs = kDeadlineMs)
{
    return WaitForOne(event.Get(), timeoutMs, false).result == WaitResult::Signaled;
}

/// A socket with its network events.
struct SEnd {
    CSocketHandle socket;
    CWaitableHandle event = UnboundEvent();

    SNetworkEvents Report() const
    {
        SNetworkEvents events{};
        EXPECT_EQ(Success, ReportNetworkEvents(socket.Get(), event.Get(), events));
        return events;
    }
    /// Collects events until one of the bits has come.
    std::uint32_t Await(std::uint32_t bits) const
    {
        std::uint32_t seen = 0;
        HoldsWithin(kDeadline, [&] { return ((seen |= Report().events) & bits) != 0; });
        return seen;
    }
    /// The first report that has one of the bits.
    SNetworkEvents AwaitReport(std::uint32_t bits) const
    {
        SNetworkEvents events{};
        HoldsWithin(kDeadline, [&] { return ((events = Report()).events & bits) != 0; });
        return events;
    }
    bool IsQuiet() const
    {
        if (kFiresForNothing && Fires(event, 20) && Report().events != 0) return false;
        return !Fires(event, 20) && Report().events == 0;
    }
    std::int64_t Send(std::string const & text) const
    {
        ErrorCode error = Success;
        return SendSocket(socket.Get(), text.data(), text.size(), error);
    }
    /// What a receive of at most `size` bytes gives; "<error>" for a failure.
    std::string Receive(std::size_t size, bool peek = false) const
    {
        std::string data(size, '\0');
        ErrorCode error = Success;
        const std::int64_t received = ReceiveSocket(socket.Get(), data.data(), size, peek, error);
        if (received < 0) return "<" + std::to_string(error) + ">";
        data.resize(static_cast<std::size_t>(received));
        return data;
    }
};

inline std::string Failure(ErrorCode error)
{
    return "<" + std::to_string(error) + ">";
}

inline SEnd Listen(SocketFamily family)
{
    SEnd listener{Open(family)};
    EXPECT_EQ(Success, SetSocketOption(listener.socket.Get(), SocketOption::ReuseAddress, true));
    EXPECT_EQ(Success, BindSocket(listener.socket.Get(), Loopback(family, 0)));
    EXPECT_EQ(Success, ListenSocket(listener.socket.Get(), 200));
    EXPECT_EQ(Success, SelectNetworkEvents(listener.socket.Get(), listener.event.Get(), NetAccept | NetClose));
    return listener;
}

inline SEnd StartConnect(SocketFamily family, std::uint16_t port)
{
    SEnd client{Open(family)};
    EXPECT_EQ(Success, SelectNetworkEvents(client.socket.Get(), client.event.Get(), ClientMask));
    EXPECT_FALSE(Fires(client.event, 0)) << "nothing has happened yet";
    const ErrorCode error = ConnectSocket(client.socket.Get(), Loopback(family, port));
    EXPECT_TRUE(error == Success || error == ErrorWouldBlock());
    return client;
}

inline SEnd Accept(SEnd const & listener)
{
    EXPECT_NE(0u, listener.Await(NetAccept) & NetAccept);
    SocketHandle accepted = NoSocket;
    EXPECT_EQ(Success, AcceptSocket(listener.socket.Get(), accepted));
    SEnd end{CSocketHandle(accepted)};
    EXPECT_EQ(Success, SelectNetworkEvents(accepted, end.event.Get(), AttachedMask));
    return end;
}

/// A connection over the loopback with its first events reported.
struct SConnection {
    explicit SConnection(SocketFamily family = SocketFamily::IPv4)
        : listener(Listen(family)),
          client(StartConnect(family, PortOf(listener.socket.Get()))),
          server(Accept(listener))
    {
        EXPECT_TRUE(Fires(client.event));
        EXPECT_EQ(NetConnect | NetWrite, client.Report().events);
        EXPECT_EQ(NetWrite, server.Report().events);
    }
    SEnd listener, client, server;
};

/// Gives a connection up, which the peer sees as a reset.
inline void Reset(SEnd & end)
{
    const linger abrupt{1, 0};
    ::setsockopt(static_cast<RawSocket>(end.socket.Get()), SOL_SOCKET, SO_LINGER,
                 reinterpret_cast<char const *>(&abrupt), sizeof abrupt);
    end.socket.Reset();
}
/// An end whose peer gave it up as a reset: a listener that goes away answers so whoever it hasn't accepted. (Closing
/// an accepted socket says farewell first on some systems.)
inline SEnd ResetEnd()
{
    SEnd listener = Listen(SocketFamily::IPv4);
    SEnd end = StartConnect(SocketFamily::IPv4, PortOf(listener.socket.Get()));
    EXPECT_NE(0u, end.Await(NetConnect));
    EXPECT_NE(0u, listener.Await(NetAccept));
    listener.socket.Reset();
    return end;
}

} // namespace NetworkEnds

#endif
