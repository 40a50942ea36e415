#include "Platform/CriticalSection.h"

#include <linux/futex.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <new>

#include "ThreadRecord.h"

// The thread sanitizer knows the system's own locks; of this one it is told, so that it sees orders of locks too.
#if defined(__SANITIZE_THREAD__)
#include <sanitizer/tsan_interface.h>
#define TELL_SANITIZER(call) call
#else
#define TELL_SANITIZER(call) static_cast<void>(0)
#endif

namespace Platform {

namespace {

/// States of a section's word. Contended: held, and somebody may sleep on the word.
enum : std::uint32_t { kFree = 0, kHeld = 1, kContended = 2 };

/// Looks at a held section before going to sleep: most holders are done within a few dozen.
constexpr std::uint32_t kLooks = 100;

/// Eases a loop that waits for another processor.
void Relax() noexcept
{
#if defined(__x86_64__) || defined(__i386__)
    __builtin_ia32_pause();
#endif
}

} // namespace

/// A thread is told by the word that pthread_self gives, which needs no lookup and no memory. It is 0 for none.
/// The word's change from Free acquires what the exchange in Disown released.
struct CCriticalSection::SImpl {
    std::atomic<std::uint32_t> word{kFree};
    std::uint32_t depth = 0;         // the owner's
    std::atomic<pthread_t> owner{0}; // relaxed: a thread only has to tell itself from the others
    std::atomic<std::uint32_t> spinCount;

    explicit SImpl(std::uint32_t spins) noexcept : spinCount(spins) {}
    bool BelongsTo(pthread_t self) const noexcept { return owner.load(std::memory_order_relaxed) == self; }
    bool TakeWord() noexcept
    {
        std::uint32_t expected = kFree;
        return word.compare_exchange_strong(expected, kHeld, std::memory_order_acquire, std::memory_order_relaxed);
    }
    void Own(pthread_t self) noexcept
    {
        owner.store(self, std::memory_order_relaxed);
        depth = 1;
    }
    void Take(pthread_t self) noexcept
    {
        TELL_SANITIZER(__tsan_mutex_pre_lock(this, 0));
        if (!TakeWord()) [[unlikely]]
            AwaitTurn();
        Own(self);
        TELL_SANITIZER(__tsan_mutex_post_lock(this, 0, 1));
    }
    bool TryTake(pthread_t self) noexcept
    {
        TELL_SANITIZER(__tsan_mutex_pre_lock(this, __tsan_mutex_try_lock));
        const bool taken = TakeWord();
        if (taken) Own(self);
        TELL_SANITIZER(
            __tsan_mutex_post_lock(this, __tsan_mutex_try_lock | (taken ? 0 : __tsan_mutex_try_lock_failed), 1));
        return taken;
    }
    void Disown() noexcept
    {
        TELL_SANITIZER(__tsan_mutex_pre_unlock(this, 0));
        depth = 0;
        owner.store(0, std::memory_order_relaxed);
        if (word.exchange(kFree, std::memory_order_release) == kContended) [[unlikely]]
            Futex(FUTEX_WAKE_PRIVATE, 1);
        TELL_SANITIZER(__tsan_mutex_post_unlock(this, 0));
    }
    /// Behind a TakeWord that failed.
    void AwaitTurn() noexcept;
    /// Keeps the caller's errno: nobody expects a lock to change it.
    void Futex(int operation, std::uint32_t value) noexcept;
};

void CCriticalSection::SImpl::Futex(int operation, std::uint32_t value) noexcept
{
    const int error = errno;
    ::syscall(SYS_futex, &word, operation, value, nullptr, nullptr, 0);
    errno = error;
}

void CCriticalSection::SImpl::AwaitTurn() noexcept
{
    for (std::uint32_t look = 0; look < kLooks; ++look) {
        if (word.load(std::memory_order_relaxed) == kFree && TakeWord()) return;
        Relax();
    }
    // Whoever may have slept takes the section as contended: others may sleep still.
    while (word.exchange(kContended, std::memory_order_acquire) != kFree)
        Futex(FUTEX_WAIT_PRIVATE, kContended);
}

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
    if (impl->BelongsTo(::pthread_self())) impl->Disown();
    TELL_SANITIZER(if (!IsHeld()) __tsan_mutex_destroy(impl, 0));
    impl->~SImpl();
}

void CCriticalSection::Enter() noexcept
{
    ParkIfAbandoned();
    SImpl * const impl = Impl();
    const pthread_t self = ::pthread_self();
    if (impl->BelongsTo(self)) {
        ++impl->depth;
        return;
    }
    impl->Take(self);
}

bool CCriticalSection::TryEnter() noexcept
{
    ParkIfAbandoned();
    SImpl * const impl = Impl();
    const pthread_t self = ::pthread_self();
    if (impl->BelongsTo(self)) {
        ++impl->depth;
        return true;
    }
    return impl->TryTake(self);
}

void CCriticalSection::Leave() noexcept
{
    SImpl * const impl = Impl();
    if (!impl->BelongsTo(::pthread_self())) return;
    if (--impl->depth == 0) impl->Disown();
}

bool CCriticalSection::IsHeld() const noexcept
{
    return Impl()->owner.load(std::memory_order_relaxed) != 0;
}

bool CCriticalSection::IsHeldByMe() const noexcept
{
    return Impl()->BelongsTo(::pthread_self());
}

std::uint32_t CCriticalSection::SetSpinCount(std::uint32_t spinCount) noexcept
{
    return Impl()->spinCount.exchange(spinCount, std::memory_order_relaxed);
}

} // namespace Platform
