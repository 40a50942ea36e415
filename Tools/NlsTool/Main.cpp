#include <exception>
#include <functional>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "Tools/NlsTool/Commands.h"

namespace {

struct SOptions {
    std::string defaults;
    std::string file;
    std::string language;
    std::vector<std::string> tables;
    std::function<std::string()> command; ///< does the work; returns what goes to standard output
};

/// A subcommand with the option that all of them have.
CLI::App & AddCommand(CLI::App & app, SOptions & options, char const * name, char const * what,
                      std::function<std::string()> command)
{
    CLI::App & added = *app.add_subcommand(name, what);
    added.add_option("--default", options.defaults,
                     "Table with the module's compiled-in texts; without it the foundation's own");
    added.callback([&options, command = std::move(command)] { options.command = command; });
    return added;
}

void Describe(CLI::App & app, SOptions & options)
{
    app.set_version_flag("--version", "kxra-nlstool " KXRA_VERSION);
    app.require_subcommand(1);

    CLI::App & write = AddCommand(app, options, "write", "Make a language file of tables", [&options] {
        NlsTool::WriteFile(options.file, options.tables, options.defaults);
        return std::string();
    });
    write.add_option("TABLE", options.tables, "Tables of texts, one for each language")->required();
    write.add_option("-o,--output", options.file, "Language file to write")->required();

    CLI::App & check = AddCommand(app, options, "check", "Tell whether a language file is good", [&options] {
        return NlsTool::CheckFile(options.file, options.tables, options.defaults);
    });
    check.add_option("FILE", options.file, "Language file")->required();
    check.add_option("--table", options.tables, "Table whose texts the file has to hold; may be given several times")
        ->expected(1)
        ->take_all();

    CLI::App & list = AddCommand(app, options, "list", "Print a language file as tables", [&options] {
        return NlsTool::ListFile(options.file, options.language, options.defaults);
    });
    list.add_option("FILE", options.file, "Language file")->required();
    list.add_option("--language", options.language, "Only the language of these two letters");

    AddCommand(app, options, "template", "Print the default texts as a table to be translated",
               [&options] { return NlsTool::Template(options.defaults); });
}

/// Each line with the program's name, as a person or an editor expects it.
void Complain(std::string const & reasons)
{
    std::istringstream lines(reasons);
    for (std::string line; std::getline(lines, line);)
        std::cerr << "kxra-nlstool: " << line << '\n';
}

int Run(SOptions const & options)
{
    std::cout << options.command() << std::flush;
    if (std::cout) return 0;
    Complain("write to standard output: it doesn't take all");
    return 1;
}

} // namespace

int main(int argc, char ** argv)
{
    SOptions options;
    CLI::App app("Makes and checks the language files (.nls) of the Kestrix RAID SNMP agent.", "kxra-nlstool");
    Describe(app, options);
    try {
        app.parse(argc, argv);
    } catch (CLI::ParseError const & error) {
        if (error.get_exit_code() == 0) return app.exit(error);
        Complain(std::string(error.what()) + " (see --help)");
        return 2;
    }
    try {
        return Run(options);
    } catch (std::exception const & error) {
        Complain(error.what());
        return 1;
    }
}
