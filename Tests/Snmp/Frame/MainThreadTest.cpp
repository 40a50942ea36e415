#include "FrameFixture.h"
#include "Platform/SnmpUtil.h"
#include "Snmp/Frame/Intervals.h"
#include "Support/Deadline.h"

namespace {

constexpr char kStarted[] = "\n\nFRAME_MIB           : **** Agent initialization finished - SNMP requests now enabled "
                            "****\n";
const std::string kStars(51, '*');

class MainThreadTest : public FrameTest {
protected:
    ~MainThreadTest() override { m_agent.StopAgent(); }

    bool IsEnabled()
    {
        return HoldsWithin(kDeadline, [this] { return m_agent.m_requestsEnabled != 0; });
    }
    /// The trace of a status is the last thing before the main thread sleeps.
    bool Sleeps(std::size_t passes = 1)
    {
        return HoldsWithin(kDeadline, [&] { return CountTraced("Status changed to: started (4)") == passes; });
    }
    bool IsTraced(std::string const & part)
    {
        return HoldsWithin(kDeadline, [&] { return CountTraced(part) != 0; });
    }
    bool HasEnded() { return m_agent.m_thread.WaitForThreadExit(kDeadlineMs) != 0; }

    CAgentUnderTest m_agent;
};

} // namespace

TEST_F(MainThreadTest, AWholeLifeIsTracedStepByStep)
{
    m_agent.atInitializeMib = [this] {
        m_agent.MibInsertConstOid("1.3.6.1.4.1.88417.99.1.1.0", "one", 1, ASN_INTEGER, kReadOnly);
    };
    EXPECT_EQ(1, m_agent.StartAgent());
    ASSERT_TRUE(Sleeps());
    EXPECT_EQ(1u, m_agent.MibSize());
    EXPECT_EQ(1, m_agent.m_requestsEnabled);
    EXPECT_EQ("FRAME_MIB:Thread_AgentMain", m_agent.m_thread.name);
    EXPECT_EQ(1, m_agent.StopAgent());
    EXPECT_EQ(0u, m_agent.MibSize());
    EXPECT_EQ(0, m_agent.m_requestsEnabled);
    EXPECT_EQ(1u, g_agentShutdown);
    EXPECT_EQ(1, m_agent.initializations);
    EXPECT_EQ(1, m_agent.closings);
    EXPECT_TRUE(TracedInOrder({{2, "\n\nFRAME_MIB           : *** START THREAD Thread_AgentMain() ***\n"},
                               Frame(3, "Status changed to: starting (3)"),
                               Frame(3, "Calling the agent's InitializeMib()..."),
                               Frame(3, "...agent's InitializeMib() completed"),
                               {1, kStarted},
                               Frame(3, "Status changed to: started (4)"),
                               Frame(2, "Shutting down agent"),
                               Frame(3, "Set agents shutdown flag"),
                               Frame(3, "Signale shutdown to agents main thread ..."),
                               Frame(1, "##### AGENT SHUTDOWN SIGNALED #####"),
                               Frame(3, "Waiting for exit of agents main thread ..."),
                               Frame(3, "Agent main thread did exit in time!"),
                               Frame(2, "Shut down agent completed")}));
    EXPECT_TRUE(TracedInOrder({Frame(1, "Shutdown SNMP agent signaled!!"),
                               Frame(3, "Status changed to: stopping (5)"),
                               Frame(3, "Calling the agent's CloseMib()..."),
                               Frame(3, "... CloseMib() done"),
                               Frame(3, "delete MIB..."),
                               Frame(3, "... MIB deleted."),
                               Frame(3, "Status changed to: stopped (6)"),
                               Frame(2, "Agent shutdown finished."),
                               {4, "\n\nFRAME_MIB           : Start CoUninitialize() ..."},
                               {4, "\n\nFRAME_MIB           : ... CoUninitialize() done."},
                               {2, "\n\nFRAME_MIB           : *** EXIT THREAD Thread_AgentMain() ***\n"}}));
}

TEST_F(MainThreadTest, RequestsAreRefusedUntilInitializeMibHasReturned)
{
    CGate gate;
    m_agent.atInitializeMib = [&] {
        m_agent.MibInsertConstOid("1.3.6.1.4.1.88417.99.1.1.0", "one", 1, ASN_INTEGER, kReadOnly);
        gate.Pass();
    };
    m_agent.StartAgent();
    EXPECT_TRUE(HoldsWithin(kDeadline, [this] { return m_agent.MibSize() == 1; }));
    CBindings bindings({"1.3.6.1.4.1.88417.99.1.1.0"});
    std::uint32_t status = 0, index = 0;
    EXPECT_EQ(1, m_agent.SnmpQuery(SNMP_PDU_GET, bindings.List(), &status, &index));
    EXPECT_EQ(2u, status);
    EXPECT_EQ(1u, index);
    EXPECT_EQ(0, m_agent.preQueries + m_agent.postQueries);
    gate.Open();
    ASSERT_TRUE(IsEnabled());
    EXPECT_EQ(1, m_agent.SnmpQuery(SNMP_PDU_GET, bindings.List(), &status, &index));
    EXPECT_EQ(0u, status);
}

TEST_F(MainThreadTest, AShutdownDuringInitializeMibNeverEnablesRequests)
{
    m_agent.atInitializeMib = [this] { m_agent.SignalAgentShutdown(); };
    m_agent.StartAgent();
    ASSERT_TRUE(HasEnded());
    EXPECT_EQ(0u, CountTraced("SNMP requests now enabled"));
    EXPECT_EQ(1u, CountTraced("Status changed to: started (4)"));
    EXPECT_EQ(1, m_agent.closings);
}

TEST_F(MainThreadTest, WithoutAShutdownEventTheThreadGoesStraightOnToShutDown)
{
    m_agent.m_shutdownEvent.Reset();
    m_agent.StartAgent();
    ASSERT_TRUE(HasEnded());
    EXPECT_EQ(1, m_agent.closings);
    EXPECT_EQ(1u, CountTraced("Agent shutdown finished."));
}

TEST_F(MainThreadTest, AnExceptionOutOfInitializeMibEndsTheThreadWithRequestsRefused)
{
    m_agent.atInitializeMib = [] { throw std::runtime_error("no"); };
    m_agent.StartAgent();
    ASSERT_TRUE(HasEnded());
    EXPECT_EQ(0, m_agent.m_requestsEnabled);
    EXPECT_EQ(0u, g_agentShutdown);
    EXPECT_EQ(0, m_agent.closings);
    const std::string hashes(78, '#');
    EXPECT_TRUE(TracedInOrder({{1, "\n\n" + hashes},
                               {1, "\n####                   Exception in MIB Init Thread !!                    ####"},
                               {1, "\n" + hashes},
                               Frame(3, "Status changed to: exception (InitializeMib) (11)"),
                               {2, "\n\nFRAME_MIB           : *** EXIT THREAD Thread_AgentMain() ***\n"}}));
    EXPECT_EQ(0u, CountTraced("CoUninitialize"));
    EXPECT_EQ(1, m_agent.StopAgent());
    EXPECT_TRUE(TracedInOrder({Frame(2, "Shutting down agent"), Frame(3, "Agent main thread did already exit"),
                               Frame(2, "Shut down agent completed")}));
}

TEST_F(MainThreadTest, AnExceptionOutOfCloseMibEndsTheThreadWithTheShutdownFlagSet)
{
    m_agent.atCloseMib = [] { throw 5u; };
    m_agent.StartAgent();
    ASSERT_TRUE(Sleeps());
    EXPECT_EQ(1, m_agent.StopAgent());
    EXPECT_EQ(1u, g_agentShutdown);
    EXPECT_TRUE(Traced(Frame(3, "Status changed to: exception (InitializeMib) (11)")));
    EXPECT_EQ(0u, CountTraced("delete MIB..."));
    EXPECT_EQ(0u, CountTraced("CoUninitialize"));
}

TEST_F(MainThreadTest, AThreadThatCannotStartCountsAsStartedAndLeavesItsError)
{
    g_fakes.startThreadError = kFakeError;
    EXPECT_EQ(1, m_agent.StartAgent());
    EXPECT_EQ(kFakeError, m_agent.m_thread.lastError);
    EXPECT_TRUE(TracedInOrder({Frame(3, "Starting MIB main thread..."), Frame(3, "...MIB main thread started")}));
    EXPECT_EQ(0, m_agent.RestartAgent(1000));
    EXPECT_EQ(1, m_agent.StopAgent());
    EXPECT_TRUE(Traced(Frame(3, "Agent main thread did already exit")));
}

TEST_F(MainThreadTest, StartingTwiceKeepsTheOneThread)
{
    m_agent.StartAgent();
    ASSERT_TRUE(Sleeps());
    const std::uint32_t id = m_agent.m_thread.id;
    EXPECT_EQ(1, m_agent.StartAgent());
    EXPECT_EQ(id, m_agent.m_thread.id);
    EXPECT_EQ(1, m_agent.StopAgent());
    EXPECT_EQ(1, m_agent.initializations);
}

TEST_F(MainThreadTest, AnAgentThatWasStoppedCanBeStartedAgain)
{
    for (std::size_t round = 1; round <= 3; ++round) {
        EXPECT_EQ(1, m_agent.StartAgent());
        ASSERT_TRUE(Sleeps(round));
        EXPECT_EQ(1, m_agent.m_requestsEnabled);
        EXPECT_EQ(1, m_agent.StopAgent());
    }
    EXPECT_EQ(3, m_agent.initializations);
    EXPECT_EQ(3, m_agent.closings);
}

// The thread's name.

TEST_F(MainThreadTest, ALongModuleNameTakesTheWholeThreadName)
{
    struct SName {
        std::size_t length;
        std::size_t expected;
    };
    // 17 characters are appended while the whole stays below 64; at most 62 of the module name are taken.
    for (const SName & name : {SName{46, 63}, SName{47, 47}, SName{62, 62}, SName{100, 62}}) {
        SetModuleName(NativePath("/" + std::string(name.length, 'm')));
        g_fakes.startThreadError = kFakeError;
        m_agent.StartAgent();
        EXPECT_EQ(name.expected, m_agent.m_thread.name.size()) << name.length;
    }
    SetModuleName("");
    m_agent.m_thread.name = "as it was";
    m_agent.StartAgent();
    EXPECT_EQ("as it was", m_agent.m_thread.name);
    SetModuleName(NativePath("/FRAME_MIB.so"));
}

// The kill.

TEST_F(MainThreadTest, AThreadThatIgnoresTheShutdownIsKilledAndStoppingStillCompletes)
{
    g_frameIntervals.stopMs = 50;
    // The thread goes on where force can't stop it, so what it uses stays.
    struct SKept {
        CAgentUnderTest agent;
        CGate gate;
        std::atomic<bool> left{false};
    };
    static auto & kept = *new std::vector<SKept *>;
    kept.push_back(new SKept);
    CAgentUnderTest & agent = kept.back()->agent;
    CGate & gate = kept.back()->gate;
    std::atomic<bool> & left = kept.back()->left;
    agent.atInitializeMib = [&gate, &left] {
        gate.Pass();
        left = true;
    };
    agent.StartAgent();
    EXPECT_TRUE(IsTraced("Calling the agent's InitializeMib()..."));
    const std::uint32_t id = agent.m_thread.id;
    EXPECT_EQ(1, agent.StopAgent());
    EXPECT_FALSE(agent.m_thread.handle);
    EXPECT_TRUE(TracedInOrder(
        {Frame(3, "Waiting for exit of agents main thread ..."),
         {1,
          "\n\n##FRAME_MIB           : ERROR! Agent main thread did not terminate within 30 seconds! Thread is being "
          "killed!\n"},
         {1, "\n\n## WARNING! RUNNING THREAD " + std::to_string(id) +
                 " (\"FRAME_MIB:Thread_AgentMain\") TERMINATED!  ###\n"},
         Frame(2, "Shut down agent completed")}));
    // Where the thread goes on, it touches nothing of the agent any more.
    g_agentShutdown = 0;
    gate.Open();
    if (Platform::TerminatedThreadsGoOn()) {
        EXPECT_TRUE(HoldsWithin(kDeadline, [&] { return left.load(); }));
    } else {
        EXPECT_FALSE(left);
    }
    EXPECT_EQ(0u, CountTraced("...agent's InitializeMib() completed"));
    EXPECT_EQ(0, agent.m_requestsEnabled);
}

// The restart.

TEST_F(MainThreadTest, AnInternalRestartBuildsTheMibAgainOnTheSameAgent)
{
    m_agent.AddMibRegion("1.3.6.1.4.1.88417.99.1", nullptr);
    m_agent.atInitializeMib = [this] {
        EXPECT_EQ(0u, m_agent.MibSize());
        m_agent.MibInsertConstOid("1.3.6.1.4.1.88417.99.1.1.0", "one", 1, ASN_INTEGER, kReadOnly);
    };
    m_agent.StartAgent();
    ASSERT_TRUE(Sleeps());
    m_agent.m_startTime = 77;
    m_agent.CreateTrap("1.3.6.1", 1, nullptr);
    EXPECT_EQ(1, m_agent.RestartAgent(20));
    ASSERT_TRUE(Sleeps(2));
    EXPECT_EQ(2, m_agent.initializations);
    EXPECT_EQ(1, m_agent.closings);
    EXPECT_EQ(1, m_agent.m_requestsEnabled);
    EXPECT_EQ(0u, g_agentShutdown);
    EXPECT_EQ(77u, m_agent.m_startTime);
    EXPECT_EQ(1u, m_agent.m_regions.len);
    EXPECT_TRUE(TracedInOrder({Frame(1, "Restart agent in 0 seconds .."), Frame(3, "Set agents shutdown flag"),
                               Frame(1, "##### AGENT SHUTDOWN SIGNALED #####")}));
    EXPECT_TRUE(TracedInOrder(
        {Frame(2, "Agent shutdown finished."), Frame(2, "Agent will internally restart in 0 seconds"), Frame(1, kStars),
         Frame(1, "Initiate agent restart"), Frame(1, kStars), Frame(3, "Status changed to: starting (3)")}));
    AsnObjectIdentifier enterprise{};
    RFC1157VarBindList list{};
    std::int32_t generic = 0, specific = 0;
    std::uint32_t time = 0;
    EXPECT_EQ(1, m_agent.SnmpTrap(&enterprise, &generic, &specific, &time, &list)) << "the trap has survived";
    SnmpUtilOidFree(&enterprise);
    SnmpUtilVarBindListFree(&list);
}

TEST_F(MainThreadTest, StoppingDuringTheWaitBeforeARestartEndsItAtOnce)
{
    m_agent.StartAgent();
    ASSERT_TRUE(Sleeps());
    EXPECT_EQ(1, m_agent.RestartAgent(600000));
    ASSERT_TRUE(IsTraced("Agent will internally restart in 600 seconds"));
    CBindings bindings({"1.3.6"});
    std::uint32_t status = 0, index = 0;
    m_agent.SnmpQuery(SNMP_PDU_GETNEXT, bindings.List(), &status, &index);
    EXPECT_EQ(2u, status) << "refused between the passes";
    EXPECT_EQ(1, m_agent.StopAgent());
    EXPECT_TRUE(TracedInOrder({Frame(1, "Restart agent in 600 seconds .."),
                               Frame(2, "Agent will internally restart in 600 seconds"),
                               Frame(2, "Agent shutdown signaled - restart aborted!"),
                               {2, "\n\nFRAME_MIB           : *** EXIT THREAD Thread_AgentMain() ***\n"}}));
    EXPECT_EQ(1u, g_agentShutdown);
    EXPECT_EQ(1, m_agent.initializations);
    EXPECT_EQ(0u, CountTraced("Agent main thread did not terminate"));
}

TEST_F(MainThreadTest, WithoutTheAbortEventThereIsNoRestart)
{
    m_agent.m_restartAbortEvent.Reset();
    m_agent.StartAgent();
    ASSERT_TRUE(Sleeps());
    EXPECT_EQ(1, m_agent.RestartAgent(1));
    ASSERT_TRUE(HasEnded());
    EXPECT_TRUE(Traced(Frame(2, "Agent shutdown signaled - restart aborted!")));
}

TEST_F(MainThreadTest, RestartingWithoutADelayOnlyShutsDown)
{
    m_agent.StartAgent();
    ASSERT_TRUE(Sleeps());
    EXPECT_EQ(1, m_agent.RestartAgent(0));
    ASSERT_TRUE(HasEnded());
    EXPECT_EQ(0u, CountTraced("Agent will internally restart"));
    EXPECT_EQ(1, m_agent.initializations);
}

TEST_F(MainThreadTest, RestartingAThreadThatHasEndedChangesNothing)
{
    EXPECT_EQ(0, m_agent.RestartAgent(1000)) << "never started";
    m_agent.StartAgent();
    ASSERT_TRUE(Sleeps());
    m_agent.StopAgent();
    g_agentShutdown = 0;
    Fake::ClearTrace();
    EXPECT_EQ(0, m_agent.RestartAgent(1000));
    EXPECT_EQ(0u, m_agent.m_restartDelay);
    EXPECT_EQ(0u, g_agentShutdown);
    EXPECT_TRUE(Fake::TraceLines().empty());
}

TEST_F(MainThreadTest, ARestartCanBeAskedForOutOfInitializeMib)
{
    m_agent.atInitializeMib = [this] {
        if (m_agent.initializations == 1) m_agent.RestartAgent(1);
    };
    m_agent.StartAgent();
    ASSERT_TRUE(IsEnabled());
    EXPECT_EQ(2, m_agent.initializations);
}
