#include "Mutex.h"

#include <sys/file.h>

namespace Platform {

void SMutex::Close() noexcept
{
    {
        const std::lock_guard lock(OwnershipLock());
        Unlink();
    }
    DropReference();
}

void SMutex::Link(SThreadWaker & owner) noexcept
{
    m_previous = nullptr;
    m_next = owner.ownedMutexes;
    if (m_next != nullptr) m_next->m_previous = this;
    owner.ownedMutexes = this;
    m_owner.store(&owner, std::memory_order_relaxed);
}

void SMutex::Unlink() noexcept
{
    SThreadWaker * const owner = m_owner.exchange(nullptr, std::memory_order_relaxed);
    if (owner == nullptr) return;
    (m_previous != nullptr ? m_previous->m_next : owner->ownedMutexes) = m_next;
    if (m_next != nullptr) m_next->m_previous = m_previous;
    m_previous = m_next = nullptr;
}

ErrorCode SMutex::OwnFromTheStart() noexcept
{
    SThreadWaker * const self = ThreadRecord();
    if (self == nullptr) return ENOMEM;
    const std::lock_guard lock(OwnershipLock());
    Link(*self);
    m_depth = 1;
    return Success;
}

Taken SMutex::Take(ErrorCode & error) noexcept
{
    SThreadWaker * const self = ThreadRecord();
    if (self == nullptr) {
        error = ENOMEM;
        return Taken::Failed;
    }
    if (Reenter(*self)) return Taken::Yes;
    const Taken taken = Consume(error);
    return taken == Taken::Yes ? TakeOver(*self) : taken;
}

bool SMutex::Reenter(SThreadWaker const & owner) noexcept
{
    if (!OwnedBy(&owner)) return false;
    const std::lock_guard lock(OwnershipLock());
    if (!OwnedBy(&owner)) return false; // declared ended meanwhile
    ++m_depth;
    return true;
}

/// The free mark is the caller's. A thread that counts as ended gives it back: nobody would abandon it again.
Taken SMutex::TakeOver(SThreadWaker & owner) noexcept
{
    {
        const std::lock_guard lock(OwnershipLock());
        if (!owner.abandoned.load(std::memory_order_relaxed)) {
            Link(owner);
            m_depth = 1;
            return std::exchange(m_wasAbandoned, false) ? Taken::Abandoned : Taken::Yes;
        }
    }
    Signal();
    return Taken::No;
}

ErrorCode SMutex::Release() noexcept
{
    {
        const std::lock_guard lock(OwnershipLock());
        if (!OwnedBy(ExistingThreadRecord())) return EPERM;
        if (--m_depth != 0) return Success;
        Unlink();
    }
    return Signal();
}

void SMutex::PutBack(Taken how) noexcept
{
    if (how == Taken::Abandoned) {
        const std::lock_guard lock(OwnershipLock());
        m_wasAbandoned = true;
    }
    Release();
}

void SMutex::Abandon() noexcept
{
    Unlink();
    m_depth = 0;
    m_wasAbandoned = true;
    if (m_fileLock >= 0) ::flock(m_fileLock, LOCK_UN);
    Signal();
}

} // namespace Platform
