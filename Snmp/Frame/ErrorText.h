#ifndef SNMP_FRAME_ERROR_TEXT_H
#define SNMP_FRAME_ERROR_TEXT_H

#include <cstdint>

/// Name of an SNMP error status for traces; "unknown" above 18. Static text. Any thread.
char const * SnmpErrorText(std::uint32_t status) noexcept;

#endif
