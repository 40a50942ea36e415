#ifndef PLATFORM_POSIX_MUTEX_H
#define PLATFORM_POSIX_MUTEX_H

#include "ThreadRecord.h"
#include "Waitable.h"

namespace Platform {

/// A recursive mutex that knows its owner. The descriptor is readable while nobody owns it.
struct SMutex final : SWaitable {
    SMutex(int descriptor) noexcept : SWaitable(WaitableKind::Mutex, descriptor) {}

    bool OwnedBy(SThreadWaker const * record) const noexcept
    {
        return record != nullptr && m_owner.load(std::memory_order_relaxed) == record;
    }
    /// Gives the calling thread a mutex that was created without the free mark.
    ErrorCode OwnFromTheStart() noexcept;
    ErrorCode Release() noexcept;
    /// The owner has ended. Called with OwnershipLock held; unlinks the mutex.
    void Abandon() noexcept;
    /// A lock on a file that an abandoned mutex gives up together with its owner; -1 for none.
    void SetFileLock(int descriptor) noexcept { m_fileLock = descriptor; }

    Taken Take(ErrorCode & error) noexcept override;
    void PutBack(Taken how) noexcept override;
    /// An owner that ends at this moment has abandoned the mutex before, or meets it no more.
    void Close() noexcept override;

private:
    bool Reenter(SThreadWaker const & owner) noexcept;
    Taken TakeOver(SThreadWaker & owner) noexcept;
    void Link(SThreadWaker & owner) noexcept;
    void Unlink() noexcept;

    std::atomic<SThreadWaker *> m_owner{nullptr};
    SMutex * m_previous = nullptr; // in the owner's list; guarded by OwnershipLock
    SMutex * m_next = nullptr;
    std::uint32_t m_depth = 0;   // above 0 only while owned; guarded by OwnershipLock
    bool m_wasAbandoned = false; // handed on with the free mark; guarded by OwnershipLock
    int m_fileLock = -1;
};

} // namespace Platform

#endif
