#include "Tests/Agent/Support/RawPeer.h"

#include <gtest/gtest.h>

#include <chrono>

#include "Tests/Support/Deadline.h"
#include "Tests/Support/StartedSockets.h"

namespace {

using CClock = std::chrono::steady_clock;

std::uint32_t MillisecondsUntil(CClock::time_point end)
{
    auto const left = std::chrono::duration_cast<std::chrono::milliseconds>(end - CClock::now()).count();
    return left > 0 ? static_cast<std::uint32_t>(left) : 0;
}

Platform::CWaitableHandle NetworkEventOf(Platform::SocketHandle socket, std::uint32_t mask)
{
    Platform::WaitHandle event = nullptr;
    EXPECT_EQ(Platform::Success, Platform::NewNetworkEvent(event));
    EXPECT_EQ(Platform::Success, Platform::SelectNetworkEvents(socket, event, mask));
    return Platform::CWaitableHandle(event);
}

} // namespace

CRawConnection::CRawConnection(Platform::SocketHandle socket)
    : m_event(NetworkEventOf(socket, Platform::NetRead | Platform::NetWrite | Platform::NetClose)), m_socket(socket)
{
    Platform::SetSocketOption(socket, Platform::SocketOption::NoDelay, true);
}

bool CRawConnection::AwaitEvent(std::uint32_t timeoutMs)
{
    if (Platform::WaitForOne(m_event.Get(), timeoutMs, false).result != Platform::WaitResult::Signaled) return false;
    Platform::SNetworkEvents events{};
    return Platform::ReportNetworkEvents(m_socket.Get(), m_event.Get(), events) == Platform::Success;
}

bool CRawConnection::Send(Wire::CBytes const & bytes)
{
    auto const end = CClock::now() + kDeadline;
    std::size_t sent = 0;
    while (sent < bytes.size()) {
        Platform::ErrorCode error = Platform::Success;
        std::int64_t const n = Platform::SendSocket(m_socket.Get(), bytes.data() + sent, bytes.size() - sent, error);
        if (n > 0) {
            sent += static_cast<std::size_t>(n);
        } else if (error != Platform::ErrorWouldBlock() || !AwaitEvent(MillisecondsUntil(end))) {
            return false;
        }
    }
    return true;
}

Wire::CBytes CRawConnection::Receive(std::size_t size)
{
    auto const end = CClock::now() + kDeadline;
    Wire::CBytes bytes(size, '\0');
    std::size_t count = 0;
    while (count < size) {
        Platform::ErrorCode error = Platform::Success;
        std::int64_t const n =
            Platform::ReceiveSocket(m_socket.Get(), bytes.data() + count, size - count, false, error);
        if (n > 0) {
            count += static_cast<std::size_t>(n);
        } else if (n == 0 || error != Platform::ErrorWouldBlock() || !AwaitEvent(MillisecondsUntil(end))) {
            break;
        }
    }
    bytes.resize(count);
    return bytes;
}

bool CRawConnection::Expect(Wire::CBytes const & bytes)
{
    std::string const expected = Wire::Hex(bytes);
    std::string const received = Wire::Hex(Receive(bytes.size()));
    EXPECT_EQ(expected, received);
    return expected == received;
}

bool CRawConnection::AwaitClose()
{
    auto const end = CClock::now() + kDeadline;
    for (;;) {
        char byte = 0;
        Platform::ErrorCode error = Platform::Success;
        std::int64_t const n = Platform::ReceiveSocket(m_socket.Get(), &byte, 1, false, error);
        if (n > 0) return false;
        if (n == 0 || error != Platform::ErrorWouldBlock()) return true; // orderly, or a reset
        if (!AwaitEvent(MillisecondsUntil(end))) return false;
    }
}

bool CRawConnection::IsSilentFor(std::uint32_t ms)
{
    auto const end = CClock::now() + std::chrono::milliseconds(ms);
    for (;;) {
        char byte = 0;
        Platform::ErrorCode error = Platform::Success;
        if (Platform::ReceiveSocket(m_socket.Get(), &byte, 1, /*peek=*/true, error) >= 0) return false;
        if (error != Platform::ErrorWouldBlock()) return false;
        if (!AwaitEvent(MillisecondsUntil(end))) return true;
    }
}

void CRawConnection::ShutdownSend()
{
    Platform::ShutdownSocket(m_socket.Get(), 1);
}

void CRawConnection::Close()
{
    m_socket.Reset();
}

CRawPeer::CRawPeer()
{
    std::uint8_t const loopback[4] = {127, 0, 0, 1};
    sockaddr_storage address{};
    Platform::FillAddress(address, Platform::SocketFamily::IPv4, 0, loopback);
    Platform::SocketHandle socket = Platform::NoSocket;
    EXPECT_EQ(Platform::Success, Platform::OpenTcpSocket(socket, Platform::SocketFamily::IPv4));
    m_listener.Reset(socket);
    EXPECT_EQ(Platform::Success, Platform::BindSocket(socket, address));
    EXPECT_EQ(Platform::Success, Platform::ListenSocket(socket, 50));
    EXPECT_EQ(Platform::Success, Platform::LocalAddress(socket, address));
    std::uint16_t port = 0;
    std::uint8_t bytes[16];
    Platform::ReadAddress(address, port, bytes);
    m_port = port;
    m_event = NetworkEventOf(socket, Platform::NetAccept);
}

std::optional<CRawConnection> CRawPeer::Accept(std::uint32_t timeoutMs)
{
    auto const end = CClock::now() + std::chrono::milliseconds(timeoutMs);
    // Behind its event only: not every system tells the next connection behind an accept that found none.
    while (Platform::WaitForOne(m_event.Get(), MillisecondsUntil(end), false).result ==
           Platform::WaitResult::Signaled) {
        Platform::SNetworkEvents events{};
        Platform::ReportNetworkEvents(m_listener.Get(), m_event.Get(), events);
        Platform::SocketHandle socket = Platform::NoSocket;
        if (Platform::AcceptSocket(m_listener.Get(), socket) == Platform::Success) {
            return std::optional<CRawConnection>(std::in_place, socket);
        }
    }
    return std::nullopt;
}

CRawConnection CRawPeer::AcceptAgent()
{
    std::optional<CRawConnection> connection = Accept(kDeadlineMs);
    if (!connection) {
        ADD_FAILURE() << "the agent doesn't connect";
        return CRawConnection(Platform::NoSocket);
    }
    connection->Expect(Wire::kHello);
    connection->Send(Wire::kWelcome);
    return std::move(*connection);
}

void CRawPeer::StopListening()
{
    m_listener.Reset();
}
