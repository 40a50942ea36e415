#include "Waitable.h"

#include <cstdint>
#include <new>

namespace Platform {

namespace {

constexpr std::uint32_t MaxSemaphoreCount = 0x7FFFFFFF;

/// Wraps the result of a call that makes an object, which is closed when there is no memory for ours.
ErrorCode Wrap(WaitHandle & out, WaitableKind kind, HANDLE made) noexcept
{
    if (made == nullptr) return LastError();
    CSystemHandle owner(made);
    auto * const object = new (std::nothrow) SWaitable(kind, made);
    if (object == nullptr) return ERROR_NOT_ENOUGH_MEMORY;
    static_cast<void>(owner.Release());
    out = object;
    return Success;
}

} // namespace

ErrorCode NewEvent(WaitHandle & out, bool initialState, bool manualReset) noexcept
{
    return Wrap(out, WaitableKind::Event, ::CreateEventA(nullptr, manualReset, initialState, nullptr));
}

ErrorCode NewMutex(WaitHandle & out, bool initialOwner) noexcept
{
    return Wrap(out, WaitableKind::Mutex, ::CreateMutexA(nullptr, initialOwner, nullptr));
}

ErrorCode NewSemaphore(WaitHandle & out, std::uint32_t initial, std::uint32_t maximum) noexcept
{
    if (maximum == 0 || maximum > MaxSemaphoreCount || initial > maximum) return ERROR_INVALID_PARAMETER;
    return Wrap(out, WaitableKind::Semaphore,
                ::CreateSemaphoreA(nullptr, static_cast<LONG>(initial), static_cast<LONG>(maximum), nullptr));
}

void CloseWaitable(WaitHandle handle) noexcept
{
    delete handle;
}

ErrorCode SetEvent(WaitHandle event) noexcept
{
    return IsOfKind(event, WaitableKind::Event) ? ResultOf(::SetEvent(event->Handle()))
                                                : ErrorCode{ERROR_INVALID_HANDLE};
}

ErrorCode ResetEvent(WaitHandle event) noexcept
{
    return IsOfKind(event, WaitableKind::Event) ? ResultOf(::ResetEvent(event->Handle()))
                                                : ErrorCode{ERROR_INVALID_HANDLE};
}

ErrorCode ReleaseMutex(WaitHandle mutex) noexcept
{
    return IsOfKind(mutex, WaitableKind::Mutex) ? ResultOf(::ReleaseMutex(mutex->Handle()))
                                                : ErrorCode{ERROR_INVALID_HANDLE};
}

ErrorCode ReleaseSemaphore(WaitHandle semaphore) noexcept
{
    return IsOfKind(semaphore, WaitableKind::Semaphore) ? ResultOf(::ReleaseSemaphore(semaphore->Handle(), 1, nullptr))
                                                        : ErrorCode{ERROR_INVALID_HANDLE};
}

void * EventForHost(WaitHandle event) noexcept
{
    return IsOfKind(event, WaitableKind::Event) ? event->Handle() : nullptr;
}

ErrorCode AdoptEvent(WaitHandle & out, void * systemHandle) noexcept
{
    // The negative numbers are no handles but the system's words for "none", "this process", "this thread".
    if (reinterpret_cast<std::intptr_t>(systemHandle) <= 0) return ERROR_INVALID_HANDLE;
    DWORD flags = 0;
    if (::GetHandleInformation(systemHandle, &flags) == 0) return LastError();
    auto * const event = new (std::nothrow) SWaitable(WaitableKind::Event, systemHandle);
    if (event == nullptr) return ERROR_NOT_ENOUGH_MEMORY;
    out = event;
    return Success;
}

} // namespace Platform
