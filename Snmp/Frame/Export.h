#ifndef SNMP_FRAME_EXPORT_H
#define SNMP_FRAME_EXPORT_H

/// Marks the functions that an extension library exports to its host.
#if defined(_WIN32)
#define KXRA_EXPORT __declspec(dllexport)
#else
#define KXRA_EXPORT __attribute__((visibility("default")))
#endif

#endif
