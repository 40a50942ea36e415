#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "StreamOperation.h"
#include "VLK/Functions.h"

namespace VLK::Sockets {

using Exceptions::CThrowState;
using Strings::CStringVar;

namespace {

// No system gives a process that much: such a length is refused without asking for it.
constexpr unsigned long long MaxTextBytes = 1ull << 40;

constexpr unsigned long long ShortText = 256; // bytes; needs no allocation

constexpr char ExpectedRead[] = "Current=%d, expected=ST_Read";
constexpr char ExpectedReadOrBlock[] = "Current=%d, expected=ST_Read/ST_ReadBlock";

/// Whether there is a NUL among the bytes. In words, since the texts of records are too short for a call.
bool HasNul(unsigned char const * text, std::size_t size) noexcept
{
    constexpr std::uint64_t ones = 0x0101010101010101;
    const auto wordHasNul = [](unsigned char const * place) {
        std::uint64_t word;
        std::memcpy(&word, place, sizeof word);
        return ((word - ones) & ~word & (ones << 7)) != 0;
    };
    if (size < sizeof(std::uint64_t)) return std::find(text, text + size, 0) != text + size;
    unsigned char const * const last = text + size - sizeof(std::uint64_t);
    for (; text < last; text += sizeof(std::uint64_t)) {
        if (wordHasNul(text)) return true;
    }
    return wordHasNul(last);
}

/// text = what stands in front of the first NUL, with no more memory than that needs.
void AssignUpToNul(std::string & text, unsigned char const * data, std::size_t size)
{
    if (HasNul(data, size)) [[unlikely]]
        size = static_cast<std::size_t>(std::find(data, data + size, 0) - data);
    auto const * const characters = reinterpret_cast<char const *>(data);
    if (size > text.capacity())
        text = std::string(characters, size);
    else
        text.assign(characters, size);
}

struct SFree {
    void operator()(void * block) const noexcept { std::free(block); }
};

} // namespace

// --- What lies in the buffer as a whole

unsigned char const * CVlkSocket::SUnread::Text(unsigned char const * frame, unsigned char const * end,
                                                std::string & text) noexcept
{
    const std::ptrdiff_t lengthBytes = (*frame & 7) + 1;
    if ((*frame & 0xF8) != STC_String || end - frame <= lengthBytes) return nullptr;
    const unsigned long long length = BigEndian(frame + 1, lengthBytes);
    unsigned char const * const data = frame + 1 + lengthBytes;
    if (length > static_cast<unsigned long long>(end - data)) return nullptr;
    try {
        AssignUpToNul(text, data, static_cast<std::size_t>(length));
    } catch (...) { // no memory: the slow way meets the same, and can tell
        return nullptr;
    }
    return data + length;
}

/// Does the work of one operator, which looks at the state itself.
template <class TWork>
CVlkSocket & CVlkSocket::Reading(TWork const & work)
{
    VLK_SOURCE(source);
    Operation(source, work);
    return *this;
}

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
    VLK_SOURCE(source);
    return Operation(source, [&](CThrowState & state) {
        return static_cast<long long>(ReadNumber(state, LargestSigned(size), LargestSigned(size) + 1));
    });
}

unsigned long long CVlkSocket::ReadUINTFromPeer(unsigned long long size)
{
    VLK_SOURCE(source);
    return Operation(
        source, [&](CThrowState & state) { return ReadNumber(state, LargestUnsigned(size), LargestSigned(size) + 1); });
}

// --- Texts

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
    SUnread unread = Unread();
    if (unread.Take(text)) {
        Leave(unread);
        return *this;
    }
    return Reading([&](CThrowState & state) {
        unsigned long long length = 0;
        if (ReadTextLength(state, length))
            ReadLongText(state, text, length);
        else
            text.clear();
    });
}

void CVlkSocket::ReadLongText(CThrowState & state, std::string & text, unsigned long long length)
{
    if (length < ShortText) {
        char room[ShortText];
        ReadBlock(reinterpret_cast<unsigned char *>(room), length);
        room[length] = '\0';
        text = room;
        return;
    }
    // Zeroed, but not touched before the data comes: a length that is a lie costs no memory.
    const std::unique_ptr<char, SFree> room(
        length <= MaxTextBytes ? static_cast<char *>(std::calloc(1, static_cast<std::size_t>(length) + 1)) : nullptr);
    if (room == nullptr) VLK_RAISE(state, Errors::OutOfMemory);
    ReadBlock(reinterpret_cast<unsigned char *>(room.get()), length);
    text = room.get();
}

CVlkSocket & CVlkSocket::operator>>(CStringVar & text)
{
    return Reading([&](CThrowState & state) {
        unsigned long long length = 0;
        if (ReadTextLength(state, length))
            ReadTextInto(state, text, length);
        else
            text = Misc::CNull();
    });
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
    VLK_SOURCE(source);
    return Operation(source, [&](CThrowState &) -> unsigned int {
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
    });
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
    return Reading([&](CThrowState & state) {
        RequireState(ST_Read, ExpectedReadOrBlock);
        unsigned long long missing = ReadExpected(STC_File, "STC_File expected, %d received");
        for (unsigned int tag = PeekCmd(); tag == STC_BinBlockStart || tag == STC_BinBlockNext; tag = PeekCmd()) {
            unsigned long long size = 0;
            ReadCmd(size);
            ReceiveBlock(state, file, size);
            missing -= size;
        }
        if (missing != 0) VLK_RAISE_TEXT(state, Errors::DataMissing, "%d Bytes missing", missing);
    });
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
