#ifndef PLATFORM_THREAD_H
#define PLATFORM_THREAD_H

#include <cstdint>

#include "Platform/Wait.h"

/// Threads. A thread's handle is a waitable object that is signalled, for good, when the thread has ended. A wait
/// for it returns when the thread runs no more code of the library that started it, so that may be unloaded then.
/// POSIX: signals of the host are blocked on these threads, except those of faults.
namespace Platform {

inline constexpr std::uint32_t StillActive = 259; ///< exit code of a thread that runs

/// Body of a thread. Must not let an exception out. Its return is the thread's exit code.
using ThreadEntry = std::uint32_t (*)(void * argument) noexcept;

/// Starts a thread at normal priority. stackBytes: 0 for the system's default. suspended: the body begins
/// only with ResumeThread. id gets the system's thread id (see CurrentThreadId). The caller closes `out`,
/// also while the thread runs; a thread that nobody resumed ends without running its body when its handle
/// is closed.
ErrorCode StartThread(WaitHandle & out, std::uint32_t & id, ThreadEntry entry, void * argument,
                      std::uint32_t stackBytes, bool suspended) noexcept;

/// Lowers the suspend count by one. previous: the count before.
/// Windows: of any thread. POSIX: only the suspension of a thread that was created suspended can be lifted.
ErrorCode ResumeThread(WaitHandle thread, std::uint32_t & previous) noexcept;
/// Raises the count. POSIX: of a thread that has not begun yet; for one that runs ErrorNotSupported, since
/// stopping a thread at an arbitrary place can leave the process locked for good.
ErrorCode SuspendThread(WaitHandle thread, std::uint32_t & previous) noexcept;

/// StillActive while it runs, then the body's result.
ErrorCode ThreadExitCode(WaitHandle thread, std::uint32_t & exitCode) noexcept;

/// Ends a thread by force. Windows: TerminateThread, and its end is waited for; its mutexes count as abandoned, and
/// a critical section that it holds stays held. POSIX: no thread can be ended from outside without the
/// danger of a corrupt process, so the thread is abandoned: for everyone who looks at its handle it has ended
/// with `exitCode`, mutexes that it owns count as abandoned, it never becomes anyone's again, and the module
/// that holds its body is pinned in memory, so that code which may still run is never unmapped. Where it next comes
/// to a wait, a sleep or a critical section of this room it stays for good. One that has not begun its body ends.
ErrorCode TerminateThread(WaitHandle thread, std::uint32_t exitCode) noexcept;
/// Whether a thread that TerminateThread has ended may in truth go on. Then what such a thread uses must stay.
bool TerminatedThreadsGoOn() noexcept;

/// The system's id of the calling thread; on Linux the number that ps and the journal show.
std::uint32_t CurrentThreadId() noexcept;

/// One thread-local word, without destructors at thread end. Slot numbers are the system's.
ErrorCode NewThreadSlot(std::uint32_t & slot) noexcept;
void FreeThreadSlot(std::uint32_t slot) noexcept;
void * ThreadSlotValue(std::uint32_t slot) noexcept;
ErrorCode SetThreadSlotValue(std::uint32_t slot, void * value) noexcept;

/// Names the calling thread for debuggers and process lists; cut to what the system takes.
void NameCurrentThread(char const * name) noexcept;

/// Prepares the calling thread for component calls, where the system has such a thing. The result says
/// whether LeaveComponentApartment is owed.
bool EnterComponentApartment() noexcept;
void LeaveComponentApartment() noexcept;

} // namespace Platform

#endif
