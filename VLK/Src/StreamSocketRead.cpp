#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "VLK/Functions.h"
#include "VLK/StreamSocket.h"

namespace VLK::Sockets {

using Exceptions::CThrowState;
using Strings::CStringVar;

namespace {

// No system gives a process that much: such a length is refused without asking for it.
constexpr unsigned long long MaxTextBytes = 1ull << 40;

constexpr char ExpectedRead[] = "Current=%d, expected=ST_Read";
constexpr char ExpectedReadOrBlock[] = "Current=%d, expected=ST_Read/ST_ReadBlock";

struct SFree {
    void operator()(void * block) const noexcept { std::free(block); }
};

} // namespace

// --- Numbers

unsigned long long CVlkSocket::ReadNumber(CThrowState & state, unsigned long long positiveLimit,
                                          unsigned long long negativeLimit)
{
    RequireState(ST_Read, ExpectedRead);
    unsigned long long value = 0;
    const unsigned int tag = ReadCmd(value);
    switch (tag) {
    case STC_SmallPosInt:
        return value;
    case STC_SmallNegInt:
        return 0 - value;
    case STC_PosInt:
        if (value > positiveLimit) VLK_RAISE(state, Errors::IntegerOutOfRange);
        return value;
    case STC_NegInt:
        if (value > negativeLimit) VLK_RAISE(state, Errors::IntegerOutOfRange);
        return 0 - value;
    default:
        PutBack(tag, value);
        VLK_RAISE_TEXT(state, Errors::SocketOutOfSync, "Integer-STC expected, %d received", tag);
    }
}

long long CVlkSocket::ReadINTFromPeer(unsigned long long size)
{
    CThrowState state;
    try {
        return static_cast<long long>(ReadNumber(state, LargestSigned(size), LargestSigned(size) + 1));
    } catch (...) {
        VLK_SOURCE(source);
        m_uState |= ST_Error;
        return state.ThrowNext(source);
    }
}

unsigned long long CVlkSocket::ReadUINTFromPeer(unsigned long long size)
{
    CThrowState state;
    try {
        return ReadNumber(state, LargestUnsigned(size), LargestSigned(size) + 1);
    } catch (...) {
        VLK_SOURCE(source);
        m_uState |= ST_Error;
        return state.ThrowNext(source);
    }
}

// --- Texts

/// A text that lies in the buffer as a whole. It stays valid until the next read.
bool CVlkSocket::TakeText(std::string_view & text) noexcept
{
    if (m_uState != ST_Read || m_uPeekedTag != NoTag || m_uCount == 0) return false;
    const unsigned int byte = *m_pPosition;
    if (byte == STC_EmptyString) {
        text = ""; // never null, since the C library gets it
        Advance(1);
        return true;
    }
    const std::size_t lengthBytes = (byte & 7) + 1;
    if ((byte & 0xF8) != STC_String || m_uCount <= lengthBytes) return false;
    unsigned long long length = 0;
    for (std::size_t i = 1; i <= lengthBytes; ++i)
        length = length << 8 | m_pPosition[i];
    if (length > m_uCount - 1 - lengthBytes) return false;
    text = {reinterpret_cast<char const *>(m_pPosition) + 1 + lengthBytes, static_cast<std::size_t>(length)};
    Advance(1 + lengthBytes + text.size());
    return true;
}

/// The head of a text's frame. False: it is the empty text.
bool CVlkSocket::ReadTextLength(CThrowState & state, unsigned long long & length)
{
    RequireState(ST_Read, ExpectedReadOrBlock);
    const unsigned int tag = ReadCmd(length);
    if (tag == STC_String) return true;
    if (tag == STC_EmptyString) return false;
    PutBack(tag, length);
    VLK_RAISE_TEXT(state, Errors::SocketOutOfSync, "STC_(Empty)String expected, %d received", tag);
}

CVlkSocket & CVlkSocket::operator>>(std::string & text)
{
    CThrowState state;
    try {
        std::string_view found;
        if (TakeText(found)) {
            void const * const nul = std::memchr(found.data(), '\0', found.size());
            text.assign(found.data(), nul != nullptr
                                          ? static_cast<std::size_t>(static_cast<char const *>(nul) - found.data())
                                          : found.size());
            return *this;
        }
        unsigned long long length = 0;
        if (ReadTextLength(state, length))
            ReadLongText(state, text, length);
        else
            text.clear();
        return *this;
    } catch (...) {
        VLK_SOURCE(source);
        m_uState |= ST_Error;
        state.ThrowNext(source);
        return *this;
    }
}

void CVlkSocket::ReadLongText(CThrowState & state, std::string & text, unsigned long long length)
{
    // Zeroed, but not touched before the data comes: a length that is a lie costs no memory.
    const std::unique_ptr<char, SFree> room(
        length <= MaxTextBytes ? static_cast<char *>(std::calloc(1, static_cast<std::size_t>(length) + 1)) : nullptr);
    if (room == nullptr) VLK_RAISE(state, Errors::OutOfMemory);
    ReadBlock(reinterpret_cast<unsigned char *>(room.get()), length);
    text = room.get();
}

CVlkSocket & CVlkSocket::operator>>(CStringVar & text)
{
    CThrowState state;
    try {
        unsigned long long length = 0;
        if (ReadTextLength(state, length))
            ReadTextInto(state, text, length);
        else
            text = Misc::CNull();
        return *this;
    } catch (...) {
        VLK_SOURCE(source);
        m_uState |= ST_Error;
        state.ThrowNext(source);
        return *this;
    }
}

void CVlkSocket::ReadTextInto(CThrowState & state, CStringVar & text, unsigned long long length)
{
    text = Misc::CNull();
    char * const room = length <= MaxTextBytes ? text.Lock(static_cast<std::size_t>(length), 1) : nullptr;
    if (room == nullptr) VLK_RAISE(state, Errors::OutOfMemory);
    try {
        ReadBlock(reinterpret_cast<unsigned char *>(room), length);
    } catch (...) {
        *room = '\0'; // an empty text
        throw;
    }
    room[length] = '\0';
    text.Unlock(static_cast<std::size_t>(length));
}

// --- Binary data and files

unsigned int CVlkSocket::Read(void * data, unsigned long long size, unsigned long long & read)
{
    CThrowState state;
    try {
        if (m_uState != ST_ReadBlock) {
            RequireState(ST_Read, ExpectedReadOrBlock);
            m_uBlockRemainder = ReadExpected(STC_BinBlockStart, "STC_BinBlockStart expected, %d received");
            if (m_uBlockRemainder == 0) {
                read = 0;
                return URET_OK;
            }
            m_uState = ST_ReadBlock;
        }
        read = 0;
        return DeliverBlock(static_cast<unsigned char *>(data), size, read);
    } catch (...) {
        VLK_SOURCE(source);
        m_uState |= ST_Error;
        return state.ThrowNext(source);
    }
}

unsigned int CVlkSocket::DeliverBlock(unsigned char * place, unsigned long long size, unsigned long long & read)
{
    while (size != 0) {
        const unsigned long long part = std::min(size, m_uBlockRemainder);
        ReadBlock(place, part);
        read += part;
        m_uBlockRemainder -= part;
        if (m_uBlockRemainder == 0) {
            if (PeekCmd() != STC_BinBlockNext) {
                m_uState = ST_Read;
                return URET_OK;
            }
            ReadCmd(m_uBlockRemainder);
        }
        size -= part;
        place += part;
    }
    return URET_MoreData;
}

CVlkSocket & CVlkSocket::operator>>(std::FILE * file)
{
    CThrowState state;
    try {
        RequireState(ST_Read, ExpectedReadOrBlock);
        unsigned long long missing = ReadExpected(STC_File, "STC_File expected, %d received");
        for (unsigned int tag = PeekCmd(); tag == STC_BinBlockStart || tag == STC_BinBlockNext; tag = PeekCmd()) {
            unsigned long long size = 0;
            ReadCmd(size);
            ReceiveBlock(state, file, size);
            missing -= size;
        }
        if (missing != 0) VLK_RAISE_TEXT(state, Errors::DataMissing, "%d Bytes missing", missing);
        return *this;
    } catch (...) {
        VLK_SOURCE(source);
        m_uState |= ST_Error;
        state.ThrowNext(source);
        return *this;
    }
}

void CVlkSocket::ReceiveBlock(CThrowState & state, std::FILE * file, unsigned long long size)
{
    while (size != 0) {
        Refill();
        const auto part = static_cast<std::size_t>(std::min<unsigned long long>(size, m_uCount));
        if (std::fwrite(m_pPosition, 1, part, file) != part)
            VLK_RAISE_NATIVE(state, Errors::OperatingSystem, Functions::GetOsError());
        Advance(part);
        size -= part;
    }
}

} // namespace VLK::Sockets
