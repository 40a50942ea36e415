#ifndef AGENT_FAILURE_H
#define AGENT_FAILURE_H

#include <string>

#include "Snmp/Include/Module.h"

// The agent's places in error records name the agent's own module.
#define VLK_THIS_MODULE ::SNMP::g_moduleInfo
#include "VLK/Exceptions.h"

namespace SNMP {

/// The text that tells of a failure which the agent doesn't survive. Without memory for it, a shorter one.
std::string CrashText(VLK::Exceptions::CErrorLog const & log) noexcept;

/// What an error record says, head and stack, or the head alone.
std::string FailureText(VLK::Exceptions::CErrorLog const & log, bool stack);

} // namespace SNMP

#endif
