#include "Platform/StaticLock.h"

#include "System.h"

namespace Platform {

static_assert(sizeof(SRWLOCK) == sizeof(void *));

namespace {

SRWLOCK * Lock(void *& word) noexcept
{
    return reinterpret_cast<SRWLOCK *>(&word);
}

} // namespace

void CStaticLock::lock() noexcept
{
    ::AcquireSRWLockExclusive(Lock(m_word));
}

bool CStaticLock::try_lock() noexcept
{
    return ::TryAcquireSRWLockExclusive(Lock(m_word)) != 0;
}

void CStaticLock::unlock() noexcept
{
    ::ReleaseSRWLockExclusive(Lock(m_word));
}

} // namespace Platform
