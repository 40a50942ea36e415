#include "Tools/Server.h"

#include "Tools/FailureText.h"
#include "Tools/Names.h"
#include "VLK/Delegates.h"

namespace Coresim {

using namespace VLK;

CServer::CServer(CEstate & estate, CReport & report) : m_estate(estate), m_report(report)
{
    m_firstConnection.Init(/*initialState=*/false, /*manualReset=*/true);
}

CServer::~CServer()
{
    Stop();
}

void CServer::Start(unsigned int port)
{
    Sockets::CSocketAddr address;
    address.Resolve(std::string("127.0.0.1"), port);
    m_listener.StartListen(address);
    m_worker.Start(Delegates_and_Calls::TDelegate<Delegates_and_Calls::CCall>(this, &CServer::Run));
    m_report.Say("listening on 127.0.0.1:" + std::to_string(port));
}

void CServer::Stop()
{
    m_worker.Stop();
    std::list<CSession> sessions;
    {
        const std::lock_guard lock(m_lock);
        sessions.swap(m_sessions);
    }
    m_listener.StopListen();
}

void CServer::Run()
{
    try {
        for (;;) {
            m_listener.Wait(Platform::Infinite); // ended by Stop
            while (m_listener.CanAccept()) {
                unsigned long long handle = 0;
                m_listener.Accept(handle);
                Admit(handle);
            }
        }
    } catch (...) {
        std::string const reason = TakeFailureText();
        if (!m_worker.IsStopping()) m_report.Complain("no longer listening: " + reason);
    }
}

void CServer::Admit(std::uint64_t handle)
{
    const std::lock_guard lock(m_lock);
    m_sessions.remove_if([](CSession const & session) { return session.HasEnded(); });
    bool const refuse = IsRefusing();
    CSession & session = m_sessions.emplace_back(++m_lastNumber, handle, refuse, m_estate, m_report);
    if (!refuse) {
        session.Notify(kAllData);
        for (SNMP::ORBA_EVENTINFO const & event : m_kept)
            session.Deliver(event);
        m_kept.clear();
    }
    session.Start();
    if (!refuse) m_firstConnection.Set();
}

void CServer::Notify(std::uint64_t mask)
{
    const std::lock_guard lock(m_lock);
    for (CSession & session : m_sessions)
        session.Notify(mask);
}

void CServer::Deliver(SNMP::ORBA_EVENTINFO const & event)
{
    if (!DeliverToSessions(event)) m_report.Say("event " + EventText(event.TrapId) + " waits for an agent");
}

bool CServer::DeliverToSessions(SNMP::ORBA_EVENTINFO const & event)
{
    const std::lock_guard lock(m_lock);
    bool delivered = false;
    for (CSession & session : m_sessions) {
        if (session.HasEnded()) continue;
        session.Deliver(event);
        delivered = true;
    }
    if (!delivered) m_kept.push_back(event);
    return delivered;
}

std::size_t CServer::DropAll()
{
    const std::lock_guard lock(m_lock);
    std::size_t count = 0;
    for (CSession & session : m_sessions) {
        if (session.HasEnded()) continue;
        session.Drop();
        ++count;
    }
    return count;
}

} // namespace Coresim
