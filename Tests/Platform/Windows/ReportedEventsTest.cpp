#include "Platform/Socket.h"

#include <gtest/gtest.h>

#include <initializer_list>

#include "Platform/NetworkEnds.h"
#include "Platform/Windows/ReplacedImport.h"

// What the system says of a socket, and what is reported of it.

namespace {

using namespace NetworkEnds;

/// An event as the system tells it.
struct STold {
    long event;
    int bit, error;
};

WSANETWORKEVENTS g_told{};

int WSAAPI TellEvents(SOCKET, WSAEVENT, LPWSANETWORKEVENTS out)
{
    *out = g_told;
    return 0;
}

/// The report of an end of which the system tells these events. The codes of all others hold what was left there.
SNetworkEvents ReportOf(SEnd const & end, std::initializer_list<STold> events)
{
    const TReplacedImport<decltype(::WSAEnumNetworkEvents)> told("WSAEnumNetworkEvents", &TellEvents);
    g_told.lNetworkEvents = 0;
    std::fill(std::begin(g_told.iErrorCode), std::end(g_told.iErrorCode), 4711);
    for (STold const & event : events) {
        g_told.lNetworkEvents |= event.event;
        g_told.iErrorCode[event.bit] = event.error;
    }
    return end.Report();
}

std::vector<ErrorCode> Codes(SNetworkEvents const & events)
{
    return {std::begin(events.errors), std::end(events.errors)};
}

constexpr STold kRead{FD_READ, FD_READ_BIT, 101};
constexpr STold kWrite{FD_WRITE, FD_WRITE_BIT, 102};
constexpr STold kAccept{FD_ACCEPT, FD_ACCEPT_BIT, 104};
constexpr STold kConnected{FD_CONNECT, FD_CONNECT_BIT, 0};
constexpr STold kRefused{FD_CONNECT, FD_CONNECT_BIT, 105};
constexpr STold kClose{FD_CLOSE, FD_CLOSE_BIT, 106};

} // namespace

TEST(ReportedEventsTest, EachEventHasItsOwnCodeAndTheOthersHaveNone)
{
    const SConnection connection;
    const SNetworkEvents first = ReportOf(connection.server, {kRead, kWrite});
    EXPECT_EQ(NetRead | NetWrite, first.events);
    EXPECT_EQ((std::vector<ErrorCode>{101, 102, 0, 0, 0, 0}), Codes(first));
    const SNetworkEvents second = ReportOf(connection.server, {kClose});
    EXPECT_EQ(NetClose, second.events);
    EXPECT_EQ((std::vector<ErrorCode>{0, 0, 0, 0, 0, 106}), Codes(second));
    const SNetworkEvents third = ReportOf(connection.listener, {kAccept});
    EXPECT_EQ(NetAccept, third.events);
    EXPECT_EQ((std::vector<ErrorCode>{0, 0, 0, 104, 0, 0}), Codes(third));
    const SNetworkEvents last = ReportOf(connection.client, {kConnected, kWrite});
    EXPECT_EQ(NetConnect | NetWrite, last.events);
    EXPECT_EQ((std::vector<ErrorCode>{0, 102, 0, 0, 0, 0}), Codes(last));
}

TEST(ReportedEventsTest, WhatTheMaskLeavesOutIsNotReportedEvenIfTheSystemTellsIt)
{
    const SConnection connection;
    const SNetworkEvents report = ReportOf(connection.server, {kRead, kAccept, kRefused});
    EXPECT_EQ(NetRead, report.events);
    EXPECT_EQ((std::vector<ErrorCode>{101, 0, 0, 0, 0, 0}), Codes(report));
}

TEST(ReportedEventsTest, ACloseBehindUnreadDataComesWithItsCodeWhenTheDataHasBeenRead)
{
    const SConnection connection;
    ASSERT_EQ(1, connection.client.Send("x"));
    ASSERT_TRUE(HoldsWithin(kDeadline, [&] { return connection.server.Receive(1, /*peek=*/true) == "x"; }));
    const SNetworkEvents held = ReportOf(connection.server, {kClose});
    EXPECT_EQ(NetRead, held.events);
    EXPECT_EQ(std::vector<ErrorCode>(6, 0), Codes(held));
    while (Fires(connection.server.event, 0)) { // by the data, which has come for good
    }
    EXPECT_EQ("x", connection.server.Receive(1));
    EXPECT_TRUE(Fires(connection.server.event)) << "so that a wait looks again";
    const SNetworkEvents close = ReportOf(connection.server, {});
    EXPECT_EQ(NetClose, close.events);
    EXPECT_EQ((std::vector<ErrorCode>{0, 0, 0, 0, 0, 106}), Codes(close));
    EXPECT_EQ(0u, ReportOf(connection.server, {}).events) << "once";
}

TEST(ReportedEventsTest, AFailedConnectIsAllThatIsEverReported)
{
    const SConnection connection;
    const SNetworkEvents failed = ReportOf(connection.client, {kRefused, kRead, kWrite, kClose});
    EXPECT_EQ(NetConnect, failed.events);
    EXPECT_EQ((std::vector<ErrorCode>{0, 0, 0, 0, 105, 0}), Codes(failed));
    EXPECT_EQ(0u, ReportOf(connection.client, {kRead, kWrite, kClose}).events);
}
