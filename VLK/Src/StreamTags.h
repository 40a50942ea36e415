#ifndef VLK_SRC_STREAM_TAGS_H
#define VLK_SRC_STREAM_TAGS_H

#include <cstdint>

#include "VLK/StreamSocket.h"

/// How the reader of a stream treats a first byte: by its group of eight bytes.
namespace VLK::Internals {

inline constexpr std::uint16_t GroupHasValue = 1;
inline constexpr std::uint16_t GroupIsPlain = 2;
inline constexpr std::uint16_t GroupHasData = 4; ///< as many bytes as the value says
inline constexpr std::uint16_t GroupIsRefused = 8;
/// In a plain group: shifted left by the low three bits of a byte that is refused by itself.
inline constexpr std::uint16_t SingleIsRefused = 0x100;

inline constexpr std::uint16_t StreamGroups[] = {
    0x8002, 0x0102,                      // 0x00, 0x08
    8,      8,      8, 8, 8, 8, 8, 8, 8, // 0x10 to 0x57
    5,      5,      5,                   // 0x58, 0x60, 0x68: reserved
    1,      5,      5,                   // STC_File, STC_BinBlockStart, STC_BinBlockNext
    1,      1,      5,                   // STC_Request, STC_Ack, STC_String
    1,      1,      1, 1};               // STC_Events, STC_Attach, STC_PosInt, STC_NegInt
static_assert(sizeof StreamGroups / sizeof StreamGroups[0] == Sockets::STC_SmallPosInt >> 3);

/// Flags of a byte's group; the small integers have none.
constexpr unsigned int GroupOf(unsigned int byte) noexcept
{
    return byte < Sockets::STC_SmallPosInt ? StreamGroups[byte >> 3] : 0u;
}

/// Bytes that follow a plain tag, by its low three bits. Only Skip cares for them.
inline constexpr unsigned int PlainTagBytes[8] = {0, 0, 0, 0, 0, 0, 0, 4};

} // namespace VLK::Internals

#endif
