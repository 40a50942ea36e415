#ifndef SERVICE_TRAP_TEXT_H
#define SERVICE_TRAP_TEXT_H

#include "NetSnmp.h"

#include <string>

namespace Service {

/// How the log names a trap: its OID in numbers, and behind it the name that it has in the MIB modules which Net-SNMP
/// was told to load (MIBS, MIBDIRS), if it has one: "1.3.6.1.6.3.1.1.5.1 (SNMPv2-MIB::coldStart)".
///
/// The modules are all that this program can know about what a trap means: it knows extensions by their functions, and
/// their vocabulary belongs to them. An extension that ships a module is served as well as any other.
/// Threads: the owner of the loop.
std::string TrapText(oid const * name, std::size_t length);

} // namespace Service

#endif
