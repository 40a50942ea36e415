#include "Waitable.h"

#include <fcntl.h>

#include <new>

#include "Mutex.h"

namespace Platform {

namespace {

constexpr std::uint32_t MaxSemaphoreCount = 0x7FFFFFFF;

struct SEvent final : SWaitable {
    SEvent(bool manualReset, int descriptor) noexcept
        : SWaitable(manualReset ? WaitableKind::ManualEvent : WaitableKind::AutoEvent, descriptor)
    {
    }
    Taken Take(ErrorCode & error) noexcept override
    {
        if (Kind() == WaitableKind::AutoEvent) return Consume(error);
        Observe();
        return Taken::Yes;
    }
    void PutBack(Taken) noexcept override
    {
        if (Kind() == WaitableKind::AutoEvent) Signal();
    }
};

/// The count lies in the descriptor; the shadow beside it only keeps it below the maximum. It is raised before
/// the descriptor and lowered behind it, so it is never too small.
struct SSemaphore final : SWaitable {
    SSemaphore(std::uint32_t initial, std::uint32_t maximum, int descriptor) noexcept
        : SWaitable(WaitableKind::Semaphore, descriptor), m_shadow(initial), m_maximum(maximum)
    {
    }
    ErrorCode Release() noexcept
    {
        std::uint32_t count = m_shadow.load(std::memory_order_relaxed);
        do {
            if (count >= m_maximum) return EOVERFLOW;
        } while (!m_shadow.compare_exchange_weak(count, count + 1, std::memory_order_relaxed));
        return Signal();
    }
    Taken Take(ErrorCode & error) noexcept override
    {
        const Taken taken = Consume(error);
        if (taken == Taken::Yes) m_shadow.fetch_sub(1, std::memory_order_relaxed);
        return taken;
    }
    void PutBack(Taken) noexcept override
    {
        m_shadow.fetch_add(1, std::memory_order_relaxed);
        Signal();
    }

private:
    std::atomic<std::uint32_t> m_shadow;
    const std::uint32_t m_maximum;
};

/// Wraps a descriptor, which is closed when there is no memory for the object.
template <class TObject, class... TArguments>
TObject * Wrap(int descriptor, ErrorCode & error, TArguments... arguments) noexcept
{
    CDescriptor owner(descriptor);
    if (!owner) {
        error = LastErrno();
        return nullptr;
    }
    auto * const object = new (std::nothrow) TObject(arguments..., descriptor);
    if (object == nullptr) {
        error = ENOMEM;
        return nullptr;
    }
    static_cast<void>(owner.Release());
    error = Success;
    return object;
}

bool IsEvent(SWaitable const * object) noexcept
{
    return object != nullptr &&
           (object->Kind() == WaitableKind::AutoEvent || object->Kind() == WaitableKind::ManualEvent);
}

bool IsOfKind(SWaitable const * object, WaitableKind kind) noexcept
{
    return object != nullptr && object->Kind() == kind;
}

} // namespace

ErrorCode NewEvent(WaitHandle & out, bool initialState, bool manualReset) noexcept
{
    ErrorCode error = Success;
    SWaitable * const event = Wrap<SEvent>(NewEventDescriptor(initialState ? 1 : 0, false), error, manualReset);
    if (event != nullptr) out = event;
    return error;
}

ErrorCode NewMutex(WaitHandle & out, bool initialOwner) noexcept
{
    ErrorCode error = Success;
    SMutex * const mutex = Wrap<SMutex>(NewEventDescriptor(initialOwner ? 0 : 1, false), error);
    if (mutex == nullptr) return error;
    if (initialOwner) error = mutex->OwnFromTheStart();
    if (error == Success)
        out = mutex;
    else
        mutex->Close();
    return error;
}

ErrorCode NewSemaphore(WaitHandle & out, std::uint32_t initial, std::uint32_t maximum) noexcept
{
    if (maximum == 0 || maximum > MaxSemaphoreCount || initial > maximum) return EINVAL;
    ErrorCode error = Success;
    SWaitable * const semaphore = Wrap<SSemaphore>(NewEventDescriptor(initial, true), error, initial, maximum);
    if (semaphore != nullptr) out = semaphore;
    return error;
}

void CloseWaitable(WaitHandle handle) noexcept
{
    if (handle != nullptr) handle->Close();
}

ErrorCode SetEvent(WaitHandle event) noexcept
{
    return IsEvent(event) ? event->Signal() : ErrorCode{EINVAL};
}

ErrorCode ResetEvent(WaitHandle event) noexcept
{
    if (!IsEvent(event)) return EINVAL;
    ErrorCode error = Success;
    ConsumeDescriptor(event->Descriptor(), error);
    return error;
}

ErrorCode ReleaseMutex(WaitHandle mutex) noexcept
{
    return IsOfKind(mutex, WaitableKind::Mutex) ? static_cast<SMutex *>(mutex)->Release() : ErrorCode{EINVAL};
}

ErrorCode ReleaseSemaphore(WaitHandle semaphore) noexcept
{
    return IsOfKind(semaphore, WaitableKind::Semaphore) ? static_cast<SSemaphore *>(semaphore)->Release()
                                                        : ErrorCode{EINVAL};
}

void * EventForHost(WaitHandle event) noexcept
{
    return IsEvent(event) ? reinterpret_cast<void *>(static_cast<std::intptr_t>(event->Descriptor())) : nullptr;
}

ErrorCode AdoptEvent(WaitHandle & out, void * systemHandle) noexcept
{
    const auto value = reinterpret_cast<std::intptr_t>(systemHandle);
    if (value <= 0 || value > INT32_MAX) return EBADF;
    const int descriptor = static_cast<int>(value);
    const int flags = ::fcntl(descriptor, F_GETFL);
    // A blocking read would hang the loser of a race for the signal.
    if (flags < 0 || ::fcntl(descriptor, F_SETFL, flags | O_NONBLOCK) < 0) return LastErrno();
    auto * const event = new (std::nothrow) SEvent(/*manualReset=*/false, descriptor);
    if (event == nullptr) return ENOMEM;
    out = event;
    return Success;
}

} // namespace Platform
