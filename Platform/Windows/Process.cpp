#include "Platform/Process.h"

#include <algorithm>

#include "System.h"

// The functions under their own names, and not under those that they have in kernel32.
#define PSAPI_VERSION 1
#include <psapi.h>

namespace {

constexpr DWORD NameRoom = 260;

HANDLE Native(Platform::ProcessHandle process) noexcept
{
    return reinterpret_cast<HANDLE>(process);
}

/// Processors of the groups below that one.
DWORD ProcessorsBelow(WORD group) noexcept
{
    DWORD count = 0;
    for (WORD lower = 0; lower < group; ++lower)
        count += ::GetActiveProcessorCount(lower);
    return count;
}

} // namespace

std::uint32_t Platform::CurrentProcessId() noexcept
{
    return ::GetCurrentProcessId();
}

Platform::ErrorCode Platform::EnumProcesses(std::uint32_t * ids, std::uint32_t capacity, std::uint32_t & count) noexcept
{
    static_assert(sizeof(DWORD) == sizeof(std::uint32_t));
    DWORD bytes = 0;
    const auto room = static_cast<DWORD>(capacity * sizeof(DWORD));
    if (::EnumProcesses(reinterpret_cast<DWORD *>(ids), room, &bytes) == FALSE) return LastError();
    count = static_cast<std::uint32_t>(std::min(bytes, room) / sizeof(DWORD));
    return Success;
}

Platform::ErrorCode Platform::OpenProcess(ProcessHandle & out, std::uint32_t id) noexcept
{
    const HANDLE process = ::OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, /*bInheritHandle=*/FALSE, id);
    if (process == nullptr) return LastError();
    out = reinterpret_cast<ProcessHandle>(process);
    return Success;
}

void Platform::CloseProcess(ProcessHandle process) noexcept
{
    if (process != nullptr) ::CloseHandle(Native(process));
}

Platform::ErrorCode Platform::HasModules(ProcessHandle process) noexcept
{
    HMODULE module = nullptr;
    DWORD bytes = 0;
    return ::EnumProcessModules(Native(process), &module, sizeof module, &bytes) != FALSE ? Success : LastError();
}

Platform::ErrorCode Platform::ProcessName(ProcessHandle process, std::string & out)
{
    char name[NameRoom] = {};
    // No module stands for the first one, the program.
    const DWORD size = ::GetModuleBaseNameA(Native(process), /*hModule=*/nullptr, name, NameRoom);
    if (size == 0) return LastError();
    out.assign(name, std::min(size, NameRoom - 1));
    return Success;
}

bool Platform::MemoryUse(std::uint64_t & privateBytes, std::uint64_t & workingSet) noexcept
{
    PROCESS_MEMORY_COUNTERS_EX counters{};
    counters.cb = sizeof counters;
    auto * const start = reinterpret_cast<PROCESS_MEMORY_COUNTERS *>(&counters);
    if (::GetProcessMemoryInfo(::GetCurrentProcess(), start, sizeof counters) == FALSE) return false;
    privateBytes = counters.PrivateUsage;
    workingSet = counters.WorkingSetSize;
    return true;
}

bool Platform::HandleCount(std::uint32_t & count) noexcept
{
    DWORD handles = 0;
    if (::GetProcessHandleCount(::GetCurrentProcess(), &handles) == FALSE) return false;
    count = handles;
    return true;
}

bool Platform::CurrentProcessor(std::uint32_t & number) noexcept
{
    PROCESSOR_NUMBER processor{};
    ::GetCurrentProcessorNumberEx(&processor);
    if (processor.Group != 0 && processor.Group >= ::GetActiveProcessorGroupCount()) return false;
    number = ProcessorsBelow(processor.Group) + processor.Number;
    return true;
}
