#include "VLK/SocketListener.h"

#include <gtest/gtest.h>

#include <cerrno>

#include "Native/SocketErrors.h"
#include "SocketPair.h"
#include "VLK/Waiter.h"

using namespace VLK;
using namespace VLK::Sockets;

namespace {

class SocketListenerTest : public CFoundationTest {};

TEST_F(SocketListenerTest, BeforeListeningNothingWorksAndStoppingDoesNothing)
{
    CSocketListener listener;
    CSocket socket;
    unsigned long long handle = 0;
    EXPECT_EQ(~0ull, listener.GetSocket());
    EXPECT_FALSE(listener.CanAccept());
    EXPECT_EQ(Errors::SocketNotListening, RaisedBy([&] { listener.Accept(socket); }));
    EXPECT_EQ(Errors::SocketNotListening, RaisedBy([&] { listener.Accept(handle); }));
    EXPECT_EQ(Errors::SocketNotListening, RaisedBy([&] { listener.Wait(0); }));
    EXPECT_EQ(URET_OK, listener.StopListen());
    EXPECT_EQ(URET_OK, listener.Abort());
}

TEST_F(SocketListenerTest, ReportsAConnectionAndHandsItToASocket)
{
    CSocketListener listener;
    ASSERT_EQ(URET_OK, listener.StartListen(LoopbackAddress(0)));
    EXPECT_EQ(URET_Timeout, listener.Wait(0));
    EXPECT_FALSE(listener.CanAccept());
    CSocket client;
    CSocketAddr address = LoopbackAddress(LocalPort(listener.GetSocket()));
    ASSERT_EQ(URET_OK, client.Connect(address));
    EXPECT_EQ(URET_OK, listener.Wait(kDeadlineMs));
    EXPECT_TRUE(listener.CanAccept());
    CSocket server;
    EXPECT_EQ(URET_OK, listener.Accept(server));
    EXPECT_FALSE(listener.CanAccept());
    EXPECT_TRUE(server.IsConnected());
    SendBytes(client, {1, 2});
    EXPECT_EQ((Bytes{1, 2}), ReceiveBytes(server, 2));
}

TEST_F(SocketListenerTest, HandsTheRawHandleOut)
{
    CSocketListener listener;
    ASSERT_EQ(URET_OK, listener.StartListen(LoopbackAddress(0)));
    CSocket client;
    CSocketAddr address = LoopbackAddress(LocalPort(listener.GetSocket()));
    ASSERT_EQ(URET_OK, client.Connect(address));
    ASSERT_EQ(URET_OK, listener.Wait(kDeadlineMs));
    unsigned long long handle = ~0ull;
    EXPECT_EQ(URET_OK, listener.Accept(handle));
    CSocket server;
    EXPECT_EQ(URET_OK, server.Attach(handle));
    EXPECT_EQ(handle, server.GetSocket());
}

TEST_F(SocketListenerTest, AcceptWithoutAConnectionRaisesTheSystemsError)
{
    CSocketListener listener;
    ASSERT_EQ(URET_OK, listener.StartListen(LoopbackAddress(0)));
    CSocket socket;
    Exceptions::CErrorLog log;
    EXPECT_EQ(Errors::SocketFunction, RaisedBy([&] { listener.Accept(socket); }, log));
    Exceptions::NATIVE_ERROR native{};
    log.GetError(native);
    EXPECT_EQ(Exceptions::NativeOs, native.kind);
    EXPECT_EQ(Platform::ErrorWouldBlock(), native.value);
}

TEST_F(SocketListenerTest, AConnectionThatTheSocketDoesNotTakeIsClosed)
{
    SSocketPair pair;
    CSocket another;
    CSocketAddr address = LoopbackAddress(LocalPort(pair.listener.GetSocket()));
    another.SetTimeout(kDeadlineMs);
    ASSERT_EQ(URET_OK, another.Connect(address));
    ASSERT_EQ(URET_OK, pair.listener.Wait(kDeadlineMs));
    EXPECT_EQ(Errors::SocketAlreadyConnected, RaisedBy([&] { pair.listener.Accept(pair.server); }));
    EXPECT_EQ(Bytes(), ReceiveToTheEnd(another));
    SendBytes(pair.client, {7});
    EXPECT_EQ(Bytes{7}, ReceiveBytes(pair.server, 1)) << "the socket's own connection goes on";
}

TEST_F(SocketListenerTest, ListensOnAllAddressesOfAFamily)
{
    for (const unsigned int ipv6 : {0u, 1u}) {
        CSocketListener listener;
        ASSERT_EQ(URET_OK, listener.StartListen(0u, ipv6));
        CSocketAddr address = LoopbackAddress(LocalPort(listener.GetSocket()), ipv6 != 0);
        CSocketAddr other = LoopbackAddress(LocalPort(listener.GetSocket()), ipv6 == 0);
        CSocket client;
        EXPECT_EQ(URET_OK, client.Connect(address));
        CSocket refused;
        EXPECT_EQ(Errors::SocketFunction, RaisedBy([&] { refused.Connect(other); })) << "the other family isn't served";
    }
}

TEST_F(SocketListenerTest, ListensOnceAtATimeAndAgainAfterStopping)
{
    CSocketListener listener;
    ASSERT_EQ(URET_OK, listener.StartListen(LoopbackAddress(0)));
    EXPECT_EQ(Errors::SocketAlreadyConnected, RaisedBy([&] { listener.StartListen(LoopbackAddress(0)); }));
    EXPECT_EQ(Errors::SocketAlreadyConnected, RaisedBy([&] { listener.StartListen(0u, 0u); }));
    const std::uint16_t port = LocalPort(listener.GetSocket());
    EXPECT_EQ(URET_OK, listener.StopListen());
    EXPECT_EQ(~0ull, listener.GetSocket());
    EXPECT_EQ(URET_OK, listener.StartListen(LoopbackAddress(port)));
    EXPECT_EQ(port, LocalPort(listener.GetSocket()));
}

TEST_F(SocketListenerTest, AFailedStartLeavesItReadyForAnother)
{
    static const unsigned char foreign[4] = {192, 0, 2, 1};
    sockaddr_storage address;
    Platform::FillAddress(address, Platform::SocketFamily::IPv4, 0, foreign);
    CSocketListener listener;
    Exceptions::CErrorLog log;
    EXPECT_EQ(Errors::SocketFunction, RaisedBy([&] { listener.StartListen(CSocketAddr(address)); }, log));
    Exceptions::NATIVE_ERROR native{};
    log.GetError(native);
    EXPECT_EQ(kForeignAddress, native.value);
    EXPECT_EQ(Errors::NoAddress, RaisedBy([&] { listener.StartListen(CSocketAddr()); }));
    EXPECT_EQ(URET_OK, listener.StartListen(LoopbackAddress(0)));
}

TEST_F(SocketListenerTest, AStartThatFailsHasForgottenWhatWasReportedBefore)
{
    CSocketListener listener;
    listener.StartListen(LoopbackAddress(0));
    CSocket client;
    CSocketAddr address = LoopbackAddress(LocalPort(listener.GetSocket()));
    client.Connect(address);
    ASSERT_EQ(URET_OK, listener.Wait(kDeadlineMs));
    ASSERT_TRUE(listener.CanAccept());
    listener.StopListen();
    EXPECT_EQ(Errors::NoAddress, RaisedBy([&] { listener.StartListen(CSocketAddr()); }));
    EXPECT_FALSE(listener.CanAccept());
}

TEST_F(SocketListenerTest, IsOneOfManyObjects)
{
    CSocketListener listener;
    ASSERT_EQ(URET_OK, listener.StartListen(LoopbackAddress(0)));
    Threading::CEvent never;
    never.Init(/*initialState=*/false, /*manualReset=*/true);
    CSocket client;
    CSocketAddr address = LoopbackAddress(LocalPort(listener.GetSocket()));
    ASSERT_EQ(URET_OK, client.Connect(address));
    Threading::CWaiter waiter;
    waiter << never << listener;
    EXPECT_EQ(URET_WaitObject1, waiter.Wait(kDeadlineMs, /*all=*/false));
    EXPECT_TRUE(listener.CanAccept()) << "the wait has noted the event";
}

TEST_F(SocketListenerTest, ReturnsErrorWithThrowingDisabled)
{
    CSocketListener listener;
    CSocket socket;
    Exceptions::CThrowState state;
    state.DisableThrow();
    EXPECT_EQ(URET_Error, listener.Accept(socket));
    EXPECT_EQ(URET_Error, listener.Wait(0));
    Threading::CCurrentThread thread;
    EXPECT_EQ(Errors::SocketNotListening, thread.GetErrorLog().GetError());
}

} // namespace
