#include <new>

#include "VLK/CriticalSection.h"
#include "VLK/Exceptions.h"
#include "VLK/ThreadCB.h"

namespace VLK::Threading::Native_OS {

using Exceptions::CThrowState;

namespace {

bool IsOwned(unsigned int result) noexcept
{
    return result == URET_WaitObject0 || result == URET_WaitAbandoned;
}

} // namespace

CFastMutex::CFastMutex() noexcept : m_uUninitialised(1), m_uReaders(0) {}

CFastMutex::~CFastMutex() = default;

unsigned int CFastMutex::Init()
{
    CThrowState state;
    try {
        Platform::WaitHandle made = nullptr;
        const Platform::ErrorCode error = Platform::NewMutex(made, /*initialOwner=*/false);
        if (error != Platform::Success) VLK_RAISE_OS(state, Errors::SyncCreate, error);
        m_Handle.Reset(made);
        m_uUninitialised = 0;
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

unsigned int CFastMutex::InitForReadWrite()
{
    CThrowState state;
    try {
        m_uReaders = 0;
        std::unique_ptr<CFastMutex> gate(new (std::nothrow) CFastMutex);
        if (gate == nullptr) VLK_RAISE(state, Errors::OutOfMemory);
        const unsigned int result = gate->Init();
        Init();
        m_pGate = std::move(gate);
        return result;
    }
    VLK_THROW_NEXT(state)
}

unsigned int CFastMutex::Wait(CSyncGuard * guard, unsigned int timeout)
{
    CThrowState state;
    try {
        if (m_uUninitialised != 0) VLK_RAISE(state, Errors::SyncNotInitialized);
        const Internals::CThreadRef thread;
        const unsigned int result = thread->Wait(m_Handle.Get(), timeout);
        if (IsOwned(result)) SetRestoreFn(guard, CSyncGuard::RestoreFn::Of<&CFastMutex::Release>(*this));
        return result;
    }
    VLK_THROW_NEXT(state)
}

unsigned int CFastMutex::WaitForRead(CSyncGuard * guard, unsigned int timeout)
{
    CThrowState state;
    try {
        if (m_pGate == nullptr) return Wait(guard, timeout);
        CSyncGuard gate;
        const unsigned int result = m_pGate->Wait(gate, timeout);
        if (IsOwned(result)) return EnterAsReader(guard, timeout);
        if (guard != nullptr) guard->DoNotRestore();
        return result;
    } catch (...) {
        if (guard != nullptr) guard->DoNotRestore();
        VLK_SOURCE(source);
        return state.ThrowNext(source);
    }
}

unsigned int CFastMutex::EnterAsReader(CSyncGuard * guard, unsigned int timeout)
{
    // The count goes up only behind the main mutex, so that a wait that fails or raises has nothing to take back.
    const unsigned int result = m_uReaders == 0 ? Wait(nullptr, timeout) : URET_OK;
    if (IsOwned(result)) {
        ++m_uReaders;
        SetRestoreFn(guard, CSyncGuard::RestoreFn::Of<&CFastMutex::ReadRelease>(*this));
    } else if (guard != nullptr) {
        guard->DoNotRestore();
    }
    return result;
}

unsigned int CFastMutex::Release()
{
    CThrowState state;
    try {
        if (m_uUninitialised != 0) VLK_RAISE(state, Errors::SyncNotInitialized);
        return Platform::ReleaseMutex(m_Handle.Get()) == Platform::Success ? URET_OK : URET_Error;
    }
    VLK_THROW_NEXT(state)
}

unsigned int CFastMutex::ReadRelease()
{
    CThrowState state;
    try {
        if (m_pGate == nullptr) return Release();
        const Platform::SWaitOutcome gate =
            Platform::WaitForOne(m_pGate->m_Handle.Get(), Platform::Infinite, /*wakeable=*/false);
        if (gate.result == Platform::WaitResult::Failed) VLK_RAISE_OS(state, Errors::OperatingSystem, gate.error);
        unsigned int result = URET_OK;
        if (m_uReaders != 0 && --m_uReaders == 0) result = Release();
        m_pGate->Release();
        return result;
    }
    VLK_THROW_NEXT(state)
}

} // namespace VLK::Threading::Native_OS
