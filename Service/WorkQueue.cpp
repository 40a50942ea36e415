#include "WorkQueue.h"

#include <algorithm>
#include <new>

namespace Service {

bool CWorkQueue::Push(JobPtr & job) noexcept
try {
    if (job->IsRequest() && m_waiting.size() >= kMaxWaiting) return false;
    m_waiting.push_back(std::move(job));
    return true;
} catch (std::bad_alloc const &) {
    return false;
}

CJob & CWorkQueue::Begin(std::uint64_t nowMs)
{
    m_running = std::move(m_waiting.front());
    m_waiting.pop_front();
    m_callStartMs = nowMs;
    return *m_running;
}

void CWorkQueue::End(bool again)
{
    if (again) m_waiting.push_front(std::move(m_running));
    m_running.reset();
}

bool CWorkQueue::RefuseOlder(std::uint64_t arrivedBeforeMs, int status)
{
    bool refused = false;
    const auto isLate = [&](CJob const & job) {
        return job.IsRequest() && !job.IsAnswered() && job.ArrivedMs() < arrivedBeforeMs;
    };
    if (m_running != nullptr && isLate(*m_running)) {
        m_running->Query().Drop();
        m_running->SetAnswered();
        m_running->Refuse(status);
        refused = true;
    }
    std::erase_if(m_waiting, [&](JobPtr const & job) {
        if (!isLate(*job)) return false;
        job->Refuse(status);
        refused = true;
        return true;
    });
    return refused;
}

bool CWorkQueue::OldestArrival(std::uint64_t & arrivedMs) const noexcept
{
    if (m_running != nullptr && m_running->IsRequest() && !m_running->IsAnswered()) {
        arrivedMs = m_running->ArrivedMs();
        return true;
    }
    const auto oldest =
        std::find_if(m_waiting.begin(), m_waiting.end(), [](auto const & job) { return job->IsRequest(); });
    if (oldest == m_waiting.end()) return false;
    arrivedMs = (*oldest)->ArrivedMs();
    return true;
}

void CWorkQueue::ForgetRequests()
{
    if (m_running != nullptr && m_running->IsRequest()) {
        m_running->Query().Drop();
        m_running->SetAnswered();
    }
    std::erase_if(m_waiting, [](JobPtr const & job) { return job->IsRequest(); });
}

} // namespace Service
