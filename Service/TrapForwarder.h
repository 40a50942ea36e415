#ifndef SERVICE_TRAP_FORWARDER_H
#define SERVICE_TRAP_FORWARDER_H

#include "NetSnmp.h"

#include <deque>
#include <vector>

#include "Job.h"
#include "TrapQuery.h"
#include "WorkQueue.h"

namespace Service {

/// Turns the traps of extensions into notifications: in their order, a few at a time so that the master and the
/// receivers keep up, and only while there is somebody to send them to. Traps that can't go yet stay with their
/// extension, except the few already taken.
/// Threads: the owner of the loop.
class CTrapForwarder {
public:
    /// Sent between two turns of the loop. More would fill the AgentX connection both ways, and block both ends.
    static constexpr std::size_t kBatch = 32;
    /// Rest between two batches, for receivers on datagrams, which nobody holds back otherwise.
    static constexpr std::uint64_t kRestMs = 10;

    /// isOpen: notifications can be sent from the start.
    explicit CTrapForwarder(bool isOpen) : m_isOpen(isOpen) {}
    void SetOpen(bool open) noexcept { m_isOpen = open; }

    /// The extension's event was signalled.
    void Signal(CWorkQueue & queue);
    /// Sends what waits, and has the extensions asked for more. Call it once in each turn.
    void Turn(std::uint64_t nowMs);
    /// When Turn has something to do; false: when something happens.
    bool NextTurnMs(std::uint64_t & timeMs) const noexcept;

private:
    class CTrapJob;

    bool HasWork() const noexcept { return !m_traps.empty() || !m_signalled.empty(); }
    void Take(CWorkQueue & queue, CTrapQuery & query);

    bool m_isOpen;
    std::deque<STrap> m_traps;             ///< taken and not yet sent
    std::vector<CWorkQueue *> m_signalled; ///< extensions that have traps, as far as is known
    bool m_isAsking = false;               ///< a job for traps is under way
    std::uint64_t m_restUntilMs = 0;
};

/// Sends one trap to all receivers and takes its values for that. Inside Net-SNMP.
void SendTrap(STrap & trap);

} // namespace Service

#endif
