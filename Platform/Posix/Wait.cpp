#include "Platform/Wait.h"

#include <poll.h>
#include <sched.h>
#include <time.h>

#include <algorithm>
#include <utility>

#include "Mutex.h"
#include "ThreadRecord.h"
#include "Waitable.h"

namespace Platform {

namespace {

constexpr long NsPerMs = 1000000;
constexpr long NsPerSecond = 1000000000;

/// The end of a wait on the monotonic clock. The time runs from the first question for what is left of it, so that a
/// wait that finds its object at once doesn't ask the clock.
class CDeadline {
public:
    explicit CDeadline(std::uint32_t timeoutMs) noexcept : m_timeoutMs(timeoutMs) {}

    /// The time left, null for ever. `room` is the caller's place for it.
    timespec const * Left(timespec & room) noexcept
    {
        if (m_timeoutMs == Infinite) return nullptr;
        room = {};
        if (m_timeoutMs == 0) return &room;
        timespec now{};
        ::clock_gettime(CLOCK_MONOTONIC, &now);
        if (!std::exchange(m_running, true)) m_end = Sum(now, m_timeoutMs);
        room.tv_sec = m_end.tv_sec - now.tv_sec;
        room.tv_nsec = m_end.tv_nsec - now.tv_nsec;
        if (room.tv_nsec < 0) {
            room.tv_nsec += NsPerSecond;
            --room.tv_sec;
        }
        if (room.tv_sec < 0) room = {};
        return &room;
    }
    /// The same in milliseconds, rounded up.
    std::uint32_t LeftMs() noexcept
    {
        timespec room;
        if (Left(room) == nullptr) return Infinite;
        return static_cast<std::uint32_t>(room.tv_sec * 1000 + (room.tv_nsec + NsPerMs - 1) / NsPerMs);
    }
    bool IsNow() const noexcept { return m_timeoutMs == 0; }
    bool IsOver() noexcept
    {
        timespec room;
        return Left(room) != nullptr && room.tv_sec == 0 && room.tv_nsec == 0;
    }

private:
    static timespec Sum(timespec time, std::uint32_t ms) noexcept
    {
        time.tv_sec += static_cast<time_t>(ms / 1000);
        time.tv_nsec += static_cast<long>(ms % 1000) * NsPerMs;
        if (time.tv_nsec >= NsPerSecond) {
            time.tv_nsec -= NsPerSecond;
            ++time.tv_sec;
        }
        return time;
    }

    std::uint32_t m_timeoutMs;
    bool m_running = false;
    timespec m_end{};
};

constexpr timespec Now{0, 0};

bool IsMine(SWaitable const & object) noexcept
{
    return object.Kind() == WaitableKind::Mutex && static_cast<SMutex const &>(object).OwnedBy(ExistingThreadRecord());
}

/// The descriptors of one wait: those of its objects in their order, then the thread's wake-up.
class CPollSet {
public:
    CPollSet(WaitHandle const * handles, unsigned count, bool wakeable) noexcept
        : m_self(wakeable ? ExistingThreadRecord() : nullptr), m_count(count)
    {
        // One pass over the objects, which may lie anywhere in memory.
        for (unsigned i = 0; i < count; ++i) {
            m_polled[i] = {handles[i]->Descriptor(), POLLIN, 0};
            m_ownsOne = m_ownsOne || IsMine(*handles[i]);
        }
        // A thread that never gave out its waker can't be woken.
        if (m_self != nullptr && m_self->wakeDescriptor.load(std::memory_order_relaxed) < 0) m_self = nullptr;
        if (m_self != nullptr) m_polled[count] = {m_self->wakeDescriptor.load(std::memory_order_relaxed), POLLIN, 0};
    }

    /// Blocks until a descriptor is ready or the time is over. Result as poll's; -1 with errno.
    int Poll(CDeadline & deadline) noexcept
    {
        if (m_self == nullptr) return PollUntil(deadline);
        m_self->blocked.store(true, std::memory_order_relaxed);
        const int ready = PollUntil(deadline);
        m_self->blocked.store(false, std::memory_order_relaxed);
        return ready;
    }
    /// The same without blocking.
    int Look() noexcept
    {
        for (;;) {
            const int ready = ::ppoll(m_polled, Size(), &Now, nullptr);
            if (ready >= 0 || errno != EINTR) return ready;
        }
    }

    /// Whether the calling thread owns a mutex among the objects; its descriptor stays silent for its owner.
    bool OwnsOne() const noexcept { return m_ownsOne; }
    bool IsReady(unsigned index) const noexcept { return m_polled[index].revents != 0; }
    bool IsInvalid(unsigned index) const noexcept { return (m_polled[index].revents & POLLNVAL) != 0; }
    /// Takes an object out of the next polls, or back into them.
    void Watch(unsigned index, int descriptor) noexcept { m_polled[index].fd = descriptor; }

    bool IsWakePending() const noexcept
    {
        return m_self != nullptr && m_self->wakePending.load(std::memory_order_acquire);
    }
    /// Ends the wait when the thread was woken.
    bool TakeWake() noexcept
    {
        return m_self != nullptr && (IsWakePending() || IsReady(m_count)) && TakeWakeUp(*m_self);
    }

private:
    nfds_t Size() const noexcept { return m_count + (m_self != nullptr ? 1u : 0u); }
    int PollUntil(CDeadline & deadline) noexcept
    {
        for (;;) {
            timespec room;
            const int ready = ::ppoll(m_polled, Size(), deadline.Left(room), nullptr);
            if (ready >= 0 || errno != EINTR) return ready;
        }
    }

    SThreadWaker * m_self;
    unsigned m_count;
    bool m_ownsOne = false;
    pollfd m_polled[MaxWaitObjects + 1];
};

SWaitOutcome Failure(ErrorCode error) noexcept
{
    return {WaitResult::Failed, 0, error};
}

/// The outcome of a Take that was not No.
SWaitOutcome Outcome(Taken taken, unsigned index, ErrorCode error) noexcept
{
    switch (taken) {
    case Taken::Yes:
        return {WaitResult::Signaled, index, Success};
    case Taken::Abandoned:
        return {WaitResult::Abandoned, index, Success};
    default:
        return Failure(error);
    }
}

/// A poll that may block enters the queue of every descriptor, one that only looks enters none: where something is
/// ready it costs half. Where nothing is, the look is lost, which shows with many objects; and a single object has
/// been looked at before.
bool IsWorthALook(unsigned count) noexcept
{
    return count >= 2 && count <= 16;
}

SWaitOutcome WaitForAny(WaitHandle const * handles, unsigned count, std::uint32_t timeoutMs, bool wakeable) noexcept
{
    CPollSet set(handles, count, wakeable);
    CDeadline deadline(timeoutMs);
    const bool ownsOne = set.OwnsOne();
    bool looks = IsWorthALook(count);
    for (;;) {
        looks = looks || ownsOne || deadline.IsNow() || set.IsWakePending();
        const bool looked = std::exchange(looks, false);
        const int ready = looked ? set.Look() : set.Poll(deadline);
        if (ready < 0) return Failure(LastErrno());
        ParkIfAbandoned();
        for (unsigned i = 0; (ready > 0 || ownsOne) && i < count; ++i) {
            if (!set.IsReady(i) && !(ownsOne && IsMine(*handles[i]))) continue;
            if (set.IsInvalid(i)) return Failure(EBADF);
            ErrorCode error = Success;
            const Taken taken = handles[i]->Take(error);
            if (taken != Taken::No) return Outcome(taken, i, error);
        }
        if (set.TakeWake()) return {WaitResult::Woken, 0, Success, deadline.LeftMs()};
        // Where something was ready another thread was faster, again and again perhaps.
        const bool over = ready > 0 ? deadline.IsOver() : deadline.IsNow() || !looked;
        if (over) return {WaitResult::Timeout, 0, Success};
    }
}

/// Takes all objects, or none when one is not signalled any more. The order is that of their addresses: two
/// waiters that took in opposite orders could put back for each other for ever.
Taken TakeAll(WaitHandle const * handles, unsigned count, ErrorCode & error) noexcept
{
    WaitHandle sorted[MaxWaitObjects];
    Taken results[MaxWaitObjects];
    std::copy(handles, handles + count, sorted);
    std::sort(sorted, sorted + count, std::less<>());
    Taken all = Taken::Yes;
    for (unsigned i = 0; i < count; ++i) {
        results[i] = sorted[i]->Take(error);
        if (results[i] == Taken::Abandoned) all = Taken::Abandoned;
        if (results[i] != Taken::No && results[i] != Taken::Failed) continue;
        const Taken reason = results[i];
        while (i-- > 0)
            sorted[i]->PutBack(results[i]);
        return reason;
    }
    return all;
}

bool HasDuplicates(WaitHandle const * handles, unsigned count) noexcept
{
    for (unsigned i = 1; i < count; ++i)
        if (std::find(handles, handles + i, handles[i]) != handles + i) return true;
    return false;
}

SWaitOutcome WaitForAll(WaitHandle const * handles, unsigned count, std::uint32_t timeoutMs, bool wakeable) noexcept
{
    if (HasDuplicates(handles, count)) return Failure(EINVAL);
    CPollSet set(handles, count, wakeable);
    CDeadline deadline(timeoutMs);
    for (;;) {
        if (set.Look() < 0) return Failure(LastErrno());
        ParkIfAbandoned();
        bool complete = true;
        for (unsigned i = 0; i < count; ++i) {
            if (set.IsInvalid(i)) return Failure(EBADF);
            const bool ready = set.IsReady(i) || IsMine(*handles[i]);
            complete = complete && ready;
            set.Watch(i, ready ? -1 : handles[i]->Descriptor());
        }
        if (complete) {
            ErrorCode error = Success;
            const Taken taken = TakeAll(handles, count, error);
            if (taken != Taken::No) return Outcome(taken, 0, error);
        }
        if (set.TakeWake()) return {WaitResult::Woken, 0, Success, deadline.LeftMs()};
        if (deadline.IsOver()) return {WaitResult::Timeout, 0, Success};
        // Only for those that were missing; the others are looked at again once these are there.
        if (!complete) {
            const int ready = set.Poll(deadline);
            if (ready < 0) return Failure(LastErrno());
            if (ready == 0) return {WaitResult::Timeout, 0, Success};
        }
        for (unsigned i = 0; i < count; ++i)
            set.Watch(i, handles[i]->Descriptor());
    }
}

} // namespace

SWaitOutcome WaitForOne(WaitHandle handle, std::uint32_t timeoutMs, bool wakeable) noexcept
{
    if (handle == nullptr) return Failure(EBADF);
    ParkIfAbandoned();
    if (handle->TakeLooks()) {
        ErrorCode error = Success;
        const Taken taken = handle->Take(error); // one system call where the object is ready
        if (taken != Taken::No) return Outcome(taken, 0, error);
        if (timeoutMs == 0 && !wakeable) return {WaitResult::Timeout, 0, Success};
    }
    return WaitForAny(&handle, 1, timeoutMs, wakeable);
}

SWaitOutcome WaitForMany(WaitHandle const * handles, unsigned count, bool all, std::uint32_t timeoutMs,
                         bool wakeable) noexcept
{
    if (count == 0 || count > MaxWaitObjects) return Failure(EINVAL);
    if (std::find(handles, handles + count, nullptr) != handles + count) return Failure(EBADF);
    ParkIfAbandoned();
    return all ? WaitForAll(handles, count, timeoutMs, wakeable) : WaitForAny(handles, count, timeoutMs, wakeable);
}

SWaitOutcome WakeableSleep(std::uint32_t timeoutMs) noexcept
{
    ParkIfAbandoned();
    return WaitForAny(nullptr, 0, timeoutMs, /*wakeable=*/true);
}

void Sleep(std::uint32_t timeoutMs) noexcept
{
    ParkIfAbandoned();
    if (timeoutMs == 0)
        ::sched_yield();
    else
        WaitForAny(nullptr, 0, timeoutMs, /*wakeable=*/false);
    ParkIfAbandoned();
}

} // namespace Platform
