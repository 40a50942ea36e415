#include "VLK/ThrowState.h"

#include <cstdio>
#include <exception>
#include <new>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "ErrLogData.h"
#include "Platform/SharedModule.h"
#include "VLK/Exceptions.h"
#include "VLK/ThreadCB.h"

namespace VLK::Exceptions {

constinit Threading::CSyncCounter CThrowStateData::m_DisableCnt{0};
constinit std::atomic<Threading::CSyncCounter *> CThrowStateData::m_pCounter{&CThrowStateData::m_DisableCnt};

/// Lets this module use the shared counter from its load to its end.
class CSharedCounter {
public:
    CSharedCounter() noexcept : m_Library(Platform::OpenSharedModule("orVLK"))
    {
        if (!m_Library) return;
        void * const found = Platform::SharedObject(m_Library.Get(), "VLK::Exceptions::CThrowStateData::m_DisableCnt");
        if (found == nullptr || found == &CThrowStateData::m_DisableCnt) // this module may be that library
            m_Library.Reset();
        else
            Use(*static_cast<Threading::CSyncCounter *>(found));
    }
    ~CSharedCounter() { Use(CThrowStateData::m_DisableCnt); }
    CSharedCounter(CSharedCounter const &) = delete;
    CSharedCounter & operator=(CSharedCounter const &) = delete;

private:
    static void Use(Threading::CSyncCounter & counter) noexcept
    {
        CThrowStateData::m_pCounter.store(&counter, std::memory_order_relaxed);
    }

    Platform::CModuleHandle m_Library;
};

namespace {

CSharedCounter const g_SharedCounter;

} // namespace

void CThrowState::Init() noexcept
{
    if (Bind()) m_uSaved = SetDisabled(0);
}

void CThrowState::Restore() noexcept
{
    if (m_pThread != nullptr) {
        SetDisabled(m_uSaved);
        Internals::Windows::CWaitCB::Drop(std::exchange(m_pThread, nullptr));
    }
    m_pSelf = nullptr;
}

bool CThrowState::Bind() noexcept
{
    if (m_pSelf == nullptr) {
        m_pSelf = this;
        m_pThread = Internals::CThreadCB::TryGetCurrent();
    }
    return m_pThread != nullptr;
}

unsigned int CThrowState::SetDisabled(unsigned int disabled) noexcept
{
    const unsigned int former = m_pThread->m_uThrowDisabled;
    if (former == disabled) return former;
    m_pThread->m_uThrowDisabled = disabled;
    if (disabled != 0)
        CThrowStateData::Counter().Incr();
    else
        CThrowStateData::Counter().Decr();
    return former;
}

unsigned int CThrowState::EnableThrow() noexcept
{
    return Bind() ? SetDisabled(0) : 0;
}

unsigned int CThrowState::DisableThrow() noexcept
{
    return Bind() ? SetDisabled(1) : 0;
}

CException CThrowState::StartException(unsigned int line) noexcept
{
    Bind();
    return CException(m_pThread, line);
}

CExceptionLog CThrowState::ContinueException(SOURCE_INFO const & source) noexcept
{
    if (Bind()) SetDisabled(1);
    return TakeRecord(source, m_uSaved);
}

CExceptionLog CThrowState::ContinueException(CThrowGuard & guard, SOURCE_INFO const & source) noexcept
{
    guard.m_pState = this;
    return ContinueException(source);
}

unsigned int CThrowState::ThrowNext(SOURCE_INFO const & source)
{
    CExceptionLog log = ContinueException(source);
    return log.tryThrow();
}

void CThrowState::EndException(SOURCE_INFO const & source) noexcept
{
    Bind();
    const CExceptionLog log = TakeRecord(source, 0);
}

/// The record of the exception that is being handled; none where its record found no memory.
CExceptionLog CThrowState::TakeRecord(SOURCE_INFO const & source, unsigned int saved) noexcept
{
    ERRLOG_DATA * data = nullptr;
    if (AdoptForeignException(source.line) && m_pThread != nullptr && m_pThread->m_pPending != nullptr) {
        data = m_pThread->m_pPending;
        m_pThread->m_pPending = data->next;
    }
    return CExceptionLog(m_pThread, data, saved, source);
}

namespace {

/// What an exception of the C++ library says as an error of the foundation.
struct SForeignError {
    std::uint32_t code; ///< 0: it is the foundation's own exception, which has its record already
    NATIVE_ERROR native{NativeNone, 0};
    char text[256] = ""; ///< cut
};

SForeignError Describe(std::uint32_t code, std::exception const & error) noexcept
{
    SForeignError described{code};
    std::snprintf(described.text, sizeof(described.text), "%s", error.what());
    return described;
}

SForeignError DescribeCurrentException() noexcept
{
    try {
        throw;
    } catch (unsigned int) {
        return {0};
    } catch (SOURCE_INFO const *) {
        return {Errors::StreamOutput}; // how a buffer leaves an inserter, without one around it
    } catch (std::bad_alloc const &) {
        return {Errors::OutOfMemory};
    } catch (std::length_error const &) {
        return {Errors::OutOfMemory};
    } catch (std::system_error const & error) {
        SForeignError described = Describe(Errors::OperatingSystem, error);
        described.native = OsError(static_cast<std::uint32_t>(error.code().value()));
        return described;
    } catch (std::exception const & error) {
        return Describe(Errors::General, error);
    } catch (...) {
        return {Errors::General};
    }
}

/// Stores the message of a record's origin, whose first character is never shown.
void StoreOriginText(ERRLOG_DATA & data, char const * text) noexcept
{
    if (*text == '\0') return;
    const int length = std::snprintf(data.Text(), data.textCapacity, " %s\n", text);
    data.textLength = static_cast<std::uint64_t>(length) + 1;
    data.entries[0].textOffset = 1;
}

} // namespace

/// Makes a record for an exception of the C++ library. False when there is no memory for it: what lies on the pending
/// chain then belongs to other exceptions.
bool CThrowState::AdoptForeignException(unsigned int line) noexcept
{
    if (std::current_exception() == nullptr) return true;
    const SForeignError foreign = DescribeCurrentException();
    if (foreign.code == 0 || m_pThread == nullptr) return true;
    ERRLOG_DATA * const data = ERRLOG_DATA::New(line);
    if (data == nullptr) return false;
    data->error = foreign.code;
    data->native = foreign.native;
    StoreOriginText(*data, foreign.text);
    data->next = m_pThread->m_pPending;
    m_pThread->m_pPending = data;
    return true;
}

CThrowGuard::~CThrowGuard()
{
    if (m_pState != nullptr && m_pState->m_pThread != nullptr) m_pState->SetDisabled(0);
}

} // namespace VLK::Exceptions
