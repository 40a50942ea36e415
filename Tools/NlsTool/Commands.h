#ifndef TOOLS_NLS_TOOL_COMMANDS_H
#define TOOLS_NLS_TOOL_COMMANDS_H

#include <string>
#include <vector>

/// What the program does. Everything here raises CBadFile, and then nothing has been written.
namespace NlsTool {

/// defaults: path of a table with the module's default texts; empty: the foundation's. In all commands.

/// Makes a language file of tables, one for each language.
void WriteFile(std::string const & file, std::vector<std::string> const & tables, std::string const & defaults);

/// Whether a language file is good, and holds what these tables say. Returns a line on what is in it.
std::string CheckFile(std::string const & file, std::vector<std::string> const & tables, std::string const & defaults);

/// The file's languages as tables, one behind the other; only the one of these letters, if there are any.
std::string ListFile(std::string const & file, std::string const & letters, std::string const & defaults);

/// The default texts as a table to be translated.
std::string Template(std::string const & defaults);

} // namespace NlsTool

#endif
