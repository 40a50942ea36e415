// Start and stop of the agent.

#include <future>

#include "Platform/Process.h"
#include "Snmp/Frame/Globals.h"
#include "Tests/Agent/Support/AgentUnderTest.h"

namespace {

class LifecycleTest : public CAgentTest {};

TEST_F(LifecycleTest, TheStartIsTracedAndLeavesTheAgentsOwnGroupAlone)
{
    Start();
    EXPECT_EQ(1, agent->m_AgentState);
    ExpectTraced({"\n\nStarting Kestrix RAID Agent initialization...", "\n-- Insert \"kxrAgentInfo\" group --",
                  "\nKestrix RAID Agent specific thread started.", "\nSet Kestrix RAID Agent status to OK.",
                  "\nKestrix RAID Agent initialization done!\n"});
    for (SShownObject const & object : agent->Walk())
        EXPECT_TRUE(object.oid.starts_with("1.1.")) << object.oid;
}

TEST_F(LifecycleTest, TheStopIsTracedAndEndsThePollThreadInOrder)
{
    g_agentIntervals.firstWaitMs = 30000; // the thread waits for its first attempt when it is stopped
    Start();
    agent->CloseMib();
    EXPECT_TRUE(HasEnded());
    ExpectTraced({"\n\nTerminating Kestrix RAID Agent...", "\nKestrix RAID Agent termination done!\n"});
    EXPECT_TRUE(Traced("\nFinish Thread_PollHandler."));
    EXPECT_FALSE(Traced("\nKill Thread_PollHandler."));
}

TEST_F(LifecycleTest, AStartThatMeetsTheShutdownIsReportedAsSuccessThoughNothingRuns)
{
    Make();
    SignalShutdown();
    agent->InitializeMib();
    EXPECT_EQ(1, agent->m_AgentState);
    EXPECT_FALSE(agent->m_PollThread.handle);
    ExpectTraced(
        {"\n\n## Kestrix RAID Agent shutdown - initialization aborted!", "\nSet Kestrix RAID Agent status to OK."});
}

TEST_F(LifecycleTest, ClosingAnAgentWhoseThreadNeverStartedReturnsAtOnceWithoutAKill)
{
    Make();
    agent->CloseMib();
    EXPECT_FALSE(Traced("\nKill Thread_PollHandler."));
    EXPECT_TRUE(Traced("\nKestrix RAID Agent termination done!\n"));
}

TEST_F(LifecycleTest, ASecondStartOfOneObjectEndsInItsFirstWaitAfterADisconnectedTrap)
{
    CRawConnection connection = StartConnected();
    connection.ShutdownSend();
    agent->CloseMib();
    agent->TrapNumbers();
    agent->InitializeMib();
    EXPECT_EQ(3, agent->AwaitTrap().specific);
    EXPECT_TRUE(HoldsWithin(kDeadline, [&] { return HasEnded(); }));
}

TEST_F(LifecycleTest, AnAgentMadeAfterAnotherOneWorksLikeTheFirst)
{
    for (int i = 0; i < 3; ++i) {
        CRawConnection connection = StartConnected();
        ASSERT_TRUE(Flag(connection, 0x2));
        ASSERT_TRUE(Serve(connection, 1, AnswerOf(1, 0)));
        EXPECT_TRUE(HoldsWithin(kDeadline, [&] { return agent->Walk("1.3.") == ShownAfter(1, 0); }));
        connection.ShutdownSend();
        Stop();
    }
}

TEST_F(LifecycleTest, NoHandleIsLostOverManyLives)
{
    auto const live = [&] {
        CRawConnection connection = StartConnected();
        connection.ShutdownSend();
        Stop();
    };
    live();
    std::uint32_t before = 0;
    ASSERT_TRUE(Platform::HandleCount(before));
    for (int i = 0; i < 20; ++i)
        live();
    std::uint32_t after = 0;
    ASSERT_TRUE(Platform::HandleCount(after));
    EXPECT_EQ(before, after);
}

TEST_F(LifecycleTest, AThreadThatHangsInAReadIsMadeToLeaveIt)
{
    g_agentIntervals.closeLooks = 5;
    g_agentIntervals.breakOffMs = kDeadlineMs;
    CRawConnection connection = StartConnected();
    ASSERT_TRUE(Flag(connection, 0x2));
    ASSERT_TRUE(connection.Expect(Wire::Request(1) + Wire::Int(1) + Wire::kWaitAck));
    connection.Send(Wire::Ack(0) + Wire::Int(1).substr(0, 1) + "\xB3"); // and stops in mid-frame
    ASSERT_TRUE(HoldsWithin(kDeadline, [&] { return Traced("\nDaten werden ausgewertet!"); }));
    agent->CloseMib();
    EXPECT_TRUE(Traced("\nKill Thread_PollHandler."));
    EXPECT_FALSE(agent->m_PollThread.WasTerminated());
    EXPECT_FALSE(agent->m_PollThread.handle);
    EXPECT_TRUE(Traced("\nFinish Thread_PollHandler."));
}

TEST_F(LifecycleTest, AThreadThatIsFloodedWithDataIsMadeToLeaveToo)
{
    g_agentIntervals.closeLooks = 5;
    g_agentIntervals.breakOffMs = 2000; // soon enough to catch a thread that leaves by luck, when the flood ebbs
    CRawConnection connection = StartConnected();
    ASSERT_TRUE(Flag(connection, 0x2));
    ASSERT_TRUE(connection.Expect(Wire::Request(1) + Wire::Int(1) + Wire::kWaitAck));
    connection.Send(Wire::Ack(0) + Wire::Int(1) + AnswerOf(1, 0));
    // Behind the record, where the agent skips what is left of the answer, and never the end of it.
    auto flood = std::async(std::launch::async, [&] {
        Wire::CBytes const frames(65536, '\xC1');
        while (connection.Send(frames)) {
        }
    });
    ASSERT_TRUE(HoldsWithin(kDeadline, [&] { return Traced("\nAdapterStatus:Phase 3"); }));
    agent->CloseMib();
    EXPECT_FALSE(agent->m_PollThread.WasTerminated());
    EXPECT_TRUE(Traced("\nFinish Thread_PollHandler."));
}

TEST_F(LifecycleTest, APeerThatNeverClosesHoldsTheOrderlyEndUpUntilTheKill)
{
    g_agentIntervals.closeLooks = 5;
    g_agentIntervals.breakOffMs = kDeadlineMs;
    CRawConnection connection = StartConnected();
    agent->CloseMib();
    EXPECT_TRUE(Traced("\nKill Thread_PollHandler."));
    EXPECT_FALSE(agent->m_PollThread.WasTerminated());
    EXPECT_EQ(Wire::Hex(Wire::kClose), Wire::Hex(connection.Receive(1)));
    EXPECT_TRUE(connection.AwaitClose());
}

TEST_F(LifecycleTest, EveryTimeThatTheProductWaitsIsTheSettledOne)
{
    // The program's own object holds the tests' numbers; the library's are looked at from outside.
    EXPECT_EQ(20u, productIntervals.firstWaitMs);
    EXPECT_EQ(300u, productIntervals.intervalMs);
}

} // namespace
