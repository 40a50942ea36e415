#include "Tools/NlsTool/Encoding.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>

namespace NlsTool {

namespace {

/// A sequence by its first byte.
struct SSequence {
    std::size_t length; ///< 0: no first byte
    char32_t bits;      ///< what the first byte says of the character
    char32_t least;     ///< a lower character has a shorter form
};

SSequence SequenceOf(char first) noexcept
{
    char32_t const byte = static_cast<unsigned char>(first);
    if (byte < 0x80) return {1, byte, 0};
    if (byte >= 0xC0 && byte < 0xE0) return {2, byte & 0x1F, 0x80};
    if (byte >= 0xE0 && byte < 0xF0) return {3, byte & 0x0F, 0x800};
    if (byte >= 0xF0 && byte < 0xF8) return {4, byte & 0x07, 0x10000};
    return {0, 0, 0};
}

/// The first character; its length in bytes, 0 if it isn't valid.
std::size_t Decode(std::string_view bytes, char32_t & out) noexcept
{
    SSequence const sequence = SequenceOf(bytes.front());
    if (sequence.length == 0 || sequence.length > bytes.size()) return 0;
    out = sequence.bits;
    for (char const c : bytes.substr(1, sequence.length - 1)) {
        char32_t const byte = static_cast<unsigned char>(c);
        if ((byte & 0xC0) != 0x80) return 0;
        out = out << 6 | (byte & 0x3F);
    }
    bool const surrogate = out >= 0xD800 && out <= 0xDFFF;
    return out < sequence.least || surrogate || out > 0x10FFFF ? 0 : sequence.length;
}

bool IsControl(char32_t c) noexcept
{
    return (c < 0x20 && c != U'\n' && c != U'\t') || (c >= 0x7F && c < 0xA0);
}

std::string NameOf(char32_t c)
{
    char number[16];
    std::snprintf(number, sizeof number, "U+%04X", static_cast<unsigned int>(c));
    return number;
}

} // namespace

std::size_t FindBadUtf8(std::string_view bytes) noexcept
{
    char32_t character = 0;
    for (std::size_t i = 0, length = 0; i != bytes.size(); i += length) {
        length = Decode(bytes.substr(i), character);
        if (length == 0) return i;
    }
    return std::string_view::npos;
}

std::u32string FromUtf8(std::string_view text)
{
    std::u32string out;
    char32_t character = 0;
    while (!text.empty()) {
        text.remove_prefix(Decode(text, character));
        out += character;
    }
    return out;
}

std::string ToUtf8(std::u32string_view text)
{
    std::string out;
    for (char32_t const c : text) {
        auto const continuation = [c](unsigned int shift) { return static_cast<char>(0x80 | (c >> shift & 0x3F)); };
        if (c < 0x80)
            out += static_cast<char>(c);
        else if (c < 0x800)
            (out += static_cast<char>(0xC0 | c >> 6)) += continuation(0);
        else if (c < 0x10000)
            ((out += static_cast<char>(0xE0 | c >> 12)) += continuation(6)) += continuation(0);
        else
            (((out += static_cast<char>(0xF0 | c >> 18)) += continuation(12)) += continuation(6)) += continuation(0);
    }
    return out;
}

std::string ToNative(std::u32string_view text)
{
    std::string out(text.size(), '\0');
    std::transform(text.begin(), text.end(), out.begin(), [](char32_t c) { return static_cast<char>(c); });
    return out;
}

std::u32string FromNative(std::string_view bytes)
{
    std::u32string out(bytes.size(), U'\0');
    std::transform(bytes.begin(), bytes.end(), out.begin(), [](char c) { return static_cast<unsigned char>(c); });
    return out;
}

std::string FaultOf(std::u32string_view text)
{
    if (text.empty()) return "the text is empty";
    for (char32_t const c : text) {
        if (IsControl(c)) return "the control character " + NameOf(c) + " is not allowed";
        if (c > LastCharacter)
            return "the character '" + ToUtf8({&c, 1}) + "' (" + NameOf(c) +
                   ") has no place in a language file, whose last one is " + NameOf(LastCharacter);
    }
    if (text.size() <= LongestText) return {};
    return "the text is too long: " + std::to_string(text.size()) + " characters, at most " +
           std::to_string(LongestText) + " are allowed";
}

} // namespace NlsTool
