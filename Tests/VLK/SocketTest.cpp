#include "VLK/Socket.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <string>
#include <thread>
#include <vector>

#include "Native/SocketErrors.h"
#include "Native/Wine.h"
#include "SocketPair.h"
#include "VLK/Waiter.h"

using namespace VLK;
using namespace VLK::Sockets;

namespace {

class SocketTest : public CFoundationTest {};

/// The code that is raised, and the system's error behind it.
struct SRaised {
    std::uint32_t code;
    std::uint32_t native;
    bool operator==(SRaised const &) const = default;
};

template <class TFunction>
SRaised Raised(TFunction && function)
{
    Exceptions::CErrorLog log;
    Exceptions::NATIVE_ERROR native{};
    RaisedBy(function, log);
    const std::uint32_t code = log.GetError(native);
    return {code, native.value};
}

void PrintTo(SRaised const & raised, std::ostream * out)
{
    *out << std::hex << raised.code << " with " << std::dec << raised.native;
}

unsigned int ReadOnce(CSocket & socket, std::string & text, std::size_t size, READ_MODE mode = RM_Normal)
{
    unsigned long long read = 99;
    text.resize(size);
    const unsigned int result = socket.Read(text.data(), size, &read, mode);
    text.resize(read);
    return result;
}

/// Lets the test see what is protected.
class COpenSocket : public CSocket {
public:
    using CSocket::CheckBlocking;
    COpenSocket() = default;
    COpenSocket(COpenSocket const &) = default;
    COpenSocket & operator=(COpenSocket const &) = default;
    unsigned int Flags() const { return m_uFlags; }
};

TEST_F(SocketTest, ANewOneIsUnconnected)
{
    CSocket socket;
    EXPECT_EQ(~0ull, socket.GetSocket());
    EXPECT_TRUE(socket.IsClosed());
    EXPECT_FALSE(socket.IsConnected());
    EXPECT_FALSE(socket.CanRead());
    EXPECT_FALSE(socket.CanWrite());
    EXPECT_FALSE(socket.IsSecure());
    EXPECT_EQ(0xFFFFFFFFu, socket.GetTimeout());
    EXPECT_EQ(1, socket.Count());
}

TEST_F(SocketTest, WithoutAConnectionItsUseRaises)
{
    CSocket socket;
    char byte = 0;
    EXPECT_EQ(Errors::SocketNotConnected, RaisedBy([&] { socket.Read(&byte, 1, nullptr, RM_Normal); }));
    EXPECT_EQ(Errors::SocketNotConnected, RaisedBy([&] { socket.Write(&byte, 1, nullptr); }));
    EXPECT_EQ(Errors::SocketNotConnected, RaisedBy([&] { socket.TCP_NoSendDelay(true); }));
    EXPECT_EQ(Errors::SocketNotConnected, RaisedBy([&] { socket.GetPeerAddr(); }));
    EXPECT_EQ(Errors::SocketNotConnected, RaisedBy([&] { socket.GetLocalAddr(); }));
    EXPECT_EQ(URET_OK, socket.Shutdown(SM_Both));
    EXPECT_EQ(URET_OK, socket.Close());
    EXPECT_EQ(URET_OK, socket.Abort());
    EXPECT_EQ(URET_OK, socket.CheckNegotiation());
}

TEST_F(SocketTest, CopiesAreUnconnected)
{
    SSocketPair pair;
    COpenSocket original;
    CSocketAddr address = LoopbackAddress(LocalPort(pair.listener.GetSocket()));
    ASSERT_EQ(URET_OK, original.Connect(address));
    COpenSocket copy(original);
    EXPECT_EQ(~0ull, copy.GetSocket());
    EXPECT_TRUE(copy.IsClosed());
    copy = original;
    EXPECT_EQ(~0ull, copy.GetSocket());
    EXPECT_TRUE(original.IsConnected());
}

struct SBlocking {
    char const * name;
    int result;
    std::uint32_t error;
    unsigned int expected;
};

class CheckBlockingTest : public testing::TestWithParam<SBlocking> {};

TEST_P(CheckBlockingTest, JudgesACall)
{
    COpenSocket socket;
    Platform::SetLastError(GetParam().error);
    EXPECT_EQ(GetParam().expected, socket.CheckBlocking(GetParam().result));
}

INSTANTIATE_TEST_SUITE_P(All, CheckBlockingTest,
                         testing::Values(SBlocking{"Success", 0, kConnectionReset, URET_OK},
                                         SBlocking{"Bytes", 17, kWouldBlock, URET_OK},
                                         SBlocking{"OtherNegative", -2, kConnectionReset, URET_OK},
                                         SBlocking{"WouldBlock", -1, kWouldBlock, URET_WouldBlock},
                                         SBlocking{"NoError", -1, 0, URET_OK},
                                         SBlocking{"Failure", -1, kConnectionReset, URET_Error}),
                         [](auto const & test) { return std::string(test.param.name); });

// --- Connecting

TEST_F(SocketTest, ConnectsToAnAddress)
{
    SSocketPair pair;
    EXPECT_TRUE(pair.client.IsConnected());
    EXPECT_TRUE(pair.client.CanWrite());
    EXPECT_TRUE(pair.server.IsConnected());
    EXPECT_NE(~0ull, pair.client.GetSocket());
}

TEST_F(SocketTest, ConnectsByNameInAllForms)
{
    CSocketListener listener;
    ASSERT_EQ(URET_OK, listener.StartListen(LoopbackAddress(0)));
    const unsigned int port = LocalPort(listener.GetSocket());
    CSocket byString;
    EXPECT_EQ(URET_OK, byString.Connect(std::string("127.0.0.1"), port));
    CSocket byView;
    EXPECT_EQ(URET_OK, byView.Connect(Strings::CSubStringRef("127.0.0.1:", 9), port));
}

TEST_F(SocketTest, ConnectsToTheNextAddressWhenTheFirstFails)
{
    CSocketListener listener;
    ASSERT_EQ(URET_OK, listener.StartListen(LoopbackAddress(0)));
    CSocketAddr both; // ::1, where nobody listens, and 127.0.0.1
    ASSERT_EQ(URET_OK, both.Resolve(std::string(), LocalPort(listener.GetSocket())));
    CSocket socket;
    EXPECT_EQ(URET_OK, socket.Connect(both));
    EXPECT_TRUE(socket.IsConnected());
}

TEST_F(SocketTest, AConnectToAnUnknownHostAimsAtThisOne)
{
    CSocketListener listener;
    ASSERT_EQ(URET_OK, listener.StartListen(LoopbackAddress(0)));
    CSocket socket;
    EXPECT_EQ(URET_OK, socket.Connect(std::string("no..such host"), LocalPort(listener.GetSocket())));
}

TEST_F(SocketTest, AConnectWithoutAnyAddressGivesErrorAndRaisesNothing)
{
    CSocket socket;
    CSocketAddr none;
    unsigned int result = URET_OK;
    EXPECT_EQ(0u, RaisedBy([&] { result = socket.Connect(none); }));
    EXPECT_EQ(URET_Error, result);
}

TEST_F(SocketTest, ARefusedConnectHandsTheSystemsErrorOnAndLeavesItReusable)
{
    CSocket socket;
    CSocketAddr closed = LoopbackAddress(ClosedPort());
    EXPECT_EQ((SRaised{Errors::SocketFunction, kConnectionRefused}), Raised([&] { socket.Connect(closed); }));
    EXPECT_EQ(~0ull, socket.GetSocket());
    EXPECT_TRUE(socket.IsClosed());
    CSocketListener listener;
    ASSERT_EQ(URET_OK, listener.StartListen(LoopbackAddress(0)));
    CSocketAddr open = LoopbackAddress(LocalPort(listener.GetSocket()));
    EXPECT_EQ(URET_OK, socket.Connect(open));
}

TEST_F(SocketTest, ConnectLocalReachesAServiceOfEitherFamily)
{
    for (const bool ipv6 : {false, true}) {
        CSocketListener listener;
        ASSERT_EQ(URET_OK, listener.StartListen(LoopbackAddress(0, ipv6)));
        CSocket socket;
        EXPECT_EQ(URET_OK, socket.ConnectLocal(LocalPort(listener.GetSocket())));
        EXPECT_EQ(ipv6 ? 16u : 4u, [&] {
            std::string text;
            socket.GetPeerAddr().GetAddress(text);
            return text == "127.0.0.1" ? 4u : 16u;
        }());
    }
}

TEST_F(SocketTest, ConnectLocalRaisesOnlyWhenAllNamesFail)
{
    CSocket socket;
    const unsigned int port = ClosedPort();
    EXPECT_EQ((SRaised{Errors::SocketFunction, kConnectionRefused}), Raised([&] { socket.ConnectLocal(port); }));
    EXPECT_TRUE(socket.IsClosed());
}

TEST_F(SocketTest, ConnectLocalDropsTheErrorsOfTheNamesBeforeTheOneThatWorks)
{
    CSocketListener listener;
    ASSERT_EQ(URET_OK, listener.StartListen(LoopbackAddress(0)));
    Threading::CCurrentThread thread;
    thread.GetErrorLog().Clear();
    CSocket socket;
    EXPECT_EQ(URET_OK, socket.ConnectLocal(LocalPort(listener.GetSocket())));
    EXPECT_EQ(0u, thread.GetErrorLog().GetError());
}

TEST_F(SocketTest, StartConnectReturnsAtOnceAndTheWaitTellsTheEnd)
{
    CSocketListener listener;
    ASSERT_EQ(URET_OK, listener.StartListen(LoopbackAddress(0)));
    CSocketAddr address = LoopbackAddress(LocalPort(listener.GetSocket()));
    CSocket socket;
    EXPECT_EQ(URET_OK, socket.StartConnect(address));
    EXPECT_TRUE(socket.IsClosed());
    EXPECT_EQ(Errors::SocketAlreadyConnected, RaisedBy([&] { socket.StartConnect(address); }));
    EXPECT_EQ(URET_OK, socket.Wait(kDeadlineMs));
    EXPECT_TRUE(socket.IsConnected());
    EXPECT_EQ(Errors::SocketAlreadyConnected, RaisedBy([&] { socket.StartConnect(address); }));
    EXPECT_TRUE(socket.IsConnected());
}

TEST_F(SocketTest, AFailedStartConnectStaysAsTheLastErrorUntilTheNext)
{
    CSocketAddr closed = LoopbackAddress(ClosedPort());
    CSocket socket;
    ASSERT_EQ(URET_OK, socket.StartConnect(closed));
    EXPECT_EQ(URET_OK, socket.Wait(kDeadlineMs));
    const SRaised refused{Errors::SocketFunction, kConnectionRefused};
    char byte = 0;
    EXPECT_EQ(refused, Raised([&] { socket.Read(&byte, 1, nullptr, RM_Normal); }));
    EXPECT_EQ(refused, Raised([&] { socket.Write(&byte, 1, nullptr); }));
    EXPECT_EQ(refused, Raised([&] { socket.TCP_NoSendDelay(true); }));
    EXPECT_EQ(refused, Raised([&] { socket.GetPeerAddr(); }));
    socket.Close();
    CSocketListener listener;
    ASSERT_EQ(URET_OK, listener.StartListen(LoopbackAddress(0)));
    CSocketAddr open = LoopbackAddress(LocalPort(listener.GetSocket()));
    EXPECT_EQ(URET_OK, socket.Connect(open));
    EXPECT_EQ(URET_OK, socket.Write(&byte, 1, nullptr));
}

TEST_F(SocketTest, StartConnectWithoutAnAddressRaises)
{
    CSocket socket;
    CSocketAddr none;
    EXPECT_EQ(Errors::NoAddress, RaisedBy([&] { socket.StartConnect(none); }));
    EXPECT_EQ(~0ull, socket.GetSocket());
}

TEST_F(SocketTest, CanConnectAgainAfterClose)
{
    SSocketPair pair;
    EXPECT_EQ(URET_OK, pair.client.Close());
    EXPECT_TRUE(pair.client.IsClosed());
    EXPECT_EQ(~0ull, pair.client.GetSocket());
    CSocketAddr address = LoopbackAddress(LocalPort(pair.listener.GetSocket()));
    EXPECT_EQ(URET_OK, pair.client.Connect(address));
    ASSERT_EQ(URET_OK, pair.listener.Wait(kDeadlineMs));
    CSocket server;
    ASSERT_EQ(URET_OK, pair.listener.Accept(server));
    SendBytes(server, {5});
    EXPECT_EQ(Bytes{5}, ReceiveBytes(pair.client, 1));
}

TEST_F(SocketTest, AttachRefusesASecondConnectionAndLeavesItToTheCaller)
{
    SSocketPair pair;
    Platform::SocketHandle other = Platform::NoSocket;
    ASSERT_EQ(Platform::Success, Platform::OpenTcpSocket(other, Platform::SocketFamily::IPv4));
    const Platform::CSocketHandle owner(other);
    EXPECT_EQ(Errors::SocketAlreadyConnected, RaisedBy([&] { pair.server.Attach(other); }));
    EXPECT_EQ(Platform::Success, Platform::SetSocketOption(other, Platform::SocketOption::NoDelay, true));
    EXPECT_TRUE(pair.server.IsConnected());
}

TEST_F(SocketTest, AttachTellsWhereTheSocketCameFrom)
{
    CSocketListener listener;
    ASSERT_EQ(URET_OK, listener.StartListen(LoopbackAddress(0)));
    CSocketAddr address = LoopbackAddress(LocalPort(listener.GetSocket()));
    COpenSocket client;
    ASSERT_EQ(URET_OK, client.Connect(address));
    EXPECT_EQ(0u, client.Flags() & 0x80000000);
    ASSERT_EQ(URET_OK, listener.Wait(kDeadlineMs));
    COpenSocket server;
    ASSERT_EQ(URET_OK, listener.Accept(server));
    EXPECT_EQ(0x80000010u, server.Flags());
}

TEST_F(SocketTest, AttachOfWhatIsNoSocketRaises)
{
    CSocket socket;
    EXPECT_EQ((SRaised{Errors::SocketFunction, kNoSocket}), Raised([&] { socket.Attach(0x7FFFFFF0); }));
    char byte = 0;
    EXPECT_EQ((SRaised{Errors::SocketFunction, kNoSocket}), Raised([&] { socket.Write(&byte, 1, nullptr); }));
}

// --- Reading

TEST_F(SocketTest, AReadWithACountOfNothingWouldBlock)
{
    SSocketPair pair;
    std::string text;
    EXPECT_EQ(URET_WouldBlock, ReadOnce(pair.client, text, 10));
    EXPECT_EQ("", text);
    EXPECT_FALSE(pair.client.CanRead());
}

TEST_F(SocketTest, AReadWithACountTakesWhatIsThere)
{
    SSocketPair pair;
    SendBytes(pair.server, {'a', 'b', 'c'});
    ASSERT_EQ(URET_OK, pair.client.Wait(kDeadlineMs));
    EXPECT_TRUE(pair.client.CanRead());
    std::string text;
    EXPECT_EQ(URET_OK, ReadOnce(pair.client, text, 2));
    EXPECT_EQ("ab", text);
    EXPECT_FALSE(pair.client.CanRead());
    ASSERT_EQ(URET_OK, pair.client.Wait(kDeadlineMs)) << "the data left behind is reported again";
    EXPECT_TRUE(pair.client.CanRead());
    EXPECT_EQ(URET_OK, ReadOnce(pair.client, text, 10));
    EXPECT_EQ("c", text);
    EXPECT_EQ(URET_Timeout, pair.client.Wait(0));
}

TEST_F(SocketTest, APeekLeavesTheDataAndStaysReadable)
{
    SSocketPair pair;
    SendBytes(pair.server, {'a', 'b'});
    ASSERT_EQ(URET_OK, pair.client.Wait(kDeadlineMs));
    std::string text;
    EXPECT_EQ(URET_OK, ReadOnce(pair.client, text, 10, RM_Peek));
    EXPECT_EQ("ab", text);
    EXPECT_TRUE(pair.client.CanRead());
    EXPECT_EQ(URET_OK, ReadOnce(pair.client, text, 10));
    EXPECT_EQ("ab", text);
}

TEST_F(SocketTest, AReadWithoutACountWaitsForAll)
{
    SSocketPair pair;
    std::thread sender([&] {
        Threading::CCallBackGuard guard;
        for (unsigned char i = 0; i < 10; ++i)
            SendBytes(pair.server, {i});
    });
    EXPECT_EQ((Bytes{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}), ReceiveBytes(pair.client, 10));
    sender.join();
}

TEST_F(SocketTest, ReadingNothingIsOk)
{
    SSocketPair pair;
    unsigned long long read = 99;
    EXPECT_EQ(URET_OK, pair.client.Read(nullptr, 0, &read, RM_Normal));
    EXPECT_EQ(0u, read);
    EXPECT_EQ(URET_OK, pair.client.Read(nullptr, 0, nullptr, RM_Normal));
}

TEST_F(SocketTest, TheEndIsReadOnceAndRaisesThen)
{
    SSocketPair pair;
    SendBytes(pair.server, {'x'});
    pair.server.Close();
    std::string text;
    ASSERT_EQ(URET_OK, pair.client.Wait(kDeadlineMs));
    EXPECT_EQ(URET_OK, ReadOnce(pair.client, text, 10));
    EXPECT_EQ("x", text);
    ASSERT_EQ(URET_OK, pair.client.Wait(kDeadlineMs)) << "the close wakes up as well";
    EXPECT_TRUE(pair.client.CanRead());
    EXPECT_TRUE(pair.client.IsConnected());
    EXPECT_EQ(URET_Closed, ReadOnce(pair.client, text, 10));
    EXPECT_EQ("", text);
    EXPECT_TRUE(pair.client.IsClosed());
    EXPECT_TRUE(pair.client.CanRead());
    EXPECT_EQ(Errors::SocketClosedByPeer, RaisedBy([&] { ReadOnce(pair.client, text, 10); }));
}

TEST_F(SocketTest, TheEndInsideAReadWithoutACountRaises)
{
    SSocketPair pair;
    SendBytes(pair.server, {'x'});
    pair.server.Close();
    char data[2];
    EXPECT_EQ(Errors::SocketClosedByPeer, RaisedBy([&] { pair.client.Read(data, 2, nullptr, RM_Normal); }));
    EXPECT_EQ(Errors::SocketClosedByPeer, RaisedBy([&] { pair.client.Read(data, 2, nullptr, RM_Normal); }));
}

TEST_F(SocketTest, AResetIsTheSocketsOwnErrorAsWineCannotShow)
{
    if (RunsUnderWine()) GTEST_SKIP() << "Wine shows a reset as an orderly end";
    SSocketPair pair;
    CloseByReset(pair.server);
    char byte = 0;
    EXPECT_EQ((SRaised{Errors::SocketFunction, kConnectionReset}),
              Raised([&] { pair.client.Read(&byte, 1, nullptr, RM_Normal); }));
}

// --- Timeouts

TEST_F(SocketTest, SetTimeoutReturnsTheOldOne)
{
    CSocket socket;
    EXPECT_EQ(0xFFFFFFFFu, socket.SetTimeout(5));
    EXPECT_EQ(5u, socket.SetTimeout(0));
    EXPECT_EQ(0u, socket.GetTimeout());
}

TEST_F(SocketTest, ATimeoutOfZeroRaisesWithoutData)
{
    SSocketPair pair;
    pair.client.SetTimeout(0);
    char byte = 0;
    EXPECT_EQ(Errors::SocketTimeout, RaisedBy([&] { pair.client.Read(&byte, 1, nullptr, RM_Normal); }));
    SendBytes(pair.server, {'x'});
    ASSERT_EQ(URET_OK, pair.client.Wait(kDeadlineMs));
    EXPECT_EQ(URET_OK, pair.client.Read(&byte, 1, nullptr, RM_Normal)) << "an operation that needn't wait is in time";
}

TEST_F(SocketTest, TheTimeoutSpansTheWholeOperation)
{
    SSocketPair pair;
    pair.client.SetTimeout(200);
    std::atomic<bool> stop{false};
    std::thread dripping([&] {
        Threading::CCallBackGuard guard;
        while (!stop) {
            SendBytes(pair.server, {'x'});
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
    });
    // Each wait by itself is short; one that began anew with each byte would go on for ever.
    std::string data(1 << 20, '\0');
    EXPECT_EQ(Errors::SocketTimeout, RaisedBy([&] { pair.client.Read(data.data(), data.size(), nullptr, RM_Normal); }));
    stop = true;
    dripping.join();
}

TEST_F(SocketTest, WaitTellsATimeoutAndWithoutArgumentRaisesIt)
{
    SSocketPair pair;
    HoldsWithin(kDeadline, [&] { return pair.client.Wait(50) == URET_Timeout; }); // "writable" may come by itself
    EXPECT_EQ(URET_Timeout, pair.client.Wait(0));
    EXPECT_EQ(URET_Timeout, pair.client.Wait(5));
    pair.client.SetTimeout(5);
    EXPECT_EQ(Errors::SocketTimeout, RaisedBy([&] { pair.client.Wait(); }));
    SendBytes(pair.server, {'x'});
    pair.client.SetTimeout(kDeadlineMs);
    EXPECT_EQ(URET_OK, pair.client.Wait());
}

// --- Writing

TEST_F(SocketTest, AWriteGoesOnUntilAllIsSent)
{
    SSocketPair pair;
    Bytes data(8 << 20);
    for (std::size_t i = 0; i < data.size(); ++i)
        data[i] = static_cast<unsigned char>(i * 7 + i / 251);
    Bytes received;
    std::thread reader([&] {
        Threading::CCallBackGuard guard;
        received = ReceiveBytes(pair.server, data.size());
    });
    EXPECT_EQ(URET_OK, pair.client.Write(data.data(), data.size(), nullptr));
    reader.join();
    EXPECT_TRUE(data == received);
}

TEST_F(SocketTest, AWriteWithACountReturnsWhenNothingAtAllCouldBeSent)
{
    SSocketPair pair;
    pair.client.SetTimeout(50);
    const Bytes data(1 << 20, 'x');
    unsigned long long written = 0;
    unsigned long long sent = 0;
    // With progress it goes on, up to the timeout; without any it comes back with nothing.
    do {
        const std::uint32_t error = RaisedBy([&] { pair.client.Write(data.data(), data.size(), &written); });
        ASSERT_TRUE(error == 0 || error == Errors::SocketTimeout);
        sent += written;
    } while (written != 0);
    EXPECT_EQ(0u, written);
    EXPECT_FALSE(pair.client.CanWrite());
    EXPECT_EQ(Errors::SocketTimeout, RaisedBy([&] { pair.client.Write(data.data(), 1, nullptr); }));
    EXPECT_EQ(sent, ReceiveBytes(pair.server, sent).size());
    EXPECT_EQ(URET_OK, pair.client.Wait(kDeadlineMs)) << "there is room again";
    EXPECT_TRUE(pair.client.CanWrite());
    EXPECT_EQ(URET_OK, pair.client.Write(data.data(), 1, &written));
    EXPECT_EQ(1u, written);
}

TEST_F(SocketTest, AWriteAfterShuttingSendingDownRaises)
{
    SSocketPair pair;
    EXPECT_EQ(URET_OK, pair.client.Shutdown(SM_Send));
    char byte = 0;
    EXPECT_EQ(Errors::SocketFunction, RaisedBy([&] { pair.client.Write(&byte, 1, nullptr); }));
    EXPECT_EQ(Bytes(), ReceiveToTheEnd(pair.server));
    SendBytes(pair.server, {1});
    EXPECT_EQ(Bytes{1}, ReceiveBytes(pair.client, 1)) << "receiving goes on";
}

TEST_F(SocketTest, AWriteIntoAConnectionThatIsGoneRaises)
{
    SSocketPair pair;
    CloseByReset(pair.server);
    ASSERT_EQ(URET_OK, pair.client.Wait(kDeadlineMs));
    char byte = 0;
    EXPECT_EQ(Errors::SocketFunction, RaisedBy([&] { pair.client.Write(&byte, 1, nullptr); }));
    EXPECT_EQ((SRaised{Errors::SocketFunction, kSentIntoReset}), Raised([&] { pair.client.Write(&byte, 1, nullptr); }));
}

// --- Waiting beside other objects, interrupts

TEST_F(SocketTest, IsOneOfManyObjectsAndTheWaitNotesItsEvents)
{
    SSocketPair pair;
    Threading::CEvent never;
    never.Init(/*initialState=*/false, /*manualReset=*/true);
    SendBytes(pair.server, {'x'});
    Threading::CWaiter waiter;
    waiter << never << pair.client;
    EXPECT_EQ(URET_WaitObject1, waiter.Wait(kDeadlineMs, /*all=*/false));
    EXPECT_TRUE(pair.client.CanRead());
    EXPECT_EQ(URET_Timeout, waiter.Wait(0, /*all=*/false));
}

TEST_F(SocketTest, CancellingTheThreadBreaksARead)
{
    SSocketPair pair;
    std::atomic<std::uint32_t> raised{0};
    std::atomic<bool> begun{false};
    Threading::CThread thread;
    StartThread(thread, [&] {
        begun = true; // a thread can't be cancelled before
        raised = RaisedBy([&] {
            char byte = 0;
            pair.client.Read(&byte, 1, nullptr, RM_Normal);
        });
    });
    ASSERT_TRUE(HoldsWithin(kDeadline, [&] { return begun.load(); }));
    thread.Cancel();
    ASSERT_EQ(URET_OK, thread.Wait(kDeadlineMs));
    EXPECT_EQ(Errors::ThreadInterrupt, raised);
}

TEST_F(SocketTest, AWaitInterruptBreaksAWait)
{
    SSocketPair pair;
    Threading::CWaitInterrupt interrupt;
    interrupt.Init();
    Threading::CInterruptGuard guard;
    guard.SetWaitInterrupt(interrupt);
    interrupt.Set();
    EXPECT_EQ(Errors::WaitInterrupt, RaisedBy([&] { pair.client.Wait(kDeadlineMs); }));
}

// --- The rest

TEST_F(SocketTest, TellsItsAddresses)
{
    SSocketPair pair;
    std::string text;
    CSocketAddr peer = pair.client.GetPeerAddr();
    EXPECT_EQ(URET_OK, peer.GetAddress(text));
    EXPECT_EQ("127.0.0.1", text);
    sockaddr_storage storage{};
    ASSERT_EQ(URET_OK, peer.GetAddress(storage));
    std::uint16_t port = 0;
    unsigned char bytes[16];
    Platform::ReadAddress(storage, port, bytes);
    EXPECT_EQ(LocalPort(pair.listener.GetSocket()), port);
    EXPECT_TRUE(pair.client.GetLocalAddr() == pair.server.GetPeerAddr());
}

TEST_F(SocketTest, TheSendDelayCanBeChanged)
{
    SSocketPair pair;
    EXPECT_EQ(URET_OK, pair.client.TCP_NoSendDelay(false));
    EXPECT_EQ(URET_OK, pair.client.TCP_NoSendDelay(true));
}

TEST_F(SocketTest, ReturnsErrorWithThrowingDisabledAndKeepsTheRecord)
{
    CSocket socket;
    CSocketAddr closed = LoopbackAddress(ClosedPort());
    Exceptions::CThrowState state;
    state.DisableThrow();
    Threading::CCurrentThread thread;
    char byte = 0;
    EXPECT_EQ(URET_Error, socket.Read(&byte, 1, nullptr, RM_Normal));
    EXPECT_EQ(Errors::SocketNotConnected, thread.GetErrorLog().GetError());
    EXPECT_EQ(URET_Error, socket.Connect(closed));
    EXPECT_EQ(Errors::SocketFunction, thread.GetErrorLog().GetError());
    EXPECT_EQ(0u, socket.GetPeerAddr().Count());
    EXPECT_EQ(URET_Error, socket.ConnectLocal(ClosedPort()));
}

TEST_F(SocketTest, AWaitHandleKeepsACountOfItsOwn)
{
    CSocket socket;
    {
        const Threading::CWaitHandle handle(socket);
        EXPECT_EQ(2, socket.Count());
        EXPECT_EQ(1u, handle.Mask());
    }
    EXPECT_EQ(1, socket.Count());
}

} // namespace
