#ifndef TOOLS_NLS_TOOL_FILES_H
#define TOOLS_NLS_TOOL_FILES_H

#include <string>
#include <string_view>

namespace NlsTool {

/// All bytes of a file. Raises CBadFile when it can't be read or is longer than any table or language file.
std::string ReadWhole(std::string const & path);

/// Puts a file with these bytes in the place of what the path leads to; who reads the path meets the old or the new
/// one, whole. Raises CBadFile, and what is there stays, when it can't be written or the path is of something else than
/// a file.
void WriteWhole(std::string const & path, std::string_view bytes);

} // namespace NlsTool

#endif
