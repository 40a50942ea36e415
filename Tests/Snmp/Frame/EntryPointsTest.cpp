#include <filesystem>
#include <memory>

#include "FrameFixture.h"
#include "Platform/Module.h"
#include "Platform/Process.h"
#include "Platform/SnmpUtil.h"
#include "Platform/Thread.h"
#include "Snmp/Frame/Intervals.h"
#include "Snmp/Mib/Oid.h"
#include "Support/Deadline.h"

extern "C" {
std::int32_t DllMain(void * module, std::uint32_t reason, void * reserved);
std::int32_t SnmpExtensionInit(std::uint32_t reference, SnmpHandle * trapEvent, AsnObjectIdentifier * firstRegion);
std::int32_t SnmpExtensionInitEx(AsnObjectIdentifier * nextRegion);
std::int32_t SnmpExtensionQuery(std::uint8_t type, RFC1157VarBindList * list, std::uint32_t * status,
                                std::uint32_t * index);
std::int32_t SnmpExtensionTrap(AsnObjectIdentifier * enterprise, std::int32_t * genericTrap,
                               std::int32_t * specificTrap, std::uint32_t * timeStamp, RFC1157VarBindList * list);
void SnmpExtensionClose();
}

namespace {

constexpr char kModule[] = "kxra_frame_tests";
constexpr char kRegion[] = "1.3.6.1.4.1.88417.2.49";

class EntryPointsTest : public FrameTest {
protected:
    EntryPointsTest()
    {
        g_extension.registryName = "Kestrix RAID";
        g_extension.region = kRegion;
        g_extension.newAgent = [this] {
            m_agent = new CAgentUnderTest;
            if (m_prepare) m_prepare(*m_agent);
            return m_agent;
        };
    }
    ~EntryPointsTest() override
    {
        if (g_pAgent != nullptr) DllMain(nullptr, DLL_PROCESS_DETACH, nullptr);
    }
    std::int32_t Attach() { return DllMain(nullptr, DLL_PROCESS_ATTACH, nullptr); }
    std::int32_t Detach() { return DllMain(nullptr, DLL_PROCESS_DETACH, nullptr); }
    std::int32_t Init()
    {
        SnmpUtilOidFree(m_region.Get()); // the entry point zeroes it
        return SnmpExtensionInit(0, &m_event, m_region.Get());
    }
    bool IsReady()
    {
        return HoldsWithin(kDeadline, [this] { return m_agent->m_requestsEnabled != 0; });
    }
    /// Asks for the first object behind everything; the request's status.
    std::uint32_t Ask()
    {
        CBindings bindings({"1.3"});
        std::uint32_t status = 99, index = 99;
        EXPECT_EQ(1, SnmpExtensionQuery(SNMP_PDU_GETNEXT, bindings.List(), &status, &index));
        return status;
    }

    CAgentUnderTest * m_agent = nullptr;
    std::function<void(CAgentUnderTest &)> m_prepare;
    SnmpHandle m_event = nullptr;
    COid m_region;
};

} // namespace

TEST_F(EntryPointsTest, AttachMakesTheAgentWithItsNameAndRegion)
{
    testing::internal::CaptureStdout();
    EXPECT_EQ(1, Attach());
    EXPECT_EQ("\n## SNMP DLL [kxra_frame_tests] loaded\n", testing::internal::GetCapturedStdout());
    EXPECT_STREQ(kModule, g_moduleName);
    EXPECT_EQ("kxra_frame_tests (banner)", Fake::LastTraceInit());
    ASSERT_EQ(m_agent, g_pAgent);
    EXPECT_EQ("Kestrix RAID", m_agent->m_registryName);
    EXPECT_EQ(1u, m_agent->m_regions.len);
    EXPECT_FALSE(m_agent->m_thread.handle);
    std::string program;
    ASSERT_EQ(Platform::Success, Platform::ProgramPath(program));
    const std::string process = std::to_string(Platform::CurrentProcessId()) + " \"" +
                                std::filesystem::path(program).filename().string() + "\"";
    EXPECT_TRUE(TracedInOrder({Frame(5, "DllMain: ** DLL_PROCESS_ATTACH (PID " + process + ") **"),
                               Frame(2, "Starting SNMP agent..."),
                               Frame(1, " add MIB region: 1.3.6.1.4.1.88417.2.49 - "),
                               Frame(3, "Status changed to: loaded (1)"),
                               {1, "\n\n*** SNMP agent module \"kxra_frame_tests\" loaded ***\n"}}));
}

TEST_F(EntryPointsTest, AttachWithoutMemoryForTheAgentLoadsALibraryThatRefusesEverything)
{
    g_extension.newAgent = [] { return nullptr; };
    EXPECT_EQ(1, Attach());
    EXPECT_EQ(nullptr, g_pAgent);
    EXPECT_EQ(0, Init());
    EXPECT_EQ(0, SnmpExtensionInitEx(m_region.Get()));
    CBindings bindings({"1.3"});
    std::uint32_t status = 0, index = 0;
    EXPECT_EQ(0, SnmpExtensionQuery(SNMP_PDU_GET, bindings.List(), &status, &index));
    AsnObjectIdentifier enterprise{};
    RFC1157VarBindList list{};
    std::int32_t generic = 0, specific = 0;
    std::uint32_t time = 0;
    EXPECT_EQ(0, SnmpExtensionTrap(&enterprise, &generic, &specific, &time, &list));
    SnmpExtensionClose();
    EXPECT_EQ(1, Detach());
}

TEST_F(EntryPointsTest, AnExceptionDuringAttachFailsIt)
{
    g_extension.newAgent = []() -> CSnmpAgent * { throw std::runtime_error("no"); };
    EXPECT_EQ(0, Attach());
    EXPECT_EQ(nullptr, g_pAgent);
}

TEST_F(EntryPointsTest, AttachingTwiceKeepsTheOneAgent)
{
    EXPECT_EQ(1, Attach());
    CAgentUnderTest * const first = m_agent;
    EXPECT_EQ(1, Attach());
    EXPECT_EQ(first, g_pAgent);
    EXPECT_EQ(first, m_agent);
}

TEST_F(EntryPointsTest, AWholeLifeFromAttachToDetach)
{
    bool destroyed = false;
    m_prepare = [&](CAgentUnderTest & agent) {
        agent.atDestruction = [&] { destroyed = true; };
        agent.atInitializeMib = [&agent] {
            agent.MibInsertConstOid("1.3.6.1.4.1.88417.2.49.1.1.0", "one", 1, ASN_INTEGER, kReadOnly);
        };
    };
    Attach();
    EXPECT_EQ(1, Init());
    EXPECT_NE(nullptr, m_event);
    EXPECT_EQ(kRegion, Text(*m_region.Get()));
    AsnObjectIdentifier next{1, nullptr};
    EXPECT_EQ(0, SnmpExtensionInitEx(&next)) << "one region only";
    EXPECT_EQ(0u, next.idLength + 0u) << "and the output is zeroed";
    ASSERT_TRUE(IsReady());
    EXPECT_EQ(0u, Ask());
    SnmpExtensionClose();
    EXPECT_EQ(2u, Ask());
    EXPECT_FALSE(destroyed);
    EXPECT_EQ(1, Detach());
    EXPECT_TRUE(destroyed);
    EXPECT_EQ(nullptr, g_pAgent);
    EXPECT_TRUE(TracedInOrder({Frame(5, "DllEntry: SnmpExtensionInit()"),
                               Frame(2, "SnmpInit(): Initializing agent..."),
                               Frame(5, "DllEntry: SnmpExtensionInit() ...exit with success=1"),
                               Frame(5, "DllEntry: SnmpExtensionInitEx() enter..."),
                               Frame(3, "no additional MIB regions available"),
                               Frame(5, "DllEntry: SnmpExtensionInitEx() ...exit with success=0"),
                               Frame(5, "DllEntry: SnmpExtensionQuery() enter..."),
                               Frame(5, "DllEntry: SnmpExtensionQuery() ...exit with success=1"),
                               Frame(5, "DllEntry: SnmpExtensionClose() enter..."),
                               Frame(2, "SnmpClose()"),
                               Frame(2, "Shutting down agent"),
                               Frame(2, "Shut down agent completed"),
                               Frame(5, "DllEntry: SnmpExtensionClose() ...exit"),
                               Frame(5, "DllMain: ** DLL_PROCESS_DETACH **"),
                               Frame(3, "Status changed to: unloading (7)"),
                               Frame(5, "DllMain: Start delete agent instance..."),
                               Frame(3, "Status changed to: unloaded (8)"),
                               Frame(5, "DllMain: ... agent instance deleted"),
                               {1, "\n\nkxra_frame_tests    : SNMP agent DLL unloaded\n"}}));
    EXPECT_EQ(1u, CountTraced("Shutting down agent")) << "closing and detaching stop the agent once";
    EXPECT_EQ(1u, CountTraced("\n\n----- Application [kxra_frame_tests] closed at "));
}

TEST_F(EntryPointsTest, DetachWithoutCloseStopsTheAgent)
{
    Attach();
    Init();
    ASSERT_TRUE(IsReady());
    EXPECT_EQ(1, Detach());
    EXPECT_EQ(1u, CountTraced("Shutting down agent"));
    EXPECT_EQ(1u, CountTraced("*** EXIT THREAD Thread_AgentMain() ***"));
}

TEST_F(EntryPointsTest, ASecondAttachStartsAndClosesAnew)
{
    for (std::size_t round = 1; round <= 3; ++round) {
        Attach();
        EXPECT_EQ(1, Init());
        ASSERT_TRUE(IsReady());
        SnmpExtensionClose();
        SnmpExtensionClose();
        EXPECT_EQ(round, CountTraced("Shutting down agent"));
        EXPECT_EQ(1, Detach());
        EXPECT_EQ(round, CountTraced("Shutting down agent"));
    }
}

TEST_F(EntryPointsTest, AnAgentThatIsStartedAfterACloseIsStoppedAgain)
{
    Attach();
    Init();
    SnmpExtensionClose();
    EXPECT_EQ(1, Init());
    ASSERT_TRUE(IsReady());
    EXPECT_EQ(1, Detach());
    EXPECT_EQ(2u, CountTraced("*** EXIT THREAD Thread_AgentMain() ***"));
}

TEST_F(EntryPointsTest, TheInitOutputIsZeroedEvenWhenTheStartFails)
{
    g_extension.region = nullptr;
    Attach();
    AsnObjectIdentifier region{5, nullptr};
    EXPECT_EQ(0, SnmpExtensionInit(0, &m_event, &region));
    EXPECT_EQ(0u, region.idLength + 0u);
    EXPECT_TRUE(Traced(Frame(5, "DllEntry: SnmpExtensionInit() ...exit with success=0")));
    EXPECT_FALSE(m_agent->m_thread.handle);
}

TEST_F(EntryPointsTest, TrapsAreHandedOutWithZeroedOutputs)
{
    Attach();
    AsnObjectIdentifier enterprise{3, nullptr};
    RFC1157VarBindList list{nullptr, 3};
    std::int32_t generic = 0, specific = 0;
    std::uint32_t time = 0;
    EXPECT_EQ(0, SnmpExtensionTrap(&enterprise, &generic, &specific, &time, &list));
    EXPECT_EQ(0u, enterprise.idLength + list.len);
    m_agent->CreateTrap("1.3.6.1", 9, nullptr);
    EXPECT_EQ(1, SnmpExtensionTrap(&enterprise, &generic, &specific, &time, &list));
    EXPECT_EQ(6, generic);
    EXPECT_EQ(9, specific);
    SnmpUtilOidFree(&enterprise);
    EXPECT_TRUE(TracedInOrder({Frame(5, "DllEntry: SnmpExtensionTrap() enter..."),
                               Frame(5, "DllEntry: SnmpExtensionTrap() ...exit with success=0"),
                               Frame(5, "DllEntry: SnmpExtensionTrap() ...exit with success=1")}));
}

TEST_F(EntryPointsTest, ThreadNotificationsAreOnlyTraced)
{
    const std::string id = std::to_string(Platform::CurrentThreadId());
    EXPECT_EQ(1, DllMain(nullptr, DLL_THREAD_ATTACH, nullptr));
    EXPECT_EQ(1, DllMain(nullptr, DLL_THREAD_DETACH, nullptr));
    EXPECT_EQ(1, DllMain(nullptr, 99, nullptr));
    EXPECT_EQ((Lines{Frame(5, "DllMain: ** DLL_THREAD_ATTACH ** (ID: " + id + ")"),
                     Frame(5, "DllMain: ** DLL_THREAD_DETACH ** (ID: " + id + ")")}),
              Fake::TraceLines());
}

TEST_F(EntryPointsTest, AnAgentStaysInMemoryWhereItsKilledThreadMayGoOn)
{
    g_frameIntervals.stopMs = 20;
    struct SShared {
        CGate gate;
        std::atomic<bool> left{false};
        std::atomic<bool> destroyed{false};
    } shared;
    m_prepare = [&shared](CAgentUnderTest & agent) {
        agent.atDestruction = [&shared] { shared.destroyed = true; };
        agent.atInitializeMib = [&shared, &agent] {
            shared.gate.Pass();
            agent.m_registryName = "the agent is still there";
            shared.left = true;
        };
    };
    Attach();
    Init();
    EXPECT_TRUE(HoldsWithin(kDeadline, [this] { return m_agent->initializations == 1; }));
    EXPECT_EQ(1, Detach());
    EXPECT_EQ(nullptr, g_pAgent);
    EXPECT_EQ(1u, CountTraced("Thread is being killed!"));
    EXPECT_EQ(Platform::TerminatedThreadsGoOn(), !shared.destroyed);
    EXPECT_EQ(Platform::TerminatedThreadsGoOn() ? m_agent : nullptr, g_abandonedAgent);
    shared.gate.Open();
    if (Platform::TerminatedThreadsGoOn()) {
        EXPECT_TRUE(HoldsWithin(kDeadline, [&] { return shared.left.load(); }));
        static auto & kept = *new std::vector<CSnmpAgent *>; // those of repeated runs too
        kept.push_back(m_agent);
        // The agent stays reachable, but leak detectors don't see what the packed list points to.
        SnmpUtilVarBindListFree(&m_agent->m_regions);
    } else {
        EXPECT_FALSE(shared.left);
    }

    // The next agent knows nothing of that.
    m_prepare = [&shared](CAgentUnderTest & agent) { agent.atDestruction = [&shared] { shared.destroyed = true; }; };
    Attach();
    EXPECT_EQ(1, Init());
    EXPECT_TRUE(IsReady());
    EXPECT_EQ(1, Detach());
    EXPECT_TRUE(shared.destroyed);
}
