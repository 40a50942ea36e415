#include <cstdint>

#include "VLK/CriticalSection.h"
#include "VLK/Exceptions.h"
#include "VLK/ThreadCB.h"
#include "VLK/Trace.h"

namespace VLK::Threading::Native_OS {

using Exceptions::CThrowState;

namespace {

/// A handle as the traces show it.
unsigned long long Number(Platform::CWaitableHandle const & handle) noexcept
{
    return reinterpret_cast<std::uintptr_t>(handle.Get());
}

} // namespace

CFastEvent::~CFastEvent()
{
    CThrowState state;
    try {
        VLK_TRACE(TraceEvents, "Before CloseHandle(x%x)", Number(m_Handle));
    }
    VLK_END_EXCEPTION(state)
}

unsigned int CFastEvent::Init(unsigned int manualReset)
{
    CThrowState state;
    try {
        Platform::WaitHandle made = nullptr;
        const Platform::ErrorCode error = Platform::NewEvent(made, /*initialState=*/false, manualReset != 0);
        if (error != Platform::Success) VLK_RAISE_OS(state, Errors::SyncCreate, error);
        m_Handle.Reset(made);
        m_uUninitialised = 0;
        VLK_TRACE(TraceEvents, "After CreateEvent handle=(x%x)", Number(m_Handle));
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

unsigned int CFastEvent::Set()
{
    CThrowState state;
    try {
        if (m_uUninitialised != 0) VLK_RAISE(state, Errors::SyncNotInitialized);
        const Platform::ErrorCode error = Platform::SetEvent(m_Handle.Get());
        if (error != Platform::Success) VLK_RAISE_OS(state, Errors::SyncGeneral, error);
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

unsigned int CFastEvent::Reset()
{
    CThrowState state;
    try {
        if (m_uUninitialised != 0) VLK_RAISE(state, Errors::SyncNotInitialized);
        const Platform::ErrorCode error = Platform::ResetEvent(m_Handle.Get());
        if (error != Platform::Success) VLK_RAISE_OS(state, Errors::SyncGeneral, error);
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

unsigned int CFastEvent::Wait(unsigned int timeout)
{
    CThrowState state;
    try {
        if (m_uUninitialised != 0) VLK_RAISE(state, Errors::SyncNotInitialized);
        const Internals::CThreadRef thread;
        VLK_TRACE(TraceEvents, "Before Tcb->Wait(x%x, x%x)", Number(m_Handle), timeout);
        const unsigned int result = thread->Wait(m_Handle.Get(), timeout);
        VLK_TRACE(TraceEvents, "After Tcb->Wait(x%x, x%x)=%d", Number(m_Handle), timeout, result);
        return result;
    }
    VLK_THROW_NEXT(state)
}

} // namespace VLK::Threading::Native_OS
