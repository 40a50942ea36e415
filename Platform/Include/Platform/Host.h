#ifndef PLATFORM_HOST_H
#define PLATFORM_HOST_H

#include <cstdint>
#include <string>

#include "Platform/Error.h"

/// Facts about this host. Any thread. Outputs keep their values on failure; what fills a text may raise std::bad_alloc.
namespace Platform {

/// Short name of this host, cut to capacity - 1 bytes. Windows: the NetBIOS name.
ErrorCode ComputerName(std::string & out, std::uint32_t capacity);
/// The same name whole, in UTF-8 on each system.
ErrorCode ComputerNameUtf8(std::string & out);
/// Host name and domain as the name service knows them, whose answer may take seconds. The domain may be empty.
ErrorCode DnsName(std::string & host, std::string & domain);

/// Directory of the system-wide files of the product: the system's own on Windows; KXRA_SYSTEM_DIRECTORY,
/// default /etc/kestrix, on POSIX.
ErrorCode SystemDirectory(std::string & out);
/// The character between the parts of a path.
char PathSeparator() noexcept;

struct SOsVersion {
    std::uint32_t major, minor, build;
};
/// The version that the system reports of itself. POSIX: the kernel's release. Windows: at most the newest version that
/// the program says it knows (Module.h has the file that tells the true one).
ErrorCode OsVersion(SOsVersion & out) noexcept;

/// Processor architecture, with the platform's numbers: 0 x86, 6 Itanium, 9 x64, else another.
std::uint32_t Architecture() noexcept;

/// Whether the host has a firewall whose rules the agent manages (Windows only).
bool HasManagedFirewall() noexcept;

} // namespace Platform

#endif
