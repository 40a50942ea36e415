#ifndef TOOLS_SESSION_H
#define TOOLS_SESSION_H

#include <atomic>
#include <cstdint>
#include <deque>
#include <mutex>
#include <string>

#include "Snmp/Include/Structure.h"
#include "Tools/Estate.h"
#include "Tools/Report.h"
#include "Tools/Worker.h"
#include "VLK/StreamSocket.h"
#include "VLK/Threads.h"

namespace Coresim {

/// The conversation with one agent, on a thread of its own.
/// Threads: Start and Stop from one; the others from any.
class CSession {
public:
    /// number: of the agent, for the report. socket: the accepted connection, owned from here on. refuse: let the
    /// handshake fail as a core service of another version does.
    CSession(unsigned int number, std::uint64_t socket, bool refuse, CEstate & estate, CReport & report);
    /// Stops.
    ~CSession();
    CSession(CSession const &) = delete;
    CSession & operator=(CSession const &) = delete;

    void Start();
    /// Ends the conversation, if it still goes on, and waits for its thread.
    void Stop();
    bool HasEnded() const noexcept { return m_ended.load(std::memory_order_acquire); }

    /// Tells the agent that the data of these requests has changed.
    void Notify(std::uint64_t mask);
    /// Queues an event for the agent and tells it.
    void Deliver(SNMP::ORBA_EVENTINFO const & event);
    /// Lets the connection vanish.
    void Drop();

private:
    void Run();
    void Converse();
    void Greet();
    void PassNotices();
    bool ServeRequest();
    void Answer(std::uint32_t request);
    void AnswerProgress();
    /// Returns what it has written.
    std::deque<SNMP::ORBA_EVENTINFO> WriteEvents();
    void Say(std::string const & text);

    std::string const m_name;
    std::uint64_t const m_handle;
    bool const m_refuse;
    CEstate & m_estate;
    CReport & m_report;
    VLK::Sockets::CSocket m_socket;          // the session's thread only
    VLK::Sockets::CVlkSocketServer m_stream; // the session's thread only
    CWorker m_worker;
    VLK::Threading::CEvent m_news; // set when something below has changed
    std::atomic<bool> m_ended{false};

    std::mutex m_lock; // guards what follows; nothing is called under it
    std::uint64_t m_mask = 0;
    std::deque<SNMP::ORBA_EVENTINFO> m_events;
    bool m_drop = false;
};

} // namespace Coresim

#endif
