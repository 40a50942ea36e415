#ifndef VLK_WAIT_OBJECTS_H
#define VLK_WAIT_OBJECTS_H

#include <utility>

#include "Platform/Wait.h"
#include "VLK/Export.h"
#include "VLK/FastDelegate.h"
#include "VLK/ResultCodes.h"
#include "VLK/SyncCounter.h"

/// Objects that a thread can wait for.
///
/// Each is a thin handle on a counted control block that holds one handle of the system. Copies of an object
/// share the block, a CWaitHandle keeps it alive, and the last of them closes it. One handle object belongs to one
/// thread at a time; the block behind it may be used from any thread.
///
/// Timeouts are milliseconds on the monotonic clock; 0 only looks, 0xFFFFFFFF waits for ever. Every wait looks at
/// the calling thread's interrupts first and is broken by them: Errors::ThreadInterrupt after CThread::Cancel,
/// Errors::WaitInterrupt from an installed CWaitInterrupt. With throwing disabled all operations return URET_Error
/// instead of raising.
namespace VLK::Threading {

class CSyncGuard;
class CWaiter;

} // namespace VLK::Threading

namespace VLK::Internals {

class CThreadCB;
class CWaitInterruptCB;

/// Base of the public synchronisation objects.
class VLK_API CSyncObject {
protected:
    /// Stores the function in the guard when there is one; what the guard held before is forgotten.
    static void SetRestoreFn(Threading::CSyncGuard * guard,
                             Delegates_and_Calls::TFastDelegateR<unsigned int> const & function) noexcept;
};

namespace Windows {

/// Control block of a waitable object: reference count (1 at creation) and the system's handle. Deleted by whoever
/// takes the count to 0, see Drop().
class VLK_API CWaitCB : public Threading::CSyncCounter {
public:
    virtual ~CWaitCB();

    /// Waits for this object through the calling thread's control block. URET_WaitObject0, URET_WaitAbandoned or
    /// URET_Timeout. Raises the interrupts of the thread, and Errors::OperatingSystem when the system fails or there is
    /// no handle.
    virtual unsigned int Wait(unsigned int timeout);
    /// Told before a wait of several objects, when the object was added with a mask that is not 0. The meaning of
    /// the mask is the object's own.
    virtual unsigned int SetMask(unsigned int mask);
    /// Told after such a wait that this object has fired.
    virtual unsigned int SignaledAfterWait(unsigned int mask);

    Platform::WaitHandle GetHandle() const noexcept { return m_Handle.Get(); }

    /// Takes one reference away; null is ignored.
    static void Drop(CWaitCB * block) noexcept
    {
        if (block != nullptr && block->Decr() != 0) delete block;
    }

protected:
    CWaitCB() noexcept : CSyncCounter(1) {}
    Platform::CWaitableHandle m_Handle; ///< empty until initialised
};

class CEventCB;
class CMutexCB;
class CSemaphoreCB;

} // namespace Windows
} // namespace VLK::Internals

namespace VLK::Threading {

/// What any waitable converts to: a counted reference to its block, and a mask for CWaiter (0: none).
class VLK_API CWaitHandle {
public:
    CWaitHandle() noexcept : m_pBlock(nullptr), m_uMask(0) {}
    /// Adds a reference to the block, which may be null.
    CWaitHandle(Internals::Windows::CWaitCB * block, unsigned int mask) noexcept : m_pBlock(block), m_uMask(mask)
    {
        if (m_pBlock != nullptr) m_pBlock->Incr();
    }
    CWaitHandle(CWaitHandle const & other) noexcept : CWaitHandle(other.m_pBlock, other.m_uMask) {}
    CWaitHandle(CWaitHandle && other) noexcept
        : m_pBlock(std::exchange(other.m_pBlock, nullptr)), m_uMask(std::exchange(other.m_uMask, 0u))
    {
    }
    CWaitHandle & operator=(CWaitHandle other) noexcept
    {
        std::swap(m_pBlock, other.m_pBlock);
        std::swap(m_uMask, other.m_uMask);
        return *this;
    }
    ~CWaitHandle() { Internals::Windows::CWaitCB::Drop(m_pBlock); }

    Internals::Windows::CWaitCB * Block() const noexcept { return m_pBlock; }
    unsigned int Mask() const noexcept { return m_uMask; }

private:
    Internals::Windows::CWaitCB * m_pBlock;
    unsigned int m_uMask;
};

/// Public handle on a control block of type CB, counted. Empty until initialised.
template <class CB>
class TWaitable : public Internals::CSyncObject {
public:
    TWaitable() noexcept;
    TWaitable(TWaitable const & other) noexcept;
    TWaitable & operator=(TWaitable const & other) noexcept;
    virtual ~TWaitable();

    /// For a CWaiter, with mask 0. An empty object gives an empty handle.
    operator CWaitHandle() const noexcept;

protected:
    /// Takes over the caller's reference.
    explicit TWaitable(CB * block) noexcept;
    /// Takes over the caller's reference and drops the one held.
    void SetBlock(CB * block) noexcept;

    CB * m_pBlock;
};

// All of it stands here: a compiler for Windows doesn't export what stands inside of the class.
template <class CB>
TWaitable<CB>::TWaitable() noexcept : m_pBlock(nullptr)
{
}

template <class CB>
TWaitable<CB>::TWaitable(CB * block) noexcept : m_pBlock(block)
{
}

template <class CB>
TWaitable<CB>::TWaitable(TWaitable const & other) noexcept : CSyncObject(), m_pBlock(other.m_pBlock)
{
    if (m_pBlock != nullptr) m_pBlock->Incr();
}

template <class CB>
TWaitable<CB> & TWaitable<CB>::operator=(TWaitable const & other) noexcept
{
    if (other.m_pBlock != nullptr) other.m_pBlock->Incr();
    SetBlock(other.m_pBlock);
    return *this;
}

template <class CB>
TWaitable<CB>::~TWaitable()
{
    Internals::Windows::CWaitCB::Drop(m_pBlock);
}

template <class CB>
TWaitable<CB>::operator CWaitHandle() const noexcept
{
    return CWaitHandle(m_pBlock, 0);
}

template <class CB>
void TWaitable<CB>::SetBlock(CB * block) noexcept
{
    Internals::Windows::CWaitCB::Drop(std::exchange(m_pBlock, block));
}

extern template class VLK_API TWaitable<Internals::Windows::CEventCB>;
extern template class VLK_API TWaitable<Internals::Windows::CMutexCB>;
extern template class VLK_API TWaitable<Internals::Windows::CSemaphoreCB>;
extern template class VLK_API TWaitable<Internals::CWaitInterruptCB>;

/// The scoped lock of the foundation: holds what gives back a lock, a mask or the like, and calls it once, at the
/// latest when it ends. One thread. The locked object must outlive it.
class VLK_API CSyncGuard {
public:
    using RestoreFn = Delegates_and_Calls::TFastDelegateR<unsigned int>;

    /// Nothing to restore.
    CSyncGuard() noexcept : m_Restore(&Nop) {}
    /// Restores. What that raises ends in the thread's error log.
    ~CSyncGuard();
    CSyncGuard(CSyncGuard const &) = delete;
    CSyncGuard & operator=(CSyncGuard const &) = delete;

    /// Calls what is held and forgets it; a second call does nothing. Returns its result, URET_OK for nothing.
    unsigned int Restore();
    /// Forgets it without a call.
    void DoNotRestore() noexcept { m_Restore.Bind(&Nop); }

private:
    friend class Internals::CSyncObject;
    static unsigned int Nop() { return URET_OK; }
    RestoreFn m_Restore;
};

/// Event with manual or automatic reset. Errors: SyncNotInitialized before Init, SyncGeneral when the system fails.
class VLK_API CEvent : public TWaitable<Internals::Windows::CEventCB> {
public:
    /// Raises SyncAlreadyInitialized on a second call, SyncCreate with the system's error.
    unsigned int Init(bool initialState, bool manualReset);
    /// Takes over a handle of the system that was made elsewhere; on failure it stays the caller's.
    unsigned int Init(void * handle);
    unsigned int Set();
    unsigned int Reset();
    /// URET_OK or URET_Timeout.
    unsigned int Wait(unsigned int timeout);
};

/// Mutex, recursive for its owner.
class VLK_API CMutex : public TWaitable<Internals::Windows::CMutexCB> {
public:
    /// initialOwner: the calling thread owns it. Raises SyncAlreadyInitialized, SyncCreate.
    unsigned int Init(bool initialOwner);
    /// URET_OK, URET_Timeout, or URET_WaitAbandoned: the former owner ended without releasing, the caller owns it.
    unsigned int Wait(unsigned int timeout);
    /// The same; when the caller owns it then, the guard gets Release().
    unsigned int Wait(CSyncGuard & guard, unsigned int timeout);
    /// URET_OK; 0 without raising when the caller isn't the owner. Raises SyncNotInitialized.
    unsigned int Release();

private:
    unsigned int Wait(CSyncGuard * guard, unsigned int timeout);
};

/// Counting semaphore.
class VLK_API CSemaphore : public TWaitable<Internals::Windows::CSemaphoreCB> {
public:
    /// Raises SyncAlreadyInitialized, and SyncCreate when the numbers don't go together.
    unsigned int Init(unsigned int initial, unsigned int maximum);
    unsigned int Wait(unsigned int timeout);
    /// The same; on success the guard gets Release().
    unsigned int Wait(CSyncGuard & guard, unsigned int timeout);
    /// Adds 1. Raises SyncGeneral at the maximum, SyncNotInitialized.
    unsigned int Release();

private:
    unsigned int Wait(CSyncGuard * guard, unsigned int timeout);
};

/// An interrupt that breaks the waits of every thread that has installed it, see CCurrentThread::SetWaitInterrupt.
/// Set() and Reset() from any thread.
class VLK_API CWaitInterrupt : public TWaitable<Internals::CWaitInterruptCB> {
public:
    CWaitInterrupt() noexcept = default;
    /// Raises SyncAlreadyInitialized.
    unsigned int Init();
    /// Interrupts the threads that have it installed and enabled; nothing when it is set already.
    unsigned int Set();
    /// Clears the set flag. What threads have pending stays pending.
    unsigned int Reset();

private:
    friend class CCurrentThread;
    friend class CInterruptGuard;
    explicit CWaitInterrupt(Internals::CWaitInterruptCB * block) noexcept;
};

} // namespace VLK::Threading

#endif
