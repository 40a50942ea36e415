#ifndef TOOLS_NLS_TOOL_ENCODING_H
#define TOOLS_NLS_TOOL_ENCODING_H

#include <cstddef>
#include <string>
#include <string_view>

/// Characters and the two forms in which a language file holds them.
namespace NlsTool {

/// Who reads a language file turns each character into one byte, so these are all there are.
inline constexpr char32_t LastCharacter = 0xFF;
/// Characters. What a format stream takes without asking for memory, which an error's text must not depend on.
inline constexpr std::size_t LongestText = 511;

/// Position of the first byte that is no UTF-8 (shortest forms only, no surrogates); npos if all is.
std::size_t FindBadUtf8(std::string_view bytes) noexcept;
/// Of valid UTF-8.
std::u32string FromUtf8(std::string_view text);
std::string ToUtf8(std::u32string_view text);
/// One byte for each character; all of them up to LastCharacter.
std::string ToNative(std::u32string_view text);
std::u32string FromNative(std::string_view bytes);

/// Why the text can't be in a language file; empty if it can.
std::string FaultOf(std::u32string_view text);

} // namespace NlsTool

#endif
