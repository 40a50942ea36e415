// The one object that is asked for at each read.

#include <future>

#include "Tests/Agent/Support/AgentUnderTest.h"

namespace {

constexpr char kObject[] = "1.6.2.1.9.3.4"; ///< of the first drive in the answers

class ProgressTest : public CAgentTest {
protected:
    CRawConnection StartWithDrives()
    {
        CRawConnection connection = StartConnected();
        EXPECT_TRUE(Flag(connection, 0x10));
        EXPECT_TRUE(Serve(connection, 4, AnswerOf(4, 0)));
        EXPECT_TRUE(HoldsWithin(kDeadline, [&] { return agent->CheckSet(kObject) == 4; }));
        return connection;
    }
    std::future<std::optional<SShownObject>> Read()
    {
        return std::async(std::launch::async, [this] { return agent->Get(kObject); });
    }
    static Wire::CBytes Question(int controller, int drive)
    {
        return Wire::Request(11) + Wire::Int(1) + Wire::Int(controller) + Wire::Int(drive) + Wire::kWaitAck;
    }
};

TEST_F(ProgressTest, AReadAsksTheCoreServiceAndShowsItsCounter)
{
    CRawConnection connection = StartWithDrives();
    auto read = Read();
    ASSERT_TRUE(connection.Expect(Question(3, 4)));
    connection.Send(Wire::Ack(0) + Wire::Int(9) + Wire::Int(4711) + Wire::kEndAck);
    EXPECT_EQ((SShownObject{kObject, "kxrLogicalDriveProgress", 2, "4711"}), read.get().value_or(SShownObject{}));
    ASSERT_TRUE(HoldsWithin(kDeadline, [&] { return TimesTraced("\nEnde eines Schleifendurchgangs") >= 2; }));
    ExpectTraced({"\n-- Call \"fGetProgress for Index2 3\" --", "\n-- Call \"fGetProgress for Index1 4\" --",
                  "\nswitch URET_WaitObject1", "\nadapterNr     =3\n", "\nm_LogicalDrive=4\n",
                  "\neigene MIB-Versionsnummer =1\n", "\nDaten (Progrss-Counter) werden ausgewertet!",
                  "\nMIB-Versionsnummer der Gegenstelle=9\n", "\nProgresscounter=4711\n"});
    ExpectTraced({"\nProgresscounter=4711\n", "\n-- Call \"fGetProgress ret = 4711\" --"});
    ExpectTraced({"\nProgresscounter=4711\n", "\nDaten wurden ... ", "              ... ausgewertet!"});
}

TEST_F(ProgressTest, EachReadAsksAnew)
{
    CRawConnection connection = StartWithDrives();
    for (int const counter : {0, 50, 100, -1}) {
        auto read = Read();
        ASSERT_TRUE(connection.Expect(Question(3, 4)));
        connection.Send(Wire::Ack(0) + Wire::Int(1) + Wire::Int(counter) + Wire::kEndAck);
        EXPECT_EQ(std::to_string(counter), read.get().value_or(SShownObject{}).value);
    }
}

TEST_F(ProgressTest, AnOidThatIsTooShortAsksForZero)
{
    CRawConnection connection = StartConnected();
    auto call = std::async(std::launch::async, [this] {
        RFC1157VarBind binding{};
        std::uint32_t arc = 7;
        binding.name.idLength = 1;
        binding.name.ids = &arc;
        binding.value.asnType = ASN_NULL;
        std::uint32_t const status = agent->fGetProgress(&binding, 0);
        return std::pair<std::uint32_t, std::int32_t>(status, binding.value.asnValue.number);
    });
    ASSERT_TRUE(connection.Expect(Question(0, 7)));
    connection.Send(Wire::Ack(0) + Wire::Int(1) + Wire::Int(12) + Wire::kEndAck);
    EXPECT_EQ((std::pair<std::uint32_t, std::int32_t>(0, 12)), call.get());
}

TEST_F(ProgressTest, AReadWhileNothingIsConnectedWaitsForTheConnection)
{
    g_agentIntervals.intervalMs = 5;
    CRawConnection first = StartWithDrives();
    first.Close();
    EXPECT_EQ(4, agent->AwaitTrap().specific);
    auto read = Read();
    CRawConnection second = peer.AcceptAgent();
    ASSERT_TRUE(second.Expect(Question(3, 4)));
    second.Send(Wire::Ack(0) + Wire::Int(1) + Wire::Int(6) + Wire::kEndAck);
    EXPECT_EQ("6", read.get().value_or(SShownObject{}).value);
}

TEST_F(ProgressTest, AFailedAttemptReleasesTheReadAndTheValueStays)
{
    g_agentIntervals.intervalMs = 5;
    CRawConnection connection = StartWithDrives();
    peer.StopListening();
    connection.Close();
    EXPECT_EQ(4, agent->AwaitTrap().specific);
    SShownObject const object = Read().get().value_or(SShownObject{});
    EXPECT_NE(2u, object.type) << "the value stays as the tree has it";
    EXPECT_EQ(3, agent->m_AgentState);
}

TEST_F(ProgressTest, AConnectionThatIsLostInTheExchangeReleasesTheRead)
{
    g_agentIntervals.intervalMs = 5;
    CRawConnection connection = StartWithDrives();
    auto read = Read();
    ASSERT_TRUE(connection.Expect(Question(3, 4)));
    connection.Send(Wire::Ack(0));
    connection.Close();
    SShownObject const object = read.get().value_or(SShownObject{});
    EXPECT_NE(2u, object.type);
    CRawConnection again = peer.AcceptAgent();
    EXPECT_EQ(2, agent->AwaitTrap().specific) << "and no trap tells of the loss";
}

TEST_F(ProgressTest, AfterAFailureNoCounterIsDeliveredThoughTheExchangeGoesOn)
{
    g_agentIntervals.intervalMs = 5;
    CRawConnection connection = StartWithDrives();
    connection.Send("x");
    EXPECT_EQ(3, agent->AwaitTrap().specific);
    CRawConnection again = peer.AcceptAgent();
    auto read = Read();
    ASSERT_TRUE(again.Expect(Question(3, 4)));
    again.Send(Wire::Ack(0) + Wire::Int(1) + Wire::Int(6) + Wire::kEndAck);
    EXPECT_NE(2u, read.get().value_or(SShownObject{}).type);
    EXPECT_TRUE(Traced("\n-- Call \"fGetProgress ret = 6\" --"));
}

TEST_F(ProgressTest, AProgressQueryDoesNotPutTheTickOff)
{
    g_agentIntervals.intervalMs = 300;
    CRawConnection connection = StartWithDrives();
    while (!Traced("\ntRet=130\n")) {
        auto read = Read();
        ASSERT_TRUE(connection.Expect(Question(3, 4)));
        ASSERT_TRUE(connection.Send(Wire::Ack(0) + Wire::Int(1) + Wire::Int(1) + Wire::kEndAck));
        read.get();
    }
}

TEST_F(ProgressTest, ARowThatIsGoneRunsNoCallback)
{
    CRawConnection connection = StartWithDrives();
    ASSERT_TRUE(Flag(connection, 0x10));
    ASSERT_TRUE(Serve(connection, 4, Wire::Int(0)));
    ASSERT_TRUE(HoldsWithin(kDeadline, [&] { return agent->CheckSet(kObject) == 2; }));
    EXPECT_EQ(2u, agent->GetStatus(kObject));
    EXPECT_FALSE(Traced("\nswitch URET_WaitObject1"));
}

} // namespace
