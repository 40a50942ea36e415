#ifndef VLK_THREAD_CB_H
#define VLK_THREAD_CB_H

#include <atomic>

#include "Platform/Thread.h"
#include "VLK/Delegates.h"
#include "VLK/DoubleLink.h"
#include "VLK/ErrorLog.h"
#include "VLK/Export.h"
#include "VLK/Strings.h"
#include "VLK/WaitObjects.h"

/// The control blocks of threads. Not for users of the foundation: they have Threads.h.
namespace VLK::Exceptions {
class CThrowState;
}

namespace VLK::Internals {

class CThreadCB;
class CWaitList;

namespace Windows {
class CThreadCB_;
}

/// Links a thread to an interrupt whose list it stands in. Guarded by the lock of all interrupt lists.
class CWaitBlock : public Misc::TDoubleLinkedObject<CWaitBlock> {
public:
    CWaitBlock() noexcept = default;
    CWaitInterruptCB * m_pInterrupt = nullptr;
    Windows::CThreadCB_ * m_pThread = nullptr;
};

/// Control block of a wait interrupt: the threads that can be reached, and whether it is set. It has no handle.
class VLK_API CWaitInterruptCB : public Windows::CWaitCB {
public:
    CWaitInterruptCB() noexcept : m_uSet(0) {}

    /// Any thread. Marks it set; if it was not, posts to every thread in the list.
    void Set() noexcept;
    void Reset() noexcept;

private:
    friend class Windows::CThreadCB_;
    Misc::TDoubleLinkHead<CWaitBlock> m_Threads;
    unsigned int m_uSet;
};

namespace Windows {

/// The part of a thread's block that waits, starts, stops and is interrupted. The thread's own, but for the pending
/// bits, the links and the waker, which others reach under the lock of all interrupt lists.
class VLK_API CThreadCB_ : public CWaitCB {
public:
    ~CThreadCB_() override;

    using CWaitCB::Wait;
    /// Waits of the calling thread, whose block this is.
    unsigned int Wait(Platform::WaitHandle handle, unsigned int timeout);
    unsigned int Wait(CWaitList const & list, unsigned int timeout, bool all);

    /// Starts the system's thread on this block. Raises ThreadStart.
    void Create(Delegates_and_Calls::CDelegate const & function, bool suspended);
    /// By another thread, which holds a reference.
    void Cancel() noexcept { m_CancelInterrupt.Set(); }
    void Suspend();
    void Resume();

    void CheckInterrupt();
    void ClearInterrupt(unsigned int bits) noexcept;
    unsigned int GetIntrMask() const noexcept { return m_uMask; }
    /// Returns the former mask.
    unsigned int SetIntrMask(unsigned int mask) noexcept;
    /// Adds a reference to the new interrupt (null: none), and hands the caller the one to the former.
    CWaitInterruptCB * SetUserIntr(CWaitInterruptCB * interrupt) noexcept;
    /// Makes the bit pending that this interrupt has here, and wakes the thread. Under the lock of all lists.
    void PostWaitInterrupt(CWaitInterruptCB const & interrupt) noexcept;
    void Sleep(unsigned int milliseconds);

    unsigned int GetThreadID() const noexcept { return m_uThreadId; }
    /// Tells debuggers and process lists the name. By the thread itself.
    void SetDbgThreadName(char const * name) noexcept;

protected:
    CThreadCB_() noexcept;
    /// What the thread does between its start and its end.
    virtual void RunBody() noexcept = 0;

    std::uint32_t m_uThreadId;
    unsigned int m_uMask; ///< enabled interrupts; 0 in a new block
    /// Relaxed: the wake-up that follows the bit, or the lock, orders it.
    std::atomic<unsigned int> m_uPending;
    CWaitInterruptCB m_CancelInterrupt; ///< never counted by anyone else
    CWaitBlock m_CancelBlock;
    CWaitInterruptCB * m_pUserInterrupt; ///< counted
    CWaitBlock m_UserBlock;
    Delegates_and_Calls::CDelegate m_Function;

private:
    static std::uint32_t Run(void * argument) noexcept;
    bool IsInterrupted() const noexcept;
    void RaiseInterrupt();
    Platform::ErrorCode Begin() noexcept;
    void CheckStarted(Exceptions::CThrowState & state);
    void TakeWaker() noexcept;
    static void Link(CWaitBlock & block, bool enabled) noexcept;

    Platform::CWakerHandle m_Waker; ///< set before the first link, so that whoever finds a link finds it
    std::atomic<bool> m_bBegun;     ///< the thread's own reference has been taken
};

} // namespace Windows

/// The slot of the threads: which block is the calling thread's.
class VLK_API CThreadCBSlot : public Windows::CThreadCB_ {
public:
    /// The calling thread's block without a reference; null when it has none.
    static CThreadCB * Look() noexcept;
    static bool Store(CThreadCB * block) noexcept;

protected:
    /// Clears the slot if it holds this block.
    void Forget() noexcept;
};

/// What the foundation keeps for a thread.
///
/// Owner: its references (CThread, the running thread, guards, states); a thread from outside has its block only
/// while one of those lives on it. Threads: the thread's own, see the bases.
class VLK_API CThreadCB : public CThreadCBSlot {
public:
    /// Null when there's no memory.
    static CThreadCB * New() noexcept;
    ~CThreadCB() override;

    /// The calling thread's block with a reference for the caller; makes one when there is none. Null when there is
    /// no memory.
    static CThreadCB * TryGetCurrent() noexcept;
    /// The same; raises OutOfMemory instead.
    static CThreadCB * GetCurrent();
    /// For code that holds a reference anyway: the block without a further one.
    static CThreadCB * Current() noexcept { return Look(); }

    /// Seeds the generator from the clock and the thread.
    void SeedRandom() noexcept;
    int NextRandom() noexcept;

    /// A cache that another concern keeps per thread (the pooled stream buffers): the first of its free list, and
    /// what frees the list when the block goes. Null until that concern fills it in. By the thread itself.
    struct SPool {
        void * pFirst = nullptr;
        void (*pRelease)(void * first) noexcept = nullptr;
    };

    int m_iRandomSeed = 0;
    unsigned int m_uLngId = 0;
    unsigned int m_uThrowDisabled = 0; ///< changed together with CThrowStateData::Counter()
    Strings::TString<64> m_Name;
    Exceptions::CErrorLog m_ErrorLog;               ///< the last swallowed error
    Exceptions::ERRLOG_DATA * m_pPending = nullptr; ///< owned chain of records whose exceptions fly, newest first
    SPool m_StreamPool;

protected:
    void RunBody() noexcept override;

private:
    CThreadCB() noexcept = default;
    void TraceEnd() noexcept;
};

/// A reference to the calling thread's block for a scope, taking no memory and no time when the thread has one.
class VLK_API CThreadRef {
public:
    /// Raises OutOfMemory.
    CThreadRef() : m_pThread(CThreadCB::GetCurrent()) {}
    ~CThreadRef() { Windows::CWaitCB::Drop(m_pThread); }
    CThreadRef(CThreadRef const &) = delete;
    CThreadRef & operator=(CThreadRef const &) = delete;
    CThreadCB * operator->() const noexcept { return m_pThread; }
    CThreadCB * Get() const noexcept { return m_pThread; }

private:
    CThreadCB * m_pThread;
};

} // namespace VLK::Internals

#endif
