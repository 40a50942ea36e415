#include "Snmp/Frame/Export.h"

extern "C" KXRA_EXPORT int VersionProbe()
{
    return 1;
}

// Objects that others look up by their names.
namespace Probe {

struct KXRA_EXPORT CShared {
    static int m_iNumber;
};
int CShared::m_iNumber = 4711;

extern KXRA_EXPORT int Variable;
int Variable = 1;

} // namespace Probe
