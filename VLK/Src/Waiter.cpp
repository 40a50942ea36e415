#include "VLK/Waiter.h"

#include <new>
#include <utility>

#include "VLK/Exceptions.h"
#include "VLK/Functions.h"
#include "VLK/ThreadCB.h"

namespace VLK::Internals {

CWaitList::~CWaitList()
{
    if (m_pEntries != m_Inline) delete[] m_pEntries;
}

bool CWaitList::Append(Threading::CWaitHandle const & handle) noexcept
{
    if (m_uCount == InlineEntries && m_pEntries == m_Inline) {
        Threading::CWaitHandle * const larger = new (std::nothrow) Threading::CWaitHandle[MaxEntries];
        if (larger == nullptr) return false;
        for (std::size_t i = 0; i < InlineEntries; ++i)
            larger[i] = std::move(m_Inline[i]);
        m_pEntries = larger;
    }
    m_pEntries[m_uCount] = handle;
    ++m_uCount;
    return true;
}

void CWaitList::Clear() noexcept
{
    while (m_uCount != 0)
        m_pEntries[--m_uCount] = Threading::CWaitHandle();
}

} // namespace VLK::Internals

namespace VLK::Threading {

using Exceptions::CThrowState;

CWaiter & CWaiter::operator<<(CWaitHandle const & handle)
{
    CThrowState state;
    try {
        if (m_uError != 0) VLK_RAISE(state, Errors::ObjectInErrorState);
        if (handle.Block() == nullptr)
            VLK_RAISE_TEXT(state, Errors::SyncNotInitialized, "current count=%d",
                           static_cast<unsigned long long>(m_List.Count()));
        if (m_List.Count() >= Internals::CWaitList::MaxEntries) VLK_RAISE(state, Errors::MaxCount);
        if (!m_List.Append(handle)) VLK_RAISE(state, Errors::OutOfMemory);
        return *this;
    } catch (...) {
        m_uError = 1;
        VLK_SOURCE(source);
        state.ThrowNext(source);
        return *this;
    }
}

unsigned int CWaiter::Wait(unsigned int timeout, bool all)
{
    CThrowState state;
    try {
        const Internals::CThreadRef thread;
        return thread->Wait(m_List, timeout, all);
    }
    VLK_THROW_NEXT(state)
}

void CWaiter::Clear() noexcept
{
    m_List.Clear();
    m_uError = 0;
}

namespace {

constexpr unsigned int MillisecondsPerSecond = 1000;

} // namespace

CWaitInterval::CWaitInterval(unsigned int interval) noexcept : m_uInterval(interval)
{
    Restart();
}

void CWaitInterval::Restart() noexcept
{
    m_uStart = Functions::GetTickTime(MillisecondsPerSecond);
}

void CWaitInterval::Restart(unsigned int interval) noexcept
{
    m_uInterval = interval;
    Restart();
}

CWaitInterval::operator unsigned int() const noexcept
{
    const std::uint64_t elapsed = Functions::GetTickTime(MillisecondsPerSecond) - m_uStart;
    return elapsed >= m_uInterval ? 0 : m_uInterval - static_cast<unsigned int>(elapsed);
}

} // namespace VLK::Threading
