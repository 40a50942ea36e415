#include "VLK/WaitObjects.h"

#include <new>

#include "VLK/Exceptions.h"
#include "VLK/ThreadCB.h"
#include "WaitBlocks.h"

namespace VLK::Internals {

using Exceptions::CThrowState;

void CSyncObject::SetRestoreFn(Threading::CSyncGuard * guard,
                               Delegates_and_Calls::TFastDelegateR<unsigned int> const & function) noexcept
{
    if (guard != nullptr) guard->m_Restore = function;
}

namespace Windows {

CWaitCB::~CWaitCB() = default;

unsigned int CWaitCB::Wait(unsigned int timeout)
{
    CThrowState state;
    try {
        const CThreadRef thread;
        return thread->Wait(m_Handle.Get(), timeout);
    }
    VLK_THROW_NEXT(state)
}

unsigned int CWaitCB::SetMask(unsigned int)
{
    return URET_OK;
}

unsigned int CWaitCB::SignaledAfterWait(unsigned int)
{
    return URET_OK;
}

namespace {

/// Creates an object of the system for a block that has none yet. create: the platform's function for it.
template <class TCreate>
void CreateHandle(CThrowState & state, Platform::CWaitableHandle & handle, TCreate const & create)
{
    if (handle) VLK_RAISE(state, Errors::SyncAlreadyInitialized);
    Platform::WaitHandle made = nullptr;
    const Platform::ErrorCode error = create(made);
    if (error != Platform::Success) VLK_RAISE_OS(state, Errors::SyncCreate, error);
    handle.Reset(made);
}

/// Changes an object of the system. change: the platform's function for it.
void ChangeState(CThrowState & state, Platform::WaitHandle handle,
                 Platform::ErrorCode (*change)(Platform::WaitHandle) noexcept)
{
    if (handle == nullptr) VLK_RAISE(state, Errors::SyncNotInitialized);
    const Platform::ErrorCode error = change(handle);
    if (error != Platform::Success) VLK_RAISE_OS(state, Errors::SyncGeneral, error);
}

} // namespace

void CEventCB::Init(bool initialState, bool manualReset)
{
    CThrowState state;
    try {
        CreateHandle(state, m_Handle,
                     [&](Platform::WaitHandle & made) { return Platform::NewEvent(made, initialState, manualReset); });
    }
    VLK_THROW_NEXT_VOID(state)
}

void CEventCB::Init(void * handle)
{
    CThrowState state;
    try {
        CreateHandle(state, m_Handle, [&](Platform::WaitHandle & made) { return Platform::AdoptEvent(made, handle); });
    }
    VLK_THROW_NEXT_VOID(state)
}

unsigned int CEventCB::Set()
{
    CThrowState state;
    try {
        ChangeState(state, m_Handle.Get(), &Platform::SetEvent);
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

unsigned int CEventCB::Reset()
{
    CThrowState state;
    try {
        ChangeState(state, m_Handle.Get(), &Platform::ResetEvent);
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

void CMutexCB::Init(bool initialOwner)
{
    CThrowState state;
    try {
        CreateHandle(state, m_Handle,
                     [&](Platform::WaitHandle & made) { return Platform::NewMutex(made, initialOwner); });
    }
    VLK_THROW_NEXT_VOID(state)
}

unsigned int CMutexCB::Release()
{
    CThrowState state;
    try {
        if (!m_Handle) VLK_RAISE(state, Errors::SyncNotInitialized);
        return Platform::ReleaseMutex(m_Handle.Get()) == Platform::Success ? URET_OK : URET_Error;
    }
    VLK_THROW_NEXT(state)
}

void CSemaphoreCB::Init(unsigned int initial, unsigned int maximum)
{
    CThrowState state;
    try {
        CreateHandle(state, m_Handle,
                     [&](Platform::WaitHandle & made) { return Platform::NewSemaphore(made, initial, maximum); });
    }
    VLK_THROW_NEXT_VOID(state)
}

unsigned int CSemaphoreCB::Release()
{
    CThrowState state;
    try {
        ChangeState(state, m_Handle.Get(), &Platform::ReleaseSemaphore);
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

} // namespace Windows
} // namespace VLK::Internals

namespace VLK::Threading {

using Exceptions::CThrowState;
using namespace Internals::Windows;

template class TWaitable<CEventCB>;
template class TWaitable<CMutexCB>;
template class TWaitable<CSemaphoreCB>;
template class TWaitable<Internals::CWaitInterruptCB>;

namespace {

/// The block of an object that must have one.
template <class CB>
CB & NeedBlock(CThrowState & state, CB * block)
{
    if (block == nullptr) VLK_RAISE(state, Errors::SyncNotInitialized);
    return *block;
}

template <class CB>
CB * NewBlock(CThrowState & state)
{
    CB * const block = new (std::nothrow) CB;
    if (block == nullptr) VLK_RAISE(state, Errors::OutOfMemory);
    return block;
}

bool IsOwned(unsigned int result) noexcept
{
    return result == URET_WaitObject0 || result == URET_WaitAbandoned;
}

} // namespace

CSyncGuard::~CSyncGuard()
{
    if (m_Restore == RestoreFn(&Nop)) return;
    CThrowState state;
    try {
        Restore();
    }
    VLK_END_EXCEPTION(state)
}

unsigned int CSyncGuard::Restore()
{
    const RestoreFn restore = m_Restore;
    DoNotRestore();
    return restore();
}

unsigned int CEvent::Init(bool initialState, bool manualReset)
{
    CThrowState state;
    try {
        if (m_pBlock == nullptr) SetBlock(NewBlock<CEventCB>(state));
        m_pBlock->Init(initialState, manualReset);
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

unsigned int CEvent::Init(void * handle)
{
    CThrowState state;
    try {
        if (m_pBlock == nullptr) SetBlock(NewBlock<CEventCB>(state));
        m_pBlock->Init(handle);
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

unsigned int CEvent::Set()
{
    CThrowState state;
    try {
        return NeedBlock(state, m_pBlock).Set();
    }
    VLK_THROW_NEXT(state)
}

unsigned int CEvent::Reset()
{
    CThrowState state;
    try {
        return NeedBlock(state, m_pBlock).Reset();
    }
    VLK_THROW_NEXT(state)
}

unsigned int CEvent::Wait(unsigned int timeout)
{
    CThrowState state;
    try {
        return NeedBlock(state, m_pBlock).Wait(timeout);
    }
    VLK_THROW_NEXT(state)
}

unsigned int CMutex::Init(bool initialOwner)
{
    CThrowState state;
    try {
        if (m_pBlock == nullptr) SetBlock(NewBlock<CMutexCB>(state));
        m_pBlock->Init(initialOwner);
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

unsigned int CMutex::Wait(unsigned int timeout)
{
    return Wait(nullptr, timeout);
}

unsigned int CMutex::Wait(CSyncGuard & guard, unsigned int timeout)
{
    return Wait(&guard, timeout);
}

unsigned int CMutex::Wait(CSyncGuard * guard, unsigned int timeout)
{
    CThrowState state;
    try {
        const unsigned int result = NeedBlock(state, m_pBlock).Wait(timeout);
        if (IsOwned(result)) SetRestoreFn(guard, CSyncGuard::RestoreFn::Of<&CMutexCB::Release>(*m_pBlock));
        return result;
    }
    VLK_THROW_NEXT(state)
}

unsigned int CMutex::Release()
{
    CThrowState state;
    try {
        return NeedBlock(state, m_pBlock).Release();
    }
    VLK_THROW_NEXT(state)
}

unsigned int CSemaphore::Init(unsigned int initial, unsigned int maximum)
{
    CThrowState state;
    try {
        if (m_pBlock == nullptr) SetBlock(NewBlock<CSemaphoreCB>(state));
        m_pBlock->Init(initial, maximum);
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

unsigned int CSemaphore::Wait(unsigned int timeout)
{
    return Wait(nullptr, timeout);
}

unsigned int CSemaphore::Wait(CSyncGuard & guard, unsigned int timeout)
{
    return Wait(&guard, timeout);
}

unsigned int CSemaphore::Wait(CSyncGuard * guard, unsigned int timeout)
{
    CThrowState state;
    try {
        const unsigned int result = NeedBlock(state, m_pBlock).Wait(timeout);
        if (IsOwned(result)) SetRestoreFn(guard, CSyncGuard::RestoreFn::Of<&CSemaphoreCB::Release>(*m_pBlock));
        return result;
    }
    VLK_THROW_NEXT(state)
}

unsigned int CSemaphore::Release()
{
    CThrowState state;
    try {
        return NeedBlock(state, m_pBlock).Release();
    }
    VLK_THROW_NEXT(state)
}

CWaitInterrupt::CWaitInterrupt(Internals::CWaitInterruptCB * block) noexcept : TWaitable(block) {}

unsigned int CWaitInterrupt::Init()
{
    CThrowState state;
    try {
        if (m_pBlock != nullptr) VLK_RAISE(state, Errors::SyncAlreadyInitialized);
        SetBlock(NewBlock<Internals::CWaitInterruptCB>(state));
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

unsigned int CWaitInterrupt::Set()
{
    CThrowState state;
    try {
        NeedBlock(state, m_pBlock).Set();
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

unsigned int CWaitInterrupt::Reset()
{
    CThrowState state;
    try {
        NeedBlock(state, m_pBlock).Reset();
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

} // namespace VLK::Threading
