#include <cstdio>
#include <iostream>
#include <string>

#include <CLI/CLI.hpp>

#include "Tools/BadInput.h"
#include "Tools/Commands.h"
#include "Tools/Estate.h"
#include "Tools/FailureText.h"
#include "Tools/Report.h"
#include "Tools/Scenario.h"
#include "Tools/Server.h"
#include "Tools/Synthetic.h"
#include "Tools/Timeline.h"
#include "VLK/Threads.h"

namespace {

using namespace Coresim;

struct SOptions {
    unsigned int port = 3173;
    std::string scenario;
    SSize size;
    bool quiet = false;
};

void Describe(CLI::App & app, SOptions & options)
{
    app.set_version_flag("--version", "kxra-coresim " KXRA_VERSION);
    app.add_option("--port", options.port, "TCP port on 127.0.0.1")->check(CLI::Range(1, 65535))->capture_default_str();
    CLI::Option * const scenario = app.add_option("--scenario", options.scenario, "Scenario file (XML)");
    scenario->check([](std::string const & path) { return path.empty() ? "a name is missing" : ""; });
    auto const count = [&](char const * name, int & value, char const * what) {
        app.add_option(name, value, what)->check(CLI::Range(0, 100000))->excludes(scenario)->capture_default_str();
    };
    count("--controllers", options.size.controllers, "Without a scenario: number of controllers");
    count("--drives", options.size.drives, "Without a scenario: logical drives for each controller");
    count("--devices", options.size.devices, "Without a scenario: physical devices for each controller");
    app.final_callback([&] {
        if (RowsOf(options.size) > kMostRows)
            throw CLI::ValidationError("an estate of " + std::to_string(RowsOf(options.size)) + " rows is too large (" +
                                       std::to_string(kMostRows) + " at the most)");
    });
    app.add_flag("--quiet", options.quiet, "Print nothing but errors");
    app.footer(std::string("Commands on standard input:\n") + CCommands::Help());
}

int Simulate(SOptions const & options)
{
    SScenario scenario;
    if (options.scenario.empty())
        scenario.estate = MakeSyntheticEstate(options.size);
    else
        scenario = ReadScenario(options.scenario);
    CReport report(options.quiet);
    CEstate estate(std::move(scenario.estate));
    CServer server(estate, report);
    CTimelinePlayer player(std::move(scenario.timeline), estate, server, report);
    try {
        server.Start(options.port);
    } catch (...) {
        throw CBadInput("port " + std::to_string(options.port) + ": " + TakeFailureText());
    }
    player.Start();
    if (!CCommands(estate, server, report).ExecuteAll(std::cin)) {
        // The input has ended, the simulation hasn't: until a signal ends the process.
        VLK::Threading::CEvent never;
        never.Init(/*initialState=*/false, /*manualReset=*/true);
        never.Wait(Platform::Infinite);
    }
    return 0;
}

} // namespace

int main(int argc, char ** argv)
{
    SOptions options;
    CLI::App app("A simulated core service for the Kestrix RAID SNMP agent.", "kxra-coresim");
    Describe(app, options);
    try {
        app.parse(argc, argv);
    } catch (CLI::ParseError const & error) {
        if (error.get_exit_code() == 0) return app.exit(error);
        std::cerr << "kxra-coresim: " << error.what() << " (see --help)\n";
        return 2;
    }
    try {
        // A thread of the foundation for as long as it calls it, so that errors keep their records.
        const VLK::Threading::CCallBackGuard guard;
        return Simulate(options);
    } catch (std::exception const & error) {
        std::cerr << "kxra-coresim: " << error.what() << '\n';
    } catch (...) {
        std::cerr << "kxra-coresim: " << TakeFailureText() << '\n';
    }
    return 1;
}
