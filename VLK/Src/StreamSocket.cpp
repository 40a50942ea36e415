#include "VLK/StreamSocket.h"

#include <algorithm>
#include <cstring>

#include "StreamOperation.h"
#include "StreamTags.h"

namespace VLK::Sockets {

using Exceptions::CThrowState;
using namespace Internals;

namespace {

// These numbers stand in the messages about refused bytes.
constexpr unsigned int RefusedGroup = 1176;
constexpr unsigned int RefusedByte = 1180;

} // namespace

CVlkSocket::CVlkSocket() noexcept
    : m_pSocket(nullptr),
      m_uPeerVersion(0),
      m_uState(ST_Closed),
      m_uPeekedTag(NoTag),
      m_uPeekedValue(0),
      m_uEventsPending(0),
      m_uBlockRemainder(0),
      m_uCount(0),
      m_pPosition(m_Buffer),
      m_bSending(false)
{
}

CVlkSocket::~CVlkSocket()
{
    Abort();
}

unsigned int CVlkSocket::Abort()
{
    CThrowState state;
    CSocket * const socket = m_pSocket;
    m_pSocket = nullptr;
    m_uState = ST_Closed;
    try {
        if (socket != nullptr) socket->Abort();
    }
    VLK_END_EXCEPTION(state)
    return URET_OK;
}

CVlkSocket::operator Threading::CWaitHandle() noexcept
{
    return m_pSocket != nullptr ? Threading::CWaitHandle(*m_pSocket) : Threading::CWaitHandle();
}

void CVlkSocket::Take(CSocket & socket)
{
    CThrowState state;
    try {
        if (m_pSocket != nullptr) VLK_RAISE(state, Errors::SocketAlreadyAttached);
    }
    VLK_THROW_NEXT_VOID(state)
    m_uState = ST_Idle;
    m_pSocket = &socket;
    m_uPeekedTag = NoTag; // what a former connection left behind says nothing about this one
    m_uBlockRemainder = 0;
    m_uCount = 0;
    m_pPosition = m_Buffer;
    m_bSending = false;
}

void CVlkSocket::RaiseWrongState(char const * message) const
{
    CThrowState state;
    try {
        if ((m_uState & ST_Error) != 0) VLK_RAISE(state, Errors::SocketInErrorState);
        VLK_RAISE_TEXT(state, Errors::SocketState, message, m_uState);
    }
    VLK_THROW_NEXT_VOID(state)
}

void CVlkSocket::PutBack(unsigned int tag, unsigned long long value) noexcept
{
    m_uPeekedTag = tag;
    m_uPeekedValue = value;
}

unsigned long long CVlkSocket::ReadExpected(unsigned int tag, char const * message)
{
    CThrowState state;
    try {
        unsigned long long value = 0;
        const unsigned int found = ReadCmd(value);
        if (found == tag) return value;
        PutBack(found, value);
        VLK_RAISE_TEXT(state, Errors::SocketOutOfSync, message, found);
    }
    VLK_THROW_NEXT(state)
}

// --- Reading from the buffer

void CVlkSocket::ReadData()
{
    CThrowState state;
    try {
        m_bSending = false;
        for (;;) {
            const unsigned int result = m_pSocket->Read(m_Buffer, BufferSize, &m_uCount, RM_Normal);
            if (result == URET_OK) break;
            if (result == URET_Closed) {
                m_Buffer[0] = STC_Close;
                m_uCount = 1;
                break;
            }
            if (result == URET_WouldBlock) m_pSocket->Wait();
        }
        m_pPosition = m_Buffer;
    }
    VLK_THROW_NEXT_VOID(state)
}

void CVlkSocket::Refill()
{
    while (m_uCount == 0)
        ReadData();
}

unsigned char CVlkSocket::TakeByte()
{
    Refill();
    const unsigned char byte = *m_pPosition;
    Advance(1);
    return byte;
}

unsigned long long CVlkSocket::ReadInteger(unsigned int bytes)
{
    unsigned long long value = 0;
    for (unsigned int i = 0; i < bytes; ++i)
        value = value << 8 | TakeByte();
    return value;
}

void CVlkSocket::ReadBlock(unsigned char * target, unsigned long long size)
{
    while (size != 0) {
        Refill();
        const auto part = static_cast<std::size_t>(std::min<unsigned long long>(size, m_uCount));
        std::memcpy(target, m_pPosition, part);
        Advance(part);
        target += part;
        size -= part;
    }
}

void CVlkSocket::Discard(unsigned long long bytes)
{
    while (bytes != 0) {
        Refill();
        const auto part = static_cast<std::size_t>(std::min<unsigned long long>(bytes, m_uCount));
        Advance(part);
        bytes -= part;
    }
}

unsigned int CVlkSocket::Classify(CThrowState & state, unsigned int byte, unsigned long long & value)
{
    if (byte >= STC_SmallPosInt) {
        value = byte & 0x1F;
        return byte & 0xE0;
    }
    const unsigned int group = GroupOf(byte);
    if ((group & GroupHasValue) != 0) {
        value = ReadInteger((byte & 7) + 1);
        return byte & 0xF8;
    }
    if ((group & GroupIsRefused) != 0)
        VLK_RAISE_TEXT(state, Errors::SocketBadCommand, "CVlkSocket, Cmd=x%08X, Line=%d", byte, RefusedGroup);
    if ((group & GroupIsPlain) != 0 && (group & (unsigned{SingleIsRefused} << (byte & 7))) != 0)
        VLK_RAISE_TEXT(state, Errors::SocketBadCommand, "CVlkSocket, Cmd=x%08X, Line=%d", byte, RefusedByte);
    return byte;
}

unsigned int CVlkSocket::ReadCmd(unsigned long long & value)
{
    CThrowState state;
    try {
        if (m_uPeekedTag != NoTag) {
            const unsigned int tag = m_uPeekedTag;
            value = m_uPeekedValue;
            m_uPeekedTag = NoTag;
            return tag;
        }
        for (;;) {
            const unsigned int tag = Classify(state, TakeByte(), value);
            if (tag == STC_EventsPending)
                m_uEventsPending = 1;
            else if (tag != STC_KeepAlive)
                return tag;
        }
    }
    VLK_THROW_NEXT_AS(state, STC_Close)
}

unsigned int CVlkSocket::PeekCmd()
{
    unsigned long long value = 0;
    const unsigned int tag = ReadCmd(value);
    PutBack(tag, value);
    return tag;
}

// --- Passing over frames

void CVlkSocket::Skip(unsigned int tag)
{
    for (;;) {
        // Settled: the rest of a block is counted off without moving the position in the buffer.
        while (m_uState == ST_ReadBlock && m_uBlockRemainder != 0) {
            Refill();
            const unsigned long long part = std::min(m_uBlockRemainder, m_uCount);
            m_uBlockRemainder -= part;
            m_uCount -= part;
        }
        unsigned long long value = 0;
        const unsigned int found = ReadCmd(value);
        if (found == tag) {
            PutBack(found, value);
            return;
        }
        const unsigned int group = GroupOf(found);
        if ((group & GroupIsPlain) != 0)
            Discard(PlainTagBytes[found & 7]);
        else if ((group & GroupHasData) != 0)
            Discard(value);
    }
}

unsigned int CVlkSocket::SkipTo(unsigned int tag)
{
    VLK_SOURCE(source);
    const auto work = [&](CThrowState &) -> unsigned int {
        m_uState &= ~unsigned{ST_Error};
        if (m_uState != ST_Read && m_uState != ST_ReadBlock)
            RaiseWrongState("Current=%d, expected=ST_Read/ST_ReadBlock");
        Skip(tag);
        return URET_OK;
    };
    return Operation(source, work, EAfterFailure::Idle);
}

// --- Writing to the buffer

void CVlkSocket::PrepareBufferForSend()
{
    CThrowState state;
    try {
        if (m_bSending) m_uCount = 0; // what a broken request left behind is not the peer's
        while (m_uCount != 0) {
            const unsigned int byte = TakeByte();
            if (byte == STC_EventsPending)
                m_uEventsPending = 1;
            else if (byte != STC_KeepAlive)
                VLK_RAISE(state, Errors::Protocol);
        }
        m_pPosition = m_Buffer;
        m_bSending = false;
    }
    VLK_THROW_NEXT_VOID(state)
}

void CVlkSocket::SendBuffer()
{
    // Emptied first: bytes that could not be sent are never tried again, nor taken for received ones.
    const unsigned long long count = m_uCount;
    m_uCount = 0;
    m_pPosition = m_Buffer;
    m_bSending = false;
    m_pSocket->Write(m_Buffer, count, nullptr);
}

void CVlkSocket::Flush()
{
    if (m_uCount != 0) SendBuffer();
}

void CVlkSocket::WriteByte(unsigned int byte)
{
    if (m_uCount == BufferSize) SendBuffer();
    *m_pPosition++ = static_cast<unsigned char>(byte);
    ++m_uCount;
    m_bSending = true;
}

void CVlkSocket::WriteBlock(unsigned char const * data, unsigned long long size)
{
    while (size != 0) {
        if (m_uCount == BufferSize) SendBuffer();
        const auto part = static_cast<std::size_t>(std::min<unsigned long long>(size, BufferSize - m_uCount));
        std::memcpy(m_pPosition, data, part);
        m_pPosition += part;
        m_uCount += part;
        m_bSending = true;
        data += part;
        size -= part;
    }
}

void CVlkSocket::WriteCmd(unsigned int tag, unsigned long long value)
{
    unsigned int length = 1;
    while (length < 8 && value >> (8 * length) != 0)
        ++length;
    WriteByte(tag | (length - 1));
    while (length-- != 0)
        WriteByte(static_cast<unsigned char>(value >> (8 * length)));
}

} // namespace VLK::Sockets
