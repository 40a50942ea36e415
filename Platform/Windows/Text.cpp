#include "Platform/Text.h"

#include <climits>
#include <mbctype.h>
#include <mbstring.h>

#include "System.h"

namespace {

bool IsHighSurrogate(char16_t unit) noexcept
{
    return unit >= 0xD800 && unit <= 0xDBFF;
}

bool IsLowSurrogate(char16_t unit) noexcept
{
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

/// A code page that has a sign of its own for what is no character would show that one.
std::u16string WithoutUnpairedSurrogates(char16_t const * text, std::size_t size)
{
    std::u16string out(text, size);
    for (std::size_t i = 0; i < size; ++i) {
        if (IsHighSurrogate(out[i]) && i + 1 < size && IsLowSurrogate(out[i + 1]))
            ++i;
        else if (IsHighSurrogate(out[i]) || IsLowSurrogate(out[i]))
            out[i] = u'?';
    }
    return out;
}

} // namespace

char const * Platform::NextChar(char const * text) noexcept
{
    return ::CharNextA(text);
}

std::size_t Platform::CharSize(char const * text) noexcept
{
    return static_cast<std::size_t>(NextChar(text) - text);
}

bool Platform::ToUtf16(char const * text, std::size_t size, std::u16string & out)
{
    static_assert(sizeof(wchar_t) == sizeof(char16_t));
    if (size == 0) {
        out.clear();
        return true;
    }
    if (size > INT_MAX) return false;
    std::u16string converted(size, u'\0'); // no set takes more units than bytes
    const int units = ::MultiByteToWideChar(CP_ACP, MB_ERR_INVALID_CHARS, text, static_cast<int>(size),
                                            reinterpret_cast<wchar_t *>(converted.data()), static_cast<int>(size));
    if (units <= 0) return false;
    converted.resize(static_cast<std::size_t>(units));
    out = std::move(converted);
    return true;
}

std::string Platform::FromUtf16(char16_t const * text, std::size_t size)
{
    std::string out;
    if (size == 0 || size > INT_MAX) return out;
    std::u16string const units = WithoutUnpairedSurrogates(text, size);
    auto const * const wide = reinterpret_cast<wchar_t const *>(units.data());
    const auto length = static_cast<int>(size);
    const int bytes = ::WideCharToMultiByte(CP_ACP, 0, wide, length, nullptr, 0, nullptr, nullptr);
    out.resize(bytes > 0 ? static_cast<std::size_t>(bytes) : 0);
    ::WideCharToMultiByte(CP_ACP, 0, wide, length, out.data(), bytes, nullptr, nullptr);
    return out;
}

std::uint32_t Platform::AnsiCodePage() noexcept
{
    return ::GetACP();
}

void Platform::SetAnsiCodePage(std::uint32_t) noexcept {}

bool Platform::IsPrintOrSpaceOrLegal(std::uint32_t code) noexcept
{
    return ::_ismbcprint(code) != 0 || ::_ismbcspace(code) != 0 || ::_ismbclegal(code) != 0;
}
