#include "Snmp/Host/Debug.h"

// What an extension does with the trace, in a library that comes and goes.
extern "C" __attribute__((visibility("default"))) int TraceFromALibrary(char const * appName)
{
    CDebug::Init(appName, /*writeBanner=*/false);
    if (CDebug::Enabled()) CDebug::Trace(1, "\nfrom a library");
    return CDebug::Enabled() ? 1 : 0;
}
