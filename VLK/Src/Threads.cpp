#include "VLK/Threads.h"

#include "VLK/Exceptions.h"
#include "VLK/ThreadCB.h"

namespace VLK::Threading {

using Exceptions::CThrowState;
using Internals::CThreadCB;
using Internals::CThreadRef;
using Internals::CWaitInterruptCB;
using Internals::Windows::CWaitCB;

template class TWaitable<CThreadCB>;

namespace {

CThreadCB & NeedThread(CThrowState & state, CThreadCB * block)
{
    if (block == nullptr) VLK_RAISE(state, Errors::NoThread);
    return *block;
}

CThreadCB * NewThreadBlock(CThrowState & state)
{
    CThreadCB * const block = CThreadCB::New();
    if (block == nullptr) VLK_RAISE(state, Errors::OutOfMemory);
    return block;
}

} // namespace

void CThread::CheckNotRunning(CThrowState & state)
{
    if (m_pBlock == nullptr || m_pBlock->GetHandle() == nullptr) return;
    if (m_pBlock->CWaitCB::Wait(0) == URET_Timeout) VLK_RAISE(state, Errors::ThreadRunning);
}

// Here, so that the library holds the class's tables for everyone.
CThread::~CThread() = default;

unsigned int CThread::Create(Delegates_and_Calls::CDelegate function, bool suspended)
{
    CThrowState state;
    try {
        CheckNotRunning(state);
        SetBlock(NewThreadBlock(state)); // before the start: the thread may look at its own object
        return Start(function, suspended);
    }
    VLK_THROW_NEXT(state)
}

unsigned int CThread::Start(Delegates_and_Calls::CDelegate const & function, bool suspended)
{
    CThrowState state;
    try {
        m_pBlock->Create(function, suspended);
        return URET_OK;
    } catch (...) {
        SetBlock(nullptr);
        VLK_SOURCE(source);
        return state.ThrowNext(source);
    }
}

unsigned int CThread::initialize()
{
    CThrowState state;
    try {
        CheckNotRunning(state);
        SetBlock(NewThreadBlock(state));
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

unsigned int CThread::Cancel()
{
    CThrowState state;
    try {
        NeedThread(state, m_pBlock).Cancel();
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

unsigned int CThread::Wait(unsigned int timeout)
{
    CThrowState state;
    try {
        if (m_pBlock == nullptr) VLK_RAISE(state, Errors::SyncNotInitialized);
        return m_pBlock->CWaitCB::Wait(timeout);
    }
    VLK_THROW_NEXT(state)
}

unsigned int CThread::Suspend()
{
    CThrowState state;
    try {
        NeedThread(state, m_pBlock).Suspend();
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

unsigned int CThread::Resume()
{
    CThrowState state;
    try {
        NeedThread(state, m_pBlock).Resume();
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

unsigned int CThread::GetThreadID() const noexcept
{
    return m_pBlock != nullptr ? m_pBlock->GetThreadID() : 0;
}

CCurrentThread::CCurrentThread() : m_pThread(CThreadCB::GetCurrent()) {}

CCurrentThread::~CCurrentThread()
{
    CWaitCB::Drop(m_pThread);
}

unsigned int CCurrentThread::CheckInterrupt()
{
    CThrowState state;
    try {
        m_pThread->CheckInterrupt();
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

unsigned int CCurrentThread::ClearInterrupt(unsigned int bits) noexcept
{
    m_pThread->ClearInterrupt(bits);
    return URET_OK;
}

unsigned int CCurrentThread::GetInterruptMask() const noexcept
{
    return m_pThread->GetIntrMask();
}

unsigned int CCurrentThread::SetInterruptMask(unsigned int mask) noexcept
{
    return m_pThread->SetIntrMask(mask);
}

namespace {

/// One function for each mask there is, so that a guard needs no room for it.
template <unsigned int Mask>
unsigned int RestoreIntrMask()
{
    if (CThreadCB * const thread = CThreadCB::Current()) thread->SetIntrMask(Mask);
    return URET_OK;
}

constexpr CSyncGuard::RestoreFn::Function RestoreIntrMasks[] = {&RestoreIntrMask<0>, &RestoreIntrMask<1>,
                                                                &RestoreIntrMask<2>, &RestoreIntrMask<3>};

/// Gives plain functions to guards.
struct SRestorer : Internals::CSyncObject {
    using CSyncObject::SetRestoreFn;
};

} // namespace

unsigned int CCurrentThread::EnableInterrupt(CSyncGuard * guard, unsigned int mask) noexcept
{
    SRestorer::SetRestoreFn(guard, RestoreIntrMasks[m_pThread->SetIntrMask(mask)]);
    return URET_OK;
}

unsigned int CCurrentThread::DisableInterrupt(CSyncGuard * guard, unsigned int mask) noexcept
{
    return EnableInterrupt(guard, mask ^ InterruptAll);
}

CWaitInterrupt CCurrentThread::SetWaitInterrupt(CWaitInterrupt const * interrupt) noexcept
{
    return CWaitInterrupt(m_pThread->SetUserIntr(interrupt != nullptr ? interrupt->m_pBlock : nullptr));
}

unsigned int CCurrentThread::Sleep(unsigned int milliseconds)
{
    CThrowState state;
    try {
        m_pThread->Sleep(milliseconds);
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

unsigned int CCurrentThread::GetThreadID() const noexcept
{
    return m_pThread->GetThreadID();
}

Strings::CStringVar const & CCurrentThread::GetThreadName() const noexcept
{
    return m_pThread->m_Name;
}

Output_Streams::CFormatStream CCurrentThread::SetThreadName(char const * format)
{
    m_pThread->m_Name = Misc::CNull();
    return m_pThread->m_Name.Format(format);
}

unsigned int CCurrentThread::GetLngId() const noexcept
{
    return m_pThread->m_uLngId;
}

void CCurrentThread::SetLngId(unsigned int id) noexcept
{
    m_pThread->m_uLngId = id;
}

int CCurrentThread::LCG_Rand() noexcept
{
    return m_pThread->NextRandom();
}

Exceptions::CErrorLog & CCurrentThread::GetErrorLog() noexcept
{
    return m_pThread->m_ErrorLog;
}

CCallBackGuard::CCallBackGuard() : m_pThread(nullptr)
{
    const bool isNew = CThreadCB::Current() == nullptr;
    m_pThread = CThreadCB::GetCurrent();
    if (!isNew) return;
    m_pThread->SetIntrMask(InterruptAll);
    m_pThread->SeedRandom();
}

CCallBackGuard::~CCallBackGuard()
{
    CWaitCB::Drop(m_pThread);
}

CInterruptGuard::CInterruptGuard() : m_pThread(CThreadCB::GetCurrent()), m_uSavedMask(NothingSaved) {}

CInterruptGuard::~CInterruptGuard()
{
    if (m_uSavedMask != NothingSaved) {
        CWaitCB::Drop(m_pThread->SetUserIntr(m_Saved.m_pBlock));
        m_pThread->SetIntrMask(m_uSavedMask);
    }
    CWaitCB::Drop(m_pThread);
}

unsigned int CInterruptGuard::SetWaitInterrupt(CWaitInterrupt & interrupt) noexcept
{
    CWaitInterrupt former(m_pThread->SetUserIntr(interrupt.m_pBlock));
    if (m_uSavedMask == NothingSaved) {
        m_uSavedMask = m_pThread->GetIntrMask();
        m_Saved = former;
    }
    m_pThread->SetIntrMask(m_pThread->GetIntrMask() | InterruptUser);
    return URET_OK;
}

} // namespace VLK::Threading
