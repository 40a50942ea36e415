#include "StreamOperation.h"

namespace VLK::Sockets {

using Exceptions::CThrowState;
using namespace Internals;

namespace {

constexpr unsigned long long Refusal = 0x10100;

} // namespace

CVlkSocketServer::~CVlkSocketServer()
{
    Abort();
}

unsigned int CVlkSocketServer::Attach(CSocket & socket, unsigned int version)
{
    VLK_SOURCE(source);
    return Handshake(source, socket, [&](CThrowState & state) -> unsigned int {
        const unsigned long long clientVersion = ReadInteger(VersionBytes);
        unsigned long long value = 0;
        const unsigned int tag = ReadCmd(value);
        PrepareBufferForSend();
        if (tag != STC_Attach) VLK_RAISE(state, Errors::Protocol);
        const bool matches = (value & 0xFF) == 0 && clientVersion == version;
        if (matches) m_uPeerVersion = static_cast<unsigned char>(value >> 8);
        WriteCmd(STC_Attach, matches ? ProtocolGeneration : Refusal);
        Flush();
        if (matches) return URET_OK;
        AwaitPeersClose();
        VLK_RAISE(state, Errors::ConnectionRejected);
    });
}

/// Lets the client take the connection down, so that it has read its refusal.
void CVlkSocketServer::AwaitPeersClose()
{
    while (m_pSocket->IsConnected()) {
        m_pSocket->Wait();
        if (!m_pSocket->CanRead()) continue;
        // The close is only seen by reading; what the client says besides is of no interest.
        CThrowState state;
        try {
            m_pSocket->Read(m_Buffer, BufferSize, &m_uCount, RM_Normal);
            m_uCount = 0;
        } catch (...) {
            VLK_SOURCE(source);
            state.EndException(source);
            return;
        }
    }
}

unsigned int CVlkSocketServer::WaitForRequest(unsigned int & code)
{
    VLK_SOURCE(source);
    return Operation(source, [&](CThrowState & state) -> unsigned int {
        RequireState(ST_Idle, ExpectedIdle);
        unsigned long long value = 0;
        switch (ReadCmd(value)) {
        case STC_Request:
            code = static_cast<unsigned int>(value);
            m_uState = ST_Read;
            return URET_OK;
        case STC_GetEvents:
            PrepareBufferForSend();
            WriteCmd(STC_Events, m_uEventMask);
            Flush();
            m_uEventMask = 0;
            return URET_Timeout;
        case STC_Close:
            m_uState = ST_PeerClosed;
            return URET_Disconnect;
        default:
            VLK_RAISE(state, Errors::Protocol);
        }
    });
}

unsigned int CVlkSocketServer::CheckRequest(unsigned int & code)
{
    VLK_SOURCE(source);
    return Operation(source, [&](CThrowState &) -> unsigned int {
        RequireState(ST_Idle, ExpectedIdle);
        if (m_pSocket->IsSecure()) m_pSocket->CheckNegotiation();
        return m_pSocket->CanRead() ? WaitForRequest(code) : URET_WouldBlock;
    });
}

unsigned int CVlkSocketServer::SendAck(unsigned int ack)
{
    VLK_SOURCE(source);
    return Operation(source, [&](CThrowState &) -> unsigned int {
        RequireState(ST_Read, "Current=%d, expected=ST_Read");
        ReadExpected(STC_WaitAck, "STC_WaitAck expected, %d received");
        PrepareBufferForSend();
        WriteCmd(STC_Ack, ack);
        m_uState = ST_Send;
        return URET_OK;
    });
}

unsigned int CVlkSocketServer::EndAck()
{
    VLK_SOURCE(source);
    return Operation(source, [&](CThrowState &) -> unsigned int {
        RequireState(ST_Send, "Current=%d, expected=ST_Send");
        WriteByte(STC_EndAck);
        Flush();
        m_uState = ST_Idle;
        return URET_OK;
    });
}

unsigned int CVlkSocketServer::SetEvents(unsigned long long mask)
{
    VLK_SOURCE(source);
    return Operation(source, [&](CThrowState & state) -> unsigned int {
        // Unlike elsewhere, an error is answered with the state as well.
        if (m_uState != ST_Idle) VLK_RAISE_TEXT(state, Errors::SocketState, ExpectedIdle, m_uState);
        if (m_uEventMask == 0) {
            PrepareBufferForSend();
            WriteByte(STC_EventsPending);
            Flush();
        }
        m_uEventMask |= mask;
        return URET_OK;
    });
}

unsigned int CVlkSocketServer::SendKeepAlive()
{
    VLK_SOURCE(source);
    return Operation(source, [&](CThrowState &) -> unsigned int {
        RequireState(ST_Idle, ExpectedIdle);
        PrepareBufferForSend();
        WriteByte(STC_KeepAlive);
        Flush();
        return URET_OK;
    });
}

unsigned int CVlkSocketServer::Close()
{
    CThrowState state;
    CSocket * const socket = m_pSocket;
    m_pSocket = nullptr;
    m_uState = ST_Closed;
    if (socket == nullptr) return URET_OK;
    try {
        socket->Shutdown(SM_Send);
        return socket->Close();
    }
    VLK_THROW_NEXT(state)
}

} // namespace VLK::Sockets
