#include "Snmp/Host/Process.h"

#include <algorithm>
#include <iterator>
#include <locale>
#include <memory>
#include <string_view>

#include "Platform/Process.h"
#include "Snmp/Host/Debug.h"
#include "Snmp/Host/HandleText.h"
#include "Snmp/Host/OsVersion.h"

namespace {

constexpr std::uint32_t MaxProcesses = 1024;
constexpr char UnknownName[] = "<unknown>";
constexpr char IdleName[] = "System Idle Process";
constexpr char SystemName[] = "System";

constexpr std::uint32_t AnyMinor = 0xFFFFFFFF;

/// Id of the process "System" by the version of the operating system; the idle process has 0 in all of them.
struct SSystemProcess {
    std::uint32_t major, minor, systemId;
};
constexpr SSystemProcess SystemProcesses[] = {{4, AnyMinor, 2}, {5, 0, 8}, {5, 1, 4}, {5, 2, 4}, {6, AnyMinor, 4}};

void TakeWellKnownName(std::string & out, std::uint32_t pid)
{
    if (CDebug::Enabled())
        CDebug::Trace(4,
                      "\nCProcess            : Could not open process PID %d, try to get name of Windows default "
                      "process...",
                      static_cast<int>(pid));
    COSVersion version;
    version.Read();
    const auto * const entry =
        std::find_if(std::begin(SystemProcesses), std::end(SystemProcesses), [&](SSystemProcess const & process) {
            return process.major == version.dwMajorVersion &&
                   (process.minor == AnyMinor || process.minor == version.dwMinorVersion);
        });
    if (entry == std::end(SystemProcesses)) return;
    if (pid == 0)
        out = IdleName;
    else if (pid == entry->systemId)
        out = SystemName;
}

/// Closes the process in any case.
Platform::ErrorCode ReadName(Platform::ProcessHandle process, std::string & out)
{
    const Platform::CProcessHandle owner(process);
    std::string name;
    const Platform::ErrorCode error = Platform::ProcessName(process, name);
    if (error == Platform::Success)
        out = std::move(name);
    else if (CDebug::Enabled())
        CDebug::Trace(1, "\nCProcess            : ## ERROR 0x%08X! GetModuleBaseName hProcess 0x%X FAILED!", error,
                      HandleNumber(process));
    return error;
}

void TraceResult(std::uint32_t pid, int result, std::string const & name, Platform::ErrorCode error) noexcept
{
    if (!CDebug::Enabled()) return;
    const int id = static_cast<int>(pid);
    if (result != 0)
        CDebug::Trace(4, "\nCProcess            : -> process #%d name = \"%s\"", id, name.c_str());
    else if (error == Platform::Success)
        CDebug::Trace(4, "\nCProcess            : -> no name for process #%d", id);
    else
        CDebug::Trace(1, "\nCProcess            : ## ERROR 0x%08X! Could not get process name for process with PID %d!",
                      error, id);
}

bool EqualIgnoringCase(std::string_view left, std::string_view right)
{
    auto const & letters = std::use_facet<std::ctype<char>>(std::locale::classic());
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [&](char l, char r) { return letters.toupper(l) == letters.toupper(r); });
}

/// Looks at the processes in turn; `processName` keeps the last name that could be read.
bool AnyBearsAnotherName(std::uint32_t const * ids, std::uint32_t count, std::string_view name)
{
    std::string processName = UnknownName;
    for (std::uint32_t i = 0; i < count; ++i) {
        Platform::ProcessHandle handle = nullptr;
        if (Platform::OpenProcess(handle, ids[i]) != Platform::Success) continue;
        const Platform::CProcessHandle process(handle);
        if (Platform::HasModules(handle) != Platform::Success) continue;
        std::string read;
        if (Platform::ProcessName(handle, read) == Platform::Success) processName = std::move(read);
        // A different name is what counts as found.
        if (!EqualIgnoringCase(name, processName)) return true;
    }
    return false;
}

} // namespace

int CProcess::GetName(std::string & out, std::uint32_t pid) noexcept
try {
    Platform::ProcessHandle process = nullptr;
    Platform::ErrorCode error = Platform::OpenProcess(process, pid);
    int result = 0;
    if (error == Platform::Success) {
        error = ReadName(process, out);
        result = error == Platform::Success ? 1 : 0;
    } else {
        TakeWellKnownName(out, pid);
        result = out.empty() ? 0 : 1;
    }
    TraceResult(pid, result, out, error);
    return result;
} catch (...) {
    return 0;
}

bool IsProcessRunning(char const * name) noexcept
try {
    char const * const wanted = name != nullptr ? name : "";
    if (CDebug::Enabled()) CDebug::Trace(1, "\nStart IsProcessRunning (%s).", wanted);
    const auto ids = std::make_unique<std::uint32_t[]>(MaxProcesses);
    std::uint32_t count = 0;
    if (Platform::EnumProcesses(ids.get(), MaxProcesses, count) != Platform::Success) {
        if (CDebug::Enabled()) CDebug::Trace(1, "\nEnd IsProcessRunning. EnumProcesses failed.");
        return false;
    }
    const bool found = AnyBearsAnotherName(ids.get(), count, wanted);
    if (CDebug::Enabled())
        CDebug::Trace(1,
                      found ? "\nEnd IsProcessRunning. Process found." : "\nEnd IsProcessRunning. Process not found.");
    return found;
} catch (...) {
    return false;
}
