#include "Platform/Wait.h"

#include <algorithm>
#include <utility>

#include "ThreadWaker.h"
#include "UnbiasedTime.h"
#include "Waitable.h"

namespace Platform {

namespace {

constexpr std::uint64_t StepsPerMs = 10000; ///< of 100 ns

static_assert(MaxWaitObjects == MAXIMUM_WAIT_OBJECTS && Infinite == INFINITE);

/// The end of a wait on the clock of working time. The time runs from the first question for what is left of it.
class CDeadline {
public:
    explicit CDeadline(std::uint32_t timeoutMs) noexcept : m_timeoutMs(timeoutMs) {}

    /// Rounded up; Infinite for ever.
    std::uint32_t LeftMs() noexcept
    {
        if (m_timeoutMs == 0 || m_timeoutMs == Infinite) return m_timeoutMs;
        const std::uint64_t now = UnbiasedTime();
        if (!std::exchange(m_running, true)) m_end = now + std::uint64_t{m_timeoutMs} * StepsPerMs;
        return now >= m_end ? 0 : static_cast<std::uint32_t>((m_end - now + StepsPerMs - 1) / StepsPerMs);
    }

private:
    const std::uint32_t m_timeoutMs;
    bool m_running = false;
    std::uint64_t m_end = 0;
};

SWaitOutcome Failure(ErrorCode error) noexcept
{
    return {WaitResult::Failed, 0, error};
}

/// The outcome of a call of the system that no queued call has ended.
SWaitOutcome OutcomeOf(DWORD result) noexcept
{
    if (result == WAIT_TIMEOUT) return {WaitResult::Timeout, 0, Success};
    if (result < WAIT_OBJECT_0 + MaxWaitObjects) return {WaitResult::Signaled, result - WAIT_OBJECT_0, Success};
    if (result >= WAIT_ABANDONED_0 && result < WAIT_ABANDONED_0 + MaxWaitObjects)
        return {WaitResult::Abandoned, result - WAIT_ABANDONED_0, Success};
    return Failure(LastError());
}

/// wait: one call of the system with the time left and whether a queued call ends it.
template <class TWait>
SWaitOutcome RunWait(std::uint32_t timeoutMs, bool wakeable, TWait wait) noexcept
{
    SThreadWaker * const self = wakeable ? ExistingWaker() : nullptr;
    CDeadline deadline(timeoutMs);
    for (;;) {
        if (self != nullptr && IsWoken(*self)) {
            const std::uint32_t leftMs = deadline.LeftMs();
            // A signalled object wins, which an alertable wait would leave to the system.
            const DWORD looked = wait(0, /*alertable=*/false);
            if (looked != WAIT_TIMEOUT) return OutcomeOf(looked);
            TakeWakeUp(*self);
            return {WaitResult::Woken, 0, Success, leftMs};
        }
        const DWORD result = wait(deadline.LeftMs(), wakeable);
        // A queued call may be another's, or one whose wake-up was answered long ago.
        if (result == WAIT_IO_COMPLETION) continue;
        // The system counts in ticks and may be early by a part of one.
        if (result == WAIT_TIMEOUT && deadline.LeftMs() != 0) continue;
        return OutcomeOf(result);
    }
}

bool HasDuplicates(WaitHandle const * handles, unsigned count) noexcept
{
    for (unsigned i = 1; i < count; ++i)
        if (std::find(handles, handles + i, handles[i]) != handles + i) return true;
    return false;
}

} // namespace

SWaitOutcome WaitForOne(WaitHandle handle, std::uint32_t timeoutMs, bool wakeable) noexcept
{
    if (handle == nullptr) return Failure(ERROR_INVALID_HANDLE);
    return RunWait(timeoutMs, wakeable, [system = handle->Handle()](DWORD leftMs, bool alertable) {
        return ::WaitForSingleObjectEx(system, leftMs, alertable);
    });
}

SWaitOutcome WaitForMany(WaitHandle const * handles, unsigned count, bool all, std::uint32_t timeoutMs,
                         bool wakeable) noexcept
{
    if (count == 0 || count > MaxWaitObjects) return Failure(ERROR_INVALID_PARAMETER);
    if (std::find(handles, handles + count, nullptr) != handles + count) return Failure(ERROR_INVALID_HANDLE);
    if (all && HasDuplicates(handles, count)) return Failure(ERROR_INVALID_PARAMETER);
    HANDLE systems[MaxWaitObjects];
    std::transform(handles, handles + count, systems, [](WaitHandle handle) { return handle->Handle(); });
    SWaitOutcome outcome = RunWait(timeoutMs, wakeable, [&](DWORD leftMs, bool alertable) {
        return ::WaitForMultipleObjectsEx(count, systems, all, leftMs, alertable);
    });
    if (all) outcome.index = 0;
    return outcome;
}

SWaitOutcome WakeableSleep(std::uint32_t timeoutMs) noexcept
{
    return RunWait(timeoutMs, /*wakeable=*/true, [](DWORD leftMs, bool alertable) -> DWORD {
        return ::SleepEx(leftMs, alertable) == WAIT_IO_COMPLETION ? WAIT_IO_COMPLETION : WAIT_TIMEOUT;
    });
}

void Sleep(std::uint32_t timeoutMs) noexcept
{
    ::Sleep(timeoutMs);
}

} // namespace Platform
