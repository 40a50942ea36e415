#include "Tools/Timeline.h"

#include <chrono>
#include <sstream>
#include <utility>

#include "Tools/BadInput.h"
#include "VLK/Delegates.h"

namespace Coresim {

using namespace VLK;

void Apply(SChange const & change, CEstate & estate, CServer & server)
{
    switch (change.kind) {
    case SChange::Kind::Set:
        server.Notify(estate.Set(change.object, change.field, change.text));
        break;
    case SChange::Kind::Progress:
        estate.SetProgress(change.controller, change.drive, change.value);
        break;
    case SChange::Kind::Flag:
        server.Notify(change.mask);
        break;
    case SChange::Kind::Event:
        server.Deliver(change.event);
        break;
    }
}

CTimelinePlayer::CTimelinePlayer(STimeline timeline, CEstate & estate, CServer & server, CReport & report)
    : m_timeline(std::move(timeline)), m_estate(estate), m_server(server), m_report(report)
{
}

CTimelinePlayer::~CTimelinePlayer()
{
    Stop();
}

void CTimelinePlayer::Start()
{
    if (m_timeline.steps.empty()) return;
    m_worker.Start(Delegates_and_Calls::TDelegate<Delegates_and_Calls::CCall>(this, &CTimelinePlayer::Run));
}

void CTimelinePlayer::Stop()
{
    m_worker.Stop();
}

void CTimelinePlayer::Run()
{
    // The interrupt of Stop ends every wait in here as an exception, and with it the thread.
    m_server.FirstConnection().Wait(Platform::Infinite);
    do {
        PlayOnce();
    } while (m_timeline.repeat);
}

void CTimelinePlayer::PlayOnce()
{
    Threading::CCurrentThread thread;
    auto const start = std::chrono::steady_clock::now();
    for (SStep const & step : m_timeline.steps) {
        auto const left = start + std::chrono::duration<double>(step.seconds) - std::chrono::steady_clock::now();
        auto const ms = std::chrono::ceil<std::chrono::milliseconds>(left).count();
        if (ms > 0) thread.Sleep(static_cast<unsigned int>(ms));
        thread.CheckInterrupt();
        std::ostringstream when;
        when << "timeline: " << step.seconds << " s, " << step.changes.size() << " change(s)";
        m_report.Say(when.str());
        for (SChange const & change : step.changes) {
            try {
                Apply(change, m_estate, m_server);
            } catch (CBadInput const & bad) {
                m_report.Complain("timeline, " + std::to_string(step.seconds) + " s: " + bad.what());
            }
        }
    }
}

} // namespace Coresim
