#ifndef PLATFORM_SERVICES_H
#define PLATFORM_SERVICES_H

#include <cstdint>

#include "Platform/Error.h"

/// Looks services of the system up; starts and changes none.
///
/// POSIX: a service NAME is the systemd unit NAME.service, the name escaped as systemd-escape does. Where
/// SYSTEMD_UNIT_PATH is set, that path alone is looked at; else systemd is asked over D-Bus where it runs; else
/// the standard unit path is searched.
namespace Platform {

struct SServiceManager;
struct SService;
using ServiceManagerHandle = SServiceManager *;
using ServiceHandle = SService *;

ErrorCode OpenServiceManager(ServiceManagerHandle & out) noexcept;
ErrorCode CloseServiceManager(ServiceManagerHandle manager) noexcept;
/// Fails with the system's error when the service doesn't exist.
ErrorCode OpenService(ServiceManagerHandle manager, char const * name, ServiceHandle & out) noexcept;
void CloseService(ServiceHandle service) noexcept;
/// Reads the service's configuration into `buffer`. ErrorInsufficientBuffer with the room it takes in `needed`.
ErrorCode QueryServiceConfig(ServiceHandle service, void * buffer, std::uint32_t size, std::uint32_t & needed) noexcept;
/// Reads the service's present state.
ErrorCode QueryServiceStatus(ServiceHandle service) noexcept;

} // namespace Platform

#endif
