#ifndef TESTS_AGENT_SUPPORT_RAW_PEER_H
#define TESTS_AGENT_SUPPORT_RAW_PEER_H

#include <cstdint>
#include <optional>
#include <string>

#include "Platform/Socket.h"
#include "Tests/Support/WireBytes.h"

/// One accepted connection, as raw bytes. One thread. What doesn't come within the tests' deadline counts as missing.
class CRawConnection {
public:
    explicit CRawConnection(Platform::SocketHandle socket);
    CRawConnection(CRawConnection &&) = default;
    CRawConnection & operator=(CRawConnection &&) = default;

    /// Sends all of it; false when the other side has closed.
    bool Send(Wire::CBytes const & bytes);
    /// Waits for the next bytes: exactly as many as asked, or what came before the end of the connection or the
    /// deadline.
    Wire::CBytes Receive(std::size_t size);
    /// Waits for exactly these bytes; false, with the difference as a failure of the test, otherwise.
    bool Expect(Wire::CBytes const & bytes);
    /// Waits until the other side has closed; false if bytes came before, or if it doesn't close in time.
    bool AwaitClose();
    /// Whether nothing has come that wasn't received yet. Gives the other side `ms` milliseconds to send something.
    bool IsSilentFor(std::uint32_t ms);
    /// Ends this side's sending. The other side reads an orderly end.
    void ShutdownSend();
    /// Sends the end even where unread bytes wait.
    void Close();

private:
    bool AwaitEvent(std::uint32_t timeoutMs);

    Platform::CWaitableHandle m_event;
    Platform::CSocketHandle m_socket; ///< goes first
};

/// Listens on a port of the local host that the system chose.
class CRawPeer {
public:
    CRawPeer();

    std::uint32_t Port() const { return m_port; }
    /// The next connection, or nothing within the time.
    std::optional<CRawConnection> Accept(std::uint32_t timeoutMs);
    /// The next connection, with the handshake done. A failure of the test if none comes.
    CRawConnection AcceptAgent();
    /// From here on the port is closed.
    void StopListening();

private:
    Platform::CWaitableHandle m_event;
    Platform::CSocketHandle m_listener;
    std::uint32_t m_port = 0;
};

#endif
