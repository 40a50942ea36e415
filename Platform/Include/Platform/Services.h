#ifndef PLATFORM_SERVICES_H
#define PLATFORM_SERVICES_H

#include <cstdint>

#include "Platform/Error.h"

/// Looks services of the system up; starts and changes none.
///
/// POSIX: a service NAME is the systemd unit NAME.service, the name escaped as systemd-escape does. Where
/// SYSTEMD_UNIT_PATH is set, that path alone is looked at; else systemd is asked over D-Bus where it runs; else, or
/// when systemd may not be asked or doesn't answer within 2 seconds, the standard unit path is searched. A masked unit
/// doesn't exist.
///
/// Windows: the service control manager of this computer with its active database; NAME is the service's own name, not
/// the one that is displayed.
///
/// A manager with its services belongs to one thread at a time.
namespace Platform {

struct SServiceManager;
struct SService;
using ServiceManagerHandle = SServiceManager *;
using ServiceHandle = SService *;

/// Opens the access to the system's services. The caller closes it, after the services opened with it.
ErrorCode OpenServiceManager(ServiceManagerHandle & out) noexcept;
ErrorCode CloseServiceManager(ServiceManagerHandle manager) noexcept;
/// Fails with the system's error when the service doesn't exist. name: NUL-terminated. The caller closes `out`.
ErrorCode OpenService(ServiceManagerHandle manager, char const * name, ServiceHandle & out) noexcept;
void CloseService(ServiceHandle service) noexcept;
/// Reads the service's configuration into `buffer` of `size` bytes: the system's own record on Windows, the text of
/// the unit's file on POSIX, NUL-terminated. ErrorInsufficientBuffer with the bytes it takes in `needed`.
ErrorCode QueryServiceConfig(ServiceHandle service, void * buffer, std::uint32_t size, std::uint32_t & needed) noexcept;
/// Reads the service's present state. Without systemd there is one as well: it doesn't run.
ErrorCode QueryServiceStatus(ServiceHandle service) noexcept;

} // namespace Platform

#endif
