#ifndef PLATFORM_ENVIRONMENT_H
#define PLATFORM_ENVIRONMENT_H

#include <string>

#include "Platform/Error.h"

namespace Platform {

/// Sets a variable of this process's environment. Before a second thread runs, since readers take no lock.
ErrorCode SetEnvironmentText(char const * name, std::string const & value) noexcept;
/// A directory, private to this service, that outlives it: KXRA_STATE_DIRECTORY, else STATE_DIRECTORY (set by
/// systemd), else /var/lib/kestrix/snmpd for the superuser and kxra-snmpd under the user's directory of state
/// for others. Windows: KXRA_STATE_DIRECTORY, else Kestrix\snmpd under the directory of all users' program data.
/// Empty when the system names none. It may not exist yet.
std::string StateDirectory();

} // namespace Platform

#endif
