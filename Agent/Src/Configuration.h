#ifndef AGENT_CONFIGURATION_H
#define AGENT_CONFIGURATION_H

#include <cstdint>

namespace SNMP {

/// Whether the management services are installed on this host, which makes traps wait at the start: "ksVendor.ini" in
/// the system's directory names their service, and the service exists.
bool ManagementServicesInstalled();

/// Replaces the two times of the delayed start, in milliseconds, by what the registry says in seconds ("PWait",
/// "IWait"); a value that is missing or 0 leaves its time.
void ReadDelays(std::int32_t & listenerSpanMs, std::int32_t & listenerInitMs);

/// The port of the core service: that of "orDPatch.ini" in the product's directory, which the registry names.
/// 3173 where anything of that is missing or can't be read; an unreadable file and a value that is no number are
/// traced.
std::uint32_t ReadPort();

} // namespace SNMP

#endif
