#ifndef SNMP_FRAME_EXPORT_H
#define SNMP_FRAME_EXPORT_H

/// Marks the functions that an extension library exports to its host.
/// KXRA_EXPORT_ATTACH marks DllMain, which the loader of Windows calls by itself and which is then no export.
#if defined(_WIN32)
#define KXRA_EXPORT __declspec(dllexport)
#define KXRA_EXPORT_ATTACH
#else
#define KXRA_EXPORT __attribute__((visibility("default")))
#define KXRA_EXPORT_ATTACH KXRA_EXPORT
#endif

#endif
