#include "Snmp/Include/Module.h"

namespace SNMP {

VLK::Misc::CModuleInfo g_moduleInfo(268, "KXRA-MIB", "P:7.10.2 F:7.10.2", nullptr, nullptr);

} // namespace SNMP
