#include <algorithm>
#include <cwchar>

#include "Memory.h"
#include "VLK/Exceptions.h"
#include "VLK/Strings.h"
#include "VLK/ThrowState.h"
#include "VLK/Trace.h"

namespace VLK::Strings {

namespace {

constexpr std::size_t MaxEncoded = 4; ///< bytes of one character

/// Encodes one value; returns the number of bytes. High surrogates give none; a negative value takes four.
std::size_t Encode(std::int32_t value, char (&out)[MaxEncoded]) noexcept
{
    if (value >= 0xD800 && value <= 0xDBFF) return 0;
    if (value >= 0xDC00 && value <= 0xDFFF) value -= 0xDC00;
    std::uint32_t const c = static_cast<std::uint32_t>(value);
    auto const continuation = [c](unsigned int shift) { return static_cast<char>(0x80 | (c >> shift & 0x3F)); };
    if (c <= 0x7F) {
        out[0] = static_cast<char>(c);
        return 1;
    }
    if (c <= 0x7FF) {
        out[0] = static_cast<char>(0xC0 | (c >> 6 & 0x1F));
        out[1] = continuation(0);
        return 2;
    }
    if (c <= 0xFFFF) {
        out[0] = static_cast<char>(0xE0 | (c >> 12 & 0xF));
        out[1] = continuation(6);
        out[2] = continuation(0);
        return 3;
    }
    out[0] = static_cast<char>(0xF0 | (c >> 18 & 7));
    out[1] = continuation(12);
    out[2] = continuation(6);
    out[3] = continuation(0);
    return 4;
}

// Bytes go in with their sign, as the encoder has always got them.
std::int32_t ValueOf(char c) noexcept
{
    return static_cast<signed char>(c);
}
std::int32_t ValueOf(wchar_t c) noexcept
{
    return static_cast<std::int32_t>(c);
}

template <class TUnit, class TAppend>
void EncodeAll(TUnit const * text, std::size_t n, TAppend const & append)
{
    for (std::size_t i = 0; i != n; ++i) {
        char bytes[MaxEncoded];
        append(bytes, Encode(ValueOf(text[i]), bytes));
    }
}

template <class TUnit>
void EncodeInto(std::string & out, TUnit const * text, std::size_t n)
{
    Exceptions::CThrowState state;
    try {
        std::string encoded;
        EncodeAll(text, n, [&](char const * bytes, std::size_t count) { encoded.append(bytes, count); });
        out.swap(encoded);
        return;
    }
    VLK_THROW_NEXT_VOID(state)
}

/// Whether text of the right form holds only code points that one byte can take.
bool FitsIntoBytes(CSubStringRef const & text) noexcept
{
    for (std::size_t i = 0; i < text.size(); ++i) {
        if ((text[i] & 0x80) == 0) continue;
        if ((text[i] & 0xE0) != 0xC0) return false;
        ++i;
    }
    return true;
}

} // namespace

void ToUTF8(std::string const & text, std::string & out)
{
    EncodeInto(out, text.c_str(), std::strlen(text.c_str()));
}

void ToUTF8(wchar_t const * text, std::string & out)
{
    EncodeInto(out, text, text != nullptr ? std::wcslen(text) : 0);
}

CStringVar & CStringVar::CopyAsUTF8(CSubStringRef const & text)
{
    std::size_t const n = ::strnlen(text.data(), text.size());
    if (n == 0) {
        if (!IsReference()) SetLength(0);
        return *this;
    }
    TString<256> encoded;
    EncodeAll(text.data(), n, [&](char const * bytes, std::size_t count) { encoded.Append(bytes, count); });
    if (!IsOwn(text.data())) *this = Misc::CNull();
    Append(encoded.data(), encoded.size());
    return *this;
}

CStringVar & CStringVar::CopyAsUTF8(wchar_t const * text)
{
    std::size_t const n = text != nullptr ? std::wcslen(text) : 0;
    if (n == 0) {
        if (!IsReference()) SetLength(0);
        return *this;
    }
    *this = Misc::CNull();
    EncodeAll(text, n, [&](char const * bytes, std::size_t count) { Append(bytes, count); });
    if (m_uLength != 0) VLK_TRACE(TraceInformation, "Mapping chars from Unicode to UTF-8");
    return *this;
}

unsigned int CStringVar::CopyFromUTF8(CSubStringRef const & text)
{
    Exceptions::CThrowState state;
    try {
        if (text.size() == 0) {
            *this = Misc::CNull();
            return URET_OK;
        }
        std::size_t const count = text.UTF8Length();
        if (count == POSERR || !FitsIntoBytes(text)) VLK_RAISE(state, Errors::NotUtf8);
        // The caller provides the room; who forgot it gets it, instead of a buffer overrun.
        if (IsReference() || count > m_uCapacity) {
            TString<256> copy;
            copy.Append(text.data(), text.size());
            *this = Misc::CNull();
            Alloc(count);
            return CopyFromUTF8(copy);
        }
        char * out = Data();
        for (std::size_t i = 0; i < text.size(); ++i) {
            unsigned int const byte = static_cast<unsigned char>(text[i]);
            *out++ = static_cast<char>(byte < 0x80 ? byte : (text[++i] & 0x3F) | byte << 6);
        }
        SetLength(count);
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

} // namespace VLK::Strings
