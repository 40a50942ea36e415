#ifndef TOOLS_TIMELINE_H
#define TOOLS_TIMELINE_H

#include <cstdint>
#include <string>
#include <vector>

#include "Tools/Estate.h"
#include "Tools/Report.h"
#include "Tools/Server.h"

namespace Coresim {

/// One thing that happens: a field is set, a progress counter is set, notices are raised, or an event arrives.
struct SChange {
    enum class Kind : std::uint8_t { Set, Progress, Flag, Event } kind = Kind::Set;
    std::string object, field, text;          ///< Set
    int controller = 0, drive = 0, value = 0; ///< Progress
    std::uint64_t mask = 0;                   ///< Flag
    SNMP::ORBA_EVENTINFO event;               ///< Event
};

/// What happens at one time. seconds: since the first agent connected, or since the timeline began again.
struct SStep {
    double seconds = 0;
    std::vector<SChange> changes;
};

struct STimeline {
    std::vector<SStep> steps; ///< in order of time
    bool repeat = false;
};

/// Carries a change out and tells the agents. Raises CBadInput and changes nothing when it isn't possible.
void Apply(SChange const & change, CEstate & estate, CServer & server);

/// Plays a timeline on a thread of its own, from the first connection on.
class CTimelinePlayer {
public:
    CTimelinePlayer(STimeline timeline, CEstate & estate, CServer & server, CReport & report);
    /// Stops.
    ~CTimelinePlayer();
    CTimelinePlayer(CTimelinePlayer const &) = delete;
    CTimelinePlayer & operator=(CTimelinePlayer const &) = delete;

    void Start();
    void Stop();

private:
    void Run();
    void PlayOnce();

    STimeline const m_timeline;
    CEstate & m_estate;
    CServer & m_server;
    CReport & m_report;
    CWorker m_worker;
};

} // namespace Coresim

#endif
