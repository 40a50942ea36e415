#ifndef PLATFORM_PROCESS_H
#define PLATFORM_PROCESS_H

#include <cstdint>
#include <string>

#include "Platform/Error.h"
#include "Platform/Handle.h"

/// Processes of this host. Any thread; one process's handle is for one thread at a time.
namespace Platform {

std::uint32_t CurrentProcessId() noexcept;

/// The ids of the processes that run, at most `capacity`; `count` gets the number of those in `ids`.
ErrorCode EnumProcesses(std::uint32_t * ids, std::uint32_t capacity, std::uint32_t & count) noexcept;

struct SProcess;
using ProcessHandle = SProcess *;
/// Opens a process for reading its name; fails when it is gone or not readable by this process (one of another user is
/// readable with privileges only). The handle stays the process's own after its end: a later process with the same id
/// is never met through it. Windows: while it is open, the process that ended can be opened again. The caller closes
/// `out`.
ErrorCode OpenProcess(ProcessHandle & out, std::uint32_t id) noexcept;
void CloseProcess(ProcessHandle process) noexcept;
/// Whether the process has at least one module that can be listed. POSIX: whether it has a program at all (kernel
/// threads don't).
ErrorCode HasModules(ProcessHandle process) noexcept;
/// File name of the process's program, without its directory. `out` keeps its value on failure.
ErrorCode ProcessName(ProcessHandle process, std::string & out);

struct SProcessTraits {
    using Type = ProcessHandle;
    static Type None() noexcept { return nullptr; }
    static void Close(Type handle) noexcept { CloseProcess(handle); }
};
using CProcessHandle = THandle<SProcessTraits>;

/// Memory of this process in bytes; false where the system doesn't tell.
bool MemoryUse(std::uint64_t & privateBytes, std::uint64_t & workingSet) noexcept;
/// Open handles of this process (POSIX: descriptors); false where the system doesn't tell.
bool HandleCount(std::uint32_t & count) noexcept;
/// Number of the processor that runs the calling thread, counted over all groups; false where it isn't known.
bool CurrentProcessor(std::uint32_t & number) noexcept;

} // namespace Platform

#endif
