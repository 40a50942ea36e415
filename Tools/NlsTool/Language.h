#ifndef TOOLS_NLS_TOOL_LANGUAGE_H
#define TOOLS_NLS_TOOL_LANGUAGE_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "VLK/Language.h"

namespace NlsTool {

using EEncoding = VLK::Language_Support::CLanguageSupport::EEncoding;

/// The texts that a module has compiled in, by which every translation is measured.
struct SDefaults {
    std::uint32_t language = 0;
    std::vector<std::u32string> texts;
};

/// One language's texts.
struct SLanguage {
    std::uint32_t id = 0;
    std::string place; ///< where it is told, for messages
    std::u32string name;
    EEncoding encoding = EEncoding::EncodingUtf8;
    std::vector<std::u32string> texts; ///< as many as the defaults; none if the encoding is EncodingAbsent
};

/// The foundation's own texts.
SDefaults FoundationDefaults();

/// "de" as the number 0x6465; 0 if the text isn't two small letters.
std::uint32_t LanguageId(std::string_view letters) noexcept;
/// The letters of an id; empty if it hasn't got two small ones.
std::string LettersOf(std::uint32_t id);

/// "native", "utf-8", "absent".
std::string_view NameOf(EEncoding encoding) noexcept;

} // namespace NlsTool

#endif
