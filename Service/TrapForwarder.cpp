#include "TrapForwarder.h"

#include <algorithm>

namespace Service {

/// The call that takes traps out of an extension; it queues with the requests.
class CTrapForwarder::CTrapJob final : public CJob {
public:
    CTrapJob(CTrapForwarder & forwarder, CWorkQueue & queue) : m_forwarder(forwarder), m_queue(queue), m_query(kBatch)
    {
    }
    CQuery & Query() noexcept override { return m_query; }
    bool Finish() override
    {
        m_forwarder.Take(m_queue, m_query);
        return true;
    }
    void Refuse(int) override {}
    bool IsRequest() const noexcept override { return false; }

private:
    CTrapForwarder & m_forwarder;
    CWorkQueue & m_queue;
    CTrapQuery m_query;
};

void CTrapForwarder::Signal(CWorkQueue & queue)
{
    if (std::find(m_signalled.begin(), m_signalled.end(), &queue) == m_signalled.end()) m_signalled.push_back(&queue);
}

void CTrapForwarder::Turn(std::uint64_t nowMs)
{
    if (!m_isOpen || !HasWork() || nowMs < m_restUntilMs) return;
    const std::size_t count = std::min(m_traps.size(), kBatch);
    for (std::size_t i = 0; i < count && m_isOpen; ++i) {
        SendTrap(m_traps.front());
        m_traps.pop_front();
    }
    if (count != 0) m_restUntilMs = nowMs + kRestMs;
    if (m_isAsking || !m_traps.empty() || m_signalled.empty() || !m_isOpen) return;
    CWorkQueue & queue = *m_signalled.front();
    m_signalled.erase(m_signalled.begin());
    m_isAsking = true;
    JobPtr job(new CTrapJob(*this, queue));
    queue.Push(job);
}

void CTrapForwarder::Take(CWorkQueue & queue, CTrapQuery & query)
{
    m_isAsking = false;
    for (STrap & trap : query.Traps())
        m_traps.push_back(std::move(trap));
    if (!query.ReachedEnd()) Signal(queue);
}

bool CTrapForwarder::NextTurnMs(std::uint64_t & timeMs) const noexcept
{
    // A job that is under way ends with a turn of the loop by itself.
    if (!m_isOpen || !HasWork() || (m_isAsking && m_traps.empty())) return false;
    timeMs = m_restUntilMs;
    return true;
}

} // namespace Service
