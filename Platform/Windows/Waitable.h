#ifndef PLATFORM_WINDOWS_WAITABLE_H
#define PLATFORM_WINDOWS_WAITABLE_H

#include "Platform/Wait.h"
#include "System.h"

namespace Platform {

enum class WaitableKind : std::uint8_t { Event, Mutex, Semaphore, Thread, Network };

/// One waitable object: a handle of the kernel with its kind, so that an operation of another kind is refused as on
/// every system. Threads: any. A call hands the kernel's handle over and doesn't touch the object behind that, since a
/// waiter may close it while the thread that signalled it is still on its way out.
struct SWaitable {
    SWaitable(WaitableKind kind, HANDLE handle) noexcept : m_kind(kind), m_handle(handle) {}
    virtual ~SWaitable() = default;
    SWaitable(SWaitable const &) = delete;
    SWaitable & operator=(SWaitable const &) = delete;

    HANDLE Handle() const noexcept { return m_handle.Get(); }
    WaitableKind Kind() const noexcept { return m_kind; }

private:
    const WaitableKind m_kind;
    const CSystemHandle m_handle;
};

inline bool IsOfKind(SWaitable const * object, WaitableKind kind) noexcept
{
    return object != nullptr && object->Kind() == kind;
}

/// The error of the call before, when it failed.
inline ErrorCode ResultOf(BOOL succeeded) noexcept
{
    return succeeded != 0 ? Success : LastError();
}

} // namespace Platform

#endif
