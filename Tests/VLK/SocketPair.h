#ifndef TESTS_VLK_SOCKET_PAIR_H
#define TESTS_VLK_SOCKET_PAIR_H

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

#include "Foundation.h"
#include "Platform/Socket.h"
#include "Support/StartedSockets.h"
#include "VLK/Socket.h"
#include "VLK/SocketAddr.h"
#include "VLK/SocketListener.h"

/// What tests of sockets need again and again.

using Bytes = std::vector<unsigned char>;

/// A program prepares the socket library before it uses the foundation's sockets.
inline const bool g_socketsStarted = Platform::StartSockets() == Platform::Success;

inline VLK::Sockets::CSocketAddr LoopbackAddress(std::uint16_t port, bool ipv6 = false)
{
    static const unsigned char ip4[4] = {127, 0, 0, 1};
    static const unsigned char ip6[16] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
    sockaddr_storage address;
    Platform::FillAddress(address, ipv6 ? Platform::SocketFamily::IPv6 : Platform::SocketFamily::IPv4, port,
                          ipv6 ? ip6 : ip4);
    return VLK::Sockets::CSocketAddr(address);
}

/// The port that the system gave to a socket.
inline std::uint16_t LocalPort(unsigned long long socket)
{
    sockaddr_storage address{};
    std::uint16_t port = 0;
    unsigned char bytes[16];
    EXPECT_EQ(Platform::Success, Platform::LocalAddress(socket, address));
    Platform::ReadAddress(address, port, bytes);
    return port;
}

/// A port of this host where nobody listens.
inline std::uint16_t ClosedPort()
{
    VLK::Sockets::CSocketListener listener;
    EXPECT_EQ(VLK::URET_OK, listener.StartListen(LoopbackAddress(0)));
    return LocalPort(listener.GetSocket());
}

/// A connection over the loopback. A read that gets nothing fails after the deadline.
struct SSocketPair {
    SSocketPair()
    {
        EXPECT_EQ(VLK::URET_OK, listener.StartListen(LoopbackAddress(0)));
        VLK::Sockets::CSocketAddr address = LoopbackAddress(LocalPort(listener.GetSocket()));
        client.SetTimeout(kDeadlineMs);
        server.SetTimeout(kDeadlineMs);
        EXPECT_EQ(VLK::URET_OK, client.Connect(address));
        EXPECT_EQ(VLK::URET_OK, listener.Wait(kDeadlineMs));
        EXPECT_EQ(VLK::URET_OK, listener.Accept(server));
    }
    VLK::Sockets::CSocketListener listener;
    VLK::Sockets::CSocket client;
    VLK::Sockets::CSocket server;
};

inline void SendBytes(VLK::Sockets::CSocket & socket, Bytes const & bytes)
{
    EXPECT_EQ(VLK::URET_OK, socket.Write(bytes.data(), bytes.size(), nullptr));
}

/// Exactly that many bytes; fewer when the connection ends before.
inline Bytes ReceiveBytes(VLK::Sockets::CSocket & socket, std::size_t size)
{
    Bytes bytes(size);
    const std::uint32_t error = RaisedBy([&] { socket.Read(bytes.data(), size, nullptr, VLK::Sockets::RM_Normal); });
    EXPECT_EQ(0u, error) << "while " << size << " bytes were expected";
    return bytes;
}

/// All that comes until the other side closes.
inline Bytes ReceiveToTheEnd(VLK::Sockets::CSocket & socket)
{
    Bytes bytes;
    for (unsigned char part[4096];;) {
        unsigned long long read = 0;
        const unsigned int result = socket.Read(part, sizeof part, &read, VLK::Sockets::RM_Normal);
        bytes.insert(bytes.end(), part, part + read);
        if (result == VLK::URET_Closed) return bytes;
        if (result == VLK::URET_WouldBlock) socket.Wait();
    }
}

/// Whether nothing has arrived and nothing is on its way: the other side has just looked at all that it got.
inline bool IsSilent(VLK::Sockets::CSocket & socket)
{
    unsigned char byte = 0;
    unsigned long long read = 0;
    return socket.Read(&byte, 1, &read, VLK::Sockets::RM_Peek) == VLK::URET_WouldBlock;
}

/// Closes the connection by a reset.
inline void CloseByReset(VLK::Sockets::CSocket & socket)
{
    using CNativeSocket = decltype(::socket(0, 0, 0));
    const linger abrupt{1, 0};
    EXPECT_EQ(0, ::setsockopt(static_cast<CNativeSocket>(socket.GetSocket()), SOL_SOCKET, SO_LINGER,
                              reinterpret_cast<char const *>(&abrupt), sizeof abrupt));
    socket.Close();
}

inline Bytes Joined(std::initializer_list<Bytes> parts)
{
    Bytes all;
    for (Bytes const & part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

inline Bytes TextBytes(std::string const & text)
{
    return Bytes(text.begin(), text.end());
}

#endif
