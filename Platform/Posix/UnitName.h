#ifndef PLATFORM_POSIX_UNIT_NAME_H
#define PLATFORM_POSIX_UNIT_NAME_H

#include <string>
#include <string_view>

namespace Platform {

/// A text as systemd-escape gives it: letters, digits, ':', '_' and '.' stay, but for a '.' at the start; '/' becomes
/// '-'; any other byte \xNN.
std::string EscapeUnitName(std::string_view text);

/// Name of the service unit for a service's name. Empty when there can be no such unit: the name is null or
/// empty, or the unit's name would be longer than the 255 bytes that systemd takes.
std::string ServiceUnitName(char const * service);

} // namespace Platform

#endif
