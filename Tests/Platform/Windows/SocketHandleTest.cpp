#include "Platform/Socket.h"

#include <gtest/gtest.h>

#include "Platform/NetworkEnds.h"
#include "Platform/Windows/ReplacedImport.h"

#include <windows.h>

namespace {

using namespace NetworkEnds;

decltype(::accept) * g_accept = nullptr;
int g_resets = 0; ///< connections that have gone away in the queue

SOCKET WSAAPI AcceptBehindResets(SOCKET listener, sockaddr * address, int * length)
{
    if (g_resets-- <= 0) return g_accept(listener, address, length);
    ::WSASetLastError(WSAECONNRESET);
    return INVALID_SOCKET;
}

int g_resolveError = 0;

INT WSAAPI FailToResolve(PCSTR, PCSTR, addrinfo const *, addrinfo **)
{
    return g_resolveError;
}

bool IsInherited(SocketHandle socket)
{
    DWORD flags = HANDLE_FLAG_INHERIT;
    EXPECT_NE(0, ::GetHandleInformation(reinterpret_cast<HANDLE>(socket), &flags));
    return (flags & HANDLE_FLAG_INHERIT) != 0;
}

TEST(SocketTest, ChildProcessesInheritNone)
{
    const SConnection connection;
    EXPECT_FALSE(IsInherited(connection.client.socket.Get()));
    EXPECT_FALSE(IsInherited(connection.server.socket.Get()));
    EXPECT_FALSE(IsInherited(connection.listener.socket.Get()));
}

TEST(SocketTest, ConnectionsThatWentAwayInTheQueueWereNeverThere)
{
    const SEnd listener = Listen(SocketFamily::IPv4);
    const SEnd client = StartConnect(SocketFamily::IPv4, PortOf(listener.socket.Get()));
    ASSERT_NE(0u, listener.Await(NetAccept));
    const TReplacedImport<decltype(::accept)> resets("accept", &AcceptBehindResets);
    g_accept = resets.System();
    g_resets = 2;
    SocketHandle accepted = NoSocket;
    EXPECT_EQ(Success, AcceptSocket(listener.socket.Get(), accepted));
    const CSocketHandle owner(accepted);
    EXPECT_TRUE(static_cast<bool>(owner));
    g_resets = 1;
    SocketHandle none = NoSocket;
    EXPECT_EQ(ErrorWouldBlock(), AcceptSocket(listener.socket.Get(), none));
    EXPECT_EQ(NoSocket, none);
}

TEST(ResolveTest, OnlyANameThatNobodyKnowsIsAHostNotFound)
{
    const TReplacedImport<decltype(::getaddrinfo)> failing("getaddrinfo", &FailToResolve);
    std::vector<sockaddr_storage> addresses;
    for (const int error : {WSAHOST_NOT_FOUND, WSATRY_AGAIN, WSANO_DATA}) {
        g_resolveError = error;
        const SResolveResult result = ResolveHost("name", "1", addresses);
        EXPECT_EQ(static_cast<ErrorCode>(error), result.error);
        EXPECT_EQ(error == WSAHOST_NOT_FOUND, result.hostNotFound) << error;
    }
    EXPECT_EQ(0u, addresses.size());
}

TEST(SocketTest, StartsOfTheLibraryAreCounted)
{
    EXPECT_EQ(Success, StartSockets());
    EXPECT_EQ(Success, StartSockets());
    StopSockets();
    StopSockets();
    const CSocketHandle socket = Open(SocketFamily::IPv4);
    EXPECT_TRUE(static_cast<bool>(socket)) << "the program's own start is left";
}

TEST(NetworkEventTest, AnAcceptedSocketDoesNotSetTheListenersEvent)
{
    SConnection connection;
    ASSERT_TRUE(connection.listener.IsQuiet());
    connection.client.socket.Reset();
    EXPECT_NE(0u, connection.server.Await(NetClose) & NetClose);
    EXPECT_FALSE(Fires(connection.listener.event, 20));
}

TEST(NetworkEventTest, AnAcceptedSocketThatIsBoundToNothingSetsNoEvent)
{
    const SEnd listener = Listen(SocketFamily::IPv4);
    SEnd client = StartConnect(SocketFamily::IPv4, PortOf(listener.socket.Get()));
    ASSERT_NE(0u, listener.Await(NetAccept));
    SocketHandle accepted = NoSocket;
    ASSERT_EQ(Success, AcceptSocket(listener.socket.Get(), accepted));
    const CSocketHandle owner(accepted);
    ErrorCode error = Success;
    char byte = 0;
    EXPECT_EQ(-1, ReceiveSocket(accepted, &byte, 1, false, error));
    EXPECT_EQ(ErrorWouldBlock(), error) << "it never blocks";
    ASSERT_TRUE(listener.IsQuiet());
    client.socket.Reset();
    EXPECT_TRUE(HoldsWithin(kDeadline, [&] { return ReceiveSocket(accepted, &byte, 1, false, error) == 0; }));
    EXPECT_FALSE(Fires(listener.event, 20));
}

TEST(NetworkEventTest, AnEventThatWasTakenAwayFromItsSocketIsSetByItNoMore)
{
    const SConnection connection;
    ASSERT_TRUE(connection.server.IsQuiet());
    ASSERT_EQ(Success, ResetNetworkEvent(connection.server.event.Get()));
    EXPECT_EQ(1, connection.client.Send("x"));
    EXPECT_TRUE(HoldsWithin(kDeadline, [&] { return connection.server.Receive(1, /*peek=*/true) == "x"; }));
    EXPECT_FALSE(Fires(connection.server.event, 20));
}

TEST(NetworkEventTest, ASendThatTookAPartAloneIsFollowedByWritable)
{
    const SConnection connection;
    const std::string much(std::size_t{64} << 20, 'x'); // more than the system keeps
    const std::int64_t sent = connection.client.Send(much);
    ASSERT_GT(sent, 0);
    ASSERT_LT(sent, static_cast<std::int64_t>(much.size()));
    std::int64_t received = 0;
    ASSERT_TRUE(HoldsWithin(kDeadline, [&] {
        const std::string part = connection.server.Receive(1 << 20);
        if (part[0] == 'x') received += static_cast<std::int64_t>(part.size());
        return received == sent;
    }));
    EXPECT_EQ(NetWrite, connection.client.Await(NetWrite));
}

} // namespace
