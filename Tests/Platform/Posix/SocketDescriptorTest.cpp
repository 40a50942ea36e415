#include "Platform/Socket.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include "Platform/NetworkEnds.h"

namespace {

using namespace NetworkEnds;

TEST(SocketTest, ChildProcessesInheritNone)
{
    SocketHandle socket = NoSocket;
    ASSERT_EQ(Success, OpenTcpSocket(socket, SocketFamily::IPv4));
    const CSocketHandle owner(socket);
    EXPECT_NE(0, ::fcntl(static_cast<int>(socket), F_GETFD) & FD_CLOEXEC);
    EXPECT_NE(0, ::fcntl(static_cast<int>(socket), F_GETFL) & O_NONBLOCK);
}

TEST(SocketTest, TheLibraryNeedsNoPreparation)
{
    EXPECT_EQ(Success, StartSockets());
    EXPECT_EQ(Success, StartSockets());
    StopSockets();
    StopSockets();
}

TEST(NetworkEventTest, AWaitAloneDoesNotClearTheEvent)
{
    const SConnection connection;
    EXPECT_EQ(3, connection.client.Send("abc"));
    ASSERT_TRUE(Fires(connection.server.event));
    EXPECT_TRUE(Fires(connection.server.event, 0));
    EXPECT_EQ(NetRead, connection.server.Report().events);
    EXPECT_FALSE(Fires(connection.server.event, 0));
}

TEST(NetworkEventTest, DataThatIsNeverReadDoesNotHideTheCloseFromWhoDidNotAskForData)
{
    const SConnection connection;
    ASSERT_EQ(Success, SelectNetworkEvents(connection.server.socket.Get(), connection.server.event.Get(), NetClose));
    EXPECT_EQ(1, connection.client.Send("x"));
    EXPECT_EQ(Success, ShutdownSocket(connection.client.socket.Get(), 1));
    EXPECT_EQ(NetClose, connection.server.Await(NetClose));
}

TEST(ResolveTest, TheResolversOwnErrorsHaveTheirTexts)
{
    std::vector<sockaddr_storage> addresses;
    const SResolveResult result = ResolveHost("127.0.0.1", "no-such-service-anywhere", addresses);
    EXPECT_NE(Success, result.error);
    EXPECT_FALSE(ErrorText(result.error).empty());
}

} // namespace
