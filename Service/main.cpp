#include "NetSnmp.h"

#include <cstdio>
#include <cstdlib>

#include "Agent.h"
#include "CommandLine.h"
#include "ExtensionLibrary.h"
#include "Log.h"
#include "Loop.h"
#include "Platform/Clock.h"
#include "Platform/Environment.h"
#include "Platform/Memory.h"
#include "Platform/Module.h"
#include "Platform/Signals.h"
#include "Platform/Supervisor.h"
#include "RegionHandler.h"

namespace Service {

namespace {

using CLibraries = std::vector<std::unique_ptr<CExtensionLibrary>>;

constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;

int Fail(std::string const & error)
{
    CLog::Write(EPriority::Error, error);
    return kFailed;
}

/// The service from a good command line to its end.
class CService {
public:
    explicit CService(SOptions const & options) : m_options(options) {}
    /// The end of Net-SNMP tells the loop that the master has gone, so the loop is still there for it.
    ~CService() { m_agent.Shutdown(); }
    CService(CService const &) = delete;
    CService & operator=(CService const &) = delete;

    int Run()
    {
        std::string error;
        if (!LoadLibraries(error)) return Fail(error);
        if (m_options.check) return Check();
        return Start(error) ? Serve() : Fail(error);
    }

private:
    bool LoadLibraries(std::string & error)
    {
        if (!m_options.registry.empty()) Platform::SetEnvironmentText("KXRA_REGISTRY", m_options.registry);
        if (!m_options.systemDirectory.empty())
            Platform::SetEnvironmentText("KXRA_SYSTEM_DIRECTORY", m_options.systemDirectory);
        for (std::string const & file : m_options.libraries) {
            auto library = CExtensionLibrary::Load(file, error);
            if (library == nullptr) return false;
            m_libraries.push_back(std::move(library));
        }
        return true;
    }

    bool InitAgent(std::string & error)
    {
        return m_agent.Init(
            m_options, [this](netsnmp_session * master) { OnMaster(master); }, error);
    }

    void OnMaster(netsnmp_session * master)
    {
        m_master = master;
        if (m_loop != nullptr) m_loop->SetMaster(master);
    }

    int Check()
    {
        std::string error;
        if (!InitAgent(error)) return Fail(error);
        m_agent.ReleaseMessages();
        if (m_agent.ConfigComplaints() != 0) return Fail("the configuration " + m_options.config + " has errors");
        if (!m_agent.AddTrapSinks(m_options, error)) return Fail(error);
        std::string files;
        for (auto const & library : m_libraries)
            files += " " + library->File();
        std::printf("kxra-snmpd: configuration and libraries are in order:%s\n", files.c_str());
        return EXIT_SUCCESS;
    }

    bool Start(std::string & error)
    {
        if (!m_wakeUp.IsValid()) return NoDescriptor(error);
        Platform::IgnoreBrokenPipes();
        Platform::WatchStopRequests(m_wakeUp);
        // Listening comes first: it fails for the most reasons, and an extension isn't started for nothing.
        if (!InitAgent(error) || !m_agent.AddTrapSinks(m_options, error)) return false;
        if (m_options.agentX.empty() && !m_agent.Listen(m_options, error)) return false;
        const auto uptimeReference = static_cast<std::uint32_t>(Platform::TickCountMs() / 10);
        for (auto const & library : m_libraries)
            if (!library->Start(uptimeReference, error)) return false;
        m_loop = std::make_unique<CLoop>(m_libraries, SLoopTimes{m_options.answerWithinMs, m_options.watchdogMs},
                                         m_wakeUp, STrapOptions{!m_options.agentX.empty(), m_options.logTraps});
        if (!m_loop->IsValid()) return NoDescriptor(error);
        if (m_master != nullptr) m_loop->SetMaster(m_master);
        return RegisterRegions(error);
    }

    static bool NoDescriptor(std::string & error)
    {
        error = "no descriptor left to start with";
        return false;
    }

    bool RegisterRegions(std::string & error)
    {
        for (auto const & library : m_libraries) {
            for (CArcs const & root : library->Regions()) {
                m_regions.emplace_back(new SRegion{*m_loop, *library, root});
                if (!RegisterRegion(*m_regions.back(), error)) return false;
            }
        }
        return true;
    }

    int Serve()
    {
        m_agent.ReleaseMessages();
        CLog::Write(EPriority::Info,
                    m_options.agentX.empty() ? "listening on " + m_options.listen : "subagent of " + m_options.agentX);
        Platform::TellSupervisor("READY=1");
        m_loop->Run([this](std::vector<bool> const & busy) { EndNow(busy); });
        // The loop has ended, so nobody asks an extension that has stopped.
        for (auto const & library : m_libraries) {
            library->Stop();
            m_loop->SendLastTraps(*library);
        }
        m_agent.Shutdown();
        m_libraries.clear();
        CLog::Write(EPriority::Info, "ended");
        return EXIT_SUCCESS;
    }

    /// The end while a call is still inside an extension: that one is left alone, since taking its code away
    /// would crash the process, and so are the threads.
    [[noreturn]] void EndNow(std::vector<bool> const & busy)
    {
        m_agent.Shutdown();
        for (std::size_t i = 0; i < m_libraries.size(); ++i) {
            if (busy[i]) {
                CLog::Write(EPriority::Warning, "ending while a call is inside " + m_libraries[i]->File());
                m_libraries[i]->Abandon();
            }
        }
        m_libraries.clear();
        CLog::Write(EPriority::Info, "ended");
        std::fflush(nullptr);
        std::_Exit(EXIT_SUCCESS);
    }

    SOptions const & m_options;
    Platform::CWakeUp m_wakeUp;
    CLibraries m_libraries;
    CAgent m_agent;
    netsnmp_session * m_master = nullptr;            ///< the AgentX session while there is one
    std::vector<std::unique_ptr<SRegion>> m_regions; ///< before the loop, whose jobs come from their pools
    std::unique_ptr<CLoop> m_loop;
};

int Main(int argc, char ** argv)
{
    CLog::Init();
    Platform::TuneMemoryForShortRequests();
    std::string program;
    Platform::ProgramPath(program);
    const SCommand command = ReadCommandLine(argc, argv, DefaultLibrary(program));
    switch (command.command) {
    case ECommand::Done:
        std::fputs(command.text.c_str(), stdout);
        return EXIT_SUCCESS;
    case ECommand::Wrong:
        CLog::Write(EPriority::Error, command.text);
        return kWrongUsage;
    default:
        return CService(command.options).Run();
    }
}

} // namespace

} // namespace Service

int main(int argc, char ** argv)
try {
    return Service::Main(argc, argv);
} catch (std::exception const & error) {
    Service::CLog::Write(Service::EPriority::Error, error.what());
    return EXIT_FAILURE;
}
