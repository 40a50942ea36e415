#ifndef VLK_THREADS_H
#define VLK_THREADS_H

#include "VLK/ErrorLog.h"
#include "VLK/Export.h"
#include "VLK/WaitObjects.h"

namespace VLK::Delegates_and_Calls {
class CDelegate;
}
namespace VLK::Output_Streams {
class CFormatStream;
}
namespace VLK::Exceptions {
class CThrowState;
}
namespace VLK::Strings {
class CStringVar;
}

namespace VLK::Threading {

extern template class VLK_API TWaitable<Internals::CThreadCB>;

/// The interrupts of a thread, as bits of its mask. What is not enabled is not delivered.
inline constexpr unsigned int InterruptCancel = 1; ///< CThread::Cancel: Errors::ThreadInterrupt
inline constexpr unsigned int InterruptUser = 2;   ///< CWaitInterrupt: Errors::WaitInterrupt
inline constexpr unsigned int InterruptAll = 3;

/// A thread of the foundation's own. As a waitable it is signalled, for good, when the thread has ended.
///
/// The object may go while the thread runs. An exception in the delegate ends the thread quietly. Threads: one
/// object, one thread; Cancel() reaches the started thread from any.
class VLK_API CThread : public TWaitable<Internals::CThreadCB> {
public:
    CThread() noexcept = default;
    CThread(CThread const &) noexcept = default;
    CThread & operator=(CThread const &) noexcept = default;
    ~CThread() override;

    /// Starts a thread that runs a copy of the delegate, with both interrupts enabled. suspended: it begins with
    /// Resume(); one that is never resumed ends with its last reference. Raises ThreadRunning while the former
    /// thread of this object runs, ThreadStart with the system's error, OutOfMemory; the object is empty then.
    unsigned int Create(Delegates_and_Calls::CDelegate function, bool suspended);
    /// Gives the object a control block without starting a thread. Raises ThreadRunning, OutOfMemory.
    unsigned int initialize();

    /// Makes every interruptible wait of the thread raise ThreadInterrupt, now and later. Lost on a thread that has
    /// not enabled the interrupt at this moment, and only the first call has an effect. Raises NoThread on an
    /// empty object.
    unsigned int Cancel();
    /// Waits for the end of the thread: URET_OK or URET_Timeout. Raises SyncNotInitialized on an empty object.
    unsigned int Wait(unsigned int timeout);

    /// Raise NoThread without a started thread, ThreadStopped when it has ended, OperatingSystem where the
    /// system can't do it (see Platform/Thread.h).
    unsigned int Suspend();
    unsigned int Resume();

    /// The system's id of the thread; 0 when none was started.
    unsigned int GetThreadID() const noexcept;

private:
    void CheckNotRunning(Exceptions::CThrowState & state);
    unsigned int Start(Delegates_and_Calls::CDelegate const & function, bool suspended);
};

/// The calling thread's view of its own control block. Cheap; lives on the stack and stays on its thread. On a
/// thread from outside it makes a block for as long as it (or another holder) lives, see CCallBackGuard.
class VLK_API CCurrentThread {
public:
    /// Raises OutOfMemory when there is no memory for a block.
    CCurrentThread();
    ~CCurrentThread();
    CCurrentThread(CCurrentThread const &) = delete;
    CCurrentThread & operator=(CCurrentThread const &) = delete;

    /// Raises ThreadInterrupt or WaitInterrupt when one is pending and enabled. A pending one stays pending.
    unsigned int CheckInterrupt();
    /// Enables the interrupts of the bits and takes away what is pending of them.
    unsigned int ClearInterrupt(unsigned int bits) noexcept;
    unsigned int GetInterruptMask() const noexcept;
    /// Returns the former mask.
    unsigned int SetInterruptMask(unsigned int mask) noexcept;
    /// Sets the mask to `mask`; the guard, if any, gets what restores the former one.
    unsigned int EnableInterrupt(CSyncGuard * guard, unsigned int mask) noexcept;
    unsigned int EnableInterrupt(CSyncGuard & guard, unsigned int mask) noexcept
    {
        return EnableInterrupt(&guard, mask);
    }
    /// Sets the mask to all but the bits of `mask`, whatever it was before.
    unsigned int DisableInterrupt(CSyncGuard * guard, unsigned int mask) noexcept;
    unsigned int DisableInterrupt(CSyncGuard & guard, unsigned int mask) noexcept
    {
        return DisableInterrupt(&guard, mask);
    }
    /// Installs the interrupt (null or an empty one: none) and returns the former one. Enabling it is a matter of the
    /// mask. An interrupt that is set already is pending at once.
    CWaitInterrupt SetWaitInterrupt(CWaitInterrupt const * interrupt) noexcept;
    CWaitInterrupt SetWaitInterrupt(CWaitInterrupt const & interrupt) noexcept { return SetWaitInterrupt(&interrupt); }

    /// Sleeps the milliseconds out, whatever wakes it up, unless an interrupt raises. 0 gives up the processor once
    /// and never raises.
    unsigned int Sleep(unsigned int milliseconds);

    unsigned int GetThreadID() const noexcept;
    /// Valid while this object lives.
    Strings::CStringVar const & GetThreadName() const noexcept;
    /// Replaces the name by what is streamed; at the end of the stream debuggers and process lists learn it too.
    Output_Streams::CFormatStream SetThreadName(char const * format);

    /// Language id of the thread's texts; 0 means the default.
    unsigned int GetLngId() const noexcept;
    void SetLngId(unsigned int id) noexcept;

    /// The next number of the thread's generator, 1 to 0x7FFFFFFF. Not for secrets.
    int LCG_Rand() noexcept;

    /// The last error that was swallowed on this thread. Valid while this object lives.
    Exceptions::CErrorLog & GetErrorLog() noexcept;

    Internals::CThreadCB * operator->() const noexcept { return m_pThread; }

private:
    Internals::CThreadCB * m_pThread; ///< counted
};

/// Makes the calling thread, which the foundation did not create, a full thread of the foundation for the life of
/// this object: with a control block and both interrupts enabled. On a thread that has a block it only counts.
/// Nothing of the block may be kept longer. Raises OutOfMemory.
class VLK_API CCallBackGuard {
public:
    CCallBackGuard();
    virtual ~CCallBackGuard();
    CCallBackGuard(CCallBackGuard const &) = delete;
    CCallBackGuard & operator=(CCallBackGuard const &) = delete;

private:
    Internals::CThreadCB * m_pThread; ///< counted
};

/// Installs a wait interrupt for a scope, on the thread that creates it.
class VLK_API CInterruptGuard {
public:
    /// Raises OutOfMemory when there is no memory for the thread's block.
    CInterruptGuard();
    /// Puts back the former interrupt and the former mask, if SetWaitInterrupt was called.
    ~CInterruptGuard();
    CInterruptGuard(CInterruptGuard const &) = delete;
    CInterruptGuard & operator=(CInterruptGuard const &) = delete;

    /// Installs and enables the interrupt. Once for a guard: a further call replaces the interrupt, and what is put
    /// back stays what was there before the first.
    unsigned int SetWaitInterrupt(CWaitInterrupt & interrupt) noexcept;

private:
    static constexpr unsigned int NothingSaved = 0xFFFFFFFF;
    Internals::CThreadCB * m_pThread; ///< counted
    CWaitInterrupt m_Saved;
    unsigned int m_uSavedMask;
};

/// One thread-local word of the system. Values have no destructors.
class VLK_API CTls {
public:
    /// Raises ThreadLocalStorage with the system's error.
    CTls();
    ~CTls();
    CTls(CTls const &) = delete;
    CTls & operator=(CTls const &) = delete;

    /// The calling thread's value, null at first.
    void * Get() const noexcept;
    /// Raises ThreadLocalStorage when the system can't store it.
    unsigned int Set(void * value);

private:
    unsigned int m_uSlot;
    bool m_bAllocated = false; ///< false after a failure with throwing disabled
};

/// Typed access to such a word. Owns nothing.
template <class T>
class TTls : public CTls {
public:
    T * Get() const noexcept { return static_cast<T *>(CTls::Get()); }
    unsigned int Set(T * value) { return CTls::Set(value); }
};

} // namespace VLK::Threading

#endif
