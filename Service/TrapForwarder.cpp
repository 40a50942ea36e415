#include "TrapForwarder.h"

#include <algorithm>

#include "Log.h"

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

void CTrapForwarder::SetMaster(netsnmp_session * master)
{
    m_master = master;
    if (master != nullptr) {
        // Net-SNMP made it a receiver like any other; here it has a way of its own.
        remove_trap_session(master);
        return;
    }
    m_sentToSinks += m_unanswered.size();
    while (!m_unanswered.empty()) {
        m_waiting.push_front(std::move(m_unanswered.back().notification));
        m_unanswered.pop_back();
    }
}

bool CTrapForwarder::CanSend() const noexcept
{
    return !m_isSubagent || (m_master != nullptr && m_unanswered.size() < kMaxUnanswered);
}

void CTrapForwarder::Turn(std::uint64_t nowMs)
{
    if (nowMs < m_restUntilMs) return;
    if (!m_waiting.empty() && CanSend()) SendBatch(nowMs);
    if (!m_signalled.empty() && !m_isAsking && m_waiting.empty() && CanSend()) AskForMore();
}

void CTrapForwarder::SendBatch(std::uint64_t nowMs)
{
    for (std::size_t i = 0; i < kBatch && !m_waiting.empty() && CanSend(); ++i)
        SendOldest();
    m_restUntilMs = nowMs + kRestMs;
}

void CTrapForwarder::SendOldest()
{
    CNotification notification = std::move(m_waiting.front());
    m_waiting.pop_front();
    if (m_sentToSinks != 0)
        --m_sentToSinks;
    else
        SendFirst(notification);
    if (!m_isSubagent) return;
    // One that couldn't be sent keeps its place; the session is about to end then.
    const int number = notification.SendToMaster(m_master, OnAnswer, this);
    m_unanswered.push_back({number, std::move(notification)});
}

void CTrapForwarder::SendFirst(CNotification const & notification) const
{
    if (m_logsTraps) CLog::Write(EPriority::Info, "trap " + notification.Text());
    notification.SendToSinks();
}

void CTrapForwarder::SendLast(SEntryPoints const & extension)
{
    if (m_isSubagent && m_master == nullptr) return;
    CTrapQuery query(kMaxUnanswered);
    query.Run(extension);
    for (STrap & trap : query.Traps())
        m_waiting.emplace_back(trap);
    while (!m_waiting.empty())
        SendOldest();
}

void CTrapForwarder::AskForMore()
{
    CWorkQueue & queue = *m_signalled.front();
    JobPtr job(new CTrapJob(*this, queue));
    if (!queue.Push(job)) return; // without memory: the next turn asks
    m_signalled.erase(m_signalled.begin());
    m_isAsking = true;
}

void CTrapForwarder::Take(CWorkQueue & queue, CTrapQuery & query)
{
    m_isAsking = false;
    for (STrap & trap : query.Traps())
        m_waiting.emplace_back(trap);
    if (!query.ReachedEnd()) Signal(queue);
}

int CTrapForwarder::OnAnswer(int operation, netsnmp_session *, int number, netsnmp_pdu *, void * forwarder) noexcept
{
    if (operation != NETSNMP_CALLBACK_OP_RECEIVED_MESSAGE) return 1;
    auto & unanswered = static_cast<CTrapForwarder *>(forwarder)->m_unanswered;
    std::erase_if(unanswered, [number](SUnanswered const & sent) { return sent.number == number; });
    return 1;
}

bool CTrapForwarder::NextTurnMs(std::uint64_t & timeMs) const noexcept
{
    // A job that is under way ends with a turn of the loop by itself, and so comes an answer of the master.
    const bool hasWork = !m_waiting.empty() || (!m_signalled.empty() && !m_isAsking);
    if (!hasWork || !CanSend()) return false;
    timeMs = m_restUntilMs;
    return true;
}

} // namespace Service
