#ifndef PLATFORM_RUNTIME_H
#define PLATFORM_RUNTIME_H

#include <cstdint>

/// What the C runtime of a system watches, where it watches anything.
namespace Platform {

enum class HeapState : std::uint8_t { Good, BadBegin, BadNode };
/// Looks through the heap of the process. Good where the system has no such check (POSIX).
HeapState CheckHeap() noexcept;
/// Stops in the debugger, where the system has such a call; POSIX: does nothing.
void BreakIntoDebugger() noexcept;

/// Keeps the C runtime from ending the process over a bad argument of one of its functions, until the former handler
/// is put back. For the whole process. POSIX: there are no such checks, both do nothing.
using ParameterHandler = void (*)();
ParameterHandler SilenceParameterChecks() noexcept;
void RestoreParameterChecks(ParameterHandler former) noexcept;

} // namespace Platform

#endif
