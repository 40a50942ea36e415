#include <algorithm>
#include <cstring>

#include "StreamOperation.h"
#include "VLK/Functions.h"

namespace VLK::Sockets {

using Exceptions::CThrowState;

namespace {

constexpr unsigned long long FileChunk = 4096;
constexpr unsigned int LargestSmall = 31;
// One more than the short form can carry: that number goes out, and comes back, as 0.
constexpr int SmallestSmall = -32;

} // namespace

/// Does the work of one operator in its state.
template <class TWork>
CVlkSocket & CVlkSocket::Writing(TWork const & work)
{
    VLK_SOURCE(source);
    Operation(source, [&](CThrowState & state) {
        RequireState(ST_Send, "Current=%d, expected=ST_Send");
        work(state);
    });
    return *this;
}

CVlkSocket & CVlkSocket::WriteINT(int value)
{
    return Writing([&](CThrowState &) {
        if (value >= 0 && value <= static_cast<int>(LargestSmall))
            WriteByte(STC_SmallPosInt | static_cast<unsigned int>(value));
        else if (value >= SmallestSmall && value < 0)
            WriteByte(STC_SmallNegInt | static_cast<unsigned char>(-value));
        else if (value > 0)
            WriteCmd(STC_PosInt, static_cast<unsigned int>(value));
        else // negated in 32 bits and then extended, which the smallest number shows
            WriteCmd(STC_NegInt, static_cast<unsigned long long>(
                                     static_cast<long long>(static_cast<int>(0u - static_cast<unsigned int>(value)))));
    });
}

CVlkSocket & CVlkSocket::WriteINT(long long value)
{
    return Writing([&](CThrowState &) {
        if (value >= 0 && value <= static_cast<long long>(LargestSmall))
            WriteByte(STC_SmallPosInt | static_cast<unsigned int>(value));
        else if (value >= SmallestSmall && value < 0)
            WriteByte(STC_SmallNegInt | static_cast<unsigned char>(-value));
        else if (value > 0)
            WriteCmd(STC_PosInt, static_cast<unsigned long long>(value));
        else
            WriteCmd(STC_NegInt, 0 - static_cast<unsigned long long>(value));
    });
}

CVlkSocket & CVlkSocket::WriteUINT(unsigned int value)
{
    return WriteUINT(static_cast<unsigned long long>(value));
}

CVlkSocket & CVlkSocket::WriteUINT(unsigned long long value)
{
    return Writing([&](CThrowState &) {
        if (value <= LargestSmall)
            WriteByte(STC_SmallPosInt | static_cast<unsigned int>(value));
        else
            WriteCmd(STC_PosInt, value);
    });
}

CVlkSocket & CVlkSocket::operator<<(char const * text)
{
    return WriteText(text, text != nullptr ? std::strlen(text) : 0);
}

CVlkSocket & CVlkSocket::WriteText(char const * text, std::size_t size)
{
    return Writing([&](CThrowState &) {
        if (size == 0) {
            WriteByte(STC_EmptyString);
            return;
        }
        WriteCmd(STC_String, size);
        WriteBlock(reinterpret_cast<unsigned char const *>(text), size);
    });
}

CVlkSocket & CVlkSocket::Write(void const * data, unsigned long long size, unsigned int continuation)
{
    return Writing([&](CThrowState &) {
        WriteCmd(continuation == 0 ? STC_BinBlockStart : STC_BinBlockNext, size);
        WriteBlock(static_cast<unsigned char const *>(data), size);
    });
}

CVlkSocket & CVlkSocket::operator<<(std::FILE * file)
{
    return Writing([&](CThrowState & state) {
        const long size = std::ftell(file);
        if (size < 0 || std::fseek(file, 0, SEEK_SET) != 0)
            VLK_RAISE_NATIVE(state, Errors::OperatingSystem, Functions::GetOsError());
        WriteCmd(STC_File, static_cast<unsigned long long>(size));
        SendChunks(state, file, static_cast<unsigned long long>(size));
    });
}

void CVlkSocket::SendChunks(CThrowState & state, std::FILE * file, unsigned long long size)
{
    unsigned char chunk[FileChunk];
    while (size != 0) {
        const auto part = static_cast<std::size_t>(std::min(size, FileChunk));
        if (std::fread(chunk, 1, part, file) != part)
            VLK_RAISE_NATIVE(state, Errors::OperatingSystem, Functions::GetOsError());
        WriteCmd(STC_BinBlockStart, part);
        WriteBlock(chunk, part);
        size -= part;
    }
}

} // namespace VLK::Sockets
