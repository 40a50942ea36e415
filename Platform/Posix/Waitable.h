#ifndef PLATFORM_POSIX_WAITABLE_H
#define PLATFORM_POSIX_WAITABLE_H

#include <atomic>
#include <cstdint>

#include "Descriptor.h"
#include "Platform/Wait.h"

namespace Platform {

enum class WaitableKind : std::uint8_t { AutoEvent, ManualEvent, Mutex, Semaphore, Thread, Network };

/// What an attempt to take an object for a waiter did.
enum class Taken : std::uint8_t {
    No, ///< not signalled (any more)
    Yes,
    Abandoned, ///< yes, and its owner had ended
    Failed
};

/// One waitable object: a descriptor that is readable while the object is signalled.
/// Threads: any. Ownership: counted references.
struct SWaitable {
    SWaitable(WaitableKind kind, int descriptor) noexcept : m_kind(kind), m_descriptor(descriptor) {}
    SWaitable(SWaitable const &) = delete;
    SWaitable & operator=(SWaitable const &) = delete;

    int Descriptor() const noexcept { return m_descriptor.Get(); }
    WaitableKind Kind() const noexcept { return m_kind; }
    /// Whether Take alone tells if the object is signalled; for the others a poll has to come before it.
    bool TakeLooks() const noexcept { return m_kind != WaitableKind::ManualEvent && m_kind != WaitableKind::Network; }

    /// Takes the object for the calling thread if it is signalled. Never blocks on another waiter.
    virtual Taken Take(ErrorCode & error) noexcept = 0;
    /// Undoes a Take of the calling thread that gave `how`.
    virtual void PutBack(Taken how) noexcept { static_cast<void>(how); }
    /// The owner's handle is closed.
    virtual void Close() noexcept { DropReference(); }

    void AddReference() noexcept { m_references.fetch_add(1, std::memory_order_relaxed); }
    void DropReference() noexcept
    {
        if (m_references.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
    }

    /// Makes the object signalled. Everything the caller did before is visible to a waiter that it releases: the
    /// counter of references carries that order, which a system call alone doesn't promise to the compiler. And a
    /// waiter may close the object at once; it goes when the caller has left it.
    ErrorCode Signal() noexcept
    {
        m_references.fetch_add(1, std::memory_order_release);
        const ErrorCode error = SignalDescriptor(Descriptor());
        DropReference();
        return error;
    }

protected:
    virtual ~SWaitable() = default;
    /// The waiter's half of the order that Signal gives.
    void Observe() const noexcept { static_cast<void>(m_references.load(std::memory_order_acquire)); }
    /// Reads the descriptor's counter.
    Taken Consume(ErrorCode & error) noexcept
    {
        if (!ConsumeDescriptor(Descriptor(), error)) return error == Success ? Taken::No : Taken::Failed;
        Observe();
        return Taken::Yes;
    }

private:
    const WaitableKind m_kind;
    const CDescriptor m_descriptor;
    std::atomic<std::uint32_t> m_references{1};
};

} // namespace Platform

#endif
