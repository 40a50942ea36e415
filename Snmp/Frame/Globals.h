#ifndef SNMP_FRAME_GLOBALS_H
#define SNMP_FRAME_GLOBALS_H

#include <cstddef>
#include <cstdint>
#include <string>

#include "Snmp/Frame/Relaxed.h"

class CSnmpAgent;

/// What exists once in a process for the library.

/// The agent object. Made at process attach, deleted at process detach, null before and after. Changes only
/// while the host is inside DllMain.
extern CSnmpAgent * g_pAgent;

/// The last agent that stays for good, since a thread that was killed but can't be stopped may still use it. Changes
/// as g_pAgent.
extern CSnmpAgent * g_abandonedAgent;

/// Not 0 while the agent shuts down or refuses work. Any thread.
extern TRelaxed<std::uint32_t> g_agentShutdown;

/// Not 0 once SnmpClose has done its work; 0 again when an agent is attached or started anew.
extern TRelaxed<std::uint32_t> g_agentClosed;

/// Bytes of the module name with its NUL; no system has longer file names.
inline constexpr std::size_t kModuleNameRoom = 768;

/// The library's file base name without directory and extension, the first argument of every frame trace.
/// Written at process attach, before any thread of the agent runs.
extern char g_moduleName[kModuleNameRoom];

/// Puts the base name of a file into g_moduleName: what stands behind the last separator and before the last
/// dot. At process attach only.
void SetModuleName(std::string const & path) noexcept;

#endif
