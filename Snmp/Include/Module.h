#ifndef SNMP_MODULE_H
#define SNMP_MODULE_H

#include "VLK/ModuleInfo.h"

namespace SNMP {

/// The registration of the RAID agent with the foundation: id 268, "KXRA-MIB". The records trace under it, and
/// the agent's own entries in error records name it.
extern VLK::Misc::CModuleInfo g_moduleInfo;

} // namespace SNMP

#endif
