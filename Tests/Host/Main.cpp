// A host for an extension library that does what the SNMP service does, one call at a time, as standard input tells it.
// Commands.h has the commands. Ends with its input; a library that is loaded then is closed and unloaded.

#include <iostream>

#include "Commands.h"

int main()
{
    CCommands commands;
    std::string line;
    while (std::getline(std::cin, line))
        std::cout << commands.Do(line) << std::flush;
}
