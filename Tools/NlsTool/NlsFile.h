#ifndef TOOLS_NLS_TOOL_NLS_FILE_H
#define TOOLS_NLS_TOOL_NLS_FILE_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "Tools/NlsTool/Language.h"

/// Language files, as the foundation reads them: integers of 32 bits, the most significant byte first.
///
///     0               magic 0x25031961
///     4               number of texts of a language
///     8               number of languages N
///     12              N heads of 48 bytes: language, offset of its block, size of its block, encoding, name (32 bytes)
///     12 + 48 N       N blocks: the texts in the order of their ids, each with a NUL behind it; nothing follows
namespace NlsTool {

inline constexpr std::size_t LongestName = 32; ///< bytes; a name that fills its field has no NUL behind it

/// The language's name as a file holds it.
std::string NameBytes(SLanguage const & language);

/// The bytes of a file with these languages, for a module with as many texts as `count`; a language without texts gets
/// empty ones. Raises CBadFile when two have the same id, or the file would be longer than the foundation can read.
std::string PrintNlsFile(std::vector<SLanguage> const & languages, std::size_t count);

/// The languages of a file's bytes, whose places are "path: byte n". Raises CBadFile with place and reason for what
/// the foundation would refuse, never find, or show otherwise than it was meant, measured by the default texts.
std::vector<SLanguage> ReadNlsFile(std::string const & path, std::string_view bytes, SDefaults const & defaults);

} // namespace NlsTool

#endif
