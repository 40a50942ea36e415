#include "Tools/Server.h"

#include <gtest/gtest.h>

#include "Support/Deadline.h"
#include "Tools/Synthetic.h"

namespace {

using namespace Coresim;
using namespace VLK;

constexpr unsigned int kVersion = 267;

/// An agent's end of a conversation.
class CAgentEnd {
    VLK::Sockets::CSocket m_socket; // ends behind the stream, which aborts it

public:
    explicit CAgentEnd(unsigned int port)
    {
        m_socket.SetTimeout(kDeadlineMs);
        m_socket.Connect(std::string("127.0.0.1"), port);
        stream.Attach(m_socket, kVersion);
    }
    /// The next event mask that isn't 0.
    unsigned long long WaitForEvents()
    {
        unsigned long long mask = 0;
        while (mask == 0) {
            if (stream.Wait(kDeadlineMs) != URET_OK) return 0;
            stream.GetEvents(mask);
        }
        return mask;
    }
    /// Opens a request and reads the peer's record version.
    int Ask(unsigned int request)
    {
        stream.StartRequest(request);
        stream << 1;
        return Answered();
    }
    /// Asks for a record by its request's number and reads the whole answer.
    template <class TRecord>
    TRecord Fetch(unsigned int request)
    {
        EXPECT_EQ(1, Ask(request));
        TRecord record;
        record.ReadData(stream);
        stream.EndRequest();
        return record;
    }
    int AskProgress(int controller, int drive)
    {
        stream.StartRequest(RequestProgress);
        stream << 1 << controller << drive;
        int version = Answered();
        EXPECT_EQ(1, version);
        int value = -1;
        stream >> value;
        stream.EndRequest();
        return value;
    }

    Sockets::CVlkSocketClient stream;

private:
    int Answered()
    {
        unsigned int ack = 99;
        stream.WaitForAck(ack);
        EXPECT_EQ(0u, ack);
        int version = 0;
        stream >> version;
        return version;
    }
};

class SessionTest : public testing::Test {
protected:
    void SetUp() override
    {
        // The system hands out a port of its own; the listener that found it is gone before the server starts.
        Platform::SocketHandle probe = Platform::NoSocket;
        sockaddr_storage address{};
        unsigned char const loopback[4] = {127, 0, 0, 1};
        Platform::FillAddress(address, Platform::SocketFamily::IPv4, 0, loopback);
        ASSERT_EQ(0u, Platform::OpenTcpSocket(probe, Platform::SocketFamily::IPv4));
        ASSERT_EQ(0u, Platform::BindSocket(probe, address));
        ASSERT_EQ(0u, Platform::LocalAddress(probe, address));
        Platform::CloseSocket(probe);
        std::uint16_t found = 0;
        unsigned char ignored[16];
        Platform::ReadAddress(address, found, ignored);
        port = found;
        server.Start(port);
    }

    unsigned int port = 0;
    CReport report{/*quiet=*/true};
    CEstate estate{MakeSyntheticEstate({2, 1, 3})};
    CServer server{estate, report};
};

TEST_F(SessionTest, AnAgentIsToldOfEverythingWhenItHasConnected)
{
    CAgentEnd agent(port);
    EXPECT_EQ(kAllData, agent.WaitForEvents());
}

TEST_F(SessionTest, EveryDataRequestIsAnswered)
{
    CAgentEnd agent(port);
    agent.WaitForEvents();
    EXPECT_EQ(2, agent.Fetch<SNMP::ORBA_STATUS>(RequestStatus).Overall);
    auto const controllers = agent.Fetch<SNMP::ORBA_ADAPTERTABLE>(RequestControllers);
    ASSERT_EQ(2u, controllers.size());
    EXPECT_EQ("Simulated controller (1)", controllers[1].DisplayName);
    EXPECT_EQ(2, agent.Fetch<SNMP::ORBA_CONTROLLERINFO>(RequestControllerInfo).NumberRaidControllers);
    EXPECT_EQ(2u, agent.Fetch<SNMP::ORBA_LOGICALDRIVETABLE>(RequestDrives).size());
    EXPECT_EQ(2, agent.Fetch<SNMP::ORBA_LOGICALDRIVEINFO>(RequestDriveInfo).NumberLogicalDrives);
    EXPECT_EQ(6u, agent.Fetch<SNMP::ORBA_PHYSICALDEVICETABLE>(RequestDevices).size());
    EXPECT_EQ(6, agent.Fetch<SNMP::ORBA_PHYSICALDEVICEINFO>(RequestDeviceInfo).NumberPhysicalDevices);
    EXPECT_EQ(4u, agent.Fetch<SNMP::ORBA_LOGICALDRIVECONTENTSTABLE>(RequestContents).size());
}

TEST_F(SessionTest, EventsArriveInOrderAndOnce)
{
    CAgentEnd agent(port);
    EXPECT_EQ(kAllData, agent.WaitForEvents());
    SNMP::ORBA_EVENTINFO event;
    for (int id = 10000; id < 10100; ++id) {
        event.TrapId = id;
        server.Deliver(event);
    }
    int next = 10000;
    while (next < 10100) {
        ASSERT_EQ(MaskOf(RequestEvents), agent.WaitForEvents());
        ASSERT_EQ(1, agent.Ask(RequestEvents));
        int count = 0;
        agent.stream >> count;
        for (; count > 0; --count) {
            event.ReadData(agent.stream);
            EXPECT_EQ(next++, event.TrapId);
        }
        agent.stream.EndRequest();
    }
    EXPECT_EQ(10100, next);
}

TEST_F(SessionTest, AnEventWithoutAnAgentWaitsForTheNextOne)
{
    SNMP::ORBA_EVENTINFO event;
    event.TrapId = 5;
    server.Deliver(event);
    CAgentEnd agent(port);
    EXPECT_EQ(kAllData | MaskOf(RequestEvents), agent.WaitForEvents());
    ASSERT_EQ(1, agent.Ask(RequestEvents));
    int count = 0;
    agent.stream >> count;
    ASSERT_EQ(1, count);
    event.ReadData(agent.stream);
    agent.stream.EndRequest();
    EXPECT_EQ(5, event.TrapId);
}

TEST_F(SessionTest, AProgressRequestGetsTheCounter)
{
    estate.SetProgress(1, 0, 100);
    CAgentEnd agent(port);
    agent.WaitForEvents();
    EXPECT_EQ(100, agent.AskProgress(1, 0));
    EXPECT_EQ(0, agent.AskProgress(5, 5));
}

TEST_F(SessionTest, AnUnknownRequestIsAnsweredWithoutDataAndTheConversationGoesOn)
{
    CAgentEnd agent(port);
    agent.WaitForEvents();
    EXPECT_EQ(1, agent.Ask(10));
    agent.stream.EndRequest();
    EXPECT_EQ(1, agent.Ask(RequestDriveInfo));
    agent.stream.Skip();
    agent.stream.EndRequest();
}

TEST_F(SessionTest, SeveralAgentsAreServedTogetherAndOneAfterTheOther)
{
    CAgentEnd first(port);
    CAgentEnd second(port);
    EXPECT_EQ(kAllData, second.WaitForEvents());
    EXPECT_EQ(kAllData, first.WaitForEvents());
    server.Notify(MaskOf(RequestDrives));
    EXPECT_EQ(MaskOf(RequestDrives), first.WaitForEvents());
    EXPECT_EQ(MaskOf(RequestDrives), second.WaitForEvents());
    {
        CAgentEnd third(port);
        EXPECT_EQ(kAllData, third.WaitForEvents());
    }
    CAgentEnd fourth(port);
    EXPECT_EQ(kAllData, fourth.WaitForEvents());
}

TEST_F(SessionTest, DropLetsEveryConnectionVanish)
{
    CAgentEnd first(port);
    CAgentEnd second(port);
    first.WaitForEvents();
    second.WaitForEvents();
    EXPECT_EQ(2u, server.DropAll());
    EXPECT_THROW(
        {
            first.stream.StartRequest(RequestStatus);
            first.stream << 1;
            unsigned int ack = 0;
            first.stream.WaitForAck(ack);
        },
        unsigned int);
    EXPECT_TRUE(HoldsWithin(kDeadline, [&] { return server.DropAll() == 0; }));
}

TEST_F(SessionTest, ARefusedAgentIsToldSoAndTheNextIsServedAgain)
{
    server.SetRefusing(true);
    EXPECT_THROW(CAgentEnd refused(port), unsigned int);
    server.SetRefusing(false);
    CAgentEnd agent(port);
    EXPECT_EQ(kAllData, agent.WaitForEvents());
}

TEST_F(SessionTest, AServerThatIsStoppedAtTheMomentOfItsStartEnds)
{
    server.Stop();
    for (int i = 0; i < 300; ++i) {
        CServer shortLived(estate, report);
        shortLived.Start(port);
    }
}

TEST_F(SessionTest, AServerThatIsStoppedAtTheMomentOfAConnectionEnds)
{
    server.Stop();
    for (int i = 0; i < 100; ++i) {
        CServer shortLived(estate, report);
        shortLived.Start(port);
        Sockets::CSocket early;
        early.SetTimeout(kDeadlineMs);
        early.Connect(std::string("127.0.0.1"), port);
        early.Abort();
    }
}

TEST_F(SessionTest, TheServerStopsWhileAgentsAreConnected)
{
    CAgentEnd agent(port);
    agent.WaitForEvents();
    server.Stop();
    EXPECT_THROW(
        {
            agent.stream.StartRequest(RequestStatus);
            agent.stream << 1;
            unsigned int ack = 0;
            agent.stream.WaitForAck(ack);
        },
        unsigned int);
}

} // namespace
