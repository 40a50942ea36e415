#ifndef SERVICE_AGENT_H
#define SERVICE_AGENT_H

#include "NetSnmp.h"

#include <functional>
#include <string>
#include <vector>

#include "CommandLine.h"
#include "Log.h"

namespace Service {

/// Net-SNMP in this process: a master of its own or a subagent. One in a process.
/// Threads: the starting thread, later the owner of the loop.
class CAgent {
public:
    CAgent() = default;
    ~CAgent() { Shutdown(); }
    CAgent(CAgent const &) = delete;
    CAgent & operator=(CAgent const &) = delete;

    /// Sets Net-SNMP up and reads the configuration file. onMaster: called with the AgentX session when it
    /// comes, and with null when it goes. False with one line in `error`. Nothing of the system's configuration is read
    /// or written.
    bool Init(SOptions const & options, std::function<void(netsnmp_session *)> onMaster, std::string & error);
    /// Complaints about the configuration that Init read.
    unsigned ConfigComplaints() const noexcept { return m_complaints; }
    /// Stand-alone: listens for managers. False with one line in `error`.
    bool Listen(SOptions const & options, std::string & error);
    /// Adds the receivers of traps that the command line names. False with one line in `error`.
    bool AddTrapSinks(SOptions const & options, std::string & error);
    /// From now on Net-SNMP's messages go straight to the log, those before first. Until then they are kept
    /// back, so that a start that fails is told in one line.
    void ReleaseMessages();
    void Shutdown() noexcept;

private:
    struct SMessage {
        EPriority priority;
        std::string text;
    };

    bool CheckConfigFile(std::string const & file, std::string & error) const;
    void SetLibraryOptions(SOptions const & options);
    void ChooseStateDirectory(SOptions const & options);
    void OpenToCommunity(std::string const & community);
    void TakeMessage(int priority, char const * text);
    static int OnMessage(int, int, void * message, void *) noexcept;
    static int OnReadConfig(int, int when, void *, void *) noexcept;
    static int OnMaster(int, int minor, void * session, void *) noexcept;

    std::function<void(netsnmp_session *)> m_onMaster;
    std::vector<SMessage> m_messages;
    std::string m_partialMessage;
    std::string m_stateFile; ///< what Net-SNMP keeps over restarts; empty for nothing
    unsigned m_complaints = 0;
    bool m_keepsMessages = true;
    bool m_readsConfig = false;
    bool m_initialised = false;
};

} // namespace Service

#endif
