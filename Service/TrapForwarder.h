#ifndef SERVICE_TRAP_FORWARDER_H
#define SERVICE_TRAP_FORWARDER_H

#include "NetSnmp.h"

#include <deque>
#include <vector>

#include "Job.h"
#include "Notification.h"
#include "WorkQueue.h"

namespace Service {

/// How traps are forwarded.
struct STrapOptions {
    bool isSubagent; ///< there is an AgentX master to send to
    bool logsTraps;  ///< a trap becomes a line of the log when it is sent for the first time
};

/// Turns the traps of extensions into notifications: in their order, a few at a time so that the master and the
/// receivers keep up, and only while there is somebody to send them to. Traps that can't go yet stay with their
/// extension, except the few already taken. A master answers each notification; what it hasn't answered when its
/// session ends is sent again in the next one.
/// Threads: the owner of the loop.
class CTrapForwarder {
public:
    /// Sent between two turns of the loop. More would fill the AgentX connection both ways, and block both ends.
    static constexpr std::size_t kBatch = 32;
    /// Notifications that a master may owe an answer for.
    static constexpr std::size_t kMaxUnanswered = 2 * kBatch;
    /// Rest between two batches, for receivers on datagrams, which nobody holds back otherwise.
    static constexpr std::uint64_t kRestMs = 10;

    explicit CTrapForwarder(STrapOptions options) : m_isSubagent(options.isSubagent), m_logsTraps(options.logsTraps) {}
    CTrapForwarder(CTrapForwarder const &) = delete;
    CTrapForwarder & operator=(CTrapForwarder const &) = delete;

    /// The master has come, or null: it has gone.
    void SetMaster(netsnmp_session * master);
    /// The extension's event was signalled.
    void Signal(CWorkQueue & queue);
    /// Sends what waits, and has the extensions asked for more. Call it once in each turn.
    void Turn(std::uint64_t nowMs);
    /// Sends what an extension that has just been closed still has to say, of its traps the first kMaxUnanswered. The
    /// loop has ended, and nobody waits for answers any more.
    void SendLast(SEntryPoints const & extension);
    /// When Turn has something to do; false: when something happens.
    bool NextTurnMs(std::uint64_t & timeMs) const noexcept;

private:
    class CTrapJob;

    struct SUnanswered {
        int number;
        CNotification notification;
    };

    bool CanSend() const noexcept;
    void SendBatch(std::uint64_t nowMs);
    void SendOldest();
    void SendFirst(CNotification const & notification) const;
    void AskForMore();
    void Take(CWorkQueue & queue, CTrapQuery & query);
    static int OnAnswer(int operation, netsnmp_session *, int number, netsnmp_pdu *, void * forwarder) noexcept;

    const bool m_isSubagent;
    const bool m_logsTraps;
    netsnmp_session * m_master = nullptr;
    std::deque<CNotification> m_waiting;   ///< taken and not yet sent
    std::size_t m_sentToSinks = 0;         ///< of those, the first so many have only the master left
    std::deque<SUnanswered> m_unanswered;  ///< sent to the master, the oldest first
    std::vector<CWorkQueue *> m_signalled; ///< extensions that have traps, as far as is known
    bool m_isAsking = false;               ///< a job for traps is under way
    std::uint64_t m_restUntilMs = 0;
};

} // namespace Service

#endif
