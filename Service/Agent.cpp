#include "Agent.h"

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "Listener.h"
#include "Platform/Environment.h"
#include "Platform/Error.h"

namespace Service {

namespace {

/// Name under which Net-SNMP keeps configuration and state.
constexpr char kApplication[] = "kxra-snmpd";

/// The part of the MIB that describes the agent itself: the system and snmp groups, the engine, users, views
/// and receivers of notifications. What describes the host's hardware and network belongs to the host's agent.
constexpr char kModules[] =
    "system_mib,sysORTable,snmp_mib,setSerialNo,snmpEngine,snmpMPDStats,usmStats,usmUser,usmConf,"
    "vacm_conf,vacm_vars,vacm_context,target_counters,snmpTargetAddrEntry,"
    "snmpTargetAddrEntry_data,snmpTargetParamsEntry,snmpTargetParamsEntry_data,snmpNotifyTable,"
    "snmpNotifyTable_data,snmpNotifyFilterTable,snmpNotifyFilterTable_data_storage,"
    "snmpNotifyFilterProfileTable,snmpNotifyFilterProfileTable_data";

/// Octets that fit into a datagram over IPv4.
constexpr int kLongestDatagram = 65507;

/// The agent that callbacks belong to. Net-SNMP would free an argument of its own at the end.
CAgent * g_agent = nullptr;

/// Net-SNMP's functions take text that they don't change as char *.
char * Mutable(std::string & text)
{
    return text.data();
}

void SetLibrary(int what, bool value)
{
    netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, what, value ? 1 : 0);
}

void SetApplication(int what, bool value)
{
    netsnmp_ds_set_boolean(NETSNMP_DS_APPLICATION_ID, what, value ? 1 : 0);
}

std::string ErrorPart(int error)
{
    return error == 0 ? std::string("not possible")
                      : Platform::CrtErrorText(error) + " (" + std::to_string(error) + ")";
}

/// A file name of an address.
std::string FileName(std::string text)
{
    for (char & c : text)
        if (std::strchr("/:[]%,", c) != nullptr) c = '_';
    return text;
}

} // namespace

bool CAgent::CheckConfigFile(std::string const & file, std::string & error) const
{
    std::error_code ignored;
    if (std::filesystem::is_directory(file, ignored)) {
        error = "read configuration " + file + ": it is a directory";
        return false;
    }
    const std::ifstream stream(file);
    if (stream.good()) return true;
    error = "read configuration " + file + ": " + ErrorPart(Platform::CrtError());
    return false;
}

bool CAgent::Init(SOptions const & options, std::function<void(netsnmp_session *)> onMaster, std::string & error)
{
    if (!options.config.empty() && !CheckConfigFile(options.config, error)) return false;
    m_onMaster = std::move(onMaster);
    m_initialised = true;
    g_agent = this;
    snmp_enable_calllog();
    snmp_register_callback(SNMP_CALLBACK_LIBRARY, SNMP_CALLBACK_LOGGING, OnMessage, nullptr);
    for (const int when : {SNMP_CALLBACK_PRE_PREMIB_READ_CONFIG, SNMP_CALLBACK_PRE_READ_CONFIG})
        snmp_register_callback(SNMP_CALLBACK_LIBRARY, when, OnReadConfig, nullptr);
    SetLibraryOptions(options);

    std::string list = kModules;
    add_to_init_list(Mutable(list));
    init_agent(kApplication);
    // The default of 15 s is set there.
    netsnmp_ds_set_int(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_AGENTX_PING_INTERVAL, 1);
    if (options.agentX.empty()) {
        init_mib_modules();
        OpenToCommunity(options.community);
    } else {
        snmp_register_callback(SNMP_CALLBACK_APPLICATION, SNMPD_CALLBACK_INDEX_START, OnMaster, nullptr);
        snmp_register_callback(SNMP_CALLBACK_APPLICATION, SNMPD_CALLBACK_INDEX_STOP, OnMaster, nullptr);
    }
    std::string community = options.community;
    snmpd_parse_config_trapcommunity("trapcommunity", Mutable(community));
    m_readsConfig = !options.config.empty();
    init_snmp(kApplication);
    m_readsConfig = false;
    return true;
}

void CAgent::SetLibraryOptions(SOptions const & options)
{
    const bool isSubagent = !options.agentX.empty();
    SetLibrary(NETSNMP_DS_LIB_DONT_READ_CONFIGS, true);
    SetApplication(NETSNMP_DS_AGENT_NO_ROOT_ACCESS, true);
    SetApplication(NETSNMP_DS_AGENT_DONT_LOG_TCPWRAPPERS_CONNECTS, true);
    if (!options.config.empty())
        netsnmp_ds_set_string(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_OPTIONALCONFIG, options.config.c_str());
    // Without this, an answer that no datagram can carry would be built, and lost when it is sent.
    netsnmp_ds_set_int(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_MSG_SEND_MAX, kLongestDatagram);
    SetApplication(NETSNMP_DS_AGENT_ROLE, isSubagent);
    if (isSubagent) {
        SetApplication(NETSNMP_DS_AGENT_NO_CONNECTION_WARNINGS, true);
        netsnmp_ds_set_string(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_X_SOCKET, options.agentX.c_str());
    }
    // Modules of names are loaded only for who asks for them: the defaults name files that few hosts have.
    if (std::getenv("MIBS") == nullptr) {
        Platform::SetEnvironmentText("MIBS", "");
        Platform::SetEnvironmentText("MIBDIRS", "");
    }
    ChooseStateDirectory(options);
}

void CAgent::ChooseStateDirectory(SOptions const & options)
{
    // Only an engine that users know has to remember who it is and how often it was started.
    std::string directory;
    if (options.agentX.empty() && !options.config.empty()) directory = Platform::StateDirectory();
    std::error_code error;
    if (!directory.empty()) {
        directory += "/" + FileName(options.listen);
        std::filesystem::create_directories(directory, error);
        if (!error) std::filesystem::permissions(directory, std::filesystem::perms::owner_all, error);
        if (error) {
            TakeMessage(static_cast<int>(EPriority::Warning),
                        ("no state is kept, " + directory + ": " + error.message() + "\n").c_str());
            directory.clear();
        }
    }
    if (!directory.empty()) m_stateFile = directory + "/" + kApplication + ".conf";
    if (directory.empty()) SetLibrary(NETSNMP_DS_LIB_DONT_PERSIST_STATE, true);
    netsnmp_ds_set_string(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_PERSISTENT_DIR,
                          directory.empty() ? "/dev/null" : directory.c_str());
}

void CAgent::OpenToCommunity(std::string const & community)
{
    if (community.empty()) return;
    // Remembered lines are read behind the configuration file, whose word on the same community goes first.
    for (char const * form : {"rocommunity \"", "rocommunity6 \""}) {
        const bool six = form[11] == '6';
        std::string line = form + community + (six ? "\" ::1" : "\" 127.0.0.0/8");
        netsnmp_config_remember(Mutable(line));
    }
}

bool CAgent::Listen(SOptions const & options, std::string & error)
{
    // The addresses are the command line's alone; the rest of a master is Net-SNMP's.
    netsnmp_ds_set_string(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_PORTS, "none");
    if (init_master_agent() == 0) return ListenOn(options.listen, error);
    error = "start as a master: " + (m_messages.empty() ? std::string("not possible") : m_messages.back().text);
    return false;
}

bool CAgent::AddTrapSinks(SOptions const & options, std::string & error)
{
    for (std::string const & sink : options.trapSinks) {
        if (create_trap_session_with_src(sink.c_str(), nullptr, options.community.c_str(), nullptr, SNMP_VERSION_2c,
                                         SNMP_MSG_TRAP2) != 0)
            continue;
        error = "send traps to " + sink + ": no such address";
        return false;
    }
    return true;
}

void CAgent::ReleaseMessages()
{
    m_keepsMessages = false;
    for (SMessage const & message : m_messages)
        CLog::Write(message.priority, message.text);
    m_messages.clear();
}

void CAgent::TakeMessage(int priority, char const * text)
{
    m_partialMessage += text;
    if (m_partialMessage.empty() || m_partialMessage.back() != '\n') return;
    m_partialMessage.pop_back();
    const EPriority level = priority <= static_cast<int>(EPriority::Error)     ? EPriority::Error
                            : priority == static_cast<int>(EPriority::Warning) ? EPriority::Warning
                            : priority == static_cast<int>(EPriority::Notice)  ? EPriority::Notice
                                                                               : EPriority::Info;
    if (m_readsConfig && level <= EPriority::Warning) ++m_complaints;
    if (m_keepsMessages && level <= EPriority::Warning)
        m_messages.push_back({level, m_partialMessage});
    else if (!m_keepsMessages)
        CLog::Write(level, m_partialMessage);
    m_partialMessage.clear();
}

int CAgent::OnMessage(int, int, void * message, void *) noexcept
try {
    auto const & said = *static_cast<snmp_log_message const *>(message);
    g_agent->TakeMessage(said.priority, said.msg);
    return 0;
} catch (...) {
    return 0;
}

int CAgent::OnReadConfig(int, int when, void *, void *) noexcept
try {
    // Net-SNMP reads its own state only together with the system's configuration. It comes before the
    // configuration of the command line: users are made for the engine that it names.
    std::string const & file = g_agent->m_stateFile;
    std::error_code error;
    if (!file.empty() && std::filesystem::exists(file, error))
        read_config_with_type_when(file.c_str(), kApplication,
                                   when == SNMP_CALLBACK_PRE_READ_CONFIG ? NORMAL_CONFIG : PREMIB_CONFIG);
    return 0;
} catch (...) {
    return 0;
}

int CAgent::OnMaster(int, int minor, void * session, void *) noexcept
{
    g_agent->m_onMaster(minor == SNMPD_CALLBACK_INDEX_START ? static_cast<netsnmp_session *>(session) : nullptr);
    return 0;
}

void CAgent::Shutdown() noexcept
{
    if (!m_initialised) return;
    m_initialised = false;
    snmp_shutdown(kApplication);
}

} // namespace Service
