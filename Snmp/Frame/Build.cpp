#include "Snmp/Frame/Build.h"

// A file of its own, since compiler caches pass over files that hold the time.
char const g_buildDate[] = __DATE__;
char const g_buildTime[] = __TIME__;
