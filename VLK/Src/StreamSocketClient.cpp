#include "VLK/StreamSocket.h"

namespace VLK::Sockets {

using Exceptions::CThrowState;

namespace {

constexpr unsigned int VersionBytes = 4;
constexpr unsigned long long ProtocolGeneration = 0x100; // value of the handshake's frame
constexpr unsigned long long RefusalBits = 0xFF0000;
constexpr char ExpectedIdle[] = "Current=%d, expected=ST_Idle";

} // namespace

CVlkSocketClient::~CVlkSocketClient()
{
    Abort();
}

unsigned int CVlkSocketClient::Attach(CSocket & socket, unsigned int version)
{
    CThrowState state;
    bool taken = false;
    try {
        if (m_pSocket != nullptr) VLK_RAISE(state, Errors::SocketAlreadyAttached);
        Take(socket);
        taken = true;
        for (unsigned int i = VersionBytes; i-- != 0;)
            WriteByte(static_cast<unsigned char>(version >> (8 * i)));
        WriteCmd(STC_Attach, ProtocolGeneration);
        Flush();
        unsigned long long value = 0;
        if (ReadCmd(value) != STC_Attach) VLK_RAISE(state, Errors::Protocol);
        if ((value & RefusalBits) != 0) VLK_RAISE(state, Errors::ConnectionRefused);
        m_uPeerVersion = static_cast<unsigned char>(value >> 8);
        m_uEventsPending = 0;
        return URET_OK;
    } catch (...) {
        VLK_SOURCE(source);
        Exceptions::CExceptionLog log = state.ContinueException(source);
        if (taken)
            Abort();
        else
            socket.Abort();
        return log.tryThrow();
    }
}

unsigned int CVlkSocketClient::StartRequest(unsigned int code)
{
    CThrowState state;
    try {
        RequireState(ST_Idle, ExpectedIdle);
        PrepareBufferForSend();
        WriteCmd(STC_Request, code);
        m_uState = ST_Send;
        return URET_OK;
    } catch (...) {
        VLK_SOURCE(source);
        m_uState = ST_Idle | ST_Error;
        return state.ThrowNext(source);
    }
}

unsigned int CVlkSocketClient::WaitForAck(unsigned int & ack)
{
    CThrowState state;
    try {
        RequireState(ST_Send, "Current=%d, expected=ST_Send");
        WriteByte(STC_WaitAck);
        Flush();
        unsigned long long value = 0;
        if (ReadCmd(value) != STC_Ack) VLK_RAISE(state, Errors::Protocol);
        ack = static_cast<unsigned int>(value);
        m_uState = ST_Read;
        return URET_OK;
    } catch (...) {
        VLK_SOURCE(source);
        m_uState |= ST_Error;
        return state.ThrowNext(source);
    }
}

unsigned int CVlkSocketClient::EndRequest()
{
    CThrowState state;
    try {
        RequireState(ST_Read, "Current=%d, expected=ST_Read");
        ReadExpected(STC_EndAck, "STC_EndAck expected, %d received");
        m_uState = ST_Idle;
        return URET_OK;
    } catch (...) {
        VLK_SOURCE(source);
        m_uState = ST_Idle | ST_Error;
        return state.ThrowNext(source);
    }
}

unsigned int CVlkSocketClient::CanRead()
{
    CThrowState state;
    try {
        RequireState(ST_Idle, ExpectedIdle);
        return HasSomethingToHandle() ? URET_OK : URET_WouldBlock;
    } catch (...) {
        VLK_SOURCE(source);
        m_uState = ST_Idle | ST_Error;
        return state.ThrowNext(source);
    }
}

unsigned int CVlkSocketClient::Wait(unsigned int timeout)
{
    CThrowState state;
    try {
        RequireState(ST_Idle, ExpectedIdle);
        return HasSomethingToHandle() ? URET_OK : m_pSocket->Wait(timeout);
    } catch (...) {
        VLK_SOURCE(source);
        m_uState = ST_Idle | ST_Error;
        return state.ThrowNext(source);
    }
}

unsigned int CVlkSocketClient::GetEvents(unsigned long long & events)
{
    CThrowState state;
    try {
        RequireState(ST_Idle, ExpectedIdle);
        do {
            PrepareBufferForSend();
            if (m_pSocket->CanRead() && m_pSocket->Read(m_Buffer, BufferSize, &m_uCount, RM_Normal) != URET_WouldBlock)
                m_pPosition = m_Buffer;
        } while (m_uCount != 0);
        if (m_uEventsPending == 0) {
            events = 0;
            return URET_OK;
        }
        PrepareBufferForSend();
        WriteByte(STC_GetEvents);
        Flush();
        if (ReadCmd(events) != STC_Events) VLK_RAISE(state, Errors::Protocol);
        m_uEventsPending = 0;
        return URET_OK;
    } catch (...) {
        VLK_SOURCE(source);
        m_uState |= ST_Error;
        return state.ThrowNext(source);
    }
}

unsigned int CVlkSocketClient::Close()
{
    CThrowState state;
    if (m_pSocket == nullptr) {
        m_uState = ST_Closed;
        return URET_OK;
    }
    // Each step for itself: what fails must not keep the next from being done.
    try {
        PrepareBufferForSend();
        WriteByte(STC_Close);
        Flush();
    }
    VLK_END_EXCEPTION(state)
    try {
        m_pSocket->Shutdown(SM_Send);
    }
    VLK_END_EXCEPTION(state)
    try {
        unsigned long long value = 0;
        ReadCmd(value); // until the peer has closed its side
    }
    VLK_END_EXCEPTION(state)
    try {
        m_pSocket->Close();
    }
    VLK_END_EXCEPTION(state)
    m_pSocket = nullptr;
    m_uState = ST_Closed;
    return URET_OK;
}

} // namespace VLK::Sockets
