#include "Listener.h"

#include "Platform/Clock.h"
#include "Platform/Error.h"

namespace Service {

namespace {

/// How long an admission counts.
constexpr std::uint64_t kAdmissionMs = 1000;

/// The manager that was admitted last. Threads: the owner of the loop.
struct SAdmission {
    in_addr_t address = 0;
    std::uint64_t untilMs = 0;
};

SAdmission g_admitted;

/// The sender of a packet if it came over IPv4.
bool SenderOf(netsnmp_transport const * transport, void const * data, int length, in_addr_t & address)
{
    if (transport == nullptr || transport->domain != netsnmpUDPDomain || data == nullptr ||
        length != static_cast<int>(sizeof(netsnmp_indexed_addr_pair)))
        return false;
    auto const & pair = *static_cast<netsnmp_indexed_addr_pair const *>(data);
    if (pair.remote_addr.sa.sa_family != AF_INET) return false;
    address = pair.remote_addr.sin.sin_addr.s_addr;
    return true;
}

extern "C" int AdmitPacket(netsnmp_session * session, netsnmp_transport * transport, void * data, int length)
{
    in_addr_t sender = 0;
    const bool known = SenderOf(transport, data, length, sender);
    const std::uint64_t nowMs = Platform::MonotonicMs();
    if (known && sender == g_admitted.address && nowMs < g_admitted.untilMs) {
        snmp_increment_statistic(STAT_SNMPINPKTS);
        return 1;
    }
    const int admitted = netsnmp_agent_check_packet(session, transport, data, length);
    if (known && admitted != 0) g_admitted = {sender, nowMs + kAdmissionMs};
    return admitted;
}

/// Makes the open transport a session of the agent, which owns it then.
bool Serve(netsnmp_transport * transport)
{
    netsnmp_session session;
    snmp_sess_init(&session);
    session.version = SNMP_DEFAULT_VERSION;
    session.callback = handle_snmp_packet;
    session.flags = static_cast<u_long>(netsnmp_ds_get_int(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_FLAGS));
    session.isAuthoritative = SNMP_SESS_AUTHORITATIVE;
    if (netsnmp_sess_config_transport(session.transport_configuration, transport) != SNMPERR_SUCCESS) return false;
    netsnmp_transport * open = transport->f_open != nullptr ? transport->f_open(transport) : transport;
    if (open == nullptr) return false;
    open->flags |= NETSNMP_TRANSPORT_FLAG_OPENED;
    return snmp_add(&session, open, AdmitPacket, netsnmp_agent_check_parse) != nullptr;
}

bool ListenAt(std::string const & address)
{
    netsnmp_transport * transport = netsnmp_transport_open_server("snmp", address.c_str());
    return transport != nullptr && Serve(transport);
}

} // namespace

bool ListenOn(std::string const & addresses, std::string & error)
{
    for (std::size_t begin = 0; begin <= addresses.size();) {
        const std::size_t end = std::min(addresses.find(',', begin), addresses.size());
        const std::string address = addresses.substr(begin, end - begin);
        Platform::SetLastError(Platform::Success);
        if (!ListenAt(address)) {
            const int reason = Platform::CrtError();
            error = "listen on " + address + ": " +
                    (reason == 0 ? "no such address"
                                 : Platform::CrtErrorText(reason) + " (" + std::to_string(reason) + ")");
            return false;
        }
        begin = end + 1;
    }
    return true;
}

} // namespace Service
