#include "Agent/Src/PollHandler.h"

#include <cinttypes>
#include <cstdint>
#include <string>

#include "Agent/Src/Failure.h"
#include "Agent/Src/Intervals.h"
#include "Agent/Src/ORBA_MIB.h"
#include "Platform/Clock.h"
#include "Snmp/Frame/Globals.h"
#include "Snmp/Host/Debug.h"
#include "Snmp/Host/Process.h"
#include "VLK/ResultCodes.h"
#include "VLK/Socket.h"
#include "VLK/StreamSocket.h"
#include "VLK/Threads.h"
#include "VLK/Waiter.h"

/// Every trace line of the poll handler is a milestone.
#define POLL_TRACE(...)                                                                                                \
    do {                                                                                                               \
        if (CDebug::Enabled()) CDebug::Trace(1, __VA_ARGS__);                                                          \
    } while (false)

namespace SNMP {

namespace {

using VLK::Sockets::CSocket;
using VLK::Sockets::CVlkSocket;
using VLK::Sockets::CVlkSocketClient;
using VLK::Threading::CWaiter;
using VLK::Threading::CWaitInterval;

constexpr unsigned int kAttachVersion = 267;
constexpr int kMibVersion = 1;
constexpr unsigned int kProgressRequest = 11;
constexpr unsigned int kEventRequest = 9;
constexpr char kTrapListener[] = "SnmpTrapListen.exe";

/// Trap numbers of the agent's own making.
enum EConnectionTrap : int { TrapConnected = 2, TrapDisconnected = 3, TrapUnexpectedDisconnect = 4 };

/// Which socket operation is under way; the trace shows the numbers.
enum EStep : int {
    StepNone = 0,
    StepConnect = 1,
    StepAttach = 2,
    StepWaitList = 3,
    StepClose = 4,
    StepGetEvents = 5,
    StepStartRequest = 6,
    StepWaitForAck = 7,
    StepData = 8,
    StepSkip = 9,
    StepEndRequest = 10
};

/// The thread's socket. Every read looks for an interrupt, since against a peer that sends without end no read ever
/// comes to a wait, where interrupts are seen otherwise.
class CBreakableSocket : public CSocket {
public:
    unsigned int Read(void * data, unsigned long long size, unsigned long long * read,
                      VLK::Sockets::READ_MODE mode) override
    {
        VLK::Threading::CCurrentThread().CheckInterrupt();
        return CSocket::Read(data, size, read, mode);
    }
};

} // namespace

/// The thread's state and its steps. One thread.
class CPollHandler {
public:
    explicit CPollHandler(CKestrixRAIDAgent & agent) : m_agent(agent), m_interval(g_agentIntervals.firstWaitMs)
    {
        m_interrupts.SetWaitInterrupt(agent.m_BreakOff);
    }
    /// For what not even the handlers of a pass could deal with: the thread ends, and nobody waits for it.
    static void GiveUp();

    bool GoesOn() const noexcept { return m_toConnect && !Abandoned(); }
    /// One pass: wait, connect, and serve the connection to its end.
    void Pass();

private:
    /// What lives as long as one connection attempt.
    struct SConnection {
        CVlkSocketClient sock;
        CWaiter waiter;
        bool running = true;
    };

    /// A request for a record: its name in the trace, how it is read, and what it rebuilds.
    struct SRequest {
        char const * name;
        void (*read)(CKestrixRAIDAgent & agent, CVlkSocket & sock);
        void (*rebuild)(CKestrixRAIDAgent & agent);
    };
    template <auto Record, auto Rebuild>
    static constexpr SRequest Request(char const * name)
    {
        return {name, [](CKestrixRAIDAgent & agent, CVlkSocket & sock) { (agent.*Record).ReadData(sock); },
                [](CKestrixRAIDAgent & agent) { (agent.*Rebuild)(); }};
    }
    static SRequest const kRequests[kEventRequest - 1]; ///< of the numbers 1 to 8

    /// Whether this thread was ended by force where force can't stop it: then nothing here is its business any more.
    bool Abandoned() const noexcept { return m_agent.m_PollThread.WasTerminated(); }
    void TryPass();
    void AwaitAttempt(SConnection & connection);
    void Connect(SConnection & connection);
    void Serve(SConnection & connection);
    unsigned int AwaitWork(SConnection & connection);
    void OnSocket(SConnection & connection);
    void OnProgress(SConnection & connection);
    void OnTick(SConnection & connection);
    void WalkFlags(SConnection & connection, unsigned long long flags);
    void RunRequest(CVlkSocketClient & sock, unsigned int number);
    void FetchRecord(CVlkSocketClient & sock, SRequest const & request);
    void FetchEvents(CVlkSocketClient & sock);
    void FinishRequest(CVlkSocketClient & sock);
    void CountDown();
    void ReleaseTraps();
    void EndConnection(SConnection & connection);
    void EndForShutdown(SConnection & connection);
    void Forward(ORBA_EVENTINFO const & trap);
    void SendConnectionTrap(EConnectionTrap trap);
    void OnFailure(VLK::Exceptions::CErrorLog const & log);
    void OnBrokenConversation();

    CKestrixRAIDAgent & m_agent;
    VLK::Threading::CInterruptGuard m_interrupts;
    CBreakableSocket m_socket; ///< CSock of the whole thread
    CWaitInterval m_interval;  ///< the deadline that all waits share
    ORBA_EVENTINFO m_trap;     ///< of the connection's own traps; only its number is ever set
    int m_step = StepNone;
    bool m_toConnect = true;
};

CPollHandler::SRequest const CPollHandler::kRequests[] = {
    Request<&CKestrixRAIDAgent::m_Status, &CKestrixRAIDAgent::RebuildStatusGroup>("AdapterStatus"),
    Request<&CKestrixRAIDAgent::m_AdapterTable, &CKestrixRAIDAgent::RebuildCtrlTable>("AdapterTable"),
    Request<&CKestrixRAIDAgent::m_ControllerInfo, &CKestrixRAIDAgent::RebuildControllerInfoGroup>("AdapterInfo"),
    Request<&CKestrixRAIDAgent::m_LogicalDriveTable, &CKestrixRAIDAgent::RebuildLogicalDriveTable>("LogicalDriveTable"),
    Request<&CKestrixRAIDAgent::m_LogicalDriveInfo, &CKestrixRAIDAgent::RebuildLogicalDriveInfoGroup>(
        "LogicalDriveInfo"),
    Request<&CKestrixRAIDAgent::m_PhysicalDeviceTable, &CKestrixRAIDAgent::RebuildPhysicalDeviceTable>(
        "PhysicalDeviceTable"),
    Request<&CKestrixRAIDAgent::m_PhysicalDeviceInfo, &CKestrixRAIDAgent::RebuildPhysicalDeviceInfoGroup>(
        "PhysicalDeviceInfo"),
    Request<&CKestrixRAIDAgent::m_ContentsTable, &CKestrixRAIDAgent::RebuildLogicalDriveContentsTable>(
        "LogicalDriveContentsTable"),
};

void CPollHandler::Pass()
{
    VLK::Exceptions::CThrowState state;
    try {
        TryPass();
    } catch (...) {
        VLK_CONTINUE(state, log);
        VLK::Exceptions::CErrorLog errorLog;
        log >> errorLog;
        OnFailure(errorLog);
    }
}

void CPollHandler::TryPass()
{
    SConnection connection;
    POLL_TRACE("\ntoConnect-Status %d", m_toConnect ? 1 : 0);
    m_step = StepNone;
    connection.waiter << m_agent.m_Terminate;
    POLL_TRACE("\nWaiter init0.");
    AwaitAttempt(connection);
    // Ahead of the attempt, so that the time a failing one takes counts into the interval.
    m_interval.Restart(g_agentIntervals.intervalMs);
    if (!m_toConnect) return;
    Connect(connection);
    POLL_TRACE("\nStart While-Schleife.");
    Serve(connection);
    POLL_TRACE("\nEnde While-Schleife.");
}

void CPollHandler::AwaitAttempt(SConnection & connection)
{
    switch (connection.waiter.Wait(m_interval, /*all=*/false)) {
    case VLK::URET_WaitObject0:
        POLL_TRACE("\nTerminate.");
        m_toConnect = false;
        SendConnectionTrap(TrapDisconnected);
        break;
    case VLK::URET_Timeout:
        POLL_TRACE("\nTimeout.");
        break;
    default:
        POLL_TRACE("\nDefault: unknown.");
        SendConnectionTrap(TrapDisconnected);
        m_toConnect = false;
        break;
    }
}

void CPollHandler::Connect(SConnection & connection)
{
    POLL_TRACE("\nConnect localhost.");
    m_step = StepConnect;
    m_socket.ConnectLocal(m_agent.m_PortNumber);
    POLL_TRACE("\nConnected localhost.");
    m_step = StepAttach;
    connection.sock.Attach(m_socket, kAttachVersion);
    POLL_TRACE("\nAttached.");
    m_trap.SetTrapId(TrapConnected);
    Forward(m_trap);
    m_step = StepWaitList;
    connection.waiter.Clear();
    connection.waiter << connection.sock << m_agent.m_ProgressRequest << m_agent.m_Terminate;
    m_step = StepNone;
    POLL_TRACE("\nWaiter init 1.");
}

void CPollHandler::Serve(SConnection & connection)
{
    while (connection.running && !Abandoned()) {
        switch (AwaitWork(connection)) {
        case VLK::URET_WaitObject0:
            OnSocket(connection);
            break;
        case VLK::URET_WaitObject1:
            OnProgress(connection);
            break;
        case VLK::URET_WaitObject2:
            POLL_TRACE("switch URET_WaitObject2");
            EndConnection(connection);
            break;
        case VLK::URET_Timeout:
            OnTick(connection);
            break;
        default:
            POLL_TRACE("\ndefault: unbekannt.");
            break;
        }
        POLL_TRACE("\nEnde eines Schleifendurchgangs");
    }
}

unsigned int CPollHandler::AwaitWork(SConnection & connection)
{
    POLL_TRACE("\nvor PSock.CanRead()\n");
    unsigned int result = connection.sock.CanRead();
    POLL_TRACE("\nnach PSock.CanRead() tRet=%ld\n", static_cast<long>(result));
    if (result != VLK::URET_OK && !m_socket.IsConnected()) {
        // The handshake has read the end of the connection already, and no further event will tell of it.
        result = VLK::URET_WaitObject0;
    } else if (result != VLK::URET_OK) {
        result = connection.waiter.Wait(m_interval, /*all=*/false);
        POLL_TRACE("\ntRet=%ld\n", static_cast<long>(result));
    }
    return result;
}

void CPollHandler::OnSocket(SConnection & connection)
{
    unsigned long long flags = 0;
    m_step = StepGetEvents;
    connection.sock.GetEvents(flags);
    m_step = StepNone;
    POLL_TRACE("\nCSock.IsConnected()=%d\n", m_socket.IsConnected() ? 1 : 0);
    if (!m_socket.IsConnected()) {
        connection.running = false;
        SendConnectionTrap(TrapUnexpectedDisconnect);
        m_interval.Restart();
        return;
    }
    POLL_TRACE("\nFlags=%lx\n", static_cast<unsigned long>(flags));
    if (flags != 0) {
        WalkFlags(connection, flags);
        m_interval.Restart();
        POLL_TRACE("              ... URET_WaitObject0: alle events abgehandelt!");
    } else if (g_agentShutdown != 0) {
        EndForShutdown(connection);
    } else {
        m_interval.Restart();
        POLL_TRACE("              ... URET_WaitObject0: null event (0) abgehandelt!");
    }
}

void CPollHandler::WalkFlags(SConnection & connection, unsigned long long flags)
{
    for (unsigned int position = 0; flags != 0; ++position) {
        if (g_agentShutdown != 0) {
            EndForShutdown(connection);
            break;
        }
        POLL_TRACE("\nPrüfe Event-Flag.");
        unsigned long long const bit = 1ull << (position % 64);
        bool const flagged = (flags & bit) != 0;
        flags ^= bit; // flipped, not cleared: a bit that wasn't set is set behind the walk
        POLL_TRACE("\nFlags=%lx\n", static_cast<unsigned long>(flags));
        POLL_TRACE("\nrequest=%lx\n", static_cast<unsigned long>(position));
        if (!flagged) continue;
        if (position == 0 || position > kEventRequest) break;
        RunRequest(connection.sock, position);
    }
}

void CPollHandler::RunRequest(CVlkSocketClient & sock, unsigned int number)
{
    m_step = StepStartRequest;
    sock.StartRequest(number);
    m_step = StepData;
    sock << kMibVersion;
    m_step = StepWaitForAck;
    unsigned int ack = 0;
    sock.WaitForAck(ack);
    m_step = StepData;
    int peerVersion = 0;
    sock >> peerVersion;
    m_step = StepNone;
    POLL_TRACE("\nDaten werden ausgewertet!");
    if (number == kEventRequest) {
        FetchEvents(sock);
    } else {
        FetchRecord(sock, kRequests[number - 1]);
    }
    m_step = StepSkip;
    sock.Skip();
    POLL_TRACE("\nPSock.Skip:Phase 4");
    FinishRequest(sock);
}

void CPollHandler::FetchRecord(CVlkSocketClient & sock, SRequest const & request)
{
    POLL_TRACE("\n%s:Phase 1", request.name);
    m_step = StepData;
    request.read(m_agent, sock);
    m_step = StepNone;
    POLL_TRACE("\n%s:Phase 2", request.name);
    request.rebuild(m_agent);
    POLL_TRACE("\n%s:Phase 3", request.name);
}

void CPollHandler::FetchEvents(CVlkSocketClient & sock)
{
    POLL_TRACE("\nEventinfo");
    ORBA_EVENTINFO event;
    int count = 0;
    m_step = StepData;
    sock >> count;
    m_step = StepNone;
    POLL_TRACE("\nAnzahl Events=%lx\n", static_cast<unsigned long>(static_cast<std::uint32_t>(count)));
    for (int i = 0; i < count; ++i) {
        m_step = StepData;
        event.ReadData(sock);
        m_step = StepNone;
        Forward(event);
    }
}

void CPollHandler::FinishRequest(CVlkSocketClient & sock)
{
    POLL_TRACE("\nDaten wurden ... ");
    m_step = StepEndRequest;
    sock.EndRequest();
    m_step = StepNone;
    POLL_TRACE("              ... ausgewertet!");
}

void CPollHandler::OnProgress(SConnection & connection)
{
    CVlkSocketClient & sock = connection.sock;
    POLL_TRACE("\nswitch URET_WaitObject1");
    int const adapterNr = m_agent.m_AdapterNr.load(std::memory_order_relaxed);
    int const logicalDrive = m_agent.m_LogicalDrive.load(std::memory_order_relaxed);
    POLL_TRACE("\nadapterNr     =%d\n", adapterNr);
    POLL_TRACE("\nm_LogicalDrive=%d\n", logicalDrive);

    m_step = StepStartRequest;
    sock.StartRequest(kProgressRequest);
    m_step = StepData;
    sock << kMibVersion;
    POLL_TRACE("\neigene MIB-Versionsnummer =%d\n", kMibVersion);
    sock << adapterNr << logicalDrive;
    m_step = StepWaitForAck;
    unsigned int ack = 0;
    sock.WaitForAck(ack);
    POLL_TRACE("\nDaten (Progrss-Counter) werden ausgewertet!");
    m_step = StepData;
    int peerVersion = 0;
    sock >> peerVersion;
    POLL_TRACE("\nMIB-Versionsnummer der Gegenstelle=%d\n", peerVersion);
    int counter = 0;
    sock >> counter;
    m_step = StepNone;
    POLL_TRACE("\nProgresscounter=%d\n", counter);
    m_agent.m_AdapterNr.store(counter, std::memory_order_relaxed);
    m_agent.m_ProgressReply.Set();
    m_step = StepSkip;
    sock.Skip();
    FinishRequest(sock);
}

void CPollHandler::OnTick(SConnection & connection)
{
    if (g_agentShutdown != 0) {
        EndForShutdown(connection);
        return;
    }
    if (m_agent.m_StartTime != 0) CountDown();
    m_interval.Restart();
}

void CPollHandler::CountDown()
{
    std::uint64_t const now = Platform::UnixTimeMs();
    POLL_TRACE("\nStartTime = %" PRIu64 ", CurrTime = %" PRIu64 ".", m_agent.m_StartTime, now);
    bool const spanOver = now - m_agent.m_StartTime > static_cast<std::uint32_t>(m_agent.m_ASRunning);
    if (!spanOver && !IsProcessRunning(kTrapListener)) return;
    if (m_agent.m_ASIniting <= 0) ReleaseTraps();
    // A time from the registry may lie anywhere in 32 bits, so the count goes round instead of overflowing.
    m_agent.m_ASIniting =
        static_cast<std::int32_t>(static_cast<std::uint32_t>(m_agent.m_ASIniting) - g_agentIntervals.intervalMs);
    POLL_TRACE("\nWait %d.", m_agent.m_ASIniting);
}

void CPollHandler::ReleaseTraps()
{
    m_agent.m_StartTime = 0; // from here on traps go out at once
    for (ORBA_EVENTINFO const & trap : m_agent.m_TrapQueue)
        m_agent.SendTrap(trap);
    m_agent.m_TrapQueue = {};
}

void CPollHandler::EndForShutdown(SConnection & connection)
{
    POLL_TRACE("\nDer Service will terminieren");
    EndConnection(connection);
}

void CPollHandler::EndConnection(SConnection & connection)
{
    m_step = StepClose;
    connection.sock.Close();
    m_step = StepNone;
    connection.running = false;
    m_toConnect = false;
    SendConnectionTrap(TrapDisconnected);
}

void CPollHandler::Forward(ORBA_EVENTINFO const & trap)
{
    if (m_agent.m_StartTime > 0) {
        m_agent.QueueTrap(trap);
    } else {
        m_agent.SendTrap(trap);
    }
}

void CPollHandler::SendConnectionTrap(EConnectionTrap trap)
{
    // Past the queue, also in a delayed start.
    m_trap.SetTrapId(trap);
    m_agent.SendTrap(m_trap);
}

void CPollHandler::OnFailure(VLK::Exceptions::CErrorLog const & log)
{
    if (Abandoned()) return;
    if (m_step != StepNone) {
        OnBrokenConversation();
        return;
    }
    m_agent.m_AgentState.store(CKestrixRAIDAgent::kStateBroken, std::memory_order_relaxed);
    m_agent.SetAgentStatusCode(CKestrixRAIDAgent::kStateBroken);
    if (CDebug::Enabled()) CDebug::Trace(1, "%s", CrashText(log).c_str());
    m_toConnect = false;
}

void CPollHandler::OnBrokenConversation()
{
    POLL_TRACE("\nCatch: Exeption-Status %d", m_step);
    POLL_TRACE("\nCatch: toConnect-Status %d", m_toConnect ? 1 : 0);
    if (m_step == StepGetEvents) SendConnectionTrap(TrapDisconnected);
    POLL_TRACE("\nKestrix RAID Agent konnte sich nicht mit dem ORBA Service verbinden!");
    m_agent.m_AgentState.store(CKestrixRAIDAgent::kStateBroken, std::memory_order_relaxed);
    m_agent.SetAgentStatusCode(CKestrixRAIDAgent::kStateBroken);
    m_agent.m_ProgressReply.Set();
    m_socket.Abort();
}

void CPollHandler::GiveUp()
{
    VLK::Exceptions::CThrowState state;
    state.DisableThrow();
    CKestrixRAIDAgent::m_AgentState.store(CKestrixRAIDAgent::kStateBroken, std::memory_order_relaxed);
    CKestrixRAIDAgent::m_ProgressReply.Set();
    POLL_TRACE("\nThread_PollHandler ended by an exception.");
}

void RunPollHandler(CKestrixRAIDAgent & agent) noexcept
{
    try {
        VLK::Threading::CCallBackGuard const guard;
        CPollHandler handler(agent);
        POLL_TRACE("\nStart Thread_PollHandler.");
        while (handler.GoesOn())
            handler.Pass();
        POLL_TRACE("\nFinish Thread_PollHandler.");
    } catch (...) {
        CPollHandler::GiveUp();
    }
}

} // namespace SNMP
