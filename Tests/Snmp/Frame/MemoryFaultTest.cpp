#include <thread>

#include "FrameFixture.h"
#include "Platform/SnmpUtil.h"
#include "Snmp/Mib/VarBind.h"
#include "Support/AllocationFault.h"

namespace {

constexpr char kOid[] = "1.3.6.1.4.1.88417.2.49.1.1.0";
constexpr char kLongName[] = "aNameThatIsLongEnoughToLieOnTheHeap";

class CVariableAgent : public CAgentUnderTest {
public:
    CVariableAgent()
    {
        m_requestsEnabled = 1;
        MibInsertVarOid(kOid, kLongName, ASN_INTEGER, Callback<&CVariableAgent::Get>(), {}, {}, {}, kReadOnly, nullptr);
    }
    std::uint32_t Get(RFC1157VarBind * binding, std::uint8_t)
    {
        SetVarBindNumber(binding, 5, ASN_INTEGER);
        return 0;
    }
};

class MemoryFaultTest : public FrameTest {};

std::int32_t Get(CSnmpAgent & agent, CBindings & bindings)
{
    std::uint32_t status = 0, index = 0;
    return agent.SnmpQuery(SNMP_PDU_GET, bindings.List(), &status, &index);
}

} // namespace

TEST_F(MemoryFaultTest, QuirkAnExceptionInsideTheRequestLockLeavesItHeld)
{
    Fake::EnableTrace(false);
    CVariableAgent agent;
    CBindings bindings({kOid});
    {
        const CAllocationFault fault(1); // the working copy of the entry
        EXPECT_EQ(0, Get(agent, bindings));
        ASSERT_TRUE(fault.Fired());
    }
    EXPECT_TRUE(agent.m_requestLock.IsHeldByMe());
    EXPECT_EQ(0, agent.postQueries);
    std::thread([&] { EXPECT_FALSE(agent.m_requestLock.TryEnter()) << "further requests block"; }).join();
    EXPECT_EQ(1, Get(agent, bindings)) << "the owner itself goes on";
    EXPECT_TRUE(agent.m_requestLock.IsHeldByMe());
}

TEST_F(MemoryFaultTest, WithoutDebugOutputAQueryOfAConstantAllocatesNothing)
{
    Fake::EnableTrace(false);
    CAgentUnderTest agent;
    agent.m_requestsEnabled = 1;
    agent.MibInsertConstOid(kOid, kLongName, 1, ASN_INTEGER, kReadOnly);
    CBindings bindings({kOid});
    const CAllocationFault fault(1);
    EXPECT_EQ(1, Get(agent, bindings));
    EXPECT_FALSE(fault.Fired());
}

TEST_F(MemoryFaultTest, AnySingleFailedAllocationOfATracedQueryIsAnAnswerOrAnOrderlyFailure)
{
    for (unsigned n = 1;; ++n) {
        CVariableAgent agent;
        CBindings bindings({kOid});
        const CAllocationFault fault(n);
        const std::int32_t result = Get(agent, bindings);
        if (result == 1) {
            EXPECT_EQ(5, bindings.Number(0)) << "allocation " << n;
        }
        if (!fault.Fired()) break;
        ASSERT_LT(n, 1000u);
    }
}

TEST_F(MemoryFaultTest, AnySingleFailedAllocationOfATrapLosesNoMemoryAndNoLock)
{
    CBindings bindings({kOid});
    for (unsigned n = 1;; ++n) {
        CAgentUnderTest agent;
        AsnObjectIdentifier enterprise{};
        RFC1157VarBindList list{};
        std::int32_t generic = 0, specific = 0;
        std::uint32_t time = 0;
        bool queued = false;
        const CAllocationFault fault(n);
        try {
            agent.CreateTrap(kOid, 1, bindings.List());
            queued = true;
        } catch (std::bad_alloc const &) {
        }
        const std::int32_t taken = agent.SnmpTrap(&enterprise, &generic, &specific, &time, &list);
        EXPECT_TRUE(taken == 0 || queued) << "allocation " << n;
        EXPECT_TRUE(taken == 1 || enterprise.idLength + list.len == 0) << "allocation " << n;
        SnmpUtilOidFree(&enterprise);
        SnmpUtilVarBindListFree(&list);
        if (!fault.Fired()) {
            EXPECT_EQ(1, taken);
            break;
        }
        ASSERT_LT(n, 1000u);
    }
}

TEST_F(MemoryFaultTest, AFailureWhileATrapIsTakenIsTracedAndGivesNothing)
{
    CAgentUnderTest agent;
    bool seen = false;
    for (unsigned n = 1; n < 1000 && !seen; ++n) {
        agent.CreateTrap(kOid, 1, nullptr);
        Fake::ClearTrace();
        AsnObjectIdentifier enterprise{};
        RFC1157VarBindList list{};
        std::int32_t generic = 0, specific = 0;
        std::uint32_t time = 0;
        const CAllocationFault fault(n);
        const std::int32_t taken = agent.SnmpTrap(&enterprise, &generic, &specific, &time, &list);
        if (!fault.Fired()) break;
        if (taken == 0) {
            seen = true;
            EXPECT_TRUE(TracedInOrder(
                {{1, "\n\n" + std::string(78, '#')},
                 {1, "\n####                  FRAME_MIB - Exception in SnmpExtensionTrap !!                ####"},
                 {1, "\n" + std::string(78, '#')},
                 Frame(3, "Status changed to: exception (SnmpExtensionTrap) (14)")}));
        }
        SnmpUtilOidFree(&enterprise);
    }
    EXPECT_TRUE(seen);
}

TEST_F(MemoryFaultTest, WithoutMemoryForTheThreadNameTheAgentDoesNotStart)
{
    SetModuleName(NativePath("/ALongModuleNameThatLiesOnTheHeap.so"));
    Fake::EnableTrace(true);
    CAgentUnderTest agent;
    bool seen = false;
    for (unsigned n = 1; n < 1000 && !seen; ++n) {
        Fake::ClearTrace();
        std::int32_t started = 1;
        {
            const CAllocationFault fault(n);
            g_fakes.startThreadError = kFakeError;
            started = agent.StartAgent();
            if (!fault.Fired()) break;
        }
        if (started == 0) {
            seen = true;
            EXPECT_TRUE(
                TracedInOrder({{1, "\n\n" + std::string(75, '#')},
                               {1, "\n####                   Exception in StartAgent !!                        ####"},
                               {1, "\n" + std::string(75, '#')},
                               Frame(3, "Status changed to: exception (InitializeMib) (11)")}));
        }
    }
    EXPECT_TRUE(seen);
}

TEST_F(MemoryFaultTest, AFailureWhileARegionIsHandedOutIsTracedAndGivesNone)
{
    CAgentUnderTest agent;
    agent.AddMibRegion("1.3.6.1.4.1.88417.2.49", nullptr);
    agent.m_nextRegion = 0;
    bool seen = false;
    for (unsigned n = 1; n < 1000 && !seen; ++n) {
        Fake::ClearTrace();
        AsnObjectIdentifier region{};
        agent.m_nextRegion = 0;
        std::int32_t handedOut = 1;
        {
            const CAllocationFault fault(n);
            handedOut = agent.SnmpInitEx(&region);
            if (!fault.Fired()) break;
        }
        SnmpUtilOidFree(&region);
        if (handedOut == 0) {
            seen = true;
            EXPECT_TRUE(
                TracedInOrder({{1, "\n\n" + std::string(78, '#')},
                               {1, "\n####                   Exception in SnmpExtensionInitEx !!                ####"},
                               {1, "\n" + std::string(78, '#')},
                               Frame(3, "Status changed to: exception (SnmpExtensionInit) (10)")}));
        }
    }
    EXPECT_TRUE(seen);
}
