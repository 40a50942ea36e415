#include "Module.h"

#include <VLK/Delegates.h>
#include <VLK/Socket.h>
#include <VLK/SocketListener.h>
#include <VLK/StreamSocket.h>
#include <VLK/Threads.h>
#include <VLK/Waiter.h>

#include "Reading.h"
#include "SystemSockets.h"
#include "Uses.h"

using namespace VLK;
using namespace VLK::Sockets;
using CJob = Delegates_and_Calls::TDelegate<Delegates_and_Calls::CCall>;

namespace {

constexpr unsigned int kDeadline = 20000; // ms
constexpr unsigned int kVersion = 1;      // of this module's own interface
constexpr unsigned int kStoreReading = 7;
constexpr unsigned int kStored = 1;
constexpr unsigned long long kAlarm = 1ull << 3;

SReading const kSent{"intake", -12, 0x123456789ABCull};

/// Answers one client: takes a reading, raises an alarm about it, and gives it back.
class CReadingServer {
public:
    /// Listens on a port of this host that the system chooses.
    CReadingServer()
    {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        m_listener.StartListen(CSocketAddr(reinterpret_cast<sockaddr &>(address)));
        m_thread.Create(CJob(this, &CReadingServer::Run), /*suspended=*/false);
    }
    unsigned int Port() const
    {
        sockaddr_in address{};
        socklen_t size = sizeof address;
        ::getsockname(static_cast<CSystemSocket>(m_listener.GetSocket()), reinterpret_cast<sockaddr *>(&address),
                      &size);
        return ntohs(address.sin_port);
    }
    bool HasEnded() { return m_thread.Wait(kDeadline) == URET_OK; }
    SReading const & Taken() const { return m_taken; }

private:
    void Run()
    {
        Threading::CWaiter waiter;
        waiter << m_listener;
        REQUIRE(waiter.Wait(kDeadline, /*all=*/false) == URET_WaitObject0);
        CSocket socket;
        socket.SetTimeout(kDeadline);
        m_listener.Accept(socket);
        CVlkSocketServer stream;
        REQUIRE(stream.Attach(socket, kVersion) == URET_OK);

        unsigned int code = 0;
        REQUIRE(stream.WaitForRequest(code) == URET_OK && code == kStoreReading);
        m_taken.ReadData(stream);
        stream.SendAck(kStored);
        m_taken.writeData(stream);
        stream.EndAck();
        stream.SetEvents(kAlarm);
        unsigned int end = URET_Timeout; // the end of a query for events
        while (end == URET_Timeout)
            end = stream.WaitForRequest(code);
        REQUIRE(end == URET_Disconnect);
        stream.Close();
    }

    CSocketListener m_listener;
    Threading::CThread m_thread;
    SReading m_taken;
};

void Ask(CVlkSocketClient & stream)
{
    stream.StartRequest(kStoreReading);
    kSent.writeData(stream);
    unsigned int ack = 0;
    REQUIRE(stream.WaitForAck(ack) == URET_OK && ack == kStored);
    SReading answer;
    answer.ReadData(stream);
    REQUIRE(answer == kSent);
    stream.EndRequest();
}

} // namespace

void UseStreamProtocol()
{
    CSystemSockets const sockets;
    CReadingServer server;
    CSocket socket;
    socket.SetTimeout(kDeadline);
    REQUIRE(socket.Connect(std::string("127.0.0.1"), server.Port()) == URET_OK);
    CVlkSocketClient stream;
    REQUIRE(stream.Attach(socket, kVersion) == URET_OK);
    Ask(stream);

    REQUIRE(stream.Wait(kDeadline) == URET_OK);
    unsigned long long events = 0;
    REQUIRE(stream.GetEvents(events) == URET_OK && events == kAlarm);
    stream.Close();
    REQUIRE(server.HasEnded());
    REQUIRE(server.Taken() == kSent);
}
