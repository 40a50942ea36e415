#include "Tools/Session.h"

#include <array>
#include <utility>

#include "Tools/FailureText.h"
#include "Tools/Names.h"
#include "VLK/Delegates.h"
#include "VLK/Waiter.h"

namespace Coresim {

namespace {

using namespace VLK;
using Sockets::CVlkSocketServer;

/// Interface version that both sides must name in the handshake; another one is refused.
constexpr unsigned int kInterfaceVersion = 267;
constexpr unsigned int kRefusingVersion = 0;
/// Version of the records' layout.
constexpr int kRecordVersion = 1;
/// What every request gets.
constexpr unsigned int kSuccess = 0;
/// Milliseconds for one blocking step of a conversation: an agent that stops in the middle is given up.
constexpr unsigned int kPatience = 30000;

/// How a data request is answered behind the record version, and the name that the report gives it.
struct SAnswer {
    ERequest request;
    char const * name;
    void (*write)(CEstate const &, CVlkSocketServer &);
};

template <ERequest REQUEST>
void WriteNumber(CEstate const & estate, CVlkSocketServer & stream)
{
    stream << estate.NumberOf(REQUEST);
}

constexpr std::array kAnswers{
    SAnswer{RequestStatus, "overall status",
            [](CEstate const & estate, CVlkSocketServer & stream) { estate.Status().writeData(stream); }},
    SAnswer{RequestControllers, "controllers",
            [](CEstate const & estate, CVlkSocketServer & stream) { estate.Controllers().writeData(stream); }},
    SAnswer{RequestControllerInfo, "number of controllers", &WriteNumber<RequestControllerInfo>},
    SAnswer{RequestDrives, "logical drives",
            [](CEstate const & estate, CVlkSocketServer & stream) { estate.Drives().writeData(stream); }},
    SAnswer{RequestDriveInfo, "number of logical drives", &WriteNumber<RequestDriveInfo>},
    SAnswer{RequestDevices, "physical devices",
            [](CEstate const & estate, CVlkSocketServer & stream) { estate.Devices().writeData(stream); }},
    SAnswer{RequestDeviceInfo, "number of physical devices", &WriteNumber<RequestDeviceInfo>},
    SAnswer{RequestContents, "contents of logical drives",
            [](CEstate const & estate, CVlkSocketServer & stream) { estate.Contents().writeData(stream); }},
};

} // namespace

CSession::CSession(unsigned int number, std::uint64_t socket, bool refuse, CEstate & estate, CReport & report)
    : m_name("agent " + std::to_string(number)), m_handle(socket), m_refuse(refuse), m_estate(estate), m_report(report)
{
    m_news.Init(/*initialState=*/false, /*manualReset=*/false);
}

CSession::~CSession()
{
    Stop();
}

void CSession::Start()
{
    m_worker.Start(Delegates_and_Calls::TDelegate<Delegates_and_Calls::CCall>(this, &CSession::Run));
}

void CSession::Stop()
{
    m_worker.Stop();
}

void CSession::Notify(std::uint64_t mask)
{
    {
        const std::lock_guard lock(m_lock);
        m_mask |= mask;
    }
    m_news.Set();
}

void CSession::Deliver(SNMP::ORBA_EVENTINFO const & event)
{
    {
        const std::lock_guard lock(m_lock);
        m_events.push_back(event);
        m_mask |= MaskOf(RequestEvents);
    }
    m_news.Set();
}

void CSession::Drop()
{
    {
        const std::lock_guard lock(m_lock);
        m_drop = true;
    }
    m_news.Set();
}

void CSession::Run()
{
    std::string farewell = "disconnected";
    try {
        Converse();
    } catch (...) {
        std::string const reason = TakeFailureText();
        if (!m_worker.IsStopping()) farewell = "gone: " + reason;
    }
    // The session's object stays until the next agent comes; this one mustn't wait for answers until then.
    m_stream.Abort();
    m_socket.Abort();
    Say(farewell);
    m_ended.store(true, std::memory_order_release);
}

void CSession::Converse()
{
    m_socket.Attach(m_handle);
    m_socket.SetTimeout(kPatience);
    Greet();
    Threading::CWaiter waiter;
    waiter << m_news << m_socket;
    for (;;) {
        if (waiter.Wait(Platform::Infinite, /*all=*/false) == URET_WaitObject0) {
            const std::lock_guard lock(m_lock);
            if (m_drop) break;
        }
        PassNotices();
        if (!ServeRequest()) break;
    }
}

void CSession::Greet()
{
    Sockets::CSocketAddr peer = m_socket.GetPeerAddr();
    std::string address;
    peer.GetAddress(address);
    Say("connects from " + address + (m_refuse ? ", is refused" : ""));
    m_stream.Attach(m_socket, m_refuse ? kRefusingVersion : kInterfaceVersion);
    Say("connected");
}

void CSession::PassNotices()
{
    std::uint64_t mask = 0;
    {
        const std::lock_guard lock(m_lock);
        mask = std::exchange(m_mask, 0);
    }
    if (mask == 0) return;
    m_stream.SetEvents(mask);
    Say("is told of events " + std::to_string(mask));
}

bool CSession::ServeRequest()
{
    unsigned int request = 0;
    switch (m_stream.CheckRequest(request)) {
    case URET_OK:
        Answer(request);
        return true;
    case URET_Timeout:
        Say("fetches the event mask");
        return true;
    case URET_Disconnect:
        return false;
    default:
        return true;
    }
}

void CSession::Answer(std::uint32_t request)
{
    int agentVersion = 0;
    m_stream >> agentVersion;
    if (request == RequestProgress) return AnswerProgress();
    m_stream.SendAck(kSuccess);
    m_stream << kRecordVersion;
    std::string what = "request " + std::to_string(request);
    for (SAnswer const & answer : kAnswers) {
        if (answer.request != request) continue;
        answer.write(m_estate, m_stream);
        what += std::string(": ") + answer.name;
    }
    std::deque<SNMP::ORBA_EVENTINFO> events;
    if (request == RequestEvents) {
        events = WriteEvents();
        what += ": " + std::to_string(events.size()) + " event(s)";
    }
    m_stream.EndAck();
    Say(what + "; result " + ResultText(kSuccess));
    for (SNMP::ORBA_EVENTINFO const & event : events)
        Say("was sent event " + EventText(event.TrapId));
}

void CSession::AnswerProgress()
{
    int controller = 0;
    int drive = 0;
    m_stream >> controller >> drive;
    int const value = m_estate.Progress(controller, drive);
    m_stream.SendAck(kSuccess);
    m_stream << kRecordVersion << value;
    m_stream.EndAck();
    Say("progress of drive " + std::to_string(controller) + "." + std::to_string(drive) + ": " + std::to_string(value));
}

std::deque<SNMP::ORBA_EVENTINFO> CSession::WriteEvents()
{
    std::deque<SNMP::ORBA_EVENTINFO> events;
    {
        const std::lock_guard lock(m_lock);
        events.swap(m_events);
    }
    m_stream << static_cast<int>(events.size());
    for (SNMP::ORBA_EVENTINFO const & event : events)
        event.writeData(m_stream);
    return events;
}

void CSession::Say(std::string const & text)
{
    m_report.Say(m_name + " " + text);
}

} // namespace Coresim
