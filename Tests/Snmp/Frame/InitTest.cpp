#include "FrameFixture.h"
#include "Platform/SnmpUtil.h"
#include "Snmp/Mib/Oid.h"

namespace {

constexpr char kRegion[] = "1.3.6.1.4.1.88417.2.49";
const std::string kHashes(78, '#');

class InitTest : public FrameTest {
protected:
    ~InitTest() override { m_agent.StopAgent(); }
    std::int32_t Init(std::uint32_t reference = 0) { return m_agent.SnmpInit(reference, &m_event, m_region.Get()); }

    CAgentUnderTest m_agent;
    SnmpHandle m_event = nullptr;
    COid m_region;
};

} // namespace

TEST_F(InitTest, AFreshAgentHasItsEventsAndNothingElse)
{
    EXPECT_TRUE(m_agent.m_trapEvent);
    EXPECT_TRUE(m_agent.m_shutdownEvent);
    EXPECT_TRUE(m_agent.m_restartAbortEvent);
    EXPECT_EQ(0u, m_agent.m_trapEventError + m_agent.m_shutdownEventError + m_agent.m_restartAbortEventError);
    EXPECT_EQ(0, m_agent.m_requestsEnabled);
    EXPECT_EQ(0, m_agent.m_trapsUsed);
    EXPECT_EQ(0, m_agent.m_indexAppendMode);
    EXPECT_EQ(0u, m_agent.m_restartDelay);
    EXPECT_EQ(0u, m_agent.m_regions.len);
    EXPECT_EQ(0, m_agent.m_nextRegion);
    EXPECT_STREQ(g_moduleName, m_agent.GetAgentName());
    EXPECT_TRUE(m_agent.QueryAgentEnabled());
    EXPECT_EQ(0, m_agent.SetAgentStatusCode(3));
    EXPECT_EQ(0, m_agent.SetAgentStatusText("text"));
}

TEST_F(InitTest, ManualResetEventsStaySetAndTheTrapEventDoesNot)
{
    for (Platform::CWaitableHandle * const event :
         {&m_agent.m_shutdownEvent, &m_agent.m_restartAbortEvent, &m_agent.m_trapEvent}) {
        const bool stays = event != &m_agent.m_trapEvent;
        EXPECT_EQ(Platform::WaitResult::Timeout, Platform::WaitForOne(event->Get(), 0, false).result);
        Platform::SetEvent(event->Get());
        EXPECT_EQ(Platform::WaitResult::Signaled, Platform::WaitForOne(event->Get(), 0, false).result);
        EXPECT_EQ(stays ? Platform::WaitResult::Signaled : Platform::WaitResult::Timeout,
                  Platform::WaitForOne(event->Get(), 0, false).result);
    }
}

TEST_F(FrameTest, ConstructingAnAgentClearsTheShutdownFlag)
{
    g_agentShutdown = 1;
    const CAgentUnderTest agent;
    EXPECT_EQ(0u, g_agentShutdown);
}

TEST_F(FrameTest, EachEventThatCannotBeMadeLeavesItsErrorAndAnAgent)
{
    for (std::uint32_t mask = 1; mask <= 7; ++mask) {
        g_fakes.failEvents = mask;
        g_fakes.eventsMade = 0;
        const CAgentUnderTest agent;
        EXPECT_EQ((mask & 1) != 0 ? kFakeError : 0, agent.m_trapEventError) << mask;
        EXPECT_EQ((mask & 2) != 0 ? kFakeError : 0, agent.m_shutdownEventError) << mask;
        EXPECT_EQ((mask & 4) != 0 ? kFakeError : 0, agent.m_restartAbortEventError) << mask;
        EXPECT_EQ((mask & 1) == 0, static_cast<bool>(agent.m_trapEvent)) << mask;
        EXPECT_EQ((mask & 2) == 0, static_cast<bool>(agent.m_shutdownEvent)) << mask;
        EXPECT_EQ((mask & 4) == 0, static_cast<bool>(agent.m_restartAbortEvent)) << mask;
    }
}

TEST_F(FrameTest, TheDestructorTracesItsStatusThenTheThreadRecord)
{
    {
        const CAgentUnderTest agent;
        Fake::ClearTrace();
    }
    EXPECT_EQ((Lines{Frame(3, "Status changed to: unloaded (8)"), {5, "\n~CThread - name=\"\" (bTerminateThread=1)"}}),
              Traced());
}

TEST_F(FrameTest, TheDestructorLeavesARequestLockThatIsHeld)
{
    const auto agent = std::make_unique<CAgentUnderTest>();
    agent->m_requestLock.Enter();
    EXPECT_TRUE(agent->m_requestLock.IsHeldByMe()); // and its end neither hangs nor fails
}

TEST_F(InitTest, StartsTheAgentAndHandsOutEventAndFirstRegion)
{
    m_agent.AddMibRegion(kRegion, nullptr);
    Fake::ClearTrace();
    EXPECT_EQ(1, Init(12345));
    EXPECT_EQ(12345u, m_agent.m_startTime);
    EXPECT_EQ(Platform::EventForHost(m_agent.m_trapEvent.Get()), m_event);
    EXPECT_NE(nullptr, m_event);
    EXPECT_EQ(kRegion, Text(*m_region.Get()));
    EXPECT_EQ(0, m_agent.regionCalls);
    EXPECT_TRUE(
        TracedInOrder({Frame(2, "SnmpInit(): Initializing agent..."), Frame(3, "Status changed to: initializing (2)"),
                       Frame(4, " Agent start time = 12345..."),
                       Frame(4, "InitSupportedRegions() not needed to be called because MIB root already defined"),
                       Frame(3, "Storing agent parameters..."), Frame(3, "Starting MIB main thread..."),
                       Frame(3, "...MIB main thread started"), Frame(5, "-> SnmpInit()")}));
}

TEST_F(InitTest, TheFirstRegionReplacesWhatTheCallerPassedIn)
{
    m_agent.AddMibRegion(kRegion, nullptr);
    StrToOid("1.2.3", m_region.Get());
    EXPECT_EQ(1, Init());
    EXPECT_EQ(kRegion, Text(*m_region.Get()));
}

TEST_F(InitTest, WithoutARegionAndWithTheBaseClassTheStartFailsWithoutAThread)
{
    EXPECT_EQ(0, Init());
    EXPECT_FALSE(m_agent.m_thread.handle);
    EXPECT_EQ(1, m_agent.regionCalls);
    EXPECT_EQ(0u, m_region.Get()->idLength + 0u);
    EXPECT_TRUE(TracedInOrder(
        {{1, "\n\n## FATAL ERROR: InitSupportedRegions() function not implemented or failed!!\n"},
         {1, "\nThe agent needs the MIB root OIDs to be defined in InitSupportedRegions()!"},
         {1, "\nCall AddMibRegion() for every MIB root OID there.\nException raised to abort initialization!\n"},
         {1, "\n\n" + kHashes},
         {1, "\n####                   Exception in SnmpExtensionInit !!                  ####"},
         {1, "\n" + kHashes},
         Frame(3, "Status changed to: exception (SnmpExtensionInit) (10)")}));
    EXPECT_EQ(0u, CountTraced("Starting MIB main thread..."));
}

TEST_F(InitTest, AnAgentMayDefineItsRegionsAtTheStart)
{
    m_agent.atRegions = [this] {
        m_agent.AddMibRegion("1.3.6.1.4.1.88417.99.1", nullptr);
        return 1;
    };
    EXPECT_EQ(1, Init());
    EXPECT_EQ("1.3.6.1.4.1.88417.99.1", Text(*m_region.Get()));
}

TEST_F(InitTest, QuirkReadingTheFirstRegionMakesOneWhenTheAgentClaimsSuccessWithoutAny)
{
    m_agent.atRegions = [] { return 1; };
    EXPECT_EQ(1, Init());
    EXPECT_EQ(1u, m_agent.m_regions.len);
    EXPECT_EQ(0u, m_region.Get()->idLength + 0u);
}

TEST_F(InitTest, AnExceptionOutOfInitSupportedRegionsFailsTheStart)
{
    m_agent.atRegions = []() -> std::int32_t { throw std::runtime_error("no"); };
    EXPECT_EQ(0, Init());
    EXPECT_TRUE(Traced({1, "\n####                   Exception in SnmpExtensionInit !!                  ####"}));
    EXPECT_FALSE(m_agent.m_thread.handle);
}

TEST_F(InitTest, AMissingTrapEventIsTracedAndTheStartGoesOn)
{
    m_agent.m_trapEvent.Reset();
    m_agent.AddMibRegion(kRegion, nullptr);
    EXPECT_EQ(1, Init());
    EXPECT_EQ(nullptr, m_event);
    EXPECT_TRUE(Traced({1, "\n##FRAME_MIB           : ERROR: Could not create trap event!"}));
    EXPECT_TRUE(m_agent.m_thread.handle);
}

TEST_F(InitTest, InitExHandsOutTheFurtherRegionsThenNone)
{
    m_agent.AddMibRegion(kRegion, nullptr);
    m_agent.AddMibRegion("1.3.6.1.4.1.88417.99.1", "remark");
    m_agent.AddMibRegion("1.3.6.1.4.1.88417.99.2", nullptr);
    ASSERT_EQ(1, Init());
    Fake::ClearTrace();
    EXPECT_EQ(1, m_agent.SnmpInitEx(m_region.Get()));
    EXPECT_EQ("1.3.6.1.4.1.88417.99.1", Text(*m_region.Get()));
    EXPECT_EQ(1, m_agent.SnmpInitEx(m_region.Get()));
    EXPECT_EQ("1.3.6.1.4.1.88417.99.2", Text(*m_region.Get()));
    EXPECT_EQ(0, m_agent.SnmpInitEx(m_region.Get()));
    EXPECT_EQ(0, m_agent.SnmpInitEx(m_region.Get()));
    EXPECT_TRUE(TracedInOrder({Frame(2, "SnmpInitEx(): Get next MIB region [1]"),
                               Frame(3, " supplying additional MIB region: remark 1.3.6.1.4.1.88417.99.1"),
                               Frame(2, "SnmpInitEx(): Get next MIB region [2]"),
                               Frame(3, " supplying additional MIB region:  1.3.6.1.4.1.88417.99.2"),
                               Frame(2, "SnmpInitEx(): Get next MIB region [3]"),
                               Frame(3, "no additional MIB regions available")}));
}

TEST_F(InitTest, StartingAgainHandsOutTheRegionsAgain)
{
    m_agent.AddMibRegion(kRegion, nullptr);
    m_agent.AddMibRegion("1.3.6.1.4.1.88417.99.1", nullptr);
    ASSERT_EQ(1, Init());
    EXPECT_EQ(1, m_agent.SnmpInitEx(m_region.Get()));
    ASSERT_EQ(1, Init());
    EXPECT_EQ(kRegion, Text(*m_region.Get()));
    EXPECT_EQ(1, m_agent.SnmpInitEx(m_region.Get()));
}

TEST_F(InitTest, SetRegistryNameIgnoresNullAndEmpty)
{
    m_agent.SetRegistryName("Kestrix RAID");
    m_agent.SetRegistryName(nullptr);
    m_agent.SetRegistryName("");
    EXPECT_EQ("Kestrix RAID", m_agent.m_registryName);
}
