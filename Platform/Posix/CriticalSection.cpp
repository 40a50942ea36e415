#include "Platform/CriticalSection.h"

#include <pthread.h>

#include <atomic>
#include <new>

#include "ThreadRecord.h"

namespace Platform {

/// A thread is told by the word that pthread_self gives, which needs no lookup and no memory. It is 0 for none.
struct CCriticalSection::SImpl {
    pthread_mutex_t mutex = PTHREAD_ADAPTIVE_MUTEX_INITIALIZER_NP;
    std::atomic<pthread_t> owner{0}; // relaxed: a thread only has to tell itself from the others
    std::atomic<std::uint32_t> spinCount;
    std::uint32_t depth = 0; // the owner's

    explicit SImpl(std::uint32_t spins) noexcept : spinCount(spins) {}
    bool IsMine() const noexcept { return owner.load(std::memory_order_relaxed) == ::pthread_self(); }
    void Own() noexcept
    {
        owner.store(::pthread_self(), std::memory_order_relaxed);
        depth = 1;
    }
    void Disown() noexcept
    {
        depth = 0;
        owner.store(0, std::memory_order_relaxed);
        ::pthread_mutex_unlock(&mutex);
    }
};

CCriticalSection::SImpl * CCriticalSection::Impl() noexcept
{
    return std::launder(reinterpret_cast<SImpl *>(m_room));
}

CCriticalSection::SImpl const * CCriticalSection::Impl() const noexcept
{
    return std::launder(reinterpret_cast<SImpl const *>(m_room));
}

CCriticalSection::CCriticalSection(std::uint32_t spinCount) noexcept
{
    static_assert(sizeof(SImpl) <= Room && alignof(SImpl) <= 8);
    new (m_room) SImpl(spinCount);
}

CCriticalSection::~CCriticalSection()
{
    SImpl * const impl = Impl();
    if (impl->IsMine()) impl->Disown();
    if (!IsHeld()) ::pthread_mutex_destroy(&impl->mutex);
    impl->~SImpl();
}

void CCriticalSection::Enter() noexcept
{
    ParkIfAbandoned();
    SImpl * const impl = Impl();
    if (impl->IsMine()) {
        ++impl->depth;
        return;
    }
    ::pthread_mutex_lock(&impl->mutex);
    impl->Own();
}

bool CCriticalSection::TryEnter() noexcept
{
    ParkIfAbandoned();
    SImpl * const impl = Impl();
    if (impl->IsMine()) {
        ++impl->depth;
        return true;
    }
    if (::pthread_mutex_trylock(&impl->mutex) != 0) return false;
    impl->Own();
    return true;
}

void CCriticalSection::Leave() noexcept
{
    SImpl * const impl = Impl();
    if (!impl->IsMine()) return;
    if (--impl->depth == 0) impl->Disown();
}

bool CCriticalSection::IsHeld() const noexcept
{
    return Impl()->owner.load(std::memory_order_relaxed) != 0;
}

bool CCriticalSection::IsHeldByMe() const noexcept
{
    return Impl()->IsMine();
}

std::uint32_t CCriticalSection::SetSpinCount(std::uint32_t spinCount) noexcept
{
    return Impl()->spinCount.exchange(spinCount, std::memory_order_relaxed);
}

} // namespace Platform
