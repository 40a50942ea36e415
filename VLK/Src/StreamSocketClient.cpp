#include "StreamOperation.h"

namespace VLK::Sockets {

using Exceptions::CThrowState;
using namespace Internals;

namespace {

constexpr unsigned long long RefusalBits = 0xFF0000;

} // namespace

CVlkSocketClient::~CVlkSocketClient()
{
    Abort();
}

unsigned int CVlkSocketClient::Attach(CSocket & socket, unsigned int version)
{
    VLK_SOURCE(source);
    return Handshake(source, socket, [&](CThrowState & state) -> unsigned int {
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
    });
}

unsigned int CVlkSocketClient::StartRequest(unsigned int code)
{
    VLK_SOURCE(source);
    const auto work = [&](CThrowState &) -> unsigned int {
        RequireState(ST_Idle, ExpectedIdle);
        PrepareBufferForSend();
        WriteCmd(STC_Request, code);
        m_uState = ST_Send;
        return URET_OK;
    };
    return Operation(source, work, EAfterFailure::Idle);
}

unsigned int CVlkSocketClient::WaitForAck(unsigned int & ack)
{
    VLK_SOURCE(source);
    return Operation(source, [&](CThrowState & state) -> unsigned int {
        RequireState(ST_Send, "Current=%d, expected=ST_Send");
        WriteByte(STC_WaitAck);
        Flush();
        unsigned long long value = 0;
        if (ReadCmd(value) != STC_Ack) VLK_RAISE(state, Errors::Protocol);
        ack = static_cast<unsigned int>(value);
        m_uState = ST_Read;
        return URET_OK;
    });
}

unsigned int CVlkSocketClient::EndRequest()
{
    VLK_SOURCE(source);
    const auto work = [&](CThrowState &) -> unsigned int {
        RequireState(ST_Read, "Current=%d, expected=ST_Read");
        ReadExpected(STC_EndAck, "STC_EndAck expected, %d received");
        m_uState = ST_Idle;
        return URET_OK;
    };
    return Operation(source, work, EAfterFailure::Idle);
}

unsigned int CVlkSocketClient::CanRead()
{
    VLK_SOURCE(source);
    const auto work = [&](CThrowState &) -> unsigned int {
        RequireState(ST_Idle, ExpectedIdle);
        return HasSomethingToHandle() ? URET_OK : URET_WouldBlock;
    };
    return Operation(source, work, EAfterFailure::Idle);
}

unsigned int CVlkSocketClient::Wait(unsigned int timeout)
{
    VLK_SOURCE(source);
    const auto work = [&](CThrowState &) -> unsigned int {
        RequireState(ST_Idle, ExpectedIdle);
        return HasSomethingToHandle() ? URET_OK : m_pSocket->Wait(timeout);
    };
    return Operation(source, work, EAfterFailure::Idle);
}

unsigned int CVlkSocketClient::GetEvents(unsigned long long & events)
{
    VLK_SOURCE(source);
    return Operation(source, [&](CThrowState & state) -> unsigned int {
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
    });
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
