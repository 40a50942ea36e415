#include "Platform/Host.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include <netdb.h>
#include <sys/utsname.h>
#include <unistd.h>

namespace {

constexpr char DefaultSystemDirectory[] = "/etc/kestrix";
constexpr std::size_t HostNameRoom = 256;

struct SArchitecture {
    char const * machine;
    std::uint32_t number;
};
constexpr SArchitecture Architectures[] = {{"x86_64", 9}, {"ia64", 6}, {"i386", 0},    {"i486", 0},
                                           {"i586", 0},   {"i686", 0}, {"aarch64", 12}};
constexpr std::uint32_t UnknownArchitecture = 0xFFFF;

/// The host's name as the kernel has it, perhaps with its domain.
Platform::ErrorCode FullHostName(std::string & out)
{
    char name[HostNameRoom + 1] = {};
    if (::gethostname(name, HostNameRoom) != 0) return static_cast<Platform::ErrorCode>(errno);
    out = name;
    return Platform::Success;
}

/// The name under which the name service knows `host`; `host` itself when it knows none.
std::string CanonicalName(std::string const & host)
{
    addrinfo hints{};
    hints.ai_flags = AI_CANONNAME;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo * found = nullptr;
    if (::getaddrinfo(host.c_str(), nullptr, &hints, &found) != 0) return host;
    const std::unique_ptr<addrinfo, void (*)(addrinfo *)> owner(found, ::freeaddrinfo);
    return found != nullptr && found->ai_canonname != nullptr ? found->ai_canonname : host;
}

} // namespace

Platform::ErrorCode Platform::ComputerNameUtf8(std::string & out)
{
    std::string name;
    const ErrorCode error = FullHostName(name);
    if (error == Success) out = name.substr(0, name.find('.'));
    return error;
}

Platform::ErrorCode Platform::ComputerName(std::string & out, std::uint32_t capacity)
{
    std::string name;
    const ErrorCode error = ComputerNameUtf8(name);
    if (error != Success) return error;
    if (name.size() >= capacity) name.resize(capacity != 0 ? capacity - 1 : 0);
    out = std::move(name);
    return Success;
}

Platform::ErrorCode Platform::DnsName(std::string & host, std::string & domain)
{
    std::string name;
    const ErrorCode error = FullHostName(name);
    if (error != Success) return error;
    const std::string canonical = name.find('.') == std::string::npos ? CanonicalName(name) : name;
    const std::size_t canonicalDot = canonical.find('.');
    host = name.substr(0, name.find('.'));
    domain = canonicalDot != std::string::npos ? canonical.substr(canonicalDot + 1) : std::string();
    return Success;
}

Platform::ErrorCode Platform::SystemDirectory(std::string & out)
{
    char const * const directory = std::getenv("KXRA_SYSTEM_DIRECTORY");
    out = directory != nullptr && *directory != '\0' ? directory : DefaultSystemDirectory;
    return Success;
}

char Platform::PathSeparator() noexcept
{
    return '/';
}

Platform::ErrorCode Platform::OsVersion(SOsVersion & out) noexcept
{
    utsname system;
    if (::uname(&system) != 0) return static_cast<ErrorCode>(errno);
    unsigned major = 0;
    unsigned minor = 0;
    unsigned build = 0;
    if (std::sscanf(system.release, "%u.%u.%u", &major, &minor, &build) < 2) return EINVAL;
    out = {major, minor, build};
    return Success;
}

std::uint32_t Platform::Architecture() noexcept
{
    utsname system;
    if (::uname(&system) != 0) return UnknownArchitecture;
    for (SArchitecture const & architecture : Architectures)
        if (std::strcmp(architecture.machine, system.machine) == 0) return architecture.number;
    return UnknownArchitecture;
}

bool Platform::HasManagedFirewall() noexcept
{
    return false;
}
