#ifndef PLATFORM_STATIC_LOCK_H
#define PLATFORM_STATIC_LOCK_H

#include "Platform/Native/StaticLock.h"

namespace Platform {

/// CStaticLock: a lock for objects of static storage, that works before any static initialiser has run and behind the
/// last static destructor: built by the compiler (constexpr), destroyed by nothing. Within one process, not recursive.
/// lock, try_lock and unlock are those of the standard library's mutexes, so its guards take it. Neither waits for
/// anything but the lock's owner; unlock is for the owner alone. Any thread.

} // namespace Platform

#endif
