#include "QueryFakes.h"

#include <algorithm>
#include <cstring>

#include "Platform/Host.h"
#include "Platform/Module.h"
#include "Platform/Process.h"
#include "Platform/Services.h"

namespace {

QueryFakes::SHost g_host;

} // namespace

QueryFakes::SHost & QueryFakes::Host()
{
    return g_host;
}

struct Platform::SServiceManager {};
struct Platform::SService {
    QueryFakes::SService const * service;
};
struct Platform::SProcess {
    QueryFakes::SProcess const * process;
};

Platform::ErrorCode Platform::OpenServiceManager(ServiceManagerHandle & out) noexcept
{
    if (g_host.managerError != Success || g_host.managerIsNull) return g_host.managerError;
    out = new SServiceManager;
    ++g_host.openHandles;
    return Success;
}

Platform::ErrorCode Platform::CloseServiceManager(ServiceManagerHandle manager) noexcept
{
    delete manager;
    --g_host.openHandles;
    return g_host.closeError;
}

Platform::ErrorCode Platform::OpenService(ServiceManagerHandle, char const * name, ServiceHandle & out) noexcept
{
    const auto found = g_host.services.find(name);
    if (found == g_host.services.end()) return 0x424;
    out = new SService{&found->second};
    ++g_host.openHandles;
    return Success;
}

void Platform::CloseService(ServiceHandle service) noexcept
{
    delete service;
    --g_host.openHandles;
}

Platform::ErrorCode Platform::QueryServiceConfig(ServiceHandle service, void * buffer, std::uint32_t size,
                                                 std::uint32_t & needed) noexcept
{
    g_host.configRooms.push_back(size);
    QueryFakes::SService const & asked = *service->service;
    if (asked.configError != Success) return asked.configError;
    needed = asked.asksForNoMore ? size : asked.configSize;
    if (asked.asksForNoMore || size < needed) return ErrorInsufficientBuffer();
    std::memset(buffer, 'x', needed);
    return Success;
}

Platform::ErrorCode Platform::QueryServiceStatus(ServiceHandle service) noexcept
{
    return service->service->statusError;
}

Platform::ErrorCode Platform::EnumProcesses(std::uint32_t * ids, std::uint32_t capacity, std::uint32_t & count) noexcept
{
    if (g_host.enumError != Success) return g_host.enumError;
    count = 0;
    for (QueryFakes::SProcess const & process : g_host.processes)
        if (count < capacity) ids[count++] = process.id;
    return Success;
}

Platform::ErrorCode Platform::OpenProcess(ProcessHandle & out, std::uint32_t id) noexcept
{
    const auto found = std::find_if(g_host.processes.begin(), g_host.processes.end(),
                                    [&](QueryFakes::SProcess const & process) { return process.id == id; });
    if (found == g_host.processes.end()) return ErrorNotFound();
    if (found->openError != Success) return found->openError;
    out = new SProcess{&*found};
    ++g_host.openHandles;
    return Success;
}

void Platform::CloseProcess(ProcessHandle process) noexcept
{
    delete process;
    --g_host.openHandles;
}

Platform::ErrorCode Platform::HasModules(ProcessHandle process) noexcept
{
    return process->process->hasModules ? Success : ErrorNotFound();
}

Platform::ErrorCode Platform::ProcessName(ProcessHandle process, std::string & out)
{
    if (process->process->nameError != Success) return process->process->nameError;
    out = process->process->name;
    return Success;
}

Platform::ErrorCode Platform::OsVersion(SOsVersion & out) noexcept
{
    if (g_host.versionError != Success) return g_host.versionError;
    out = {g_host.major, g_host.minor, g_host.build};
    return Success;
}

bool Platform::SystemLibraryDirectory(std::string & out)
{
    out = g_host.systemDirectory;
    return !out.empty();
}

bool Platform::OtherWordSizeDirectory(std::string & out)
{
    if (g_host.otherDirectory.empty()) return false;
    out = g_host.otherDirectory;
    return true;
}

bool Platform::SystemVersionFile(std::string & out)
{
    out = g_host.versionFile;
    return g_host.hasVersionFile;
}
