#include "ThreadWaker.h"

#include <new>

namespace Platform {

namespace {

/// What is queued to a thread to end its wait: a call that does nothing. It may stand in a queue of a thread of the
/// host when this library is unloaded, so it must be one of the system's own.
PAPCFUNC CallThatEndsAWait() noexcept
{
    static_assert(sizeof(void *) == 8, "a call with an argument too many does no harm");
    return reinterpret_cast<PAPCFUNC>(reinterpret_cast<void (*)()>(&::GetCurrentThreadId));
}

void Drop(SThreadWaker * waker) noexcept
{
    if (waker != nullptr && waker->references.fetch_sub(1, std::memory_order_acq_rel) == 1) delete waker;
}

/// Of a thread that ends, and of every thread that has one when the slot is freed.
void WINAPI DropOfThread(void * waker)
{
    Drop(static_cast<SThreadWaker *>(waker));
}

/// Whether this code belongs to the program itself, which is never unloaded.
bool BelongsToProgram() noexcept
{
    HMODULE own = nullptr;
    ::GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                         reinterpret_cast<char const *>(&BelongsToProgram), &own);
    return own == ::GetModuleHandleA(nullptr);
}

/// Leads a thread to its own waker. The slot is one of those that the system itself clears up at a thread's end: a
/// thread-local object of the language would be cleared up by the calls for threads that end, which the host of a
/// library may have turned off.
class CWakerSlot {
public:
    CWakerSlot() noexcept : m_index(::FlsAlloc(&DropOfThread)) {}
    ~CWakerSlot()
    {
        // At the end of a program its threads may still run; their wakers end with the process. A library takes them
        // along, or a thread that ends later would call code that isn't there any more.
        if (m_index != FLS_OUT_OF_INDEXES && !BelongsToProgram()) ::FlsFree(m_index);
    }
    CWakerSlot(CWakerSlot const &) = delete;
    CWakerSlot & operator=(CWakerSlot const &) = delete;

    /// Keeps the last error, which the system's call clears.
    SThreadWaker * Get() const noexcept
    {
        if (m_index == FLS_OUT_OF_INDEXES) return nullptr;
        const CLastErrorKeeper keeper;
        return static_cast<SThreadWaker *>(::FlsGetValue(m_index));
    }
    bool Set(SThreadWaker * waker) noexcept
    {
        return m_index != FLS_OUT_OF_INDEXES && ::FlsSetValue(m_index, waker) != 0;
    }

private:
    const DWORD m_index;
};

// Built before and destroyed behind every other static object of the library: those may still wait.
[[gnu::init_priority(101)]] CWakerSlot g_wakers;

HANDLE OwnThreadHandle() noexcept
{
    HANDLE own = nullptr;
    const HANDLE process = ::GetCurrentProcess();
    const BOOL copied = ::DuplicateHandle(process, ::GetCurrentThread(), process, &own, THREAD_SET_CONTEXT,
                                          /*bInheritHandle=*/FALSE, 0);
    return copied != 0 ? own : nullptr;
}

SThreadWaker * NewWaker() noexcept
{
    CSystemHandle own(OwnThreadHandle());
    if (!own) return nullptr;
    auto * const waker = new (std::nothrow) SThreadWaker(own.Get());
    if (waker == nullptr) return nullptr;
    static_cast<void>(own.Release());
    if (g_wakers.Set(waker)) return waker;
    delete waker;
    return nullptr;
}

} // namespace

SThreadWaker * ExistingWaker() noexcept
{
    return g_wakers.Get();
}

bool IsWoken(SThreadWaker & self) noexcept
{
    if (self.pending.load(std::memory_order_acquire)) return true;
    // The call of a wake-up may have come behind the answer to its mark, and have run since. What stands here then
    // would keep every later one from queueing a call.
    if (!self.queued.load(std::memory_order_relaxed)) return false;
    self.queued.exchange(false, std::memory_order_acq_rel);
    return self.pending.load(std::memory_order_acquire);
}

void TakeWakeUp(SThreadWaker & self) noexcept
{
    // Runs what is queued, or calls would heap up where each wake-up finds the thread outside of a wait. The mark
    // goes last: a wake-up in between is part of this one, and what came before it is seen.
    ::SleepEx(0, /*bAlertable=*/TRUE);
    self.queued.exchange(false, std::memory_order_acq_rel);
    self.pending.exchange(false, std::memory_order_acq_rel);
}

WakerHandle CurrentThreadWaker() noexcept
{
    SThreadWaker * waker = ExistingWaker();
    if (waker == nullptr) waker = NewWaker();
    if (waker != nullptr) waker->references.fetch_add(1, std::memory_order_relaxed);
    return waker;
}

void CloseWaker(WakerHandle waker) noexcept
{
    Drop(waker);
}

void WakeThread(WakerHandle waker) noexcept
{
    if (waker == nullptr) return;
    const CLastErrorKeeper keeper; // the call for a thread that has ended fails
    waker->pending.store(true, std::memory_order_release);
    if (waker->queued.exchange(true, std::memory_order_acq_rel)) return;
    // Without memory for the call the wait goes on until the next wake-up gets one.
    if (::QueueUserAPC(CallThatEndsAWait(), waker->thread.Get(), 0) == 0)
        waker->queued.store(false, std::memory_order_release);
}

} // namespace Platform
