#include "VLK/EventHandler.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <limits>
#include <mutex>
#include <new>
#include <optional>
#include <system_error>
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

/// A condition of what a recursive mutex guards. Unlike condition_variable_any it tells when its own mutex can't be
/// locked, in place of ending the process.
class CCondition {
public:
    /// Not one: it might be waiting for another id. Any thread that doesn't hold the guarding mutex.
    void WakeAll()
    {
        std::lock_guard const own(m_Lock);
        m_Condition.notify_all();
    }

    /// Lets `lock` go, waits and takes it again; false: the deadline is over. Without a deadline it waits for ever.
    bool Wait(std::unique_lock<std::recursive_mutex> & lock, std::optional<CClock::time_point> const & deadline)
    {
        bool const woken = WaitUnlocked(lock, deadline);
        lock.lock();
        return woken;
    }

private:
    bool WaitUnlocked(std::unique_lock<std::recursive_mutex> & lock, std::optional<CClock::time_point> const & deadline)
    {
        std::unique_lock own(m_Lock); // first, or a wake-up before the wait would be lost
        lock.unlock();
        if (deadline) return m_Condition.wait_until(own, *deadline) != std::cv_status::timeout;
        m_Condition.wait(own);
        return true;
    }

    std::mutex m_Lock;
    std::condition_variable m_Condition;
};

} // namespace

class CEventHandlerImpl {
public:
    void Notify(int id)
    {
        Add(id);
        try {
            m_Notified.WakeAll();
        } catch (std::system_error const &) {
            Take({id}); // whoever is told that it failed may notify again
            throw;
        }
    }

    TResult Wait(std::initializer_list<int> const & ids, unsigned long long milliseconds)
    {
        std::unique_lock lock(m_Lock);
        constexpr auto longest = static_cast<unsigned long long>(std::numeric_limits<long long>::max());
        bool const looksOnly = milliseconds == 0 || milliseconds > longest;
        auto const deadline = Deadline(std::chrono::milliseconds(looksOnly ? 0 : static_cast<long long>(milliseconds)));
        for (;;) {
            if (TResult const taken = Take(ids); taken.notified || looksOnly) return taken;
            if (!m_Notified.Wait(lock, deadline)) return {};
        }
    }

private:
    using CPending = std::pair<int, unsigned int>; ///< id and how often it was notified
    using CPendingList = std::vector<CPending>;

    CPendingList::iterator Find(int id)
    {
        return std::find_if(m_Pending.begin(), m_Pending.end(), [id](CPending const & p) { return p.first == id; });
    }

    void Add(int id)
    {
        std::lock_guard const lock(m_Lock);
        if (auto const pending = Find(id); pending != m_Pending.end())
            ++pending->second;
        else
            m_Pending.emplace_back(id, 1u);
    }

    TResult Take(std::initializer_list<int> const & ids)
    {
        std::lock_guard const lock(m_Lock);
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

    CPendingList m_Pending; ///< guarded by m_Lock
    std::recursive_mutex m_Lock;
    CCondition m_Notified; ///< its mutex: only a wait takes it while it holds m_Lock
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

CEventHandler::CEventHandler() noexcept : m_pImpl(new (std::nothrow) CEventHandlerImpl) {}

CEventHandler::CEventHandler(CEventHandler && other) noexcept = default;

CEventHandler::~CEventHandler() = default;

void CEventHandler::notifyOne(int id)
{
    CThrowState state;
    try {
        Need(state, m_pImpl.get()).Notify(id);
    } catch (std::system_error const &) {
        throw;
    }
    VLK_THROW_NEXT_VOID(state)
}

CEventHandler::TResult CEventHandler::wait_for(std::initializer_list<int> const & ids, unsigned long long milliseconds)
{
    CThrowState state;
    try {
        return Need(state, m_pImpl.get()).Wait(ids, milliseconds);
    } catch (std::system_error const &) {
        throw;
    }
    VLK_THROW_NEXT_AS(state, TResult())
}

} // namespace VLK::Threading
