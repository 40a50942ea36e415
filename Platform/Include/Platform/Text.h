#ifndef PLATFORM_TEXT_H
#define PLATFORM_TEXT_H

#include <cstddef>
#include <cstdint>
#include <string>

/// Text in the system's character set: the ANSI code page on Windows, UTF-8 on POSIX. The process's locale is
/// neither read nor changed.
namespace Platform {

/// The character behind the one that text points to; stays at the terminating NUL.
char const * NextChar(char const * text) noexcept;
/// Bytes of the character, at least 1 unless text points to the NUL; broken sequences count byte by byte.
std::size_t CharSize(char const * text) noexcept;

/// Converts to UTF-16 without a byte order mark. False when the bytes are no text of the system's set.
bool ToUtf16(char const * text, std::size_t size, std::u16string & out);
/// Text of the system's set from UTF-16; unpaired surrogates become '?'.
std::string FromUtf16(char16_t const * text, std::size_t size);

/// Number of the ANSI code page; on POSIX a setting that is 1252.
std::uint32_t AnsiCodePage() noexcept;
/// POSIX: replaces the setting, for tests. Windows: does nothing.
void SetAnsiCodePage(std::uint32_t codePage) noexcept;

/// Whether the system's set calls the character printable, space, or legal. code: as in the version texts, the
/// first byte plus 256 times the second.
bool IsPrintOrSpaceOrLegal(std::uint32_t code) noexcept;

} // namespace Platform

#endif
