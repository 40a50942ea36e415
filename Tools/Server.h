#ifndef TOOLS_SERVER_H
#define TOOLS_SERVER_H

#include <atomic>
#include <cstdint>
#include <list>
#include <mutex>
#include <string>
#include <vector>

#include "Tools/Estate.h"
#include "Tools/Report.h"
#include "Tools/Session.h"
#include "Tools/Worker.h"
#include "VLK/SocketListener.h"
#include "VLK/Threads.h"

namespace Coresim {

/// Accepts agents on the loopback interface, any number of them, and passes on to all of them what happens.
/// Threads: Start and Stop from one; the others from any.
class CServer {
public:
    CServer(CEstate & estate, CReport & report);
    /// Stops.
    ~CServer();
    CServer(CServer const &) = delete;
    CServer & operator=(CServer const &) = delete;

    /// Listens, and accepts from now on. Raises what the foundation raises when the port can't be had.
    void Start(unsigned int port);
    void Stop();

    /// Tells every agent that the data of these requests has changed.
    void Notify(std::uint64_t mask);
    /// Passes an event to every agent that is connected. With none it is kept for the next one that connects.
    void Deliver(SNMP::ORBA_EVENTINFO const & event);
    /// Lets all connections vanish. Returns how many there were.
    std::size_t DropAll();
    /// Whether agents that connect from now on are refused.
    void SetRefusing(bool refuse) noexcept { m_refuse.store(refuse, std::memory_order_relaxed); }
    bool IsRefusing() const noexcept { return m_refuse.load(std::memory_order_relaxed); }
    /// Signalled for good when the first agent has connected.
    VLK::Threading::CEvent FirstConnection() const { return m_firstConnection; }

private:
    void Run();
    void Admit(std::uint64_t handle);
    /// False: there was no agent, and the event is kept.
    bool DeliverToSessions(SNMP::ORBA_EVENTINFO const & event);

    CEstate & m_estate;
    CReport & m_report;
    VLK::Sockets::CSocketListener m_listener;
    CWorker m_worker;
    VLK::Threading::CEvent m_firstConnection;
    std::atomic<bool> m_refuse{false};

    std::mutex m_lock; // guards what follows
    std::list<CSession> m_sessions;
    std::vector<SNMP::ORBA_EVENTINFO> m_kept;
    unsigned int m_lastNumber = 0;
};

} // namespace Coresim

#endif
