#ifndef PLATFORM_WAIT_H
#define PLATFORM_WAIT_H

#include <cstdint>

#include "Platform/Error.h"
#include "Platform/Handle.h"

/// Waitable objects and waiting.
///
/// Every waitable object (event, mutex, semaphore, thread end, a socket's network events) owns one system
/// handle. A wait names one or many of them, has a deadline on the monotonic clock, reports the lowest
/// signalled index, and can be woken from another thread (WakeThread) so that the waiter looks at its
/// interrupt flags. Windows: wakeable waits are alertable ones; what others queued to the thread runs in them and ends
/// none. Any thread may use any object, except that a mutex is released by its owner. What a thread did
/// before it signalled or released an object, or ended, is visible to the waiter that this lets go on. No wait takes
/// memory.
namespace Platform {

struct SWaitable; ///< one system object; opaque
using WaitHandle = SWaitable *;

inline constexpr std::uint32_t Infinite = 0xFFFFFFFF;
/// Objects that one wait can name.
inline constexpr unsigned MaxWaitObjects = 64;

/// Each creates an object and stores it in `out`, which keeps its value on failure. The caller closes it.
ErrorCode NewEvent(WaitHandle & out, bool initialState, bool manualReset) noexcept;
/// initialOwner: the calling thread owns the new mutex. A mutex is recursive for its owner.
ErrorCode NewMutex(WaitHandle & out, bool initialOwner) noexcept;
/// Fails when maximum is 0, above 2^31 - 1, or below `initial`.
ErrorCode NewSemaphore(WaitHandle & out, std::uint32_t initial, std::uint32_t maximum) noexcept;

/// Gives up the caller's reference. A null handle is ignored. An object on which a thread still waits must
/// not be closed, except that closing a thread's handle never touches the running thread. A waiter may close an
/// object as soon as its wait is over, even while the thread that signalled it is still on its way out of the call. A
/// mutex may be closed while it is owned, also at the moment in which its owner ends.
void CloseWaitable(WaitHandle handle) noexcept;

/// An auto-reset event lets one wait go on. Settings that no wait has taken yet are one, on POSIX also while several
/// threads wait for the event: there a setting isn't handed to a certain thread.
ErrorCode SetEvent(WaitHandle event) noexcept;
ErrorCode ResetEvent(WaitHandle event) noexcept;
/// Fails when the caller isn't the owner.
ErrorCode ReleaseMutex(WaitHandle mutex) noexcept;
/// Adds 1. Fails at the maximum and changes nothing then.
ErrorCode ReleaseSemaphore(WaitHandle semaphore) noexcept;

enum class WaitResult : std::uint8_t {
    Signaled,  ///< object `index` fired and, where its kind has that effect, was taken
    Abandoned, ///< object `index` is a mutex whose owner ended while holding it; the caller owns it now
    Timeout,
    Woken, ///< WakeThread was called for this thread; only from a wait that asked for it
    Failed ///< `error` says why
};

struct SWaitOutcome {
    WaitResult result;
    unsigned index;
    ErrorCode error;
    std::uint32_t leftMs = 0; ///< when Woken: what was left of the time, rounded up; Infinite for ever
};

/// Waits for one object. timeoutMs: milliseconds, Infinite for ever, 0 only looks. wakeable: end with Woken
/// when this thread is or was woken. A signalled object wins over a pending wake-up, which then stays pending.
SWaitOutcome WaitForOne(WaitHandle handle, std::uint32_t timeoutMs, bool wakeable) noexcept;

/// Waits for the first of `count` objects (the lowest index wins when several are ready), or with `all` for
/// all of them: then either all are taken or none, and the result is Abandoned when one of them was. count: 1 to
/// MaxWaitObjects. With `all` the index is 0, and the same object twice fails. While it finds out that another
/// thread was faster, a wait for all may hold an object for a moment and give it back.
SWaitOutcome WaitForMany(WaitHandle const * handles, unsigned count, bool all, std::uint32_t timeoutMs,
                         bool wakeable) noexcept;

/// Sleeps, wakeable. Result Timeout or Woken.
SWaitOutcome WakeableSleep(std::uint32_t timeoutMs) noexcept;
/// Sleeps without being wakeable; 0 gives up the processor once.
void Sleep(std::uint32_t timeoutMs) noexcept;

/// A counted reference to a thread as the target of wake-ups. It may outlive its thread; waking it then does
/// nothing.
struct SThreadWaker;
using WakerHandle = SThreadWaker *;
/// The calling thread's waker, null when the system has no handle left for it. The caller closes it.
WakerHandle CurrentThreadWaker() noexcept;
void CloseWaker(WakerHandle waker) noexcept;
/// Ends the thread's present wakeable wait, or else its next one, with Woken. Several calls before that end
/// one wait.
void WakeThread(WakerHandle waker) noexcept;

/// What the host of an extension gets for an event: on POSIX its descriptor, which is never 0, carried in
/// the pointer; on Windows its handle. Null for null. The event stays the owner.
void * EventForHost(WaitHandle event) noexcept;
/// Takes over a handle of the system that was made elsewhere (an eventfd on POSIX, an event on Windows) as an
/// auto-reset event; on Windows one that was made for manual reset stays such. On failure the handle stays the
/// caller's.
ErrorCode AdoptEvent(WaitHandle & out, void * systemHandle) noexcept;

struct SWaitTraits {
    using Type = WaitHandle;
    static Type None() noexcept { return nullptr; }
    static void Close(Type handle) noexcept { CloseWaitable(handle); }
};
using CWaitableHandle = THandle<SWaitTraits>;

struct SWakerTraits {
    using Type = WakerHandle;
    static Type None() noexcept { return nullptr; }
    static void Close(Type handle) noexcept { CloseWaker(handle); }
};
using CWakerHandle = THandle<SWakerTraits>;

} // namespace Platform

#endif
