#include "Mutex.h"

#include <sys/file.h>

namespace Platform {

SMutex::~SMutex()
{
    const std::lock_guard lock(OwnershipLock());
    Unlink();
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
    if (OwnedBy(self)) {
        ++m_depth;
        return Taken::Yes;
    }
    const Taken taken = Consume(error);
    if (taken != Taken::Yes) return taken;
    bool abandoned = false;
    {
        const std::lock_guard lock(OwnershipLock());
        Link(*self);
        m_depth = 1;
        abandoned = std::exchange(m_wasAbandoned, false);
    }
    return abandoned ? Taken::Abandoned : Taken::Yes;
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
