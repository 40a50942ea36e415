#ifndef TESTS_SUPPORT_WIRE_BYTES_H
#define TESTS_SUPPORT_WIRE_BYTES_H

#include <cstddef>
#include <cstdint>
#include <iomanip>
#include <ostream>
#include <sstream>
#include <string>

/// The frames of the stream protocol as bytes, made without the product's own writer.
namespace Wire {

using CBytes = std::string;

/// A tag with a value: the tag's low bits say how many bytes follow, most significant first.
inline CBytes Tagged(unsigned int tag, std::uint64_t value)
{
    std::size_t length = 1;
    while (length < 8 && value >> (8 * length) != 0)
        ++length;
    CBytes bytes(1, static_cast<char>(tag | (length - 1)));
    for (std::size_t i = length; i-- > 0;)
        bytes += static_cast<char>(value >> (8 * i) & 0xFF);
    return bytes;
}

/// A signed integer. -32 comes out as the reader would take it for 0; nobody here uses it.
inline CBytes Int(std::int64_t value)
{
    if (value >= 0 && value <= 31) return CBytes(1, static_cast<char>(0xC0 | value));
    if (value < 0 && value >= -31) return CBytes(1, static_cast<char>(0xE0 | -value));
    return value < 0 ? Tagged(0xB8, static_cast<std::uint64_t>(-value))
                     : Tagged(0xB0, static_cast<std::uint64_t>(value));
}

inline CBytes Unsigned(std::uint64_t value)
{
    return value <= 31 ? CBytes(1, static_cast<char>(0xC0 | value)) : Tagged(0xB0, value);
}

inline CBytes Text(std::string const & text)
{
    return text.empty() ? CBytes(1, '\x06') : Tagged(0x98, text.size()) + text;
}

inline CBytes Request(unsigned int code)
{
    return Tagged(0x88, code);
}
inline CBytes Ack(unsigned int code)
{
    return Tagged(0x90, code);
}
inline CBytes Events(std::uint64_t mask)
{
    return Tagged(0xA0, mask);
}

inline CBytes const kClose(1, '\x00');
inline CBytes const kWaitAck(1, '\x01');
inline CBytes const kEndAck(1, '\x02');
inline CBytes const kEventsPending(1, '\x03');
inline CBytes const kGetEvents(1, '\x04');
inline CBytes const kKeepAlive(1, '\x05');
/// The client's first bytes, with the agent's version 267, and the server's answer that accepts them.
inline CBytes const kHello("\x00\x00\x01\x0B\xA9\x01\x00", 7);
inline CBytes const kWelcome("\xA9\x01\x00", 3);
inline CBytes const kRefusal("\xAA\x01\x01\x00", 4);

/// "A9 01 00", for messages.
inline std::string Hex(CBytes const & bytes)
{
    std::ostringstream out;
    for (char const c : bytes)
        out << std::hex << std::uppercase << std::setw(2) << std::setfill('0')
            << static_cast<unsigned int>(static_cast<unsigned char>(c)) << ' ';
    return out.str();
}

} // namespace Wire

#endif
