#ifndef SERVICE_NET_SNMP_H
#define SERVICE_NET_SNMP_H

/// Net-SNMP's headers, for the sources that work inside Net-SNMP. Its names of ASN.1 types are macros, some of
/// which the extension interface has too; they give way to constants here. To be included before any other
/// header of this room.

#ifdef PLATFORM_SNMP_EXTENSION_H
#error "NetSnmp.h comes first"
#endif

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpedantic"
#pragma GCC diagnostic ignored "-Wconversion"
#pragma GCC diagnostic ignored "-Wsign-conversion"
#pragma GCC diagnostic ignored "-Wshadow"
// clang-format off
#include <net-snmp/net-snmp-config.h>
#include <net-snmp/net-snmp-includes.h>
#include <net-snmp/agent/net-snmp-agent-includes.h>
#include <net-snmp/library/large_fd_set.h>
#include <net-snmp/library/snmpCallbackDomain.h>
#include <net-snmp/agent/agent_callbacks.h>
#include <net-snmp/agent/mib_modules.h>
// clang-format on
#pragma GCC diagnostic pop

namespace Service::Wire {
inline constexpr u_char Integer = ASN_INTEGER;
inline constexpr u_char BitString = ASN_BIT_STR;
inline constexpr u_char Octets = ASN_OCTET_STR;
inline constexpr u_char Null = ASN_NULL;
inline constexpr u_char ObjectId = ASN_OBJECT_ID;
inline constexpr u_char IpAddress = ASN_IPADDRESS;
inline constexpr u_char Counter32 = ASN_COUNTER;
inline constexpr u_char Gauge32 = ASN_GAUGE;
inline constexpr u_char TimeTicks = ASN_TIMETICKS;
inline constexpr u_char Opaque = ASN_OPAQUE;
inline constexpr u_char Counter64 = ASN_COUNTER64;
inline constexpr u_char UInteger32 = ASN_UINTEGER;
} // namespace Service::Wire

#undef ASN_INTEGER
#undef ASN_BITS
#undef ASN_OCTETSTRING
#undef ASN_NULL
#undef ASN_OBJECTIDENTIFIER
#undef ASN_IPADDRESS
#undef ASN_COUNTER32
#undef ASN_GAUGE32
#undef ASN_TIMETICKS
#undef ASN_OPAQUE
#undef ASN_COUNTER64
#undef ASN_UINTEGER32

extern "C" {
// Exported by Net-SNMP's libraries, which declare them in none of their installed headers.
extern netsnmp_agent_session * agent_delegated_list;
extern netsnmp_agent_session * netsnmp_agent_queued_list;
extern netsnmp_agent_session * netsnmp_processing_set;
int netsnmp_handle_request(netsnmp_agent_session * session, int status);
int netsnmp_check_delegated_chain_for(netsnmp_agent_session * session);
int netsnmp_check_for_delegated_and_add(netsnmp_agent_session * session);
extern netsnmp_session * main_session;
extern netsnmp_session * callback_master_sess;
extern netsnmp_session * agentx_callback_sess;
int read_config_with_type_when(char const * file, char const * type, int when);
}

#endif
