#include <thread>

#include "FrameFixture.h"
#include "Platform/SnmpUtil.h"
#include "Snmp/Mib/Oid.h"
#include "Snmp/Mib/VarBind.h"

namespace {

/// What one call of SnmpTrap hands over. Freed at its end.
struct STaken {
    STaken() = default;
    STaken(STaken const &) = delete;
    STaken & operator=(STaken const &) = delete;
    ~STaken()
    {
        SnmpUtilOidFree(&enterprise);
        SnmpUtilVarBindListFree(&bindings);
    }
    AsnObjectIdentifier enterprise{};
    std::int32_t generic = -1;
    std::int32_t specific = -1;
    std::uint32_t timeStamp = 0;
    RFC1157VarBindList bindings{};
};

class TrapTest : public FrameTest {
protected:
    std::int32_t Take(STaken & out)
    {
        return m_agent.SnmpTrap(&out.enterprise, &out.generic, &out.specific, &out.timeStamp, &out.bindings);
    }
    bool IsSignalled()
    {
        return Platform::WaitForOne(m_agent.m_trapEvent.Get(), 0, false).result == Platform::WaitResult::Signaled;
    }
    CAgentUnderTest m_agent;
};

constexpr char kEnterprise[] = "1.3.6.1.4.1.88417.2.49.2";

} // namespace

TEST_F(TrapTest, BeforeAnyTrapTheQueueIsNotTouched)
{
    STaken taken;
    EXPECT_EQ(0, Take(taken));
    EXPECT_EQ(-1, taken.generic);
    EXPECT_EQ((Lines{Frame(4, "SnmpTrap(): No (more) traps to send!"),
                     Frame(4, "SnmpTrap(): SNMP trap exit (TrapToSend=FALSE)")}),
              Traced());
}

TEST_F(TrapTest, ATrapIsQueuedAndSignalled)
{
    EXPECT_EQ(0, m_agent.m_trapsUsed);
    EXPECT_EQ(1, m_agent.CreateTrap(kEnterprise, 5, nullptr));
    EXPECT_EQ(1, m_agent.m_trapsUsed);
    EXPECT_EQ((Lines{Frame(3, "CreateTrap(): queue trap parameters to resolve it in agent framework..."),
                     Frame(4, "CreateTrap(): trap parameters queued")}),
              Traced());
    EXPECT_TRUE(IsSignalled());
}

TEST_F(TrapTest, ThreeTrapsLeaveOneSignalAndComeInOrder)
{
    for (std::uint32_t number = 1; number <= 3; ++number)
        m_agent.CreateTrap(kEnterprise, number, nullptr);
    EXPECT_TRUE(IsSignalled());
    EXPECT_FALSE(IsSignalled()) << "the wait has consumed it";
    for (std::int32_t number = 1; number <= 3; ++number) {
        STaken taken;
        EXPECT_EQ(1, Take(taken));
        EXPECT_EQ(6, taken.generic);
        EXPECT_EQ(number, taken.specific);
        EXPECT_EQ(kEnterprise, Text(taken.enterprise));
        EXPECT_EQ(0u, taken.bindings.len) << "a null list is an empty one";
    }
    STaken none;
    EXPECT_EQ(0, Take(none));
}

TEST_F(TrapTest, TakingIsTracedStepByStep)
{
    m_agent.CreateTrap(kEnterprise, 7, nullptr);
    Fake::ClearTrace();
    STaken taken;
    EXPECT_EQ(1, Take(taken));
    std::string name = g_moduleName;
    name.resize(20, ' ');
    EXPECT_EQ((Lines{Frame(4, "SnmpTrap(): SNMP trap and trap queue used, calling ResolveTrapFromQueue()..."),
                     Frame(2, "SnmpAgent::ResolveTrap(): Found trap #7 in trap queue, resolve trap"),
                     Frame(4, "SnmpTrap(): ResolveTrapEx() returned TRUE - trap to send..."),
                     {1, "\n\n" + name + ": ## Trap 7 (Param: 0, OID: 1.3.6.1.4.1.88417.2.49.2) ##\n"},
                     Frame(2, "SnmpTrap(): WARNING! Trap forwarding features not included!"),
                     Frame(3, "SnmpTrap(): trap handling finished, send the trap to SNMP service"),
                     Frame(4, "SnmpTrap(): SNMP trap exit (TrapToSend=TRUE)")}),
              Traced());
    Fake::ClearTrace();
    EXPECT_EQ(0, Take(taken));
    EXPECT_EQ((Lines{Frame(4, "SnmpTrap(): SNMP trap and trap queue used, calling ResolveTrapFromQueue()..."),
                     Frame(3, "CSnmpAgent::ResolveTrap(): no (more) trap data in queue"),
                     Frame(4, "SnmpTrap(): No (more) traps to send!"),
                     Frame(4, "SnmpTrap(): SNMP trap exit (TrapToSend=FALSE)")}),
              Traced());
}

TEST_F(TrapTest, BindingsAreDeepCopiesAndTheCallersStay)
{
    CBindings bindings({"1.3.6.1.1.0", "1.3.6.1.2.0"});
    bindings.SetNumber(0, 11);
    SetVarBindFromText(&bindings.List()->list[1], "text", ASN_OCTETSTRING);
    m_agent.CreateTrap(kEnterprise, 1, bindings.List());
    bindings.SetNumber(0, 12);
    STaken taken;
    ASSERT_EQ(1, Take(taken));
    ASSERT_EQ(2u, taken.bindings.len);
    EXPECT_EQ("1.3.6.1.1.0", Text(taken.bindings.list[0].name));
    EXPECT_EQ(11, taken.bindings.list[0].value.asnValue.number + 0);
    EXPECT_EQ(4u, taken.bindings.list[1].value.asnValue.string.length + 0u);
    EXPECT_EQ(12, bindings.Number(0));
    EXPECT_TRUE(CountTraced("## Trap 1 (Param: 2, OID: ") == 1);
}

TEST_F(TrapTest, WhatTheCallerPassedInIsReplaced)
{
    m_agent.CreateTrap(kEnterprise, 1, nullptr);
    STaken taken;
    StrToOid("1.2.3", &taken.enterprise);
    GrowVarBindList(taken.bindings, 2);
    ASSERT_EQ(1, Take(taken));
    EXPECT_EQ(kEnterprise, Text(taken.enterprise));
    EXPECT_EQ(0u, taken.bindings.len);
}

TEST_F(TrapTest, ATextThatIsNoOidGivesAnEmptyEnterprise)
{
    for (char const * const text : {"no oid", "", static_cast<char const *>(nullptr)}) {
        EXPECT_EQ(1, m_agent.CreateTrap(text, 1, nullptr));
        STaken taken;
        EXPECT_EQ(1, Take(taken));
        EXPECT_EQ(0u, taken.enterprise.idLength + 0u);
    }
}

TEST_F(TrapTest, WithoutAnEventTheTrapIsQueuedAndTheResultIsZero)
{
    m_agent.m_trapEvent.Reset();
    EXPECT_EQ(0, m_agent.CreateTrap(kEnterprise, 1, nullptr));
    STaken taken;
    EXPECT_EQ(1, Take(taken));
}

TEST_F(TrapTest, TheTimeStampCountsHundredthsFromTheReferenceAndWraps)
{
    g_fakes.tickCountMs = 123456789;
    m_agent.m_startTime = 12345000;
    m_agent.CreateTrap(kEnterprise, 1, nullptr);
    STaken taken;
    ASSERT_EQ(1, Take(taken));
    EXPECT_EQ(678u, taken.timeStamp);

    g_fakes.tickCountMs = (std::uint64_t{1} << 32) * 10 + 50; // 5 hundredths behind the wrap
    m_agent.m_startTime = 0xFFFFFFF0;
    m_agent.CreateTrap(kEnterprise, 1, nullptr);
    STaken wrapped;
    ASSERT_EQ(1, Take(wrapped));
    EXPECT_EQ(0x15u, wrapped.timeStamp);
}

TEST_F(TrapTest, TrapsFlowWhileRequestsAreRefused)
{
    g_agentShutdown = 1;
    EXPECT_EQ(0, m_agent.m_requestsEnabled);
    EXPECT_EQ(1, m_agent.CreateTrap(kEnterprise, 1, nullptr));
    STaken taken;
    EXPECT_EQ(1, Take(taken));
}

TEST_F(TrapTest, TheQueueSurvivesWhatIsLeftInIt)
{
    CBindings bindings({"1.3.6.1.1.0"});
    for (std::uint32_t number = 0; number < 100; ++number)
        EXPECT_EQ(1, m_agent.CreateTrap(kEnterprise, number, bindings.List()));
    STaken taken;
    EXPECT_EQ(1, Take(taken));
    EXPECT_EQ(0, taken.specific); // the other 99 go with the agent
}

TEST_F(TrapTest, TrapsOfManyThreadsAllArriveEachThreadsInItsOrder)
{
    Fake::EnableTrace(false);
    constexpr std::uint32_t kThreads = 4;
    constexpr std::uint32_t kEach = 2500;
    std::vector<std::thread> threads;
    for (std::uint32_t t = 0; t < kThreads; ++t)
        threads.emplace_back([this, t] {
            for (std::uint32_t i = 0; i < kEach; ++i)
                m_agent.CreateTrap(kEnterprise, t * kEach + i, nullptr);
        });
    std::vector<std::uint32_t> next(kThreads, 0);
    for (std::uint32_t taken = 0; taken < kThreads * kEach;) {
        ASSERT_EQ(Platform::WaitResult::Signaled, Platform::WaitForOne(m_agent.m_trapEvent.Get(), 10000, false).result);
        for (STaken trap; Take(trap) != 0; ++taken) {
            const std::uint32_t number = static_cast<std::uint32_t>(trap.specific);
            EXPECT_EQ(next[number / kEach]++, number % kEach);
        }
    }
    for (std::thread & thread : threads)
        thread.join();
}

TEST_F(TrapTest, SeveralReadersTakeEachTrapOnce)
{
    Fake::EnableTrace(false);
    constexpr std::uint32_t kTraps = 4000;
    std::atomic<std::uint32_t> taken{0};
    std::vector<std::thread> readers;
    for (int r = 0; r < 3; ++r)
        readers.emplace_back([&] {
            while (taken < kTraps) {
                STaken trap;
                if (Take(trap) != 0) ++taken;
            }
        });
    for (std::uint32_t i = 0; i < kTraps; ++i)
        m_agent.CreateTrap(kEnterprise, i, nullptr);
    for (std::thread & reader : readers)
        reader.join();
    EXPECT_EQ(kTraps, taken);
    STaken none;
    EXPECT_EQ(0, Take(none));
}
