#ifndef TESTS_SUPPORT_MEMORY_SOCKET_H
#define TESTS_SUPPORT_MEMORY_SOCKET_H

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "Tests/Support/WireBytes.h"
#include "VLK/ResultCodes.h"
#include "VLK/Socket.h"
#include "VLK/StreamSocket.h"

/// A socket whose peer is memory: it delivers the pieces one behind the other, never two in one read, and then counts
/// as closed by the peer. What is sent is kept.
class CMemorySocket : public VLK::Sockets::CSocket {
public:
    explicit CMemorySocket(std::vector<std::string> pieces) : m_pieces(std::move(pieces)) {}

    unsigned int Read(void * data, unsigned long long size, unsigned long long * read, VLK::Sockets::READ_MODE) override
    {
        while (m_piece < m_pieces.size() && m_position == m_pieces[m_piece].size())
            Rewind(m_piece + 1);
        *read = 0;
        if (m_piece == m_pieces.size()) {
            // The end is told once; from then on there is no connection.
            return std::exchange(m_closed, true) ? CSocket::Read(data, size, read, VLK::Sockets::RM_Normal)
                                                 : VLK::URET_Closed;
        }
        std::string const & piece = m_pieces[m_piece];
        std::size_t const n = std::min(static_cast<std::size_t>(size), piece.size() - m_position);
        std::memcpy(data, piece.data() + m_position, n);
        m_position += n;
        *read = n;
        return VLK::URET_OK;
    }
    unsigned int Write(void const * data, unsigned long long size, unsigned long long * written) override
    {
        m_out.append(static_cast<char const *>(data), static_cast<std::size_t>(size));
        if (written != nullptr) *written = size;
        return VLK::URET_OK;
    }
    unsigned int Wait(unsigned int) override { return VLK::URET_OK; }

    /// Delivers anew from this piece on.
    void Rewind(std::size_t piece)
    {
        m_piece = piece;
        m_position = 0;
    }
    std::string const & Sent() const { return m_out; }
    bool AllRead() const
    {
        return m_piece == m_pieces.size() || (m_piece + 1 == m_pieces.size() && m_position == m_pieces[m_piece].size());
    }

private:
    std::vector<std::string> const m_pieces;
    std::size_t m_piece = 0;
    std::size_t m_position = 0;
    bool m_closed = false;
    std::string m_out;
};

/// A client in the middle of a request whose answer is `answer`, ready to read it.
class CAnsweredClient {
public:
    explicit CAnsweredClient(std::string const & answer) : CAnsweredClient(answer, answer.size()) {}
    /// The answer comes in pieces of that many bytes.
    CAnsweredClient(std::string const & answer, std::size_t pieceBytes) : m_socket(Pieces(answer, pieceBytes))
    {
        client.Attach(m_socket, 267);
        client.StartRequest(1);
        unsigned int ack = 0;
        client.WaitForAck(ack);
    }
    CMemorySocket & Socket() { return m_socket; }
    /// Delivers the answer once more.
    void Again() { m_socket.Rewind(2); }

private:
    static std::vector<std::string> Pieces(std::string const & answer, std::size_t pieceBytes)
    {
        std::vector<std::string> pieces{Wire::kWelcome, Wire::Ack(0)};
        for (std::size_t at = 0; at < answer.size(); at += pieceBytes)
            pieces.push_back(answer.substr(at, pieceBytes));
        return pieces;
    }

    CMemorySocket m_socket;

public:
    VLK::Sockets::CVlkSocketClient client;
};

/// What `write` puts on the stream between the request and its end.
template <class TWrite>
std::string WrittenBy(TWrite write)
{
    CMemorySocket socket({Wire::kWelcome, Wire::Ack(0)});
    VLK::Sockets::CVlkSocketClient client;
    client.Attach(socket, 267);
    client.StartRequest(1);
    write(client);
    unsigned int ack = 0;
    client.WaitForAck(ack);
    std::size_t const head = Wire::kHello.size() + Wire::Request(1).size();
    std::string const & sent = socket.Sent();
    return sent.substr(head, sent.size() - head - Wire::kWaitAck.size());
}

#endif
