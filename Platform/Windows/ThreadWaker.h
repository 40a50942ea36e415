#ifndef PLATFORM_WINDOWS_THREAD_WAKER_H
#define PLATFORM_WINDOWS_THREAD_WAKER_H

#include <atomic>
#include <cstdint>

#include "Platform/Wait.h"
#include "System.h"

namespace Platform {

/// A thread as the target of wake-ups. Counted: one reference is the thread's, the others are the wakers'.
///
/// The mark says that a wake-up hasn't been answered by a wait yet; the queued call beside it only ends the wait that
/// the thread is in. So a queued call of somebody else ends no wait of ours, and one of ours that a wait of somebody
/// else has run leaves the mark.
struct SThreadWaker {
    explicit SThreadWaker(HANDLE own) noexcept : thread(own) {}

    std::atomic<std::uint32_t> references{1};
    std::atomic<bool> pending{false};
    /// A call was queued since the last answer, or the last wait that began without one; false where the system refused
    /// one.
    std::atomic<bool> queued{false};
    const CSystemHandle thread;
};

/// The calling thread's own; null when it never gave one out. Keeps the last error.
SThreadWaker * ExistingWaker() noexcept;

/// Whether a wake-up of the calling thread waits for its answer. If not, the next one queues a call, which ends the
/// wait that the thread is about to begin.
bool IsWoken(SThreadWaker & self) noexcept;

/// Takes the wake-up of the calling thread, with the calls that were queued for it.
void TakeWakeUp(SThreadWaker & self) noexcept;

} // namespace Platform

#endif
