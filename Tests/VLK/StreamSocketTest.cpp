#include "VLK/StreamSocket.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>

#include "Native/SocketErrors.h"
#include "Native/Wine.h"
#include "StreamPeer.h"
#include "VLK/Waiter.h"

using namespace VLK;
using namespace VLK::Sockets;

/// States, the request cycle and what becomes of failures.
namespace {

class StreamSocketTest : public CFoundationTest {};
class HandshakeTest : public CFoundationTest {};
class SkipTest : public CFoundationTest {};
class EventsTest : public CFoundationTest {};
class CloseTest : public CFoundationTest {};

/// Client and server of ours on one connection.
struct SBothSides {
    SBothSides()
    {
        // The client's greeting lies in the connection until the server looks, so one thread does both.
        std::thread serving([&] {
            Threading::CCallBackGuard guard;
            EXPECT_EQ(URET_OK, server.Attach(pair.server, kVersion));
        });
        EXPECT_EQ(URET_OK, client.Attach(pair.client, kVersion));
        serving.join();
    }
    SSocketPair pair;
    CVisibleClient client;
    CVisibleServer server;
};

// --- Handshake

TEST_F(HandshakeTest, LeavesBothSidesIdle)
{
    SBothSides both;
    EXPECT_EQ(ST_Idle, both.client.State());
    EXPECT_EQ(ST_Idle, both.server.State());
    EXPECT_EQ(1u, both.client.PeerVersion());
    EXPECT_EQ(1u, both.server.PeerVersion());
}

TEST_F(HandshakeTest, TheClientKeepsTheGenerationOfItsPeer)
{
    SSocketPair pair;
    CVisibleClient client;
    SendBytes(pair.server, {0xA9, 0x07, 0x00});
    EXPECT_EQ(URET_OK, client.Attach(pair.client, kVersion));
    EXPECT_EQ(7u, client.PeerVersion());
}

TEST_F(HandshakeTest, ARefusedClientAbortsItsSocket)
{
    SSocketPair pair;
    CVisibleClient client;
    SendBytes(pair.server, {0xAA, 0x01, 0x01, 0x00});
    EXPECT_EQ(Errors::ConnectionRefused, RaisedBy([&] { client.Attach(pair.client, kVersion); }));
    EXPECT_EQ(ST_Closed, client.State());
    EXPECT_EQ(~0ull, pair.client.GetSocket());
}

TEST_F(HandshakeTest, AnyOtherFrameIsAProtocolError)
{
    SSocketPair pair;
    CVisibleClient client;
    SendBytes(pair.server, {0x90, 0x00});
    EXPECT_EQ(Errors::Protocol, RaisedBy([&] { client.Attach(pair.client, kVersion); }));
    EXPECT_EQ(~0ull, pair.client.GetSocket());
}

TEST_F(HandshakeTest, APeerThatClosesAtOnceIsAProtocolError)
{
    SSocketPair pair;
    CVisibleClient client;
    pair.server.Shutdown(SM_Send);
    EXPECT_EQ(Errors::Protocol, RaisedBy([&] { client.Attach(pair.client, kVersion); }));
    EXPECT_EQ(ST_Closed, client.State());
    EXPECT_EQ(~0ull, pair.client.GetSocket());
}

TEST_F(HandshakeTest, AServerThatNeverAnswersEndsWithTheSocketsTimeout)
{
    SSocketPair pair;
    CVisibleClient client;
    pair.client.SetTimeout(10);
    EXPECT_EQ(Errors::SocketTimeout, RaisedBy([&] { client.Attach(pair.client, kVersion); }));
    EXPECT_EQ(ST_Closed, client.State());
}

TEST_F(HandshakeTest, AttachingTwiceAbortsTheSocketThatIsTooMuch)
{
    SClientWithPeer it;
    SSocketPair other;
    EXPECT_EQ(Errors::SocketAlreadyAttached, RaisedBy([&] { it.client.Attach(other.client, kVersion); }));
    EXPECT_EQ(~0ull, other.client.GetSocket());
    EXPECT_EQ(ST_Idle, it.client.State());
    EXPECT_EQ(URET_OK, it.client.StartRequest(1));
    SServerWithPeer server;
    SSocketPair more;
    EXPECT_EQ(Errors::SocketAlreadyAttached, RaisedBy([&] { server.server.Attach(more.server, kVersion); }));
    EXPECT_EQ(~0ull, more.server.GetSocket());
}

TEST_F(HandshakeTest, AClientCanAttachAgainAfterAnAbort)
{
    SSocketPair pair; // outlives the client
    SClientWithPeer it({0xC1});
    it.client.Abort();
    SendBytes(pair.server, kServerHello);
    EXPECT_EQ(URET_OK, it.client.Attach(pair.client, kVersion));
    EXPECT_EQ(ST_Idle, it.client.State());
}

TEST_F(HandshakeTest, WhatAFormerConnectionLeftBehindSaysNothingAboutTheNext)
{
    SSocketPair pair; // outlives the client
    SClientWithPeer it({0xC1, 0xC2});
    EXPECT_EQ(Errors::SocketOutOfSync, RaisedBy([&] { // a tag waits to be read again
                  std::string text;
                  it.client >> text;
              }));
    it.client.Abort();
    SendBytes(pair.server, kServerHello);
    EXPECT_EQ(URET_OK, it.client.Attach(pair.client, kVersion));
}

struct SGreeting {
    char const * name;
    Bytes bytes;
    std::uint32_t error;
    bool answered; ///< with a refusal
};

class ServerGreetingTest : public testing::TestWithParam<SGreeting> {
private:
    Threading::CCallBackGuard m_Guard;
};

TEST_P(ServerGreetingTest, IsRefused)
{
    SSocketPair pair;
    CVisibleServer server;
    SendBytes(pair.client, GetParam().bytes);
    std::thread client([&] {
        Threading::CCallBackGuard guard;
        if (GetParam().answered) {
            EXPECT_EQ((Bytes{0xAA, 0x01, 0x01, 0x00}), ReceiveBytes(pair.client, 4));
            EXPECT_TRUE(IsSilent(pair.client)) << "the server leaves the end to the client";
        }
        pair.client.Close();
    });
    EXPECT_EQ(GetParam().error, RaisedBy([&] { server.Attach(pair.server, kVersion); }));
    client.join();
    EXPECT_EQ(ST_Closed, server.State());
    EXPECT_EQ(~0ull, pair.server.GetSocket());
}

INSTANTIATE_TEST_SUITE_P(
    All, ServerGreetingTest,
    testing::Values(SGreeting{"AnotherVersion", {0, 0, 1, 0x0A, 0xA9, 1, 0}, Errors::ConnectionRejected, true},
                    SGreeting{"LowByteNotZero", {0, 0, 1, 0x0B, 0xA9, 1, 1}, Errors::ConnectionRejected, true},
                    SGreeting{"AnotherFrame", {0, 0, 1, 0x0B, 0x88, 2}, Errors::Protocol, false},
                    SGreeting{"RefusedByte", {0, 0, 1, 0x0B, 0x07}, Errors::SocketBadCommand, false},
                    SGreeting{"BytesBehind", {0, 0, 1, 0x0B, 0xA9, 1, 0, 0x88}, Errors::Protocol, false}),
    [](auto const & test) { return std::string(test.param.name); });

TEST_F(HandshakeTest, ARejectedClientThatGoesByResetIsRejectedAllTheSame)
{
    SSocketPair pair;
    CVisibleServer server;
    SendBytes(pair.client, {0, 0, 0, 1, 0xA9, 1, 0});
    std::thread client([&] {
        Threading::CCallBackGuard guard;
        ReceiveBytes(pair.client, 4);
        CloseByReset(pair.client);
    });
    EXPECT_EQ(Errors::ConnectionRejected, RaisedBy([&] { server.Attach(pair.server, kVersion); }));
    client.join();
}

TEST_F(HandshakeTest, OfTwoDifferentVersionsFailsOnBothSides)
{
    SSocketPair pair;
    CVisibleServer server;
    std::atomic<std::uint32_t> raised{0};
    std::thread serving([&] {
        Threading::CCallBackGuard guard;
        raised = RaisedBy([&] { server.Attach(pair.server, kVersion + 1); });
    });
    CVisibleClient client;
    EXPECT_EQ(Errors::ConnectionRefused, RaisedBy([&] { client.Attach(pair.client, kVersion); }));
    serving.join();
    EXPECT_EQ(Errors::ConnectionRejected, raised);
}

// --- The request cycle

TEST_F(StreamSocketTest, ACycleGoesThroughItsStates)
{
    SBothSides both;
    EXPECT_EQ(URET_OK, both.client.StartRequest(0x1234567));
    EXPECT_EQ(ST_Send, both.client.State());
    both.client << 5 << "text" << 1000000000000ull;
    std::thread serving([&] {
        Threading::CCallBackGuard guard;
        unsigned int code = 0;
        EXPECT_EQ(URET_OK, both.server.WaitForRequest(code));
        EXPECT_EQ(0x1234567u, code);
        EXPECT_EQ(ST_Read, both.server.State());
        int number = 0;
        std::string text;
        unsigned long long large = 0;
        both.server >> number >> text >> large;
        EXPECT_EQ(5, number);
        EXPECT_EQ("text", text);
        EXPECT_EQ(1000000000000ull, large);
        EXPECT_EQ(URET_OK, both.server.SendAck(0xFFFFFFFF));
        EXPECT_EQ(ST_Send, both.server.State());
        both.server << text;
        EXPECT_EQ(URET_OK, both.server.EndAck());
        EXPECT_EQ(ST_Idle, both.server.State());
    });
    unsigned int ack = 0;
    EXPECT_EQ(URET_OK, both.client.WaitForAck(ack));
    EXPECT_EQ(0xFFFFFFFFu, ack);
    EXPECT_EQ(ST_Read, both.client.State());
    std::string text;
    both.client >> text;
    EXPECT_EQ("text", text);
    EXPECT_EQ(URET_OK, both.client.EndRequest());
    EXPECT_EQ(ST_Idle, both.client.State());
    serving.join();
}

struct SOperation {
    char const * name;
    std::function<void(CVisibleClient &)> run;
    unsigned int stateAfter;
};

void PrintTo(SOperation const & operation, std::ostream * out)
{
    *out << operation.name;
}

class ClosedClientTest : public testing::TestWithParam<SOperation> {
private:
    Threading::CCallBackGuard m_Guard;
};

TEST_P(ClosedClientTest, RefusesIt)
{
    CVisibleClient client;
    Exceptions::CErrorLog log;
    EXPECT_EQ(Errors::SocketState, RaisedBy([&] { GetParam().run(client); }, log));
    EXPECT_STREQ("urrent=0\n", log.GetErrorMsg(0));
    EXPECT_EQ(GetParam().stateAfter, client.State());
    EXPECT_EQ(Errors::SocketInErrorState, RaisedBy([&] { client.StartRequest(1); }));
    EXPECT_EQ(URET_OK, client.Close());
    EXPECT_EQ(ST_Closed, client.State());
}

unsigned int g_uNumber;
unsigned long long g_uLarge;
std::string g_Text;
Strings::CStringVar g_FoundationText;

INSTANTIATE_TEST_SUITE_P(
    Operations, ClosedClientTest,
    testing::Values(SOperation{"StartRequest", [](auto & c) { c.StartRequest(1); }, 0x81},
                    SOperation{"WaitForAck", [](auto & c) { c.WaitForAck(g_uNumber); }, 0x80},
                    SOperation{"EndRequest", [](auto & c) { c.EndRequest(); }, 0x81},
                    SOperation{"CanRead", [](auto & c) { c.CanRead(); }, 0x81},
                    SOperation{"Wait", [](auto & c) { c.Wait(0); }, 0x81},
                    SOperation{"GetEvents", [](auto & c) { c.GetEvents(g_uLarge); }, 0x80},
                    SOperation{"Skip", [](auto & c) { c.Skip(); }, 0x81},
                    SOperation{"WriteNumber", [](auto & c) { c << 1; }, 0x80},
                    SOperation{"WriteText", [](auto & c) { c << "a"; }, 0x80},
                    SOperation{"WriteData", [](auto & c) { c.Write("a", 1, 0); }, 0x80},
                    SOperation{"WriteFile", [](auto & c) { c << stdin; }, 0x80},
                    SOperation{"ReadNumber", [](auto & c) { c >> g_uNumber; }, 0x80},
                    SOperation{"ReadINT", [](auto & c) { c.ReadINT(4); }, 0x80},
                    SOperation{"ReadUINT", [](auto & c) { c.ReadUINT(8); }, 0x80},
                    SOperation{"ReadText", [](auto & c) { c >> g_Text; }, 0x80},
                    SOperation{"ReadFoundationText", [](auto & c) { c >> g_FoundationText; }, 0x80},
                    SOperation{"ReadData", [](auto & c) { c.Read(&g_uNumber, 4, g_uLarge); }, 0x80},
                    SOperation{"ReadFile", [](auto & c) { c >> stdout; }, 0x80}),
    [](auto const & test) { return std::string(test.param.name); });

TEST_F(StreamSocketTest, AClosedServerRefusesEverythingButClose)
{
    unsigned int code = 0;
    for (const auto & run : std::initializer_list<std::function<void(CVisibleServer &)>>{
             [&](auto & s) { s.WaitForRequest(code); }, [&](auto & s) { s.CheckRequest(code); },
             [](auto & s) { s.SendAck(0); }, [](auto & s) { s.EndAck(); }, [](auto & s) { s.Skip(); },
             [](auto & s) { s.SetEvents(1); }, [](auto & s) { s.SendKeepAlive(); }}) {
        CVisibleServer server;
        EXPECT_EQ(Errors::SocketState, RaisedBy([&] { run(server); }));
        EXPECT_NE(0u, server.State() & ST_Error);
        EXPECT_EQ(URET_OK, server.Close());
    }
}

TEST_F(StreamSocketTest, AnUnexpectedAnswerIsAProtocolError)
{
    SClientWithPeer it;
    it.client.StartRequest(1);
    SendBytes(it.Peer(), {0x02});
    unsigned int ack = 0;
    EXPECT_EQ(Errors::Protocol, RaisedBy([&] { it.client.WaitForAck(ack); }));
    EXPECT_EQ(ST_Send | ST_Error, it.client.State());
}

TEST_F(StreamSocketTest, ARequestIsRefusedWhileStrayBytesWait)
{
    SClientWithPeer it({0x02, 0xC1});
    ASSERT_EQ(URET_OK, it.client.EndRequest());
    EXPECT_EQ(URET_OK, it.client.CanRead());
    EXPECT_EQ(Errors::Protocol, RaisedBy([&] { it.client.StartRequest(1); }));
    EXPECT_EQ(0x81u, it.client.State());
}

TEST_F(StreamSocketTest, TokensThatWaitBeforeARequestAreTaken)
{
    SClientWithPeer it({0x02, 0x05, 0x03, 0x05});
    ASSERT_EQ(URET_OK, it.client.EndRequest());
    EXPECT_EQ(URET_OK, it.client.StartRequest(1));
    EXPECT_EQ(1u, it.client.EventsPending());
}

TEST_F(StreamSocketTest, AMismatchedFrameIsStillThereForTheOneWhoKnows)
{
    SClientWithPeer it({0xC5, 0x02});
    std::string text;
    Exceptions::CErrorLog log;
    EXPECT_EQ(Errors::SocketOutOfSync, RaisedBy([&] { it.client >> text; }, log));
    EXPECT_STREQ("TC_(Empty)String expected, 192\n", log.GetErrorMsg(0));
    EXPECT_EQ(ST_Read | ST_Error, it.client.State());
    int value = 0;
    EXPECT_EQ(Errors::SocketInErrorState, RaisedBy([&] { it.client >> value; }));
    EXPECT_EQ(0, value);
    it.client.ForgetError();
    it.client >> value;
    EXPECT_EQ(5, value);
    EXPECT_EQ(URET_OK, it.client.EndRequest());
}

TEST_F(StreamSocketTest, TellsWhetherItHasFailed)
{
    SClientWithPeer it({0xC5, 0x02});
    EXPECT_FALSE(it.client.HasFailed());
    std::string text;
    RaisedBy([&] { it.client >> text; });
    EXPECT_TRUE(it.client.HasFailed());
    EXPECT_EQ(URET_OK, it.client.Skip());
    EXPECT_FALSE(it.client.HasFailed());
}

TEST_F(StreamSocketTest, MessagesNameTheFrameThatCame)
{
    int value = 0;
    SClientWithPeer it({0x98, 0x01, 'a'});
    Exceptions::CErrorLog log;
    RaisedBy([&] { it.client >> value; }, log);
    EXPECT_STREQ("nteger-STC expected, 152\n", log.GetErrorMsg(0));
    SClientWithPeer early({0xC1});
    EXPECT_EQ(Errors::SocketOutOfSync, RaisedBy([&] { early.client.EndRequest(); }, log));
    EXPECT_STREQ("TC_EndAck expected, 192\n", log.GetErrorMsg(0));
    EXPECT_EQ(0x81u, early.client.State());
}

TEST_F(StreamSocketTest, AServerThatClosesInMidCycleIsReadAsTagZero)
{
    SClientWithPeer it(Bytes{});
    it.Peer().Close();
    Exceptions::CErrorLog log;
    EXPECT_EQ(Errors::SocketOutOfSync, RaisedBy([&] { it.client.EndRequest(); }, log));
    EXPECT_STREQ("TC_EndAck expected, 0\n", log.GetErrorMsg(0));
}

TEST_F(StreamSocketTest, AConnectionClosedInsideAFrameRaises)
{
    SClientWithPeer it({0xB3, 0x01});
    it.Peer().Close();
    int value = 0;
    EXPECT_EQ(Errors::SocketClosedByPeer, RaisedBy([&] { it.client >> value; }));
}

TEST_F(StreamSocketTest, AResetIsTheSocketsErrorAsWineCannotShow)
{
    if (RunsUnderWine()) GTEST_SKIP() << "Wine shows a reset as an orderly end";
    SClientWithPeer it(Bytes{});
    CloseByReset(it.Peer());
    int value = 0;
    EXPECT_EQ(Errors::SocketFunction, RaisedBy([&] { it.client >> value; }));
}

TEST_F(StreamSocketTest, ABlockingReadWaitsAsLongAsTheSocketsTimeout)
{
    SClientWithPeer it(Bytes{});
    it.pair.client.SetTimeout(10);
    int value = 0;
    EXPECT_EQ(Errors::SocketTimeout, RaisedBy([&] { it.client >> value; }));
    EXPECT_EQ(ST_Read | ST_Error, it.client.State());
}

TEST_F(StreamSocketTest, WithThrowingDisabledOperationsReturnErrorAndNumbersBecomeZero)
{
    SClientWithPeer it({0x98, 0x01, 'a', 0xC3, 0x02});
    Exceptions::CThrowState state;
    state.DisableThrow();
    int value = 77;
    EXPECT_EQ(&it.client, &(it.client >> value));
    EXPECT_EQ(0, value);
    Threading::CCurrentThread thread;
    EXPECT_EQ(Errors::SocketOutOfSync, thread.GetErrorLog().GetError());
    std::string text = "old";
    EXPECT_EQ(&it.client, &(it.client >> text));
    EXPECT_EQ("old", text);
    EXPECT_EQ(Errors::SocketInErrorState, thread.GetErrorLog().GetError());
    EXPECT_EQ(URET_Error, it.client.EndRequest());
    EXPECT_EQ(&it.client, &(it.client << 5));
    unsigned int ack = 5;
    EXPECT_EQ(URET_Error, it.client.WaitForAck(ack));
    EXPECT_EQ(5u, ack);
    CVisibleClient second;
    CSocket unconnected;
    EXPECT_EQ(URET_Error, second.Attach(unconnected, 1));
    EXPECT_EQ(Errors::SocketNotConnected, thread.GetErrorLog().GetError());
}

TEST_F(StreamSocketTest, ItsWaitHandleIsThatOfTheSocket)
{
    CVisibleClient unattached;
    EXPECT_EQ(nullptr, Threading::CWaitHandle(unattached).Block());
    SClientWithPeer it;
    const Threading::CWaitHandle handle(it.client);
    EXPECT_EQ(&it.pair.client, handle.Block());
    EXPECT_EQ(1u, handle.Mask());
    SendBytes(it.Peer(), {0x03});
    Threading::CWaiter waiter;
    waiter << it.client;
    EXPECT_EQ(URET_WaitObject0, waiter.Wait(kDeadlineMs, /*all=*/false));
    EXPECT_TRUE(it.pair.client.CanRead());
}

// --- Skip

TEST_F(SkipTest, DiscardsTheRestOfAnAnswer)
{
    SClientWithPeer it({0xC1, 0xB3, 1,    2,    3,    4,    0x98, 0x03, 0x02, 0x02, 0x02, 0x06,
                        0x78, 0x01, 0x02, 0x80, 0x02, 0x02, 0x02, 0x70, 0x01, 0x58, 0x02, 0x02,
                        0x02, 0x0F, 0x02, 0x02, 0x02, 0x02, 0x09, 0xA0, 0x02, 0x02});
    EXPECT_EQ(URET_OK, it.client.Skip());
    EXPECT_EQ(ST_Read, it.client.State());
    EXPECT_EQ(URET_OK, it.client.EndRequest());
    EXPECT_EQ(URET_WouldBlock, it.client.CanRead()) << "nothing was left";
}

TEST_F(SkipTest, PassesOverDataThatIsLongerThanTheBuffer)
{
    const Bytes data(5000, 0x02);
    SClientWithPeer it(Joined({{0x99, 0x13, 0x88}, data, {0x02}}));
    EXPECT_EQ(URET_OK, it.client.Skip());
    EXPECT_EQ(URET_OK, it.client.EndRequest());
    EXPECT_EQ(URET_WouldBlock, it.client.CanRead());
}

TEST_F(SkipTest, EndsAnError)
{
    SClientWithPeer it({0xB1, 0x01, 0x00, 0xC5, 0x02});
    unsigned char value = 0;
    EXPECT_EQ(Errors::IntegerOutOfRange, RaisedBy([&] { it.client >> value; }));
    EXPECT_EQ(URET_OK, it.client.Skip());
    EXPECT_EQ(ST_Read, it.client.State());
    EXPECT_EQ(URET_OK, it.client.EndRequest());
}

TEST_F(SkipTest, FromInsideABlockParsesTheSkippedBytesAsTagsBySettledHabit)
{
    // Four bytes of the block are in the buffer when it is skipped: one read, three counted off, the position staying.
    // So its next bytes come up as tags, as many as stand behind the block.
    SClientWithPeer it({0x78, 0x04, 'a', 0x02, 0xC5, 0xC6, 0xC7});
    char data[1];
    unsigned long long read = 0;
    ASSERT_EQ(URET_MoreData, it.client.Read(data, 1, read));
    EXPECT_EQ(URET_OK, it.client.Skip());
    EXPECT_EQ(ST_ReadBlock, it.client.State());
}

TEST_F(SkipTest, FromAFailedSendIsRefusedAndLeavesNothingButCloseAndAbort)
{
    SClientWithPeer it;
    it.client.StartRequest(1);
    SendBytes(it.Peer(), {0x02});
    unsigned int ack = 0;
    ASSERT_EQ(Errors::Protocol, RaisedBy([&] { it.client.WaitForAck(ack); }));
    Exceptions::CErrorLog log;
    EXPECT_EQ(Errors::SocketState, RaisedBy([&] { it.client.Skip(); }, log));
    EXPECT_STREQ("urrent=2\n", log.GetErrorMsg(0));
    EXPECT_EQ(0x81u, it.client.State());
    EXPECT_EQ(Errors::SocketState, RaisedBy([&] { it.client.Skip(); }, log));
    EXPECT_STREQ("urrent=1\n", log.GetErrorMsg(0));
    EXPECT_EQ(0x81u, it.client.State());
    EXPECT_EQ(Errors::SocketInErrorState, RaisedBy([&] { it.client.StartRequest(1); }));
    EXPECT_EQ(Errors::SocketInErrorState, RaisedBy([&] { it.client.CanRead(); }));
    it.client.Abort();
    EXPECT_EQ(ST_Closed, it.client.State());
}

TEST_F(SkipTest, TheServersEndsAtTheEndOfTheArguments)
{
    SServerWithPeer it;
    SendBytes(it.Peer(), {0x88, 0x05, 0xC1, 0x98, 0x01, 0x01, 0x01});
    unsigned int code = 0;
    ASSERT_EQ(URET_OK, it.server.WaitForRequest(code));
    Exceptions::CErrorLog log;
    EXPECT_EQ(Errors::SocketOutOfSync, RaisedBy([&] { it.server.SendAck(0); }, log));
    EXPECT_STREQ("TC_WaitAck expected, 192\n", log.GetErrorMsg(0));
    EXPECT_EQ(URET_OK, it.server.Skip());
    EXPECT_EQ(URET_OK, it.server.SendAck(1));
    EXPECT_EQ(URET_OK, it.server.EndAck());
    EXPECT_EQ((Bytes{0x90, 0x01, 0x02}), ReceiveBytes(it.Peer(), 3));
}

TEST_F(SkipTest, EndsWithTheConnection)
{
    SClientWithPeer it({0xC1});
    it.Peer().Close();
    EXPECT_EQ(Errors::SocketClosedByPeer, RaisedBy([&] { it.client.Skip(); }));
    EXPECT_EQ(0x81u, it.client.State());
}

// --- Events

TEST_F(EventsTest, WithoutAnythingPendingNobodyIsAsked)
{
    SClientWithPeer it;
    unsigned long long events = 99;
    EXPECT_EQ(URET_WouldBlock, it.client.CanRead());
    EXPECT_EQ(URET_OK, it.client.GetEvents(events));
    EXPECT_EQ(0u, events);
    EXPECT_TRUE(IsSilent(it.Peer()));
}

TEST_F(EventsTest, AreFetchedAfterTheServerSaidSo)
{
    SClientWithPeer it;
    SendBytes(it.Peer(), {0x05, 0x03});
    ASSERT_EQ(URET_OK, it.client.Wait(kDeadlineMs));
    std::thread answering([&] {
        Threading::CCallBackGuard guard;
        EXPECT_EQ(Bytes{0x04}, ReceiveBytes(it.Peer(), 1));
        SendBytes(it.Peer(), {0xA1, 0x02, 0x04});
    });
    unsigned long long events = 0;
    EXPECT_EQ(URET_OK, it.client.GetEvents(events));
    EXPECT_EQ(0x204u, events);
    answering.join();
}

TEST_F(EventsTest, GoFromServerToClient)
{
    SBothSides both;
    EXPECT_EQ(URET_OK, both.server.SetEvents(0x8000000000000001));
    EXPECT_EQ(URET_OK, both.server.SetEvents(0x2));
    ASSERT_EQ(URET_OK, both.client.Wait(kDeadlineMs));
    std::thread serving([&] {
        Threading::CCallBackGuard guard;
        unsigned int code = 0;
        EXPECT_EQ(URET_Timeout, both.server.WaitForRequest(code)) << "a query is served on the way";
        EXPECT_EQ(ST_Idle, both.server.State());
    });
    unsigned long long events = 0;
    EXPECT_EQ(URET_OK, both.client.GetEvents(events));
    EXPECT_EQ(0x8000000000000003, events);
    EXPECT_EQ(0u, both.client.EventsPending());
    serving.join();
    EXPECT_EQ(URET_WouldBlock, both.client.CanRead());
}

TEST_F(EventsTest, AnEmptyMaskIsAnswered)
{
    SServerWithPeer it;
    SendBytes(it.Peer(), {0x04});
    unsigned int code = 0;
    EXPECT_EQ(URET_Timeout, it.server.WaitForRequest(code));
    EXPECT_EQ((Bytes{0xA0, 0x00}), ReceiveBytes(it.Peer(), 2));
}

TEST_F(EventsTest, AnAnswerWithAnEmptyMaskEndsTheQuery)
{
    SClientWithPeer it({0x03, 0x02});
    ASSERT_EQ(URET_OK, it.client.EndRequest());
    ASSERT_EQ(1u, it.client.EventsPending());
    std::thread answering([&] { // not before it is asked: what lies there then would be out of turn
        Threading::CCallBackGuard guard;
        EXPECT_EQ(Bytes{0x04}, ReceiveBytes(it.Peer(), 1));
        SendBytes(it.Peer(), {0xA0, 0x00});
    });
    unsigned long long events = 99;
    EXPECT_EQ(URET_OK, it.client.GetEvents(events));
    answering.join();
    EXPECT_EQ(0u, events);
    EXPECT_EQ(0u, it.client.EventsPending());
    EXPECT_EQ(URET_WouldBlock, it.client.CanRead());
}

TEST_F(EventsTest, TheClientIsToldOnceUntilItHasFetched)
{
    SServerWithPeer it;
    EXPECT_EQ(URET_OK, it.server.SetEvents(0x100));
    EXPECT_EQ(URET_OK, it.server.SetEvents(0x001));
    EXPECT_EQ(Bytes{0x03}, ReceiveBytes(it.Peer(), 1));
    EXPECT_TRUE(IsSilent(it.Peer()));
    SendBytes(it.Peer(), {0x04});
    unsigned int code = 0;
    EXPECT_EQ(URET_Timeout, it.server.WaitForRequest(code));
    EXPECT_EQ((Bytes{0xA1, 0x01, 0x01}), ReceiveBytes(it.Peer(), 3));
    EXPECT_EQ(URET_OK, it.server.SetEvents(4));
    EXPECT_EQ(Bytes{0x03}, ReceiveBytes(it.Peer(), 1));
}

TEST_F(EventsTest, AnEmptyMaskThatIsSetTellsTheClientEachTime)
{
    SServerWithPeer it;
    EXPECT_EQ(URET_OK, it.server.SetEvents(0));
    EXPECT_EQ(URET_OK, it.server.SetEvents(0));
    EXPECT_EQ((Bytes{0x03, 0x03}), ReceiveBytes(it.Peer(), 2));
}

TEST_F(EventsTest, AServerInErrorIsToldItsStateHere)
{
    SServerWithPeer it;
    EXPECT_EQ(Errors::SocketState, RaisedBy([&] { it.server.EndAck(); }));
    Exceptions::CErrorLog log;
    EXPECT_EQ(Errors::SocketState, RaisedBy([&] { it.server.SetEvents(1); }, log));
    EXPECT_STREQ("urrent=129\n", log.GetErrorMsg(0));
    EXPECT_EQ(Errors::SocketInErrorState, RaisedBy([&] { it.server.SendKeepAlive(); }));
}

TEST_F(EventsTest, AnyOtherByteWhileIdleIsAProtocolError)
{
    SClientWithPeer it;
    SendBytes(it.Peer(), {0x05, 0xC1});
    ASSERT_EQ(URET_OK, it.client.Wait(kDeadlineMs));
    unsigned long long events = 0;
    EXPECT_EQ(Errors::Protocol, RaisedBy([&] { it.client.GetEvents(events); }));
    EXPECT_EQ(0x81u, it.client.State());
}

TEST_F(EventsTest, AWrongAnswerIsAProtocolError)
{
    SClientWithPeer it({0x03, 0x02});
    ASSERT_EQ(URET_OK, it.client.EndRequest());
    SendBytes(it.Peer(), {0x90, 0x00});
    unsigned long long events = 0;
    EXPECT_EQ(Errors::Protocol, RaisedBy([&] { it.client.GetEvents(events); }));
}

TEST_F(EventsTest, AServersCloseWhileIdleIsNoticed)
{
    SClientWithPeer it;
    it.Peer().Close();
    ASSERT_EQ(URET_OK, it.client.Wait(kDeadlineMs));
    unsigned long long events = 99;
    EXPECT_EQ(URET_OK, it.client.GetEvents(events));
    EXPECT_EQ(0u, events);
    EXPECT_EQ(Errors::SocketClosedByPeer, RaisedBy([&] { it.client.GetEvents(events); }));
}

TEST_F(EventsTest, KeepAlivesAreInvisible)
{
    SBothSides both;
    EXPECT_EQ(URET_OK, both.server.SendKeepAlive());
    ASSERT_EQ(URET_OK, both.client.Wait(kDeadlineMs));
    unsigned long long events = 99;
    EXPECT_EQ(URET_OK, both.client.GetEvents(events));
    EXPECT_EQ(0u, events);
    EXPECT_EQ(URET_Timeout, both.client.Wait(0));
}

TEST_F(EventsTest, CheckRequestLooksAtTheSocketOnly)
{
    SServerWithPeer it;
    unsigned int code = 0;
    EXPECT_EQ(URET_WouldBlock, it.server.CheckRequest(code));
    SendBytes(it.Peer(), {0x88, 0x09});
    ASSERT_EQ(URET_OK, it.pair.server.Wait(kDeadlineMs));
    EXPECT_EQ(URET_OK, it.server.CheckRequest(code));
    EXPECT_EQ(9u, code);
}

TEST_F(EventsTest, AnUnknownFrameInsteadOfARequestIsAProtocolError)
{
    SServerWithPeer it;
    SendBytes(it.Peer(), {0xC1});
    unsigned int code = 0;
    EXPECT_EQ(Errors::Protocol, RaisedBy([&] { it.server.WaitForRequest(code); }));
    EXPECT_EQ(0x81u, it.server.State());
}

// --- Close

TEST_F(CloseTest, TheClientSaysSoAndWaitsForTheServer)
{
    SBothSides both;
    std::thread serving([&] {
        Threading::CCallBackGuard guard;
        unsigned int code = 0;
        EXPECT_EQ(URET_Disconnect, both.server.WaitForRequest(code));
        EXPECT_EQ(ST_PeerClosed, both.server.State());
        EXPECT_EQ(URET_OK, both.server.Close());
        EXPECT_EQ(ST_Closed, both.server.State());
    });
    EXPECT_EQ(URET_OK, both.client.Close());
    EXPECT_EQ(ST_Closed, both.client.State());
    EXPECT_EQ(~0ull, both.pair.client.GetSocket());
    serving.join();
    EXPECT_EQ(~0ull, both.pair.server.GetSocket());
    EXPECT_EQ(URET_OK, both.client.Close());
}

TEST_F(CloseTest, SendsAZeroByte)
{
    SClientWithPeer it;
    it.Peer().Shutdown(SM_Send);
    EXPECT_EQ(URET_OK, it.client.Close());
    EXPECT_EQ(Bytes{0x00}, ReceiveToTheEnd(it.Peer()));
}

TEST_F(CloseTest, InTheMiddleOfARequestDropsWhatWasNotSent)
{
    SClientWithPeer it;
    it.client.StartRequest(5);
    it.client << std::string(1000, 'x');
    it.Peer().Shutdown(SM_Send);
    EXPECT_EQ(URET_OK, it.client.Close());
    EXPECT_EQ(Bytes{0x00}, ReceiveToTheEnd(it.Peer()));
}

TEST_F(CloseTest, OfABrokenConnectionEndsInTheLogAlone)
{
    SClientWithPeer it;
    CloseByReset(it.Peer());
    EXPECT_EQ(0u, RaisedBy([&] { EXPECT_EQ(URET_OK, it.client.Close()); }));
    EXPECT_EQ(ST_Closed, it.client.State());
    EXPECT_EQ(~0ull, it.pair.client.GetSocket());
}

TEST_F(CloseTest, StrayBytesDoNotStopIt)
{
    SClientWithPeer it({0x02, 0xC1, 0xC2});
    ASSERT_EQ(URET_OK, it.client.EndRequest());
    it.Peer().Shutdown(SM_Send);
    EXPECT_EQ(URET_OK, it.client.Close());
    EXPECT_EQ(~0ull, it.pair.client.GetSocket());
}

TEST_F(CloseTest, OfTheServerSendsNothing)
{
    SServerWithPeer it;
    EXPECT_EQ(URET_OK, it.server.Close());
    EXPECT_EQ(ST_Closed, it.server.State());
    EXPECT_EQ(Bytes(), ReceiveToTheEnd(it.Peer()));
    EXPECT_EQ(URET_OK, it.server.Close());
}

TEST_F(CloseTest, DestructorsAbortTheConnection)
{
    SSocketPair pair;
    SendBytes(pair.server, kServerHello);
    {
        CVisibleClient client;
        ASSERT_EQ(URET_OK, client.Attach(pair.client, kVersion));
    }
    EXPECT_EQ(~0ull, pair.client.GetSocket());
    EXPECT_EQ(kClientHello, ReceiveToTheEnd(pair.server)) << "without a word of farewell";
}

TEST_F(CloseTest, AbortWithoutASocketDoesNothing)
{
    CVisibleClient client;
    EXPECT_EQ(URET_OK, client.Abort());
    EXPECT_EQ(ST_Closed, client.State());
}

/// Writing fails and the buffer is full: nothing of it may be taken for received bytes by the close.
TEST_F(CloseTest, AfterAWriteThatFailedIsSafe)
{
    SClientWithPeer it;
    it.client.StartRequest(1);
    CloseByReset(it.Peer());
    ASSERT_EQ(URET_OK, it.pair.client.Wait(kDeadlineMs));
    const std::string large(100000, 'x');
    EXPECT_EQ(Errors::SocketFunction, RaisedBy([&] { it.client << large; }));
    EXPECT_EQ(ST_Send | ST_Error, it.client.State());
    EXPECT_EQ(URET_OK, it.client.Close());
    EXPECT_EQ(ST_Closed, it.client.State());
}

} // namespace
