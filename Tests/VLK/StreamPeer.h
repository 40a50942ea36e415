#ifndef TESTS_VLK_STREAM_PEER_H
#define TESTS_VLK_STREAM_PEER_H

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "SocketPair.h"
#include "VLK/StreamSocket.h"

/// The state is the object's own; tests want to see it.
template <class TSide>
class TVisible : public TSide {
public:
    unsigned int State() const { return this->m_uState; }
    unsigned int EventsPending() const { return this->m_uEventsPending; }
    unsigned int PeerVersion() const { return this->m_uPeerVersion; }
    /// As a side that knows better than to skip.
    void ForgetError() { this->m_uState &= ~unsigned{VLK::Sockets::ST_Error}; }
};
using CVisibleClient = TVisible<VLK::Sockets::CVlkSocketClient>;
using CVisibleServer = TVisible<VLK::Sockets::CVlkSocketServer>;

inline constexpr unsigned int kVersion = 267;
inline const Bytes kClientHello{0x00, 0x00, 0x01, 0x0B, 0xA9, 0x01, 0x00};
inline const Bytes kServerHello{0xA9, 0x01, 0x00};

/// A client of ours, whose peer is the test, byte by byte, over a real connection.
struct SClientWithPeer {
    SClientWithPeer()
    {
        SendBytes(Peer(), kServerHello);
        EXPECT_EQ(VLK::URET_OK, client.Attach(pair.client, kVersion));
        EXPECT_EQ(kClientHello, ReceiveBytes(Peer(), kClientHello.size()));
    }
    /// The client is reading an answer that consists of these bytes.
    explicit SClientWithPeer(Bytes const & answer) : SClientWithPeer()
    {
        SendBytes(Peer(), Joined({{0x90, 0x00}, answer}));
        unsigned int ack = 99;
        EXPECT_EQ(VLK::URET_OK, client.StartRequest(2));
        EXPECT_EQ(VLK::URET_OK, client.WaitForAck(ack));
        EXPECT_EQ(0u, ack);
        EXPECT_EQ((Bytes{0x88, 0x02, 0x01}), ReceiveBytes(Peer(), 3));
    }
    VLK::Sockets::CSocket & Peer() { return pair.server; }

    SSocketPair pair;
    CVisibleClient client;
};

/// A server of ours, whose peer is the test.
struct SServerWithPeer {
    SServerWithPeer()
    {
        SendBytes(Peer(), kClientHello);
        EXPECT_EQ(VLK::URET_OK, server.Attach(pair.server, kVersion));
        EXPECT_EQ(kServerHello, ReceiveBytes(Peer(), kServerHello.size()));
    }
    VLK::Sockets::CSocket & Peer() { return pair.client; }

    SSocketPair pair;
    CVisibleServer server;
};

/// What a client writes between the request and the end of its arguments.
template <class TWrite>
Bytes WrittenBy(TWrite && write)
{
    SClientWithPeer it;
    it.client.StartRequest(0);
    write(it.client);
    it.pair.client.SetTimeout(kDeadlineMs);
    SendBytes(it.Peer(), {0x90, 0x00});
    unsigned int ack = 0;
    EXPECT_EQ(VLK::URET_OK, it.client.WaitForAck(ack));
    it.client.Abort();
    Bytes all = ReceiveToTheEnd(it.Peer());
    EXPECT_LE(3u, all.size());
    return all.size() < 3 ? all : Bytes(all.begin() + 2, all.end() - 1);
}

/// A temporary file, gone with the object.
class CTemporaryFile {
public:
    CTemporaryFile() : m_pFile(std::tmpfile()) { EXPECT_NE(nullptr, m_pFile); }
    explicit CTemporaryFile(Bytes const & content) : CTemporaryFile()
    {
        EXPECT_EQ(content.size(), std::fwrite(content.data(), 1, content.size(), m_pFile));
    }
    ~CTemporaryFile() { std::fclose(m_pFile); }
    CTemporaryFile(CTemporaryFile const &) = delete;
    CTemporaryFile & operator=(CTemporaryFile const &) = delete;
    std::FILE * Get() const { return m_pFile; }
    Bytes Content() const
    {
        std::fflush(m_pFile);
        std::rewind(m_pFile);
        Bytes content;
        for (int c; (c = std::fgetc(m_pFile)) != EOF;)
            content.push_back(static_cast<unsigned char>(c));
        return content;
    }

private:
    std::FILE * m_pFile;
};

#endif
