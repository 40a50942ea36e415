// From events to traps, at once and in a delayed start.

#include <limits>

#include "Platform/Clock.h"
#include "Tests/Agent/Support/AgentUnderTest.h"

namespace {

using CTexts = std::vector<std::string>;

class EventTrapsTest : public CAgentTest {};

TEST_F(EventTrapsTest, ATrapHasEightVariablesInTheirOrder)
{
    CRawConnection connection = StartConnected();
    ASSERT_TRUE(Flag(connection, 0x200));
    std::uint64_t const before = Platform::UnixTimeMs() / 1000;
    ASSERT_TRUE(Serve(connection, 9, Wire::Int(1) + EventBytes(10042, {"a", "b", "c", "d", "e", "f"}, "server")));
    STrap const trap = agent->AwaitTrap();
    EXPECT_EQ(10042, trap.specific);
    EXPECT_EQ("1.3.6.1.4.1.88417.2.49.2", trap.enterprise);
    ASSERT_EQ(8u, trap.oids.size());
    for (std::size_t i = 0; i < 8; ++i) {
        EXPECT_EQ("1.3.6.1.4.1.88417.2.49.2.1." + std::to_string(i + 1) + ".0", trap.oids[i]);
        EXPECT_EQ(i == 1 ? 2u : 4u, trap.types[i]);
    }
    EXPECT_LE(before, std::stoull(trap.values[1]));
    EXPECT_GE(Platform::UnixTimeMs() / 1000, std::stoull(trap.values[1]));
    CTexts texts = trap.values;
    texts.erase(texts.begin() + 1);
    EXPECT_EQ((CTexts{"server", "a", "b", "c", "d", "e", "f"}), texts);
    ExpectTraced(
        {"\nDaten werden ausgewertet!", "\nEventinfo", "\nAnzahl Events=1\n", "\nStart SendTrap.", "\nEnd SendTrap."});
}

TEST_F(EventTrapsTest, AnEventWithoutAServerCarriesTheComputerName)
{
    CRawConnection connection = StartConnected();
    ASSERT_FALSE(agent->m_computerName.empty());
    ASSERT_TRUE(Flag(connection, 0x200));
    ASSERT_TRUE(Serve(connection, 9, Wire::Int(1) + EventBytes(5, {"", "", "", "", "", ""}, "")));
    STrap const trap = agent->AwaitTrap();
    ASSERT_EQ(8u, trap.values.size());
    EXPECT_EQ(agent->m_computerName, trap.values[0]);
    for (std::size_t i = 2; i < 8; ++i)
        EXPECT_EQ("", trap.values[i]) << "all eight exist, empty where there is no text";
}

TEST_F(EventTrapsTest, TheAgentsOwnTrapsHaveEightVariablesToo)
{
    Start();
    CRawConnection connection = peer.AcceptAgent();
    STrap const trap = agent->AwaitTrap();
    EXPECT_EQ(2, trap.specific);
    ASSERT_EQ(8u, trap.values.size());
    EXPECT_EQ(agent->m_computerName, trap.values[0]);
    EXPECT_EQ("", trap.values[7]);
}

TEST_F(EventTrapsTest, ThreeEventsOfOneRequestMakeThreeTrapsInTheirOrder)
{
    CRawConnection connection = StartConnected();
    ASSERT_TRUE(Flag(connection, 0x200));
    Wire::CBytes answer = Wire::Int(3);
    for (int const id : {11, -5, 2147483647}) // numbers pass through as they stand
        answer += EventBytes(id, {"", "", "", "", "", ""}, "s");
    ASSERT_TRUE(Serve(connection, 9, answer));
    EXPECT_EQ(11, agent->AwaitTrap().specific);
    EXPECT_EQ(-5, agent->AwaitTrap().specific);
    EXPECT_EQ(2147483647, agent->AwaitTrap().specific);
}

TEST_F(EventTrapsTest, ANegativeCountReadsNothingAndTheRequestEndsAsUsual)
{
    CRawConnection connection = StartConnected();
    ASSERT_TRUE(Flag(connection, 0x202));
    ASSERT_TRUE(Serve(connection, 1, AnswerOf(1, 0)));
    ASSERT_TRUE(Serve(connection, 9, Wire::Int(-1)));
    ASSERT_TRUE(
        HoldsWithin(kDeadline, [&] { return Traced("              ... URET_WaitObject0: alle events abgehandelt!"); }));
    EXPECT_TRUE(Traced("\nAnzahl Events=ffffffff\n"));
    EXPECT_TRUE(agent->TrapNumbers().empty());
    ASSERT_TRUE(Flag(connection, 0x200));
    ASSERT_TRUE(Serve(connection, 9, Wire::Int(0)));
    ASSERT_TRUE(Flag(connection, 0x2)) << "and the conversation goes on";
}

TEST_F(EventTrapsTest, TenThousandEventsAtOnceMakeTenThousandTrapsInOrder)
{
    constexpr int kMany = 10000;
    CRawConnection connection = StartConnected();
    Fake::EnableTrace(false);
    ASSERT_TRUE(Flag(connection, 0x200));
    Wire::CBytes answer = Wire::Int(kMany);
    for (int i = 0; i < kMany; ++i)
        answer += EventBytes(10000 + i, {std::to_string(i), "b", "c", "d", "e", "f"}, "server");
    ASSERT_TRUE(Serve(connection, 9, answer));
    for (int i = 0; i < kMany; ++i) {
        STrap const trap = agent->AwaitTrap();
        ASSERT_EQ(10000 + i, trap.specific);
        ASSERT_EQ(std::to_string(i), trap.values.at(2));
    }
    EXPECT_FALSE(agent->NextTrap().has_value());
}

TEST_F(EventTrapsTest, EventsThatCameAheadOfALostConnectionHaveBecomeTraps)
{
    g_agentIntervals.intervalMs = 5;
    CRawConnection connection = StartConnected();
    ASSERT_TRUE(Flag(connection, 0x200));
    ASSERT_TRUE(connection.Expect(Wire::Request(9) + Wire::Int(1) + Wire::kWaitAck));
    Wire::CBytes const event = EventBytes(77, {"", "", "", "", "", ""}, "s");
    connection.Send(Wire::Ack(0) + Wire::Int(1) + Wire::Int(3) + event + event + event.substr(0, 2));
    connection.Close();
    EXPECT_EQ(77, agent->AwaitTrap().specific);
    EXPECT_EQ(77, agent->AwaitTrap().specific);
    CRawConnection again = peer.AcceptAgent();
    EXPECT_EQ(2, agent->AwaitTrap().specific);
}

class DelayedStartTest : public CAgentTest {
protected:
    DelayedStartTest()
    {
        InstallServices();
        g_agentIntervals.intervalMs = 20;
        g_agentIntervals.listenerSpanMs = 0;
        g_agentIntervals.listenerInitMs = 60;
    }
    std::vector<int> Queued() const
    {
        std::vector<int> numbers;
        for (SNMP::ORBA_EVENTINFO const & trap : agent->m_TrapQueue)
            numbers.push_back(trap.TrapId);
        return numbers;
    }
    static Wire::CBytes Events(std::vector<int> const & ids)
    {
        Wire::CBytes answer = Wire::Int(static_cast<int>(ids.size()));
        for (int const id : ids)
            answer += EventBytes(id, {"1", "2", "3", "4", "5", "6"}, "s");
        return answer;
    }
};

TEST_F(DelayedStartTest, TrapsWaitAndGoOutTogetherInTheirOrder)
{
    g_agentIntervals.listenerInitMs = 200;
    CRawConnection connection = StartConnected();
    ASSERT_TRUE(Flag(connection, 0x200));
    ASSERT_TRUE(Serve(connection, 9, Events({21, 22})));
    EXPECT_EQ(2, agent->AwaitTrap().specific);
    EXPECT_EQ(21, agent->AwaitTrap().specific);
    EXPECT_EQ(22, agent->AwaitTrap().specific);
    // CONNECTED was queued ahead of them, and all came by the release alone.
    ExpectTraced({"\nAttached.", "\nStart QueueTrap.", "\nEnd QueueTrap.", "\nWaiter init 1.", "\nStart QueueTrap.",
                  "\nEnd QueueTrap.", "\nStart QueueTrap.", "\nEnd QueueTrap.", "\nStart SendTrap."});
    EXPECT_EQ(3u, TimesTraced("\nStart QueueTrap."));
}

TEST_F(DelayedStartTest, AfterTheReleaseTrapsGoOutAtOnceAlsoAfterAReconnection)
{
    g_agentIntervals.listenerInitMs = 0;
    CRawConnection connection = StartConnected();
    EXPECT_EQ(2, agent->AwaitTrap().specific);
    ASSERT_TRUE(HoldsWithin(kDeadline, [&] { return Traced("\nWait -20."); }));
    ASSERT_TRUE(Flag(connection, 0x200));
    ASSERT_TRUE(Serve(connection, 9, Events({31})));
    EXPECT_EQ(31, agent->AwaitTrap().specific);
    connection.Close();
    EXPECT_EQ(4, agent->AwaitTrap().specific);
    CRawConnection again = peer.AcceptAgent();
    EXPECT_EQ(2, agent->AwaitTrap().specific);
    EXPECT_EQ(1u, TimesTraced("\nStart QueueTrap.")) << "only the first CONNECTED waited";
}

TEST_F(DelayedStartTest, TheCountGoesDownByAnIntervalAtEachTickAndReleasesAtZero)
{
    CRawConnection connection = StartConnected(); // 60 left, 20 an interval
    EXPECT_EQ(2, agent->AwaitTrap().specific);
    ASSERT_TRUE(HoldsWithin(kDeadline, [&] { return Traced("\nWait -20."); }));
    ExpectTraced({"\nWait 40.", "\nWait 20.", "\nWait 0.", "\nStart SendTrap.", "\nWait -20."});
    EXPECT_EQ(1u, TimesTraced("\nWait -20."));
    ASSERT_TRUE(HoldsWithin(kDeadline, [&] { return TimesTraced("\ntRet=130\n") >= 7; }));
    EXPECT_FALSE(Traced("\nWait -40.")) << "with the queue open a tick does nothing more";
}

TEST_F(DelayedStartTest, ACountAtTheLowestEndReleasesAtTheFirstTickAndGoesRound)
{
    g_agentIntervals.listenerInitMs = std::numeric_limits<std::int32_t>::min() + 5;
    CRawConnection connection = StartConnected();
    EXPECT_EQ(2, agent->AwaitTrap().specific);
    EXPECT_TRUE(HoldsWithin(kDeadline, [&] { return Traced("\nWait 2147483633."); }));
}

TEST_F(DelayedStartTest, WithinTheSpanTheListenerCountsAsRunningOnAnyOrdinaryHost)
{
    // What the comparison of the process names amounts to: any other process will do.
    g_agentIntervals.listenerSpanMs = 3600000;
    CRawConnection connection = StartConnected();
    EXPECT_EQ(2, agent->AwaitTrap().specific);
    ExpectTraced({"\nStart IsProcessRunning (SnmpTrapListen.exe).", "\nWait 40."});
}

TEST_F(DelayedStartTest, BehindTheSpanTheListenerIsNotLookedFor)
{
    CRawConnection connection = StartConnected();
    ASSERT_TRUE(HoldsWithin(kDeadline, [&] { return Traced("\nWait 0."); }));
    for (std::string const & line : Trace())
        EXPECT_FALSE(line.starts_with("\nStart IsProcessRunning")) << line;
}

TEST_F(DelayedStartTest, TheTickTracesBothTimes)
{
    CRawConnection connection = StartConnected();
    std::string const start = "\nStartTime = " + std::to_string(agent->m_StartTime) + ", CurrTime = ";
    EXPECT_TRUE(HoldsWithin(kDeadline, [&] {
        for (std::string const & line : Trace())
            if (line.starts_with(start) && line.ends_with(".")) return true;
        return false;
    }));
}

TEST_F(DelayedStartTest, ATrapThatWaitedCarriesTheTimeOfItsRelease)
{
    g_agentIntervals.listenerInitMs = 1500;
    g_agentIntervals.intervalMs = 500;
    CRawConnection connection = StartConnected();
    std::uint64_t const connected = Platform::UnixTimeMs();
    STrap const trap = agent->AwaitTrap();
    EXPECT_EQ(2, trap.specific);
    EXPECT_LE((connected + 1000) / 1000, std::stoull(trap.values.at(1)));
}

TEST_F(DelayedStartTest, AnUnexpectedDisconnectOvertakesWhatWaits)
{
    g_agentIntervals.listenerInitMs = 100000;
    CRawConnection connection = StartConnected();
    ASSERT_TRUE(HoldsWithin(kDeadline, [&] { return Traced("\nStart While-Schleife."); }));
    connection.Close();
    EXPECT_EQ(4, agent->AwaitTrap().specific);
    CRawConnection again = peer.AcceptAgent();
    ASSERT_TRUE(HoldsWithin(kDeadline, [&] { return TimesTraced("\nEnd QueueTrap.") == 2; }));
    EXPECT_TRUE(agent->TrapNumbers().empty()) << "both CONNECTED wait";
}

TEST_F(DelayedStartTest, WhileNothingIsConnectedTheCountStandsStill)
{
    peer.StopListening();
    Start();
    ASSERT_TRUE(HoldsWithin(kDeadline, [&] { return TimesTraced("\nTimeout.") >= 10; }));
    for (std::string const & line : Trace())
        EXPECT_FALSE(line.starts_with("\nWait ")) << line;
    agent->CloseMib();
    EXPECT_EQ(std::vector<int>{3}, agent->TrapNumbers()) << "DISCONNECTED goes past the queue";
    EXPECT_EQ(60, agent->m_ASIniting);
}

TEST_F(DelayedStartTest, WhatStillWaitsAtTheEndIsDropped)
{
    g_agentIntervals.listenerInitMs = 100000;
    CRawConnection connection = StartConnected();
    ASSERT_TRUE(HoldsWithin(kDeadline, [&] { return Traced("\nStart While-Schleife."); }));
    connection.ShutdownSend();
    ASSERT_EQ(4, agent->AwaitTrap().specific);
    agent->CloseMib();
    EXPECT_EQ(std::vector<int>{2}, Queued());
    EXPECT_EQ(std::vector<int>{3}, agent->TrapNumbers());
    agent.reset();
    Make();
    EXPECT_TRUE(Queued().empty());
}

} // namespace
