#include "Platform/CriticalSection.h"

#include <atomic>
#include <new>

#include "System.h"

namespace Platform {

/// The system's section, with what it doesn't tell: its owner, and the spin count on a machine of one processor, where
/// it spins never.
struct CCriticalSection::SImpl {
    CRITICAL_SECTION section;
    std::uint32_t depth = 0;     // the owner's
    std::atomic<DWORD> owner{0}; // 0: none. Relaxed: a thread only has to tell itself from the others
    std::atomic<DWORD> spinCount;

    explicit SImpl(std::uint32_t spins) noexcept : spinCount(spins)
    {
        ::InitializeCriticalSectionAndSpinCount(&section, spins); // can't fail
    }
    ~SImpl() { ::DeleteCriticalSection(&section); }
    bool BelongsToMe() const noexcept { return owner.load(std::memory_order_relaxed) == ::GetCurrentThreadId(); }
    void Own() noexcept
    {
        if (depth++ == 0) owner.store(::GetCurrentThreadId(), std::memory_order_relaxed);
    }
    void Leave() noexcept
    {
        if (--depth == 0) owner.store(0, std::memory_order_relaxed);
        ::LeaveCriticalSection(&section);
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
    while (impl->BelongsToMe())
        impl->Leave();
    impl->~SImpl();
}

void CCriticalSection::Enter() noexcept
{
    ::EnterCriticalSection(&Impl()->section);
    Impl()->Own();
}

bool CCriticalSection::TryEnter() noexcept
{
    if (::TryEnterCriticalSection(&Impl()->section) == 0) return false;
    Impl()->Own();
    return true;
}

void CCriticalSection::Leave() noexcept
{
    if (Impl()->BelongsToMe()) Impl()->Leave();
}

bool CCriticalSection::IsHeld() const noexcept
{
    return Impl()->owner.load(std::memory_order_relaxed) != 0;
}

bool CCriticalSection::IsHeldByMe() const noexcept
{
    return Impl()->BelongsToMe();
}

std::uint32_t CCriticalSection::SetSpinCount(std::uint32_t spinCount) noexcept
{
    ::SetCriticalSectionSpinCount(&Impl()->section, spinCount);
    return Impl()->spinCount.exchange(spinCount, std::memory_order_relaxed);
}

} // namespace Platform
