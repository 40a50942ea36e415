#ifndef SERVICE_LISTENER_H
#define SERVICE_LISTENER_H

#include "NetSnmp.h"

#include <string>

namespace Service {

/// Has Net-SNMP hear managers at the addresses, separated by commas, in Net-SNMP's form. False with one line in
/// `error`. What the host's access files (hosts.allow, hosts.deny) say of a manager is looked up once a second and
/// not for every packet; a change shows within that second.
bool ListenOn(std::string const & addresses, std::string & error);

} // namespace Service

#endif
