#include "Platform/Text.h"

#include <atomic>
#include <cstring>

namespace {

constexpr std::uint32_t DefaultAnsiCodePage = 1252;
std::atomic<std::uint32_t> g_ansiCodePage{DefaultAnsiCodePage};

struct SDecoded {
    char32_t code;
    std::size_t size; ///< bytes; 0: no character of UTF-8
};

/// What the lead byte tells: length of the sequence, bits of the code, the least code of that length.
struct SLead {
    unsigned char mask, value, bits;
    std::size_t size;
    char32_t least;
};
constexpr SLead Leads[] = {{0x80, 0x00, 0x7F, 1, 0},
                           {0xE0, 0xC0, 0x1F, 2, 0x80},
                           {0xF0, 0xE0, 0x0F, 3, 0x800},
                           {0xF8, 0xF0, 0x07, 4, 0x10000}};

bool IsSurrogate(char32_t code) noexcept
{
    return code >= 0xD800 && code <= 0xDFFF;
}

SDecoded DecodeSequence(SLead const & lead, unsigned char const * bytes, std::size_t room) noexcept
{
    if (lead.size > room) return {0, 0};
    char32_t code = bytes[0] & lead.bits;
    for (std::size_t i = 1; i < lead.size; ++i) {
        if ((bytes[i] & 0xC0) != 0x80) return {0, 0};
        code = (code << 6) | (bytes[i] & 0x3FU);
    }
    const bool legal = code >= lead.least && code <= 0x10FFFF && !IsSurrogate(code);
    return {code, legal ? lead.size : 0};
}

/// Looks at the first character of `room` bytes, at least 1.
SDecoded Decode(char const * text, std::size_t room) noexcept
{
    auto const * const bytes = reinterpret_cast<unsigned char const *>(text);
    for (SLead const & lead : Leads)
        if ((bytes[0] & lead.mask) == lead.value) return DecodeSequence(lead, bytes, room);
    return {0, 0};
}

void Encode(char32_t code, std::string & out)
{
    const auto tail = [&](unsigned shift) { out += static_cast<char>(0x80 | ((code >> shift) & 0x3F)); };
    if (code < 0x80) {
        out += static_cast<char>(code);
    } else if (code < 0x800) {
        out += static_cast<char>(0xC0 | (code >> 6));
        tail(0);
    } else if (code < 0x10000) {
        out += static_cast<char>(0xE0 | (code >> 12));
        tail(6);
        tail(0);
    } else {
        out += static_cast<char>(0xF0 | (code >> 18));
        tail(12);
        tail(6);
        tail(0);
    }
}

} // namespace

std::size_t Platform::CharSize(char const * text) noexcept
{
    if (*text == '\0') return 0;
    const std::size_t size = Decode(text, ::strnlen(text, 4)).size;
    return size != 0 ? size : 1;
}

char const * Platform::NextChar(char const * text) noexcept
{
    return text + CharSize(text);
}

bool Platform::ToUtf16(char const * text, std::size_t size, std::u16string & out)
{
    std::u16string converted;
    converted.reserve(size);
    for (std::size_t at = 0; at < size;) {
        const SDecoded character = Decode(text + at, size - at);
        if (character.size == 0) return false;
        if (character.code < 0x10000) {
            converted += static_cast<char16_t>(character.code);
        } else {
            converted += static_cast<char16_t>(0xD800 + ((character.code - 0x10000) >> 10));
            converted += static_cast<char16_t>(0xDC00 + (character.code & 0x3FF));
        }
        at += character.size;
    }
    out = std::move(converted);
    return true;
}

std::string Platform::FromUtf16(char16_t const * text, std::size_t size)
{
    std::string out;
    out.reserve(size);
    for (std::size_t i = 0; i < size; ++i) {
        char32_t code = text[i];
        if (code >= 0xD800 && code <= 0xDBFF && i + 1 < size && text[i + 1] >= 0xDC00 && text[i + 1] <= 0xDFFF)
            code = 0x10000 + ((code - 0xD800) << 10) + (text[++i] - 0xDC00U);
        Encode(IsSurrogate(code) ? U'?' : code, out);
    }
    return out;
}

std::uint32_t Platform::AnsiCodePage() noexcept
{
    return g_ansiCodePage.load(std::memory_order_relaxed);
}

void Platform::SetAnsiCodePage(std::uint32_t codePage) noexcept
{
    g_ansiCodePage.store(codePage, std::memory_order_relaxed);
}

bool Platform::IsPrintOrSpaceOrLegal(std::uint32_t code) noexcept
{
    if (code < 0x80) return (code >= 0x20 && code < 0x7F) || (code >= 0x09 && code <= 0x0D);
    const auto first = static_cast<unsigned char>(code & 0xFF);
    const auto second = static_cast<unsigned char>((code >> 8) & 0xFF);
    const bool leads = first >= 0xC2 && first <= 0xF4;
    const bool follows = (second & 0xC0) == 0x80;
    const bool control = first == 0xC2 && second < 0xA0; // U+0080 to U+009F
    return leads && follows && !control;
}
