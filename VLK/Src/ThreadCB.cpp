#include "VLK/ThreadCB.h"

#include <mutex>
#include <new>
#include <utility>

#include "ErrLogData.h"
#include "FaultReport.h"
#include "Platform/Clock.h"
#include "Platform/StaticLock.h"
#include "VLK/Application.h"
#include "VLK/Exceptions.h"
#include "VLK/Threads.h"
#include "VLK/Trace.h"
#include "VLK/Waiter.h"

namespace VLK::Internals {

namespace {

/// Guards all interrupt lists, the set flags of all interrupts and the installed interrupt of each thread. Innermost.
constinit Platform::CStaticLock g_InterruptLock;

} // namespace

void CWaitInterruptCB::Set() noexcept
{
    const std::lock_guard lock(g_InterruptLock);
    if (m_uSet != 0) return;
    m_uSet = 1;
    for (CWaitBlock * block = m_Threads.First(); block != nullptr; block = m_Threads.Next(*block))
        block->m_pThread->PostWaitInterrupt(*this);
}

void CWaitInterruptCB::Reset() noexcept
{
    const std::lock_guard lock(g_InterruptLock);
    m_uSet = 0;
}

namespace Windows {

using Exceptions::CThrowState;
using Threading::InterruptAll;
using Threading::InterruptCancel;
using Threading::InterruptUser;

CThreadCB_::CThreadCB_() noexcept
    : m_uThreadId(0), m_uMask(0), m_uPending(0), m_pUserInterrupt(nullptr), m_bBegun(false)
{
    m_CancelBlock.m_pThread = this;
    m_CancelBlock.m_pInterrupt = &m_CancelInterrupt;
    m_UserBlock.m_pThread = this;
}

CThreadCB_::~CThreadCB_()
{
    {
        const std::lock_guard lock(g_InterruptLock);
        m_CancelBlock.Unlink();
        m_UserBlock.Unlink();
    }
    Drop(m_pUserInterrupt);
}

namespace {

/// Repeats the wait after each wake-up that turns out to be no interrupt. `check` raises the interrupts.
template <class TWait, class TCheck>
Platform::SWaitOutcome WaitThroughWakeUps(unsigned int timeout, TWait const & wait, TCheck const & check)
{
    std::uint64_t end = 0; // known from the first wake-up on: a wait without one doesn't ask the clock
    for (unsigned int left = timeout;;) {
        const Platform::SWaitOutcome outcome = wait(left);
        if (outcome.result != Platform::WaitResult::Woken) return outcome;
        check();
        if (timeout == Platform::Infinite) continue;
        const std::uint64_t now = Platform::MonotonicMs();
        if (end == 0) end = now + outcome.leftMs;
        if (now >= end) return {Platform::WaitResult::Timeout, 0, Platform::Success};
        left = static_cast<unsigned int>(end - now);
    }
}

/// Tells the objects of a list, after they have fired, those with a mask or the one that ended the wait.
void TellSignaled(CWaitList const & list, unsigned int index, bool all)
{
    if (!all) {
        list[index].Block()->SignaledAfterWait(list[index].Mask());
        return;
    }
    for (std::size_t i = 0; i < list.Count(); ++i) {
        if (list[i].Mask() != 0) list[i].Block()->SignaledAfterWait(list[i].Mask());
    }
}

} // namespace

unsigned int CThreadCB_::Wait(Platform::WaitHandle handle, unsigned int timeout)
{
    CThrowState state;
    try {
        CheckInterrupt();
        const Platform::SWaitOutcome outcome = WaitThroughWakeUps(
            timeout, [&](unsigned int left) { return Platform::WaitForOne(handle, left, m_uMask != 0); },
            [&] { CheckInterrupt(); });
        switch (outcome.result) {
        case Platform::WaitResult::Signaled:
            return URET_WaitObject0;
        case Platform::WaitResult::Abandoned:
            return URET_WaitAbandoned;
        case Platform::WaitResult::Timeout:
            return URET_Timeout;
        default:
            VLK_RAISE_OS(state, Errors::OperatingSystem, outcome.error);
        }
    }
    VLK_THROW_NEXT(state)
}

unsigned int CThreadCB_::Wait(CWaitList const & list, unsigned int timeout, bool all)
{
    CThrowState state;
    try {
        if (list.Count() >= CWaitList::MaxEntries) VLK_RAISE(state, Errors::MaxCount);
        CheckInterrupt();
        Platform::WaitHandle handles[CWaitList::MaxEntries];
        bool masked = false;
        for (std::size_t i = 0; i < list.Count(); ++i) {
            CWaitCB * const block = list[i].Block();
            handles[i] = block->GetHandle();
            if (handles[i] == nullptr) VLK_RAISE(state, Errors::InvalidHandle);
            if (list[i].Mask() == 0) continue;
            block->SetMask(list[i].Mask());
            masked = true;
        }
        const Platform::SWaitOutcome outcome = WaitThroughWakeUps(
            timeout,
            [&](unsigned int left) {
                return Platform::WaitForMany(handles, static_cast<unsigned int>(list.Count()), all, left, m_uMask != 0);
            },
            [&] { CheckInterrupt(); });
        if (outcome.result == Platform::WaitResult::Timeout) return URET_Timeout;
        if (outcome.result == Platform::WaitResult::Failed) VLK_RAISE_OS(state, Errors::OperatingSystem, outcome.error);
        if (masked) TellSignaled(list, outcome.index, all);
        return URET_WaitObject0 + outcome.index;
    }
    VLK_THROW_NEXT(state)
}

bool CThreadCB_::IsInterrupted() const noexcept
{
    return (m_uPending.load(std::memory_order_relaxed) & m_uMask) != 0;
}

void CThreadCB_::CheckInterrupt()
{
    if (IsInterrupted()) [[unlikely]]
        RaiseInterrupt();
}

void CThreadCB_::RaiseInterrupt()
{
    CThrowState state;
    try {
        const unsigned int bits = m_uPending.load(std::memory_order_relaxed) & m_uMask;
        VLK_RAISE(state, (bits & InterruptCancel) != 0 ? Errors::ThreadInterrupt : Errors::WaitInterrupt);
    }
    VLK_THROW_NEXT_VOID(state)
}

void CThreadCB_::Create(Delegates_and_Calls::CDelegate const & function, bool suspended)
{
    CThrowState state;
    try {
        m_Function = function;
        Platform::WaitHandle handle = nullptr;
        Platform::ErrorCode error = Platform::StartThread(handle, m_uThreadId, &CThreadCB_::Run, this,
                                                          /*stackBytes=*/0, /*suspended=*/true);
        if (error != Platform::Success) VLK_RAISE_OS(state, Errors::ThreadStart, error);
        m_Handle.Reset(handle);
        if (suspended) return;
        error = Begin();
        if (error != Platform::Success) VLK_RAISE_OS(state, Errors::ThreadStart, error);
    }
    VLK_THROW_NEXT_VOID(state)
}

Platform::ErrorCode CThreadCB_::Begin() noexcept
{
    // The thread's own reference is taken when it begins: one that is never resumed must not keep its block for ever.
    const bool takesReference = !m_bBegun.exchange(true);
    if (takesReference) Incr();
    std::uint32_t previous = 0;
    const Platform::ErrorCode error = Platform::ResumeThread(m_Handle.Get(), previous);
    const bool staysSuspended = error != Platform::Success || previous > 1;
    if (takesReference && staysSuspended) {
        m_bBegun.store(false);
        Decr(); // the caller holds a reference
    }
    return error;
}

std::uint32_t CThreadCB_::Run(void * argument) noexcept
{
    CThreadCB_ * const block = static_cast<CThreadCB_ *>(argument);
    block->RunBody();
    CThreadCBSlot::Store(nullptr);
    Drop(block);
    return 0;
}

void CThreadCB_::CheckStarted(CThrowState & state)
{
    if (!m_Handle) VLK_RAISE(state, Errors::NoThread);
    const Platform::SWaitOutcome ended = Platform::WaitForOne(m_Handle.Get(), 0, /*wakeable=*/false);
    if (ended.result == Platform::WaitResult::Signaled) VLK_RAISE(state, Errors::ThreadStopped);
}

void CThreadCB_::Suspend()
{
    CThrowState state;
    try {
        CheckStarted(state);
        std::uint32_t previous = 0;
        const Platform::ErrorCode error = Platform::SuspendThread(m_Handle.Get(), previous);
        if (error != Platform::Success) VLK_RAISE_OS(state, Errors::OperatingSystem, error);
    }
    VLK_THROW_NEXT_VOID(state)
}

void CThreadCB_::Resume()
{
    CThrowState state;
    try {
        CheckStarted(state);
        const Platform::ErrorCode error = Begin();
        if (error != Platform::Success) VLK_RAISE_OS(state, Errors::OperatingSystem, error);
    }
    VLK_THROW_NEXT_VOID(state)
}

void CThreadCB_::ClearInterrupt(unsigned int bits) noexcept
{
    // Mostly there is nothing to do, which needs no lock: the mask is this thread's own.
    if ((bits & InterruptAll & ~m_uMask) != 0) SetIntrMask(m_uMask | (bits & InterruptAll));
    if ((m_uPending.load(std::memory_order_relaxed) & bits) != 0)
        m_uPending.fetch_and(~bits, std::memory_order_relaxed);
}

unsigned int CThreadCB_::SetIntrMask(unsigned int mask) noexcept
{
    mask &= InterruptAll;
    if (mask != 0) TakeWaker();
    const std::lock_guard lock(g_InterruptLock);
    const unsigned int former = std::exchange(m_uMask, mask);
    const unsigned int changed = former ^ mask;
    if ((changed & InterruptCancel) != 0) Link(m_CancelBlock, (mask & InterruptCancel) != 0);
    if ((changed & InterruptUser) != 0) Link(m_UserBlock, (mask & InterruptUser) != 0);
    return former;
}

void CThreadCB_::Link(CWaitBlock & block, bool enabled) noexcept
{
    if (!enabled)
        block.Unlink();
    else if (block.m_pInterrupt != nullptr)
        block.m_pInterrupt->m_Threads.AddLast(block);
}

void CThreadCB_::TakeWaker() noexcept
{
    if (m_Waker) return;
    Platform::CWakerHandle waker(Platform::CurrentThreadWaker());
    const std::lock_guard lock(g_InterruptLock);
    m_Waker = std::move(waker);
}

CWaitInterruptCB * CThreadCB_::SetUserIntr(CWaitInterruptCB * interrupt) noexcept
{
    if (interrupt == nullptr && m_pUserInterrupt == nullptr) return nullptr; // set by this thread alone
    if (interrupt != nullptr) interrupt->Incr();
    const std::lock_guard lock(g_InterruptLock);
    CWaitInterruptCB * const former = m_pUserInterrupt;
    if (interrupt == former) return former; // its second reference is the caller's
    const bool enabled = (m_uMask & InterruptUser) != 0;
    m_UserBlock.Unlink();
    m_pUserInterrupt = interrupt;
    m_UserBlock.m_pInterrupt = interrupt;
    if (interrupt != nullptr && enabled) Link(m_UserBlock, true);
    if (interrupt != nullptr && interrupt->m_uSet != 0)
        m_uPending.fetch_or(InterruptUser, std::memory_order_relaxed);
    else
        m_uPending.fetch_and(~InterruptUser, std::memory_order_relaxed);
    return former;
}

void CThreadCB_::PostWaitInterrupt(CWaitInterruptCB const & interrupt) noexcept
{
    const unsigned int bit = &interrupt == m_pUserInterrupt ? InterruptUser : InterruptCancel;
    m_uPending.fetch_or(bit, std::memory_order_relaxed);
    if (m_Waker) Platform::WakeThread(m_Waker.Get());
}

void CThreadCB_::Sleep(unsigned int milliseconds)
{
    CThrowState state;
    try {
        if (milliseconds == 0) {
            Platform::Sleep(0);
            return;
        }
        const Threading::CWaitInterval interval(milliseconds);
        while (Platform::WakeableSleep(interval).result == Platform::WaitResult::Woken)
            CheckInterrupt();
    }
    VLK_THROW_NEXT_VOID(state)
}

void CThreadCB_::SetDbgThreadName(char const * name) noexcept
{
    Platform::NameCurrentThread(name);
}

} // namespace Windows

CThreadCB * CThreadCB::New() noexcept
{
    return new (std::nothrow) CThreadCB();
}

CThreadCB::~CThreadCB()
{
    Forget();
    if (m_uThrowDisabled != 0) Exceptions::CThrowStateData::Counter().Decr();
    if (m_StreamPool.pRelease != nullptr) m_StreamPool.pRelease(m_StreamPool.pFirst);
    Exceptions::ERRLOG_DATA::FreeChain(m_pPending);
}

CThreadCB * CThreadCB::TryGetCurrent() noexcept
{
    if (CThreadCB * const present = Look()) {
        present->Incr();
        return present;
    }
    CThreadCB * const made = New();
    if (made == nullptr) return nullptr;
    made->m_uThreadId = Platform::CurrentThreadId();
    Store(made); // without a slot the block serves its holder alone
    return made;
}

CThreadCB * CThreadCB::GetCurrent()
{
    if (CThreadCB * const current = TryGetCurrent()) return current;
    throw 0u; // the error has no record: it is the place for one that can't be had
}

void CThreadCB::SeedRandom() noexcept
{
    m_iRandomSeed = static_cast<int>(static_cast<std::uint32_t>(Platform::TickCountMs()) + m_uThreadId);
}

int CThreadCB::NextRandom() noexcept
{
    // Park and Miller's generator in the form of Schrage, which stays within 32 bits.
    m_iRandomSeed = 16807 * (m_iRandomSeed % 127773) - 2836 * (m_iRandomSeed / 127773);
    if (m_iRandomSeed < 1) m_iRandomSeed += 0x7FFFFFFF;
    return m_iRandomSeed;
}

void CThreadCB::RunBody() noexcept
{
    Store(this);
    Exceptions::CThrowState state;
    SetIntrMask(Threading::InterruptAll);
    SeedRandom();
    try {
        if (Misc::pVlkApp != nullptr && Misc::pVlkApp->GetDebugWait())
            StartThreadAndCatchWin32Exception(*this, m_Function);
        else
            m_Function();
    } catch (...) {
        VLK_SOURCE(source);
        state.EndException(source);
        TraceEnd();
    }
}

void CThreadCB::TraceEnd() noexcept
{
    try {
        VLK_TRACE_STREAM(TraceErrors, "QUIETSCH, Thread 0x%x has terminated with exception!!!\n")
            << m_uThreadId << m_ErrorLog;
    } catch (...) { // a record that can't be traced is still in the error log
    }
}

} // namespace VLK::Internals
