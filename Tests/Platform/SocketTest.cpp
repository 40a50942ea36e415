#include "Platform/Socket.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <string>
#include <vector>

#include "Native/SocketErrors.h"
#include "Native/Wine.h"
#include "NetworkEnds.h"

namespace {

using namespace NetworkEnds;

constexpr char kNoResets[] = "Wine shows a reset as an orderly end";

class FamilyTest : public testing::TestWithParam<SocketFamily> {};

INSTANTIATE_TEST_SUITE_P(Families, FamilyTest, testing::Values(SocketFamily::IPv4, SocketFamily::IPv6),
                         [](auto const & test) { return test.param == SocketFamily::IPv4 ? "IPv4" : "IPv6"; });

TEST_P(FamilyTest, ConnectsAcceptsAndCarriesBytesBothWays)
{
    const SConnection connection(GetParam());
    EXPECT_EQ(4, connection.client.Send("ping"));
    EXPECT_NE(0u, connection.server.Await(NetRead) & NetRead);
    EXPECT_EQ("ping", connection.server.Receive(100));
    EXPECT_EQ(4, connection.server.Send("pong"));
    EXPECT_NE(0u, connection.client.Await(NetRead) & NetRead);
    EXPECT_EQ("pong", connection.client.Receive(100));
}

TEST_P(FamilyTest, TellsBothAddresses)
{
    const SConnection connection(GetParam());
    sockaddr_storage peer{};
    sockaddr_storage local{};
    ASSERT_EQ(Success, PeerAddress(connection.client.socket.Get(), peer));
    ASSERT_EQ(Success, LocalAddress(connection.client.socket.Get(), local));
    EXPECT_EQ(GetParam(), FamilyOf(reinterpret_cast<sockaddr const &>(peer)));
    std::uint16_t port = 0;
    std::array<unsigned char, 16> bytes{};
    ReadAddress(peer, port, bytes.data());
    EXPECT_EQ(PortOf(connection.listener.socket.Get()), port);
    const sockaddr_storage expected = Loopback(GetParam(), port);
    std::uint16_t expectedPort = 0;
    std::array<unsigned char, 16> expectedBytes{};
    ReadAddress(expected, expectedPort, expectedBytes.data());
    EXPECT_EQ(expectedBytes, bytes);
    ReadAddress(local, port, bytes.data());
    EXPECT_EQ(PortOf(connection.client.socket.Get()), port);
}

TEST_P(FamilyTest, ARefusedConnectIsReportedWithItsCodeAndNothingElse)
{
    std::uint16_t port = 0;
    {
        const SEnd gone = Listen(GetParam());
        port = PortOf(gone.socket.Get());
    }
    const SEnd client = StartConnect(GetParam(), port);
    ASSERT_TRUE(Fires(client.event));
    const SNetworkEvents events = client.Report();
    EXPECT_EQ(NetConnect, events.events);
    EXPECT_EQ(kConnectionRefused, events.errors[ConnectBit]);
    EXPECT_TRUE(client.IsQuiet());
}

TEST(NetworkEventTest, ASuccessfulConnectHasNoError)
{
    const SEnd listener = Listen(SocketFamily::IPv4);
    const SEnd client = StartConnect(SocketFamily::IPv4, PortOf(listener.socket.Get()));
    ASSERT_TRUE(Fires(client.event));
    const SNetworkEvents events = client.Report();
    EXPECT_EQ(NetConnect | NetWrite, events.events);
    EXPECT_EQ(Success, events.errors[ConnectBit]);
    EXPECT_TRUE(client.IsQuiet());
}

TEST(NetworkEventTest, AReportClearsTheEvent)
{
    const SConnection connection;
    EXPECT_EQ(3, connection.client.Send("abc"));
    ASSERT_TRUE(Fires(connection.server.event));
    EXPECT_EQ(NetRead, connection.server.Report().events);
    EXPECT_TRUE(connection.server.IsQuiet()) << "readable is told once, although the data is still there";
}

TEST(NetworkEventTest, ReadableIsRecordedAgainAfterAReceiveThatLeavesData)
{
    const SConnection connection;
    EXPECT_EQ(6, connection.client.Send("abcdef"));
    ASSERT_NE(0u, connection.server.Await(NetRead) & NetRead);
    EXPECT_EQ("ab", connection.server.Receive(2));
    ASSERT_TRUE(Fires(connection.server.event));
    EXPECT_EQ(NetRead, connection.server.Report().events);
    EXPECT_EQ("cdef", connection.server.Receive(4));
    EXPECT_TRUE(connection.server.IsQuiet()) << "all has been taken";
    EXPECT_EQ(1, connection.client.Send("g"));
    EXPECT_TRUE(Fires(connection.server.event));
    EXPECT_EQ(NetRead, connection.server.Report().events);
}

TEST(NetworkEventTest, ReadableIsRecordedAgainAfterAPeek)
{
    const SConnection connection;
    EXPECT_EQ(3, connection.client.Send("abc"));
    ASSERT_NE(0u, connection.server.Await(NetRead) & NetRead);
    EXPECT_EQ("abc", connection.server.Receive(100, /*peek=*/true));
    EXPECT_TRUE(Fires(connection.server.event));
    EXPECT_EQ(NetRead, connection.server.Report().events);
    EXPECT_EQ("abc", connection.server.Receive(100));
}

TEST(NetworkEventTest, AReceiveOfNothingWouldBlock)
{
    const SConnection connection;
    EXPECT_EQ(Failure(ErrorWouldBlock()), connection.server.Receive(10));
    EXPECT_TRUE(connection.server.IsQuiet());
}

TEST(NetworkEventTest, DataThatArrivedBeforeTheBindingIsRecorded)
{
    const SEnd listener = Listen(SocketFamily::IPv4);
    const SEnd client = StartConnect(SocketFamily::IPv4, PortOf(listener.socket.Get()));
    ASSERT_NE(0u, client.Await(NetConnect));
    ASSERT_EQ(3, client.Send("abc"));
    const SEnd server = Accept(listener);
    EXPECT_NE(0u, server.Await(NetRead) & NetRead);
}

TEST(NetworkEventTest, WritableIsRecordedAgainAfterASendThatWouldBlock)
{
    const SConnection connection;
    const std::string block(65536, 'x');
    std::size_t sent = 0;
    ErrorCode error = Success;
    for (;;) {
        const std::int64_t n = SendSocket(connection.client.socket.Get(), block.data(), block.size(), error);
        if (n < 0) break;
        sent += static_cast<std::size_t>(n);
    }
    EXPECT_EQ(ErrorWouldBlock(), error);
    EXPECT_EQ(0u, connection.client.Report().events & NetWrite);
    std::size_t received = 0;
    ASSERT_TRUE(HoldsWithin(kDeadline, [&] {
        const std::string part = connection.server.Receive(1 << 20);
        if (part[0] == 'x') received += part.size();
        return received == sent;
    }));
    EXPECT_TRUE(Fires(connection.client.event));
    EXPECT_EQ(NetWrite, connection.client.Await(NetWrite));
    EXPECT_TRUE(connection.client.IsQuiet());
}

TEST(NetworkEventTest, ArrivingDataIsNotTakenForWritable)
{
    const SConnection connection;
    EXPECT_EQ(1, connection.server.Send("x"));
    ASSERT_TRUE(Fires(connection.client.event));
    EXPECT_EQ(NetRead, connection.client.Report().events);
}

TEST(NetworkEventTest, AnOrderlyCloseIsReportedOnce)
{
    SConnection connection;
    connection.client.socket.Reset();
    ASSERT_TRUE(Fires(connection.server.event));
    const SNetworkEvents events = connection.server.Report();
    EXPECT_EQ(NetClose, events.events);
    EXPECT_EQ(Success, events.errors[CloseBit]);
    EXPECT_EQ("", connection.server.Receive(10));
    EXPECT_TRUE(connection.server.IsQuiet());
}

TEST(NetworkEventTest, ShuttingTheSendingSideDownIsACloseForThePeer)
{
    const SConnection connection;
    EXPECT_EQ(Success, ShutdownSocket(connection.client.socket.Get(), 1));
    EXPECT_EQ(NetClose, connection.server.Await(NetClose));
    EXPECT_EQ(2, connection.server.Send("ok")) << "the other direction still works";
    EXPECT_NE(0u, connection.client.Await(NetRead) & NetRead);
    EXPECT_EQ("ok", connection.client.Receive(10));
    EXPECT_NE(Success, ShutdownSocket(connection.client.socket.Get(), 3));
}

TEST(NetworkEventTest, TheCloseComesBehindTheData)
{
    SConnection connection;
    EXPECT_EQ(5, connection.client.Send("hello"));
    connection.client.socket.Reset();
    // The close may come later than the data; both orders of their arrival end the same way.
    ASSERT_TRUE(HoldsWithin(kDeadline, [&] { return connection.server.Receive(10, true) == "hello"; }));
    EXPECT_EQ(NetRead, connection.server.Await(NetRead | NetClose));
    EXPECT_EQ("he", connection.server.Receive(2));
    EXPECT_EQ(NetRead, connection.server.Await(NetRead | NetClose));
    EXPECT_EQ("llo", connection.server.Receive(100));
    EXPECT_TRUE(Fires(connection.server.event));
    EXPECT_EQ(NetClose, connection.server.Await(NetClose));
    EXPECT_EQ("", connection.server.Receive(10));
    EXPECT_TRUE(connection.server.IsQuiet());
}

TEST(NetworkEventTest, AResetIsACloseWithACodeAndTheReceiveTellsItWhichWineCannotShow)
{
    if (RunsUnderWine()) GTEST_SKIP() << kNoResets;
    const SEnd end = ResetEnd();
    const SNetworkEvents events = end.AwaitReport(NetClose);
    EXPECT_EQ(NetClose, events.events);
    EXPECT_EQ(kConnectionReset, events.errors[CloseBit]);
    EXPECT_EQ(Failure(kConnectionReset), end.Receive(10));
}

TEST(NetworkEventTest, SendingIntoAClosedConnectionFailsWithoutASignalWhichWineCannotShow)
{
    if (RunsUnderWine()) GTEST_SKIP() << kNoResets;
    const SEnd end = ResetEnd();
    ASSERT_NE(0u, end.Await(NetClose));
    EXPECT_EQ(Failure(kConnectionReset), end.Receive(10));
    ErrorCode error = Success;
    EXPECT_EQ(-1, SendSocket(end.socket.Get(), "x", 1, error));
    EXPECT_EQ(kSentIntoReset, error);
}

TEST(NetworkEventTest, AConnectionResetBeforeTheBindingIsNoticed)
{
    const SEnd listener = Listen(SocketFamily::IPv4);
    SEnd client = StartConnect(SocketFamily::IPv4, PortOf(listener.socket.Get()));
    ASSERT_NE(0u, client.Await(NetConnect));
    Reset(client);
    const SEnd server = Accept(listener);
    EXPECT_NE(0u, server.Await(NetClose) & NetClose);
}

TEST(NetworkEventTest, EveryWaitingConnectionIsReported)
{
    const SEnd listener = Listen(SocketFamily::IPv4);
    const std::uint16_t port = PortOf(listener.socket.Get());
    const SEnd first = StartConnect(SocketFamily::IPv4, port);
    const SEnd second = StartConnect(SocketFamily::IPv4, port);
    EXPECT_NE(0u, first.Await(NetConnect));
    EXPECT_NE(0u, second.Await(NetConnect));
    const SEnd one = Accept(listener);
    EXPECT_TRUE(Fires(listener.event)) << "one is left";
    const SEnd two = Accept(listener);
    SocketHandle none = NoSocket;
    EXPECT_EQ(ErrorWouldBlock(), AcceptSocket(listener.socket.Get(), none));
    EXPECT_EQ(NoSocket, none);
}

TEST(NetworkEventTest, ListeningAfterTheBindingIsReportedAsWell)
{
    SEnd listener{Open(SocketFamily::IPv4)};
    ASSERT_EQ(Success, SelectNetworkEvents(listener.socket.Get(), listener.event.Get(), NetAccept | NetClose));
    ASSERT_EQ(Success, BindSocket(listener.socket.Get(), Loopback(SocketFamily::IPv4, 0)));
    ASSERT_EQ(Success, ListenSocket(listener.socket.Get(), 1));
    EXPECT_TRUE(listener.IsQuiet());
    const SEnd client = StartConnect(SocketFamily::IPv4, PortOf(listener.socket.Get()));
    EXPECT_EQ(NetAccept, listener.Await(NetAccept));
}

TEST(NetworkEventTest, TheMaskChoosesTheEvents)
{
    const SConnection connection;
    ASSERT_EQ(Success, SelectNetworkEvents(connection.server.socket.Get(), connection.server.event.Get(), NetClose));
    EXPECT_EQ(1, connection.client.Send("x"));
    EXPECT_TRUE(connection.server.IsQuiet());
    EXPECT_EQ("x", connection.server.Receive(10));
    EXPECT_EQ(Success, ShutdownSocket(connection.client.socket.Get(), 1));
    EXPECT_EQ(NetClose, connection.server.Await(NetClose));
}

TEST(NetworkEventTest, DataIsReportedThoughTheMaskLeavesTheConnectOut)
{
    const SEnd listener = Listen(SocketFamily::IPv4);
    SEnd client{Open(SocketFamily::IPv4)};
    ASSERT_EQ(Success, SelectNetworkEvents(client.socket.Get(), client.event.Get(), NetRead | NetClose));
    ConnectSocket(client.socket.Get(), Loopback(SocketFamily::IPv4, PortOf(listener.socket.Get())));
    const SEnd server = Accept(listener);
    EXPECT_EQ(1, server.Send("x"));
    EXPECT_EQ(NetRead, client.Await(NetRead));
    EXPECT_EQ("x", client.Receive(10));
    EXPECT_EQ(Success, ShutdownSocket(server.socket.Get(), 1));
    EXPECT_EQ(NetClose, client.Await(NetClose));
}

TEST(NetworkEventTest, AFurtherBindingReplacesTheFirst)
{
    const SConnection connection;
    const CWaitableHandle other = UnboundEvent();
    ASSERT_EQ(Success, SelectNetworkEvents(connection.server.socket.Get(), other.Get(), AttachedMask));
    EXPECT_EQ(1, connection.client.Send("x"));
    EXPECT_TRUE(Fires(other));
    EXPECT_FALSE(Fires(connection.server.event, 0));
    SNetworkEvents events{};
    EXPECT_NE(Success, ReportNetworkEvents(connection.server.socket.Get(), connection.server.event.Get(), events));
    EXPECT_EQ(Success, ReportNetworkEvents(connection.server.socket.Get(), other.Get(), events));
}

TEST(NetworkEventTest, OneEventServesOneSocketAfterTheOther)
{
    SConnection connection;
    EXPECT_EQ(1, connection.client.Send("x"));
    ASSERT_TRUE(Fires(connection.server.event));
    connection.server.socket.Reset();
    EXPECT_EQ(Success, ResetNetworkEvent(connection.server.event.Get()));
    EXPECT_FALSE(Fires(connection.server.event, 0));
    const SEnd next = StartConnect(SocketFamily::IPv4, PortOf(connection.listener.socket.Get()));
    const SEnd peer = Accept(connection.listener);
    ASSERT_EQ(Success, SelectNetworkEvents(peer.socket.Get(), connection.server.event.Get(), AttachedMask));
    EXPECT_EQ(1, next.Send("y"));
    EXPECT_TRUE(Fires(connection.server.event));
}

TEST(NetworkEventTest, WhatIsNoSocketOrNoNetworkEventIsRefused)
{
    const SConnection connection;
    const CWaitableHandle unbound = UnboundEvent();
    WaitHandle plain = nullptr;
    ASSERT_EQ(Success, NewEvent(plain, false, false));
    const CWaitableHandle event(plain);
    SNetworkEvents events{};
    EXPECT_NE(Success, SelectNetworkEvents(NoSocket, unbound.Get(), AttachedMask));
    EXPECT_NE(Success, SelectNetworkEvents(connection.client.socket.Get(), event.Get(), AttachedMask));
    EXPECT_NE(Success, ResetNetworkEvent(event.Get()));
    EXPECT_NE(Success, ReportNetworkEvents(NoSocket, unbound.Get(), events));
    EXPECT_NE(Success, ReportNetworkEvents(connection.client.socket.Get(), nullptr, events));
    EXPECT_NE(Success, SetSocketOption(NoSocket, SocketOption::NoDelay, true));
    sockaddr_storage address{};
    EXPECT_NE(Success, PeerAddress(NoSocket, address));
    EXPECT_NE(Success, LocalAddress(std::uint64_t{1} << 40, address));
    ErrorCode error = Success;
    EXPECT_EQ(-1, SendSocket(NoSocket, "x", 1, error));
    EXPECT_EQ(kNoSocket, error);
    CloseSocket(NoSocket);
    SocketHandle out = NoSocket;
    EXPECT_NE(Success, OpenTcpSocket(out, SocketFamily::Other));
    EXPECT_EQ(NoSocket, out);
}

TEST(NetworkEventTest, ItsEventIsOneOfManyObjects)
{
    const SConnection connection;
    WaitHandle plain = nullptr;
    ASSERT_EQ(Success, NewEvent(plain, false, false));
    const CWaitableHandle event(plain);
    EXPECT_EQ(1, connection.client.Send("x"));
    const WaitHandle handles[] = {event.Get(), connection.server.event.Get()};
    const SWaitOutcome outcome = WaitForMany(handles, 2, false, kDeadlineMs, false);
    EXPECT_EQ(WaitResult::Signaled, outcome.result);
    EXPECT_EQ(1u, outcome.index);
}

// --- Options and addresses

struct SOptionCase {
    char const * name;
    SocketOption option;
    int level, number;
};

class SocketOptionTest : public testing::TestWithParam<SOptionCase> {};

TEST_P(SocketOptionTest, IsSetAndCleared)
{
    const CSocketHandle socket = Open(SocketFamily::IPv6);
    for (const bool on : {true, false}) {
        EXPECT_EQ(Success, SetSocketOption(socket.Get(), GetParam().option, on));
        int value = on ? 0 : 1; // some systems write its first byte alone
        socklen_t length = sizeof value;
        EXPECT_EQ(0, ::getsockopt(static_cast<RawSocket>(socket.Get()), GetParam().level, GetParam().number,
                                  reinterpret_cast<char *>(&value), &length));
        EXPECT_EQ(on, value != 0);
    }
}

INSTANTIATE_TEST_SUITE_P(Options, SocketOptionTest,
                         testing::Values(SOptionCase{"NoDelay", SocketOption::NoDelay, IPPROTO_TCP, TCP_NODELAY},
                                         SOptionCase{"ReuseAddress", SocketOption::ReuseAddress, SOL_SOCKET,
                                                     SO_REUSEADDR},
                                         SOptionCase{"IPv6Only", SocketOption::IPv6Only, IPPROTO_IPV6, IPV6_V6ONLY}),
                         [](auto const & test) { return std::string(test.param.name); });

TEST(AddressTest, AForeignFamilyIsOther)
{
    sockaddr address{};
    address.sa_family = AF_UNIX;
    EXPECT_EQ(SocketFamily::Other, FamilyOf(address));
    sockaddr_storage storage;
    FillAddress(storage, SocketFamily::Other, 1, "");
    EXPECT_EQ(SocketFamily::Other, FamilyOf(reinterpret_cast<sockaddr const &>(storage)));
}

TEST(AddressTest, PortAndAddressComeBackAsTheyWereFilledIn)
{
    for (const SocketFamily family : {SocketFamily::IPv4, SocketFamily::IPv6}) {
        const std::array<unsigned char, 16> given{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
        sockaddr_storage address;
        FillAddress(address, family, 0x1234, given.data());
        EXPECT_EQ(family, FamilyOf(reinterpret_cast<sockaddr const &>(address)));
        std::array<unsigned char, 16> read{};
        std::uint16_t port = 0;
        ReadAddress(address, port, read.data());
        EXPECT_EQ(0x1234, port);
        const std::size_t size = family == SocketFamily::IPv6 ? 16 : 4;
        EXPECT_TRUE(std::equal(given.begin(), given.begin() + static_cast<std::ptrdiff_t>(size), read.begin()));
    }
}

TEST(AddressTest, AreCopiedAsFarAsTheirFamilyGoes)
{
    for (const SocketFamily family : {SocketFamily::IPv4, SocketFamily::IPv6}) {
        const sockaddr_storage address = Loopback(family, 80);
        sockaddr_storage copy;
        CopyAddress(copy, reinterpret_cast<sockaddr const &>(address));
        EXPECT_EQ(0, std::memcmp(&address, &copy, sizeof copy));
    }
    sockaddr other{};
    other.sa_family = AF_UNIX;
    std::memset(other.sa_data, 1, sizeof other.sa_data);
    sockaddr_storage copy;
    CopyAddress(copy, other);
    EXPECT_EQ(AF_UNIX, copy.ss_family);
    EXPECT_EQ(0, reinterpret_cast<sockaddr const &>(copy).sa_data[0]);
}

TEST(ResolveTest, NumbersAreResolvedWithTheirPort)
{
    for (char const * host : {"127.0.0.1", "::1"}) {
        std::vector<sockaddr_storage> addresses;
        const SResolveResult result = ResolveHost(host, "3173", addresses);
        EXPECT_EQ(Success, result.error);
        ASSERT_EQ(1u, addresses.size());
        std::uint16_t port = 0;
        unsigned char bytes[16];
        ReadAddress(addresses[0], port, bytes);
        EXPECT_EQ(3173, port);
    }
}

TEST(ResolveTest, NoHostGivesLocalAddressesOfBothFamilies)
{
    std::vector<sockaddr_storage> addresses;
    EXPECT_EQ(Success, ResolveHost(nullptr, "80", addresses).error);
    EXPECT_FALSE(addresses.empty());
}

TEST(ResolveTest, LocalhostIsKnown)
{
    std::vector<sockaddr_storage> addresses;
    EXPECT_EQ(Success, ResolveHost("localhost", "80", addresses).error);
    EXPECT_FALSE(addresses.empty());
}

TEST(ResolveTest, ABadServiceFails)
{
    std::vector<sockaddr_storage> addresses;
    const SResolveResult result = ResolveHost("127.0.0.1", "no-such-service-anywhere", addresses);
    EXPECT_NE(Success, result.error);
    EXPECT_FALSE(result.hostNotFound);
    EXPECT_TRUE(addresses.empty());
}

TEST(ResolveTest, AnImpossibleNameFails)
{
    std::vector<sockaddr_storage> addresses;
    EXPECT_NE(Success, ResolveHost("256.256.256.256 no host", "80", addresses).error);
    EXPECT_TRUE(addresses.empty());
}

} // namespace
