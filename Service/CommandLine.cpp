#include "CommandLine.h"

#include <CLI/CLI.hpp>
#include <filesystem>
#include <limits>

#include "Platform/DynamicLibrary.h"

#ifndef KXRA_VERSION
#error "KXRA_VERSION is defined by the build"
#endif

namespace Service {

namespace {

constexpr double kMaxSeconds = 1000000;

std::uint64_t Milliseconds(double seconds)
{
    return static_cast<std::uint64_t>(seconds * 1000 + 0.5);
}

/// A community goes into a quoted word of the configuration language.
std::string RefuseQuotes(std::string const & name)
{
    for (const char c : name)
        if (c == '"' || c == '\\' || static_cast<unsigned char>(c) < ' ')
            return "a community without quotes is expected";
    return {};
}

std::string RefuseEmpty(std::string const & value)
{
    return value.empty() ? "must not be empty" : "";
}

/// The parser explains itself in several lines; the log takes one.
std::string FirstLine(std::string const & text)
{
    return text.substr(0, text.find('\n'));
}

} // namespace

SCommand ReadCommandLine(int argc, char const * const * argv, std::string const & defaultLibrary)
{
    SCommand result;
    SOptions & options = result.options;
    double answerWithin = 4;
    double watchdog = 120;

    CLI::App app("SNMP service that lets managers read and set what extension libraries serve.", "kxra-snmpd");
    app.set_version_flag("--version", "kxra-snmpd " KXRA_VERSION);
    app.add_option("--library", options.libraries, "Extension library to load; may be given again")
        ->type_name("FILE")
        ->expected(1)
        ->take_all()
        ->check(RefuseEmpty);
    auto * listen = app.add_option("--listen", options.listen, "Where managers are heard")
                        ->type_name("ADDRESS")
                        ->capture_default_str()
                        ->check(RefuseEmpty);
    app.add_option("--agentx", options.agentX, "Be a subagent of the master at this address")
        ->type_name("ADDRESS")
        ->excludes(listen)
        ->check(RefuseEmpty);
    app.add_option("--community", options.community,
                   "Community that may read from loopback and that traps carry; empty: none may read")
        ->type_name("NAME")
        ->capture_default_str()
        ->check(RefuseQuotes);
    app.add_option("--trap-sink", options.trapSinks, "Where v2c traps go; may be given again")
        ->type_name("ADDRESS")
        ->expected(1)
        ->take_all()
        ->check(RefuseEmpty);
    app.add_option("--config", options.config, "Configuration in the language of snmpd.conf")
        ->type_name("FILE")
        ->check(RefuseEmpty);
    app.add_option("--registry", options.registry, "Registry of the extensions (KXRA_REGISTRY)")
        ->type_name("FILE")
        ->check(RefuseEmpty);
    app.add_option("--system-directory", options.systemDirectory, "Directory of ksVendor.ini (KXRA_SYSTEM_DIRECTORY)")
        ->type_name("DIR")
        ->check(RefuseEmpty);
    app.add_option("--answer-within", answerWithin, "Seconds after which a request is answered with genErr")
        ->type_name("SECONDS")
        ->capture_default_str()
        ->check(CLI::Range(0.001, kMaxSeconds));
    app.add_option("--watchdog", watchdog,
                   "Seconds after which a call that hasn't returned ends the process with status 75; 0: never")
        ->type_name("SECONDS")
        ->capture_default_str()
        ->check(CLI::Range(0.0, kMaxSeconds));
    app.add_flag("--log-traps", options.logTraps,
                 "Log each trap that is sent, with its name where MIBS names a module that has it");
    app.add_flag("--check", options.check, "Check the configuration and the libraries, say so, and end");

    try {
        app.parse(argc, argv);
    } catch (CLI::CallForHelp const &) {
        result.command = ECommand::Done;
        result.text = app.help();
    } catch (CLI::CallForVersion const & version) {
        result.command = ECommand::Done;
        result.text = std::string(version.what()) + "\n";
    } catch (CLI::Error const & error) {
        result.command = ECommand::Wrong;
        result.text = FirstLine(error.what());
    }
    options.answerWithinMs = Milliseconds(answerWithin);
    options.watchdogMs = Milliseconds(watchdog);
    if (options.libraries.empty()) options.libraries.push_back(defaultLibrary);
    return result;
}

std::string DefaultLibrary(std::string const & programPath)
{
    const std::string name = std::string("KXRA_MIB") + Platform::ModuleFileSuffix();
    const std::filesystem::path directory = std::filesystem::path(programPath).parent_path();
    const std::filesystem::path candidates[] = {directory.parent_path() / "lib" / name,
                                                std::filesystem::path(KXRA_LIBRARY_DIRECTORY) / name, directory / name};
    for (auto const & candidate : candidates) {
        std::error_code ignored;
        if (std::filesystem::exists(candidate, ignored)) return candidate.string();
    }
    return candidates[0].string();
}

} // namespace Service
