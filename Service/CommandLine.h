#ifndef SERVICE_COMMAND_LINE_H
#define SERVICE_COMMAND_LINE_H

#include <cstdint>
#include <string>
#include <vector>

namespace Service {

/// What the command line asks for.
struct SOptions {
    std::vector<std::string> libraries;        ///< files; the default is filled in when none is named
    std::string listen = "udp:127.0.0.1:1161"; ///< stand-alone: where managers are heard
    std::string agentX;                        ///< not empty: subagent of the master at this address
    std::string community = "public";          ///< readers from loopback, and traps; empty: no readers
    std::vector<std::string> trapSinks;
    std::string config;
    std::string registry;
    std::string systemDirectory;
    std::uint64_t answerWithinMs = 4000;
    std::uint64_t watchdogMs = 120000; ///< 0: never
    bool logTraps = false;
    bool check = false;
};

enum class ECommand { Run, Done, Wrong };

/// What to do after the command line has been read: Run with the options, end with status 0 after `text` has
/// gone to standard output (Done), or end with another status after `text` has gone to the log (Wrong).
struct SCommand {
    ECommand command = ECommand::Run;
    std::string text;
    SOptions options;
};

/// Reads the command line. `defaultLibrary` is used when none is named.
SCommand ReadCommandLine(int argc, char const * const * argv, std::string const & defaultLibrary);

/// The extension library that is loaded without --library: the first of KXRA_MIB.so in ../lib beside the
/// program's directory, in the library directory of the installation, and in the program's own directory that
/// exists; the first of them if none does.
std::string DefaultLibrary(std::string const & programPath);

} // namespace Service

#endif
