#ifndef PLATFORM_NAMED_MUTEX_H
#define PLATFORM_NAMED_MUTEX_H

#include <cstdint>

#include "Platform/Error.h"
#include "Platform/Handle.h"

namespace Platform {

/// A mutex that processes share by its name. Any thread; ownership is the thread's, not recursive.
struct SNamedMutex;
using NamedMutexHandle = SNamedMutex *;

/// name: free of path separators, at most 512 bytes used. Not owned after creation.
ErrorCode NewNamedMutex(NamedMutexHandle & out, char const * name) noexcept;
/// True when the mutex was taken within timeoutMs; also when its last owner ended without releasing it.
bool TakeNamedMutex(NamedMutexHandle mutex, std::uint32_t timeoutMs) noexcept;
void ReleaseNamedMutex(NamedMutexHandle mutex) noexcept;
void CloseNamedMutex(NamedMutexHandle mutex) noexcept;

struct SNamedMutexTraits {
    using Type = NamedMutexHandle;
    static Type None() noexcept { return nullptr; }
    static void Close(Type handle) noexcept { CloseNamedMutex(handle); }
};
using CNamedMutexHandle = THandle<SNamedMutexTraits>;

} // namespace Platform

#endif
