#ifndef VLK_FUNCTIONS_H
#define VLK_FUNCTIONS_H

#include <chrono>
#include <cstdint>
#include <string>

#include "VLK/Export.h"
#include "VLK/ModuleInfo.h"
#include "VLK/SourceInfo.h"
#include "VLK/Strings.h"

/// Small helpers around the system. Any thread.
namespace VLK::Functions {

/// Time since the foundation was loaded, in units of 1/unitsPerSecond second. Without a performance counter it runs a
/// thousand times too slow.
VLK_API std::uint64_t GetTickTime(unsigned int unitsPerSecond) noexcept;
/// The same in ticks of the performance counter.
VLK_API std::uint64_t GetTickTime() noexcept;

/// Replaces out by the current directory. Raises "General operating system error" when there is none any more, "Out of
/// memory".
VLK_API unsigned int GetCurrentDirectoryA(Strings::CStringVar & out);
VLK_API std::uint32_t GetCurrentProcessID() noexcept;

/// The calling thread's errno, and the system's last error; call at once after what failed.
VLK_API Exceptions::NATIVE_ERROR GetErrno() noexcept;
VLK_API Exceptions::NATIVE_ERROR GetOsError() noexcept;

/// Host name and domain as the name service knows them. Raise "Can't determine DNS name" with the system's error.
VLK_API unsigned int GetDnsName(Strings::CStringVar & host, Strings::CStringVar & domain);
VLK_API unsigned int GetDnsName(std::string & host, std::string & domain);

/// Looks through the heap where the system can do that; reports damage to the debugger or the trace. Nothing on
/// other systems.
VLK_API void HeapCheck() noexcept;

} // namespace VLK::Functions

namespace VLK::Misc {

/// Wall clock, milliseconds since 1970-01-01 UTC.
VLK_API std::int64_t now() noexcept;
/// Steady clock.
VLK_API std::chrono::milliseconds nowMS() noexcept;
VLK_API std::chrono::nanoseconds nowNS() noexcept;
/// b - a in milliseconds.
VLK_API std::int64_t timeDiffAsMS(std::chrono::nanoseconds a, std::chrono::nanoseconds b) noexcept;
VLK_API std::int64_t timeDiffAsMS(std::chrono::milliseconds a, std::chrono::milliseconds b) noexcept;

/// Short name of this host. 1, or 0 with out empty.
VLK_API unsigned int hostname(std::string & out);

} // namespace VLK::Misc

#endif
