#include "VLK/Functions.h"

#include "HeapReport.h"
#include "Platform/Clock.h"
#include "Platform/Console.h"
#include "Platform/Error.h"
#include "Platform/File.h"
#include "Platform/Host.h"
#include "Platform/Process.h"
#include "SystemModules.h"
#include "VLK/Exceptions.h"
#include "VLK/ThrowState.h"
#include "VLK/Trace.h"

namespace VLK::Functions {

namespace {

/// Where damage of the heap is reported: not 0 to the trace, 0 to the debugger, which then stops the process.
constexpr unsigned int g_uHeapReport = 0xFFFFFFFF;

std::uint64_t PresentTicks(Internals::STickStart const & clock) noexcept
{
    return clock.frequency != 0 ? Platform::PerformanceCounter() : Platform::TickCountMs();
}

} // namespace

std::uint64_t GetTickTime(unsigned int unitsPerSecond) noexcept
{
    Internals::STickStart const & clock = Internals::Windows::CModuleInfo_Win::TickStart();
    return Internals::TickTime(clock, PresentTicks(clock), unitsPerSecond);
}

std::uint64_t GetTickTime() noexcept
{
    Internals::STickStart const & clock = Internals::Windows::CModuleInfo_Win::TickStart();
    return PresentTicks(clock) - clock.start;
}

unsigned int GetCurrentDirectoryA(Strings::CStringVar & out)
{
    Exceptions::CThrowState state;
    try {
        std::string directory;
        Platform::ErrorCode const error = Platform::CurrentDirectory(directory);
        if (error != Platform::Success) VLK_RAISE_OS(state, Errors::OperatingSystem, error);
        out = directory;
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

std::uint32_t GetCurrentProcessID() noexcept
{
    return Platform::CurrentProcessId();
}

Exceptions::NATIVE_ERROR GetErrno() noexcept
{
    return {Exceptions::NativeCrt, static_cast<std::uint32_t>(Platform::CrtError())};
}

Exceptions::NATIVE_ERROR GetOsError() noexcept
{
    return Exceptions::OsError(Platform::LastError());
}

unsigned int GetDnsName(std::string & host, std::string & domain)
{
    Exceptions::CThrowState state;
    try {
        Platform::ErrorCode const error = Platform::DnsName(host, domain);
        if (error != Platform::Success) VLK_RAISE_OS(state, Errors::DnsName, error);
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

unsigned int GetDnsName(Strings::CStringVar & host, Strings::CStringVar & domain)
{
    Exceptions::CThrowState state;
    try {
        std::string hostText;
        std::string domainText;
        GetDnsName(hostText, domainText);
        host = hostText;
        domain = domainText;
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

void HeapCheck() noexcept
{
    Internals::ReportHeap(Platform::CheckHeap(), g_uHeapReport);
}

} // namespace VLK::Functions

void VLK::Internals::ReportHeap(Platform::HeapState heap, unsigned int toTrace) noexcept
{
    if (heap == Platform::HeapState::Good) return;
    bool const atStart = heap == Platform::HeapState::BadBegin;
    if (toTrace != 0) {
        VLK_TRACE(TraceErrors, "%s", atStart ? "HeapCheck: bad start of heap" : "HeapCheck: bad node in heap");
        return;
    }
    Platform::WriteDebugger(atStart ? "ERROR - bad start of heap\n" : "ERROR - bad node in heap\n");
    Platform::BreakIntoDebugger();
}

namespace VLK::Misc {

std::int64_t now() noexcept
{
    return static_cast<std::int64_t>(Platform::UnixTimeMs());
}

std::chrono::milliseconds nowMS() noexcept
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(nowNS());
}

std::chrono::nanoseconds nowNS() noexcept
{
    return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now().time_since_epoch());
}

std::int64_t timeDiffAsMS(std::chrono::nanoseconds a, std::chrono::nanoseconds b) noexcept
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(b - a).count();
}

std::int64_t timeDiffAsMS(std::chrono::milliseconds a, std::chrono::milliseconds b) noexcept
{
    return (b - a).count();
}

unsigned int hostname(std::string & out)
{
    Exceptions::CThrowState state;
    try {
        if (Platform::ComputerNameUtf8(out) == Platform::Success && !out.empty()) return 1;
        out.clear();
        return 0;
    }
    VLK_THROW_NEXT(state)
}

} // namespace VLK::Misc
