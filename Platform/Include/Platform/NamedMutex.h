#ifndef PLATFORM_NAMED_MUTEX_H
#define PLATFORM_NAMED_MUTEX_H

#include <cstdint>

#include "Platform/Error.h"
#include "Platform/Handle.h"

namespace Platform {

/// A mutex that processes share by its name. Any thread; ownership is the thread's, not recursive.
struct SNamedMutex;
using NamedMutexHandle = SNamedMutex *;

/// name: not empty, at most 512 bytes used; path separators count as underscores. Not owned after creation. The caller
/// closes `out`, which keeps its value on failure. Windows: the system's mutex of that name (of more than 259 bytes
/// the start and a hash) in the session of this process, which other programs may use as well.
ErrorCode NewNamedMutex(NamedMutexHandle & out, char const * name) noexcept;
/// timeoutMs: milliseconds, 0xFFFFFFFF for ever. True when the mutex was taken in that time; also when its last owner,
/// a thread or its whole process, ended without releasing it. The owner itself waits in vain.
bool TakeNamedMutex(NamedMutexHandle mutex, std::uint32_t timeoutMs) noexcept;
/// By the owner; a call by anyone else is ignored.
void ReleaseNamedMutex(NamedMutexHandle mutex) noexcept;
/// Null is ignored. With the last handle of this process on the name the ownership goes, too. Windows: that of another
/// thread than the caller's goes with that thread.
void CloseNamedMutex(NamedMutexHandle mutex) noexcept;

struct SNamedMutexTraits {
    using Type = NamedMutexHandle;
    static Type None() noexcept { return nullptr; }
    static void Close(Type handle) noexcept { CloseNamedMutex(handle); }
};
using CNamedMutexHandle = THandle<SNamedMutexTraits>;

} // namespace Platform

#endif
