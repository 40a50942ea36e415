#ifndef TOOLS_NLS_TOOL_TABLE_H
#define TOOLS_NLS_TOOL_TABLE_H

#include <string>
#include <string_view>

#include "Tools/NlsTool/Language.h"

/// Tables of texts, as translators write them: UTF-8, one text a line; kxra-nlstool's manual page tells the form.
namespace NlsTool {

/// The language that a table's bytes tell. Raises CBadFile with "path:line: reason" for each thing that is wrong,
/// measured by the default texts.
SLanguage ReadTable(std::string const & path, std::string_view bytes, SDefaults const & defaults);

/// A table as the default texts themselves: as many texts as there are ids, which are numbered from 0.
SDefaults ReadDefaults(std::string const & path, std::string_view bytes);

/// The language as a table.
std::string PrintTable(SLanguage const & language);

/// The default texts as a table to be translated: each text stands besides in a comment above.
std::string PrintTemplate(SDefaults const & defaults);

} // namespace NlsTool

#endif
