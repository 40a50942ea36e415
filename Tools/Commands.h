#ifndef TOOLS_COMMANDS_H
#define TOOLS_COMMANDS_H

#include <istream>
#include <string>

#include "Tools/Estate.h"
#include "Tools/Report.h"
#include "Tools/Server.h"

namespace Coresim {

/// Carries out the commands that a person types. One thread.
class CCommands {
public:
    CCommands(CEstate & estate, CServer & server, CReport & report) noexcept
        : m_estate(estate), m_server(server), m_report(report)
    {
    }

    /// One line. A command that can't be carried out is complained about and changes nothing. False: end.
    bool Execute(std::string const & line);
    /// Lines until "quit" (true) or the end of the input (false).
    bool ExecuteAll(std::istream & input);

    /// One line for each command.
    static char const * Help() noexcept;

private:
    CEstate & m_estate;
    CServer & m_server;
    CReport & m_report;
};

} // namespace Coresim

#endif
