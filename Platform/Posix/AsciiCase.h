#ifndef PLATFORM_POSIX_ASCII_CASE_H
#define PLATFORM_POSIX_ASCII_CASE_H

#include <algorithm>
#include <string_view>

namespace Platform {

/// Letters of ASCII only; the process's locale has no say.
constexpr char ToLowerAscii(char letter) noexcept
{
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

inline bool EqualIgnoringCase(std::string_view left, std::string_view right) noexcept
{
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char l, char r) { return ToLowerAscii(l) == ToLowerAscii(r); });
}

inline bool StartsIgnoringCase(std::string_view text, std::string_view start) noexcept
{
    return EqualIgnoringCase(text.substr(0, start.size()), start);
}

} // namespace Platform

#endif
