#include "Platform/Services.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include <sys/stat.h>
#include <systemd/sd-bus.h>
#include <systemd/sd-daemon.h>

#include "Platform/Clock.h"
#include "Platform/File.h"
#include "UnitName.h"

namespace {

using Platform::ErrorCode;

/// Longest wait for the bus, from the connection to the last answer of one call.
constexpr std::uint32_t BusTimeoutMs = 2000;
constexpr std::size_t MaxUnitBytes = 1U << 20;

constexpr char StandardUnitPath[] = "/etc/systemd/system.control:/run/systemd/system.control:/run/systemd/transient:"
                                    "/run/systemd/generator.early:/etc/systemd/system:/etc/systemd/system.attached:"
                                    "/run/systemd/system:/run/systemd/system.attached:/run/systemd/generator:"
                                    "/usr/local/lib/systemd/system:/lib/systemd/system:/usr/lib/systemd/system:"
                                    "/run/systemd/generator.late";

constexpr char Destination[] = "org.freedesktop.systemd1";
constexpr char ManagerPath[] = "/org/freedesktop/systemd1";
constexpr char ManagerInterface[] = "org.freedesktop.systemd1.Manager";
constexpr char UnitInterface[] = "org.freedesktop.systemd1.Unit";

struct SBusCloser {
    void operator()(sd_bus * bus) const noexcept { ::sd_bus_close_unref(bus); }
};
using CBus = std::unique_ptr<sd_bus, SBusCloser>;

struct SMessageCloser {
    void operator()(sd_bus_message * message) const noexcept { ::sd_bus_message_unref(message); }
};
using CMessage = std::unique_ptr<sd_bus_message, SMessageCloser>;

struct SFree {
    void operator()(char * text) const noexcept { std::free(text); }
};

ErrorCode ErrorOf(int result) noexcept
{
    return result < 0 ? static_cast<ErrorCode>(-result) : Platform::Success;
}

/// Waits until the connection has introduced itself; a bus that never answers ends it after BusTimeoutMs.
ErrorCode AwaitReady(sd_bus * bus) noexcept
{
    const std::uint64_t deadline = Platform::MonotonicMs() + BusTimeoutMs;
    for (;;) {
        const int ready = ::sd_bus_is_ready(bus);
        if (ready != 0) return ErrorOf(ready);
        const int progress = ::sd_bus_process(bus, nullptr);
        if (progress < 0) return ErrorOf(progress);
        if (progress > 0) continue;
        const std::uint64_t now = Platform::MonotonicMs();
        if (now >= deadline) return ETIMEDOUT;
        const int waited = ::sd_bus_wait(bus, (deadline - now) * 1000);
        if (waited < 0 && waited != -EINTR) return ErrorOf(waited);
    }
}

/// A connection to the system bus, or null.
CBus ConnectToBus() noexcept
{
    sd_bus * raw = nullptr;
    if (::sd_bus_open_system(&raw) < 0) return nullptr;
    CBus bus(raw);
    ::sd_bus_set_method_call_timeout(raw, std::uint64_t{BusTimeoutMs} * 1000);
    return AwaitReady(raw) == Platform::Success ? std::move(bus) : nullptr;
}

ErrorCode UnitProperty(sd_bus * bus, std::string const & unit, char const * property, std::string & out)
{
    char * text = nullptr;
    const int result =
        ::sd_bus_get_property_string(bus, Destination, unit.c_str(), UnitInterface, property, nullptr, &text);
    const std::unique_ptr<char, SFree> owner(text);
    if (result < 0) return ErrorOf(result);
    out = text;
    return Platform::Success;
}

ErrorCode LoadUnit(sd_bus * bus, std::string const & name, std::string & unit)
{
    sd_bus_message * raw = nullptr;
    const int result = ::sd_bus_call_method(bus, Destination, ManagerPath, ManagerInterface, "LoadUnit", nullptr, &raw,
                                            "s", name.c_str());
    const CMessage reply(raw);
    if (result < 0) return ErrorOf(result);
    char const * path = nullptr;
    const int read = ::sd_bus_message_read(raw, "o", &path);
    if (read < 0) return ErrorOf(read);
    unit = path;
    return Platform::Success;
}

/// The first file of that name on a colon-separated path decides. Empty when there is none, or when it says that
/// the unit is masked (an empty file, or a link to the null device).
std::string FindUnitFile(std::string_view path, std::string const & name)
{
    while (!path.empty()) {
        const std::size_t end = std::min(path.find(':'), path.size());
        const std::string_view directory = path.substr(0, end);
        path.remove_prefix(std::min(end + 1, path.size()));
        if (directory.empty()) continue;
        std::string file = std::string(directory) + '/' + name;
        struct stat status;
        if (::lstat(file.c_str(), &status) != 0) continue;
        const bool loadable = ::stat(file.c_str(), &status) == 0 && S_ISREG(status.st_mode) && status.st_size != 0;
        return loadable ? file : std::string();
    }
    return {};
}

/// Runs a body that may be out of memory.
template <class TBody>
ErrorCode Guarded(TBody const & body) noexcept
{
    try {
        return body();
    } catch (...) {
        return ENOMEM;
    }
}

} // namespace

/// Where services are looked up: on the bus when there is one, else on a path of directories.
struct Platform::SServiceManager {
    CBus bus;
    std::string unitPath;
};

/// file: the unit's file; empty for one that systemd made without a file.
/// bus, unit: the manager's bus and the unit's object on it; null without a bus.
struct Platform::SService {
    std::string file;
    sd_bus * bus = nullptr;
    std::string unit;
};

namespace {

ErrorCode OpenOnBus(sd_bus * bus, std::string const & name, Platform::SService & service)
{
    std::string loadState;
    service.bus = bus;
    ErrorCode error = LoadUnit(bus, name, service.unit);
    if (error == Platform::Success) error = UnitProperty(bus, service.unit, "LoadState", loadState);
    if (error == Platform::Success && loadState != "loaded") error = ENOENT;
    if (error == Platform::Success) error = UnitProperty(bus, service.unit, "FragmentPath", service.file);
    return error;
}

ErrorCode OpenOnPath(std::string const & path, std::string const & name, Platform::SService & service)
{
    service.file = FindUnitFile(path, name);
    return service.file.empty() ? static_cast<ErrorCode>(ENOENT) : Platform::Success;
}

/// Looks the unit up. What systemd says about it stands; a bus that fails says nothing.
ErrorCode OpenAnywhere(Platform::SServiceManager const & manager, std::string const & name,
                       Platform::SService & service)
{
    if (manager.bus) {
        const ErrorCode error = OpenOnBus(manager.bus.get(), name, service);
        if (error == Platform::Success || error == Platform::ErrorNotFound()) return error;
        service = Platform::SService{};
    }
    return OpenOnPath(manager.unitPath, name, service);
}

ErrorCode ReadUnitFile(std::string const & path, std::string & out)
{
    Platform::FileHandle handle = Platform::NoFile;
    ErrorCode error = Platform::OpenFile(handle, path, Platform::FileMode::ReadExisting);
    if (error != Platform::Success) return error;
    const Platform::CFileHandle file(handle);
    std::uint64_t size = 0;
    error = Platform::FileSize(handle, size);
    if (error != Platform::Success) return error;
    if (size > MaxUnitBytes) return EFBIG;
    out.resize(static_cast<std::size_t>(size));
    out.resize(Platform::ReadFile(handle, out.data(), out.size(), error));
    return error;
}

} // namespace

Platform::ErrorCode Platform::OpenServiceManager(ServiceManagerHandle & out) noexcept
{
    return Guarded([&] {
        auto manager = std::make_unique<SServiceManager>();
        char const * const ownPath = std::getenv("SYSTEMD_UNIT_PATH");
        if (ownPath == nullptr && ::sd_booted() > 0) manager->bus = ConnectToBus();
        manager->unitPath = ownPath != nullptr ? ownPath : StandardUnitPath;
        out = manager.release();
        return Success;
    });
}

Platform::ErrorCode Platform::CloseServiceManager(ServiceManagerHandle manager) noexcept
{
    delete manager;
    return Success;
}

Platform::ErrorCode Platform::OpenService(ServiceManagerHandle manager, char const * name, ServiceHandle & out) noexcept
{
    return Guarded([&]() -> ErrorCode {
        const std::string unit = ServiceUnitName(name);
        if (unit.empty()) return EINVAL;
        auto service = std::make_unique<SService>();
        const ErrorCode error = OpenAnywhere(*manager, unit, *service);
        if (error == Success) out = service.release();
        return error;
    });
}

void Platform::CloseService(ServiceHandle service) noexcept
{
    delete service;
}

Platform::ErrorCode Platform::QueryServiceConfig(ServiceHandle service, void * buffer, std::uint32_t size,
                                                 std::uint32_t & needed) noexcept
{
    return Guarded([&] {
        std::string text;
        const ErrorCode error = service->file.empty() ? Success : ReadUnitFile(service->file, text);
        if (error != Success) return error;
        needed = static_cast<std::uint32_t>(text.size() + 1);
        if (needed > size) return ErrorInsufficientBuffer();
        std::memcpy(buffer, text.c_str(), needed);
        return Success;
    });
}

Platform::ErrorCode Platform::QueryServiceStatus(ServiceHandle service) noexcept
{
    return Guarded([&] {
        std::string state;
        // Without systemd no unit runs, and that is a state as well.
        return service->bus != nullptr ? UnitProperty(service->bus, service->unit, "ActiveState", state) : Success;
    });
}
