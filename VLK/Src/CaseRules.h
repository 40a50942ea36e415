#ifndef VLK_SRC_CASE_RULES_H
#define VLK_SRC_CASE_RULES_H

#include <cstddef>

/// Letter case as the C locale has it, whatever locale the process has set.
namespace VLK::Internals {

constexpr char LowerOf(char c) noexcept
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}
constexpr char UpperOf(char c) noexcept
{
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

/// Difference of the first two letters that differ when folded, over exactly n bytes.
int CompareBytesFolded(char const * a, char const * b, std::size_t n) noexcept;
/// The same over at most n bytes, ending at a NUL in both.
int CompareTextFolded(char const * a, char const * b, std::size_t n) noexcept;

/// Fold n bytes in place, up to a NUL among them.
void LowerText(char * text, std::size_t n) noexcept;
void UpperText(char * text, std::size_t n) noexcept;

} // namespace VLK::Internals

#endif
