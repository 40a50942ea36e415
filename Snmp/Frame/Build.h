#ifndef SNMP_FRAME_BUILD_H
#define SNMP_FRAME_BUILD_H

/// Date and time at which the library was compiled.
extern char const g_buildDate[];
extern char const g_buildTime[];

#endif
