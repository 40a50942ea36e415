#include "Platform/Services.h"

#include "System.h"

// The handles of the service control manager, under the names of the seam.

namespace {

SC_HANDLE Native(Platform::ServiceManagerHandle manager) noexcept
{
    return reinterpret_cast<SC_HANDLE>(manager);
}

SC_HANDLE Native(Platform::ServiceHandle service) noexcept
{
    return reinterpret_cast<SC_HANDLE>(service);
}

} // namespace

Platform::ErrorCode Platform::OpenServiceManager(ServiceManagerHandle & out) noexcept
{
    const SC_HANDLE manager =
        ::OpenSCManagerA(/*lpMachineName=*/nullptr, /*lpDatabaseName=*/nullptr, SC_MANAGER_CONNECT);
    if (manager == nullptr) return LastError();
    out = reinterpret_cast<ServiceManagerHandle>(manager);
    return Success;
}

Platform::ErrorCode Platform::CloseServiceManager(ServiceManagerHandle manager) noexcept
{
    return ::CloseServiceHandle(Native(manager)) != FALSE ? Success : LastError();
}

Platform::ErrorCode Platform::OpenService(ServiceManagerHandle manager, char const * name, ServiceHandle & out) noexcept
{
    const SC_HANDLE service = ::OpenServiceA(Native(manager), name, SERVICE_QUERY_CONFIG | SERVICE_QUERY_STATUS);
    if (service == nullptr) return LastError();
    out = reinterpret_cast<ServiceHandle>(service);
    return Success;
}

void Platform::CloseService(ServiceHandle service) noexcept
{
    ::CloseServiceHandle(Native(service));
}

Platform::ErrorCode Platform::QueryServiceConfig(ServiceHandle service, void * buffer, std::uint32_t size,
                                                 std::uint32_t & needed) noexcept
{
    DWORD bytes = 0;
    const BOOL read =
        ::QueryServiceConfigA(Native(service), static_cast<QUERY_SERVICE_CONFIGA *>(buffer), size, &bytes);
    const ErrorCode error = read != FALSE ? Success : LastError();
    needed = bytes;
    return error;
}

Platform::ErrorCode Platform::QueryServiceStatus(ServiceHandle service) noexcept
{
    SERVICE_STATUS status{};
    return ::QueryServiceStatus(Native(service), &status) != FALSE ? Success : LastError();
}
