#ifndef VLK_CRITICAL_SECTION_H
#define VLK_CRITICAL_SECTION_H

#include <atomic>
#include <memory>

#include "Platform/CriticalSection.h"
#include "VLK/WaitObjects.h"

/// Locks and events without a control block: cheaper than the waitable objects, not counted, not for a CWaiter.
/// Any thread may use one once it is initialised; it must outlive all who use it.
namespace VLK::Threading::Native_OS {

/// Lock within the process, recursive for its owner. Comes into being at its first use.
class VLK_API CCriticalSection : public Internals::CSyncObject {
public:
    CCriticalSection() noexcept;
    ~CCriticalSection();
    CCriticalSection(CCriticalSection const &) = delete;
    CCriticalSection & operator=(CCriticalSection const &) = delete;

    /// spinCount: how often to look before sleeping, 0 for none. Optional.
    unsigned int Init(unsigned int spinCount) noexcept;
    /// URET_OK. The guard, if any, gets Leave().
    unsigned int Enter(CSyncGuard * guard = nullptr) noexcept;
    unsigned int Enter(CSyncGuard & guard) noexcept { return Enter(&guard); }
    /// URET_OK, or URET_Timeout when another thread holds it; the guard is untouched then.
    unsigned int TryEnter(CSyncGuard * guard = nullptr) noexcept;
    unsigned int TryEnter(CSyncGuard & guard) noexcept { return TryEnter(&guard); }
    /// URET_OK, also on a section that was never entered, which it leaves alone.
    unsigned int Leave() noexcept;
    /// old, if not null, gets the former spin count.
    unsigned int SetSpinCount(unsigned int spinCount, unsigned int * old) noexcept;

private:
    void Use() noexcept;
    std::atomic<bool> m_bUninitialised; ///< relaxed: the section's own lock orders everything else
    Platform::CCriticalSection m_Section;
};

/// Mutex, and with InitForReadWrite a readers-writer lock made of two mutexes: readers hold the main one as a group.
/// The first and the last reader must be on one thread, since a mutex is released by its owner.
class VLK_API CFastMutex : public Internals::CSyncObject {
public:
    CFastMutex() noexcept;
    ~CFastMutex();
    CFastMutex(CFastMutex const &) = delete;
    CFastMutex & operator=(CFastMutex const &) = delete;

    /// Not owned at first. Raises SyncCreate with the system's error.
    unsigned int Init();
    unsigned int InitForReadWrite();

    /// The writers' entry: URET_OK, URET_WaitAbandoned, URET_Timeout. The guard gets Release() when the caller owns
    /// it. Raises SyncNotInitialized, and like every wait the thread's interrupts.
    unsigned int Wait(unsigned int timeout) { return Wait(nullptr, timeout); }
    unsigned int Wait(CSyncGuard & guard, unsigned int timeout) { return Wait(&guard, timeout); }
    /// The readers' entry; without InitForReadWrite the same as Wait. The guard gets ReadRelease().
    unsigned int WaitForRead(unsigned int timeout) { return WaitForRead(nullptr, timeout); }
    unsigned int WaitForRead(CSyncGuard & guard, unsigned int timeout) { return WaitForRead(&guard, timeout); }
    unsigned int WaitForRead(CSyncGuard * guard, unsigned int timeout);

    /// URET_OK; 0 without raising when the caller isn't the owner. Raises SyncNotInitialized.
    unsigned int Release();
    /// Not broken by interrupts: a release must not fail half-way.
    unsigned int ReadRelease();

private:
    unsigned int Wait(CSyncGuard * guard, unsigned int timeout);
    unsigned int EnterAsReader(CSyncGuard * guard, unsigned int timeout);

    unsigned int m_uUninitialised; ///< 1 until Init
    unsigned int m_uReaders;       ///< guarded by the gate
    Platform::CWaitableHandle m_Handle;
    std::unique_ptr<CFastMutex> m_pGate; ///< null unless InitForReadWrite
};

/// Event with manual or automatic reset, initially clear.
class VLK_API CFastEvent {
public:
    CFastEvent() noexcept : m_uUninitialised(1) {}
    ~CFastEvent();
    CFastEvent(CFastEvent const &) = delete;
    CFastEvent & operator=(CFastEvent const &) = delete;

    /// Creates the event; a further call replaces it, when nobody waits for it. Raises SyncCreate.
    unsigned int Init(unsigned int manualReset);
    /// Raise SyncNotInitialized, SyncGeneral.
    unsigned int Set();
    unsigned int Reset();
    /// URET_OK or URET_Timeout. Raises SyncNotInitialized and the thread's interrupts.
    unsigned int Wait(unsigned int timeout);

private:
    unsigned int m_uUninitialised; ///< 1 until Init
    Platform::CWaitableHandle m_Handle;
};

} // namespace VLK::Threading::Native_OS

namespace VLK::Threading {
using Native_OS::CCriticalSection;
using Native_OS::CFastEvent;
using Native_OS::CFastMutex;
} // namespace VLK::Threading

#endif
