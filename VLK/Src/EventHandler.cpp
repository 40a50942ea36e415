#include "VLK/EventHandler.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <limits>
#include <mutex>
#include <new>
#include <optional>
#include <utility>
#include <vector>

#include "VLK/Exceptions.h"

namespace VLK::Internals {

namespace {

using CClock = std::chrono::steady_clock;
using TResult = Threading::CEventHandlerNS::wait_forNS::TResult;

/// None: it lies beyond the end of the clock.
std::optional<CClock::time_point> Deadline(std::chrono::milliseconds wait) noexcept
{
    CClock::time_point const now = CClock::now();
    if (wait >= std::chrono::duration_cast<std::chrono::milliseconds>(CClock::time_point::max() - now))
        return std::nullopt;
    return now + wait;
}

} // namespace

class CEventHandlerImpl {
public:
    void Notify(int id)
    {
        {
            std::lock_guard const lock(m_Lock);
            if (auto const pending = Find(id); pending != m_Pending.end())
                ++pending->second;
            else
                m_Pending.emplace_back(id, 1u);
        }
        m_Notified.notify_all(); // not one: it might be waiting for another id
    }

    TResult Wait(std::initializer_list<int> const & ids, unsigned long long milliseconds)
    {
        std::unique_lock lock(m_Lock);
        constexpr auto longest = static_cast<unsigned long long>(std::numeric_limits<long long>::max());
        bool const looksOnly = milliseconds == 0 || milliseconds > longest;
        auto const deadline = Deadline(std::chrono::milliseconds(looksOnly ? 0 : static_cast<long long>(milliseconds)));
        for (;;) {
            if (TResult const taken = Take(ids); taken.notified || looksOnly) return taken;
            if (!deadline)
                m_Notified.wait(lock);
            else if (m_Notified.wait_until(lock, *deadline) == std::cv_status::timeout)
                return {};
        }
    }

private:
    using CPending = std::pair<int, unsigned int>; ///< id and how often it was notified
    using CPendingList = std::vector<CPending>;

    CPendingList::iterator Find(int id)
    {
        return std::find_if(m_Pending.begin(), m_Pending.end(), [id](CPending const & p) { return p.first == id; });
    }

    TResult Take(std::initializer_list<int> const & ids)
    {
        for (int const id : ids) {
            auto const pending = Find(id);
            if (pending == m_Pending.end()) continue;
            if (pending->second <= 1)
                m_Pending.erase(pending);
            else
                --pending->second;
            return {true, id};
        }
        return {};
    }

    CPendingList m_Pending;                 ///< guarded by m_Lock
    std::recursive_mutex m_Lock;            ///< never held together with the condition's own mutex
    std::condition_variable_any m_Notified; ///< with a mutex of its own, shared with those who leave it
};

} // namespace VLK::Internals

namespace VLK::Threading {

using Exceptions::CThrowState;
using Internals::CEventHandlerImpl;

namespace {

CEventHandlerImpl & Need(CThrowState & state, CEventHandlerImpl * implementation)
{
    if (implementation == nullptr) VLK_RAISE(state, Errors::NullPointer);
    return *implementation;
}

} // namespace

CEventHandler::CEventHandler() : m_pImpl(new (std::nothrow) CEventHandlerImpl)
{
    CThrowState state;
    try {
        if (m_pImpl == nullptr) VLK_RAISE(state, Errors::OutOfMemory);
    }
    VLK_THROW_NEXT_VOID(state)
}

CEventHandler::CEventHandler(CEventHandler && other) noexcept = default;

CEventHandler::~CEventHandler() = default;

void CEventHandler::notifyOne(int id)
{
    CThrowState state;
    try {
        Need(state, m_pImpl.get()).Notify(id);
    }
    VLK_THROW_NEXT_VOID(state)
}

CEventHandler::TResult CEventHandler::wait_for(std::initializer_list<int> const & ids, unsigned long long milliseconds)
{
    CThrowState state;
    try {
        return Need(state, m_pImpl.get()).Wait(ids, milliseconds);
    }
    VLK_THROW_NEXT_AS(state, TResult())
}

} // namespace VLK::Threading
