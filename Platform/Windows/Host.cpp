#include "Platform/Host.h"

#include <algorithm>

#include "Platform/Text.h"
#include "System.h"

namespace {

constexpr DWORD WideNameRoom = 260;

/// A name of this computer by the system's number for its kind.
Platform::ErrorCode NameOf(COMPUTER_NAME_FORMAT kind, std::string & out)
{
    DWORD size = 0;
    ::GetComputerNameExW(kind, nullptr, &size);
    std::wstring name(size, L'\0');
    if (::GetComputerNameExW(kind, name.data(), &size) == FALSE) return Platform::LastError();
    static_assert(sizeof(wchar_t) == sizeof(char16_t));
    out = Platform::FromUtf16(reinterpret_cast<char16_t const *>(name.data()), size);
    return Platform::Success;
}

} // namespace

Platform::ErrorCode Platform::ComputerName(std::string & out, std::uint32_t capacity)
{
    char name[MAX_COMPUTERNAME_LENGTH + 1];
    DWORD size = sizeof name;
    if (::GetComputerNameA(name, &size) == FALSE) return LastError();
    out.assign(name, std::min<DWORD>(size, capacity != 0 ? capacity - 1 : 0));
    return Success;
}

Platform::ErrorCode Platform::ComputerNameUtf8(std::string & out)
{
    wchar_t name[WideNameRoom];
    DWORD size = WideNameRoom;
    if (::GetComputerNameW(name, &size) == FALSE) return LastError();
    char bytes[3 * WideNameRoom];
    const int used =
        ::WideCharToMultiByte(CP_UTF8, 0, name, static_cast<int>(size), bytes, sizeof bytes, nullptr, nullptr);
    if (used == 0 && size != 0) return LastError();
    out.assign(bytes, static_cast<std::size_t>(used));
    return Success;
}

Platform::ErrorCode Platform::DnsName(std::string & host, std::string & domain)
{
    std::string hostName;
    std::string domainName;
    ErrorCode error = NameOf(ComputerNameDnsHostname, hostName);
    if (error == Success) error = NameOf(ComputerNameDnsDomain, domainName);
    if (error != Success) return error;
    host = std::move(hostName);
    domain = std::move(domainName);
    return Success;
}

Platform::ErrorCode Platform::SystemDirectory(std::string & out)
{
    std::string path(::GetWindowsDirectoryA(nullptr, 0), '\0');
    const UINT size = ::GetWindowsDirectoryA(path.data(), static_cast<UINT>(path.size()));
    if (size == 0 || size >= path.size()) return size == 0 ? LastError() : ErrorInsufficientBuffer();
    path.resize(size);
    out = std::move(path);
    return Success;
}

char Platform::PathSeparator() noexcept
{
    return '\\';
}

Platform::ErrorCode Platform::OsVersion(SOsVersion & out) noexcept
{
    OSVERSIONINFOEXA version{};
    auto * const start = reinterpret_cast<OSVERSIONINFOA *>(&version);
    version.dwOSVersionInfoSize = sizeof(OSVERSIONINFOEXA);
    if (::GetVersionExA(start) == FALSE) {
        version.dwOSVersionInfoSize = sizeof(OSVERSIONINFOA);
        if (::GetVersionExA(start) == FALSE) return LastError();
    }
    out = {version.dwMajorVersion, version.dwMinorVersion, version.dwBuildNumber};
    return Success;
}

std::uint32_t Platform::Architecture() noexcept
{
    SYSTEM_INFO system{};
    ::GetNativeSystemInfo(&system);
    return system.wProcessorArchitecture;
}

bool Platform::HasManagedFirewall() noexcept
{
    return true;
}
