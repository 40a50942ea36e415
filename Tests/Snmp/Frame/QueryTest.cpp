#include "FrameFixture.h"
#include "Platform/SnmpUtil.h"
#include "Snmp/Mib/Oid.h"
#include "Snmp/Mib/VarBind.h"

namespace {

constexpr char kRegion[] = "1.3.6.1.4.1.88417.2.49";
constexpr char kFirst[] = "1.3.6.1.4.1.88417.2.49.1.1.0";
constexpr char kSecond[] = "1.3.6.1.4.1.88417.2.49.1.2.0";
constexpr char kThird[] = "1.3.6.1.4.1.88417.2.49.1.3.0";
constexpr char kBehindRegion[] = "1.3.6.1.4.1.88417.2.50";
constexpr char kUnknown[] = "1.3.6.1.4.1.88417.2.49.7.7.0";

/// An agent with objects whose callbacks give settable statuses and count their calls.
class CQueryAgent : public CAgentUnderTest {
public:
    CQueryAgent() { m_requestsEnabled = 1; }

    void AddConstant(char const * oid, char const * name, std::uint32_t value, std::uint32_t access = kReadOnly)
    {
        MibInsertConstOid(oid, name, value, ASN_INTEGER, access);
    }
    void AddFailing(char const * oid, char const * name)
    {
        MibInsertVarOid(oid, name, ASN_INTEGER, Callback<&CQueryAgent::Fail>(), {}, {}, {}, kReadOnly, nullptr);
    }
    void AddWritable(char const * oid, char const * name)
    {
        MibInsertVarOid(oid, name, ASN_INTEGER, Callback<&CQueryAgent::Get>(), Callback<&CQueryAgent::Commit>(),
                        Callback<&CQueryAgent::Check>(), {}, kReadWrite, nullptr);
    }

    std::uint32_t Fail(RFC1157VarBind *, std::uint8_t)
    {
        ++failures;
        if (failuresUntilShutdown != 0 && --failuresUntilShutdown == 0) g_agentShutdown = 1;
        return failStatus;
    }
    std::uint32_t Get(RFC1157VarBind * binding, std::uint8_t)
    {
        SetVarBindNumber(binding, 77, ASN_INTEGER);
        return 0;
    }
    std::uint32_t Check(RFC1157VarBind * binding, std::uint8_t)
    {
        ++checks;
        return binding->value.asnValue.number == failCheckAt ? 10 : 0;
    }
    std::uint32_t Commit(RFC1157VarBind * binding, std::uint8_t)
    {
        const std::int32_t number = binding->value.asnValue.number;
        if (number == failCommitAt) return 14;
        committed.push_back(number);
        return 0;
    }

    std::uint32_t failStatus = 5;
    int failures = 0;
    int failuresUntilShutdown = 0;
    int checks = 0;
    std::int32_t failCheckAt = -1;
    std::int32_t failCommitAt = -1;
    std::vector<std::int32_t> committed;
};

class QueryTest : public FrameTest {
protected:
    QueryTest()
    {
        m_agent.AddMibRegion(kRegion, nullptr);
        m_agent.AddConstant(kFirst, "first", 1);
        m_agent.AddConstant(kSecond, "second", 2);
        Fake::ClearTrace();
    }

    struct SOutcome {
        std::int32_t result;
        std::uint32_t status, index;
        bool operator==(SOutcome const &) const = default;
        friend void PrintTo(SOutcome const & outcome, std::ostream * out)
        {
            *out << "result " << outcome.result << " status " << outcome.status << " index " << outcome.index;
        }
    };

    SOutcome Query(std::uint8_t type, CBindings & bindings)
    {
        SOutcome outcome{-1, 99, 99};
        outcome.result = m_agent.SnmpQuery(type, bindings.List(), &outcome.status, &outcome.index);
        return outcome;
    }

    CQueryAgent m_agent;
};

} // namespace

// Refusal.

TEST_F(QueryTest, IsRefusedWhileRequestsAreNotEnabledWithoutAHook)
{
    m_agent.m_requestsEnabled = 0;
    CBindings bindings({kFirst, kSecond});
    EXPECT_EQ((SOutcome{1, 2, 1}), Query(SNMP_PDU_GET, bindings));
    EXPECT_EQ(0, m_agent.preQueries);
    EXPECT_EQ(0, m_agent.postQueries);
    EXPECT_EQ(ASN_NULL, bindings.Type(0));
    EXPECT_TRUE(TracedInOrder(
        {Frame(2, "RequestType: GET"),
         Frame(2, "## Init not completed or agent shutdown; request refused; ERROR status: <<no such name>>"),
         Frame(2, "Ret[1] Oid:  " + std::string(kFirst)),
         Frame(1, "## SNMP error status: <<no such name>> at varbind [1]"),
         {2, "\n"}}));
}

TEST_F(QueryTest, IsRefusedDuringShutdownForAnyTypeAndAnyLength)
{
    g_agentShutdown = 1;
    CBindings none({});
    for (const int type : {SNMP_PDU_GET, SNMP_PDU_GETNEXT, SNMP_PDU_SET, 0})
        EXPECT_EQ((SOutcome{1, 2, 1}), Query(static_cast<std::uint8_t>(type), none));
    EXPECT_EQ(0, m_agent.preQueries + m_agent.postQueries);
}

// Hooks.

TEST_F(QueryTest, APreHookThatAnswersSkipsTheTreeButNotThePostHook)
{
    m_agent.atPreQuery = [this](std::uint8_t type, RFC1157VarBindList *, std::uint32_t * status,
                                std::uint32_t * index) {
        EXPECT_EQ(SNMP_PDU_GET, type);
        EXPECT_FALSE(m_agent.m_requestLock.IsHeld());
        *status = 13;
        *index = 4;
        return 0;
    };
    CBindings bindings({kFirst});
    EXPECT_EQ((SOutcome{1, 13, 4}), Query(SNMP_PDU_GET, bindings));
    EXPECT_EQ(ASN_NULL, bindings.Type(0));
    EXPECT_EQ(1, m_agent.postQueries);
    EXPECT_TRUE(TracedInOrder({Frame(5, "SNMP query: call OnPreSnmpQuery..."),
                               Frame(4, "SnmpQuery() skipped because OnPreSnmpQuery handled the request!"),
                               Frame(5, "SNMP query: call OnPostSnmpQuery..."),
                               Frame(1, "## SNMP error status: <<resource unavailable>> at varbind [4]")}));
}

TEST_F(QueryTest, WhatAPreHookThatGoesOnLeavesInTheStatusIsCleared)
{
    m_agent.atPreQuery = [](std::uint8_t, RFC1157VarBindList *, std::uint32_t * status, std::uint32_t * index) {
        *status = 13;
        *index = 4;
        return 1;
    };
    CBindings bindings({kFirst});
    EXPECT_EQ((SOutcome{1, 0, 0}), Query(SNMP_PDU_GET, bindings));
    EXPECT_EQ(1, bindings.Number(0));
}

TEST_F(QueryTest, ThePostHookSeesTheAnswerOutsideTheLock)
{
    m_agent.atPostQuery = [this](std::uint8_t, RFC1157VarBindList * list, std::uint32_t * status,
                                 std::uint32_t * index) {
        EXPECT_FALSE(m_agent.m_requestLock.IsHeld());
        EXPECT_EQ(1u, list->len);
        EXPECT_EQ(2u, *status);
        EXPECT_EQ(1u, *index);
        return 0;
    };
    CBindings bindings({kUnknown});
    EXPECT_EQ((SOutcome{1, 2, 1}), Query(SNMP_PDU_GET, bindings));
    EXPECT_EQ(1, m_agent.postQueries);
}

// GET.

TEST_F(QueryTest, GetAnswersAllBindingsAndTracesThem)
{
    CBindings bindings({kFirst, kSecond});
    EXPECT_EQ((SOutcome{1, 0, 0}), Query(SNMP_PDU_GET, bindings));
    EXPECT_EQ(1, bindings.Number(0));
    EXPECT_EQ(2, bindings.Number(1));
    std::string name = g_moduleName;
    name.resize(20, ' ');
    EXPECT_EQ((Lines{{2, "\n\n" + name + ": SNMP query: number queries=2"},
                     Frame(2, "RequestType: GET"),
                     Frame(2, "Req[1] Oid:  " + std::string(kFirst)),
                     Frame(2, "Req[2] Oid:  " + std::string(kSecond)),
                     Frame(5, "SNMP query: call OnPreSnmpQuery..."),
                     Frame(5, "SNMP query: lock MIB..."),
                     Frame(5, "SNMP query: ... MIB locked"),
                     Frame(5, "SNMP query: unlock MIB..."),
                     Frame(5, "SNMP query: ... MIB unlocked"),
                     Frame(5, "SNMP query: call OnPostSnmpQuery..."),
                     Frame(2, "Ret[1] Oid:  " + std::string(kFirst)),
                     Frame(2, "  Object:      first"),
                     Frame(2, "  Ret Value:   Integer: 1 (0x1)"),
                     Frame(2, "Ret[2] Oid:  " + std::string(kSecond)),
                     Frame(2, "  Object:      second"),
                     Frame(2, "  Ret Value:   Integer: 2 (0x2)"),
                     {2, "\n"}}),
              Traced());
}

TEST_F(QueryTest, GetStopsAtTheFirstFailureAndLeavesTheRestUntouched)
{
    CBindings bindings({kUnknown, kSecond});
    EXPECT_EQ((SOutcome{1, 2, 1}), Query(SNMP_PDU_GET, bindings));
    EXPECT_EQ(ASN_NULL, bindings.Type(1));
    CBindings later({kFirst, kUnknown, kSecond});
    EXPECT_EQ((SOutcome{1, 2, 2}), Query(SNMP_PDU_GET, later));
    EXPECT_EQ(1, later.Number(0));
    EXPECT_EQ(ASN_NULL, later.Type(2));
}

TEST_F(QueryTest, GetReportsTheStatusOfACallback)
{
    m_agent.AddFailing(kThird, "third");
    m_agent.failStatus = 13;
    CBindings bindings({kFirst, kThird});
    EXPECT_EQ((SOutcome{1, 13, 2}), Query(SNMP_PDU_GET, bindings));
}

// GETNEXT.

TEST_F(QueryTest, GetNextGivesTheObjectBehind)
{
    CBindings bindings({kRegion, kFirst});
    EXPECT_EQ((SOutcome{1, 0, 0}), Query(SNMP_PDU_GETNEXT, bindings));
    EXPECT_EQ(kFirst, bindings.Oid(0));
    EXPECT_EQ(kSecond, bindings.Oid(1));
    EXPECT_TRUE(TracedInOrder({Frame(2, "RequestType: GETNEXT"), Frame(2, "Req[2] Oid:  " + std::string(kFirst)),
                               Frame(2, "Ret[2] Oid:  " + std::string(kSecond)), Frame(2, "  Object:      second")}));
}

TEST_F(QueryTest, GetNextBehindTheLastObjectGivesTheOidBehindTheRegion)
{
    CBindings bindings({kSecond});
    EXPECT_EQ((SOutcome{1, 0, 0}), Query(SNMP_PDU_GETNEXT, bindings));
    EXPECT_EQ(kBehindRegion, bindings.Oid(0));
    EXPECT_EQ(ASN_NULL, bindings.Type(0));
    EXPECT_TRUE(Traced(Frame(2, "  Ret[1] - End of MIB tree -> reply OID outside of this MIB")));
    EXPECT_EQ(kRegion, Text(m_agent.m_regions.list[0].name)) << "the region stays as it is";
}

TEST_F(QueryTest, GetNextPassesOverObjectsThatCannotBeRead)
{
    m_agent.AddFailing("1.3.6.1.4.1.88417.2.49.1.1.1", "failing1");
    m_agent.AddFailing("1.3.6.1.4.1.88417.2.49.1.1.2", "failing2");
    CBindings bindings({kFirst});
    EXPECT_EQ((SOutcome{1, 0, 0}), Query(SNMP_PDU_GETNEXT, bindings));
    EXPECT_EQ(kSecond, bindings.Oid(0));
    EXPECT_EQ(2, bindings.Number(0));
    EXPECT_EQ(2, m_agent.failures);
    EXPECT_TRUE(TracedInOrder({Frame(2, "  Ret[1] Oid:  1.3.6.1.4.1.88417.2.49.1.1.1 - GETNEXT SNMP Error 5 "
                                        "(callback failed) -> find next object"),
                               Frame(2, "  Ret[1] Oid:  1.3.6.1.4.1.88417.2.49.1.1.2 - GETNEXT SNMP Error 5 "
                                        "(callback failed) -> find next object")}));
}

TEST_F(QueryTest, GetNextWhereNothingBehindCanBeReadEndsTheMibWithoutAnError)
{
    m_agent.AddFailing(kThird, "third");
    CBindings bindings({kSecond, kFirst});
    EXPECT_EQ((SOutcome{1, 0, 0}), Query(SNMP_PDU_GETNEXT, bindings));
    EXPECT_EQ(kBehindRegion, bindings.Oid(0));
    EXPECT_EQ(kSecond, bindings.Oid(1)) << "and the next binding is answered";
}

TEST_F(QueryTest, GetNextOutsideAllRegionsAndAboveAllObjectsLeavesTheOid)
{
    CBindings bindings({"1.3.7.1"});
    EXPECT_EQ((SOutcome{1, 0, 0}), Query(SNMP_PDU_GETNEXT, bindings));
    EXPECT_EQ("1.3.7.1", bindings.Oid(0));
}

TEST_F(QueryTest, GetNextInTheSecondRegionEndsThatRegion)
{
    m_agent.AddMibRegion("1.3.6.1.4.1.88417.99", nullptr);
    CBindings bindings({"1.3.6.1.4.1.88417.99.4"});
    EXPECT_EQ((SOutcome{1, 0, 0}), Query(SNMP_PDU_GETNEXT, bindings));
    EXPECT_EQ("1.3.6.1.4.1.88417.100", bindings.Oid(0));
}

TEST_F(QueryTest, ARegionWithoutRootHasNoEnd)
{
    CQueryAgent agent;
    agent.AddMibRegion("no oid", nullptr);
    CBindings bindings({kSecond});
    std::uint32_t status = 9, index = 9;
    EXPECT_EQ(1, agent.SnmpQuery(SNMP_PDU_GETNEXT, bindings.List(), &status, &index));
    EXPECT_EQ(0u, status);
    EXPECT_EQ(kSecond, bindings.Oid(0));
}

TEST_F(QueryTest, GetNextWithoutAnyRegionLeavesTheOid)
{
    CQueryAgent agent;
    CBindings bindings({kSecond});
    std::uint32_t status = 9, index = 9;
    EXPECT_EQ(1, agent.SnmpQuery(SNMP_PDU_GETNEXT, bindings.List(), &status, &index));
    EXPECT_EQ(0u, status);
    EXPECT_EQ(0u, index);
    EXPECT_EQ(kSecond, bindings.Oid(0));
}

TEST_F(QueryTest, AShutdownDuringALongWalkStopsItWithTheStatusAsItStands)
{
    m_agent.AddFailing("1.3.6.1.4.1.88417.2.49.1.1.1", "failing1");
    m_agent.AddFailing("1.3.6.1.4.1.88417.2.49.1.1.2", "failing2");
    m_agent.failuresUntilShutdown = 1;
    CBindings bindings({kFirst, kFirst});
    EXPECT_EQ((SOutcome{1, 5, 1}), Query(SNMP_PDU_GETNEXT, bindings));
    EXPECT_EQ("1.3.6.1.4.1.88417.2.49.1.1.1", bindings.Oid(0));
    EXPECT_EQ(kFirst, bindings.Oid(1));
    EXPECT_EQ(1, m_agent.failures);
}

// SET.

TEST_F(QueryTest, SetChecksAllBindingsThenCommitsThem)
{
    m_agent.AddWritable(kThird, "third");
    CBindings bindings({kThird, kThird});
    bindings.SetNumber(0, 5);
    bindings.SetNumber(1, 6);
    Fake::ClearTrace();
    EXPECT_EQ((SOutcome{1, 0, 0}), Query(SNMP_PDU_SET, bindings));
    EXPECT_EQ(2, m_agent.checks);
    EXPECT_EQ((std::vector<std::int32_t>{5, 6}), m_agent.committed);
    const std::string oid = kThird;
    std::string name = g_moduleName;
    name.resize(20, ' ');
    EXPECT_EQ((Lines{{2, "\n\n" + name + ": SNMP query: number queries=2"},
                     Frame(2, "RequestType: SET"),
                     Frame(2, "Set[1] Oid:  " + oid),
                     Frame(2, "    Value:     Integer: 5 (0x5)"),
                     Frame(2, "Set[2] Oid:  " + oid),
                     Frame(2, "    Value:     Integer: 6 (0x6)"),
                     Frame(5, "SNMP query: call OnPreSnmpQuery..."),
                     Frame(5, "SNMP query: lock MIB..."),
                     Frame(5, "SNMP query: ... MIB locked"),
                     Frame(3, "MibCheckSetVarbind returned 0 (no error)"),
                     Frame(3, "MibCheckSetVarbind returned 0 (no error)"),
                     Frame(3, "MibSetVarbind returned 0 (no error)"),
                     Frame(3, "MibSetVarbind returned 0 (no error)"),
                     Frame(5, "SNMP query: unlock MIB..."),
                     Frame(5, "SNMP query: ... MIB unlocked"),
                     Frame(5, "SNMP query: call OnPostSnmpQuery..."),
                     Frame(2, "Ret[1] Oid:  " + oid),
                     Frame(2, "  Object:      third"),
                     Frame(2, "  Ret Value:   Integer: 5 (0x5)"),
                     Frame(2, "Ret[2] Oid:  " + oid),
                     Frame(2, "  Object:      third"),
                     Frame(2, "  Ret Value:   Integer: 6 (0x6)"),
                     Frame(2, "SNMP Set done, no errors"),
                     {2, "\n"}}),
              Traced());
}

TEST_F(QueryTest, SetOfAnUnknownFirstObjectGivesResultZero)
{
    CBindings bindings({kUnknown});
    bindings.SetNumber(0, 1);
    EXPECT_EQ((SOutcome{0, 2, 0}), Query(SNMP_PDU_SET, bindings));
    EXPECT_TRUE(TracedInOrder({Frame(1, "Execution of MibCheckSetVarbind FAILED!"),
                               Frame(1, "## SNMP error status: <<no such name>> at varbind [0]")}));
    EXPECT_EQ(1, m_agent.postQueries);
}

TEST_F(QueryTest, SetOfAnUnknownLaterObjectGivesResultOneAndCommitsNothing)
{
    m_agent.AddWritable(kThird, "third");
    CBindings bindings({kThird, kUnknown});
    bindings.SetNumber(0, 1);
    EXPECT_EQ((SOutcome{1, 2, 0}), Query(SNMP_PDU_SET, bindings));
    EXPECT_TRUE(m_agent.committed.empty());
}

TEST_F(QueryTest, QuirkAFailedCheckReportsErrorIndexZero)
{
    m_agent.AddWritable(kThird, "third");
    CBindings readOnly({kThird, kSecond});
    readOnly.SetNumber(0, 1);
    readOnly.SetNumber(1, 1);
    EXPECT_EQ((SOutcome{1, 4, 0}), Query(SNMP_PDU_SET, readOnly)) << "the second is read-only";
    EXPECT_TRUE(m_agent.committed.empty());
    EXPECT_TRUE(Traced(Frame(3, "MibCheckSetVarbind returned 4 (value is read-only)")));

    m_agent.failCheckAt = 9;
    CBindings refused({kThird, kThird});
    refused.SetNumber(0, 1);
    refused.SetNumber(1, 9);
    EXPECT_EQ((SOutcome{1, 10, 0}), Query(SNMP_PDU_SET, refused)) << "the check of the second fails";
    EXPECT_TRUE(m_agent.committed.empty());
}

TEST_F(QueryTest, QuirkAFailedCommitLeavesEarlierBindingsCommitted)
{
    m_agent.AddWritable(kThird, "third");
    m_agent.failCommitAt = 9;
    CBindings bindings({kThird, kThird, kThird});
    bindings.SetNumber(0, 1);
    bindings.SetNumber(1, 9);
    bindings.SetNumber(2, 2);
    EXPECT_EQ((SOutcome{1, 14, 2}), Query(SNMP_PDU_SET, bindings));
    EXPECT_EQ((std::vector<std::int32_t>{1}), m_agent.committed);
    EXPECT_TRUE(Traced(Frame(3, "MibSetVarbind returned 14 (commit failed)")));
}

TEST_F(QueryTest, AnObjectThatGoesBetweenCheckAndCommitFailsTheCommit)
{
    m_agent.AddWritable(kThird, "third");
    m_agent.AddConstant(kSecond, "second", 2, kReadWrite);
    // The commit of the first removes the second.
    m_agent.failCommitAt = -2;
    class CRemovingAgent : public CQueryAgent {
    public:
        std::uint32_t Remove(RFC1157VarBind *, std::uint8_t)
        {
            const COid gone(kSecond);
            MibDeleteOids(gone.Get());
            return 0;
        }
    } agent;
    agent.MibInsertVarOid(kFirst, "first", ASN_INTEGER, {}, agent.Callback<&CRemovingAgent::Remove>(), {}, {},
                          kReadWrite, nullptr);
    agent.AddConstant(kSecond, "second", 2, kReadWrite);
    CBindings bindings({kFirst, kSecond});
    bindings.SetNumber(0, 1);
    bindings.SetNumber(1, 1);
    std::uint32_t status = 0, index = 0;
    EXPECT_EQ(1, agent.SnmpQuery(SNMP_PDU_SET, bindings.List(), &status, &index));
    EXPECT_EQ(2u, status);
    EXPECT_EQ(2u, index);
    EXPECT_TRUE(Traced(Frame(1, "Execution of MibSetVarbind FAILED!")));
}

// Edges.

TEST_F(QueryTest, AnEmptyListGivesResultOneForReadsAndZeroForSet)
{
    CBindings none({});
    EXPECT_EQ((SOutcome{1, 0, 0}), Query(SNMP_PDU_GET, none));
    EXPECT_EQ((SOutcome{1, 0, 0}), Query(SNMP_PDU_GETNEXT, none));
    EXPECT_EQ((SOutcome{0, 0, 0}), Query(SNMP_PDU_SET, none));
}

TEST_F(QueryTest, AnUnknownRequestTypeGivesResultZeroWithoutAStatus)
{
    CBindings bindings({kFirst});
    for (const int type : {0, 162, 165, 255}) {
        Fake::ClearTrace();
        EXPECT_EQ((SOutcome{0, 0, 0}), Query(static_cast<std::uint8_t>(type), bindings));
        std::string name = g_moduleName;
        name.resize(20, ' ');
        EXPECT_TRUE(
            TracedInOrder({{1, "\n\n" + name + ": ## ERROR! Unknown request type (" + std::to_string(type) + ").\n"},
                           Frame(5, "SNMP query: ... MIB unlocked"),
                           Frame(5, "SNMP query: call OnPostSnmpQuery...")}));
        EXPECT_EQ(0u, CountTraced("RequestType:"));
    }
    EXPECT_FALSE(m_agent.m_requestLock.IsHeld());
}

TEST_F(QueryTest, WithoutDebugOutputNothingIsTracedAndTheAnswerIsTheSame)
{
    Fake::EnableTrace(false);
    CBindings bindings({kFirst, kUnknown});
    EXPECT_EQ((SOutcome{1, 2, 2}), Query(SNMP_PDU_GET, bindings));
    EXPECT_EQ(1, bindings.Number(0));
    EXPECT_TRUE(Fake::TraceLines().empty());
}

TEST_F(QueryTest, CallbacksRunUnderTheRequestLockAndMayTakeItAgain)
{
    class CLockingAgent : public CQueryAgent {
    public:
        std::uint32_t Lock(RFC1157VarBind *, std::uint8_t)
        {
            held = m_requestLock.IsHeldByMe();
            const Platform::CCriticalLock again(m_requestLock);
            return 0;
        }
        bool held = false;
    } agent;
    agent.MibInsertVarOid(kFirst, "first", ASN_INTEGER, agent.Callback<&CLockingAgent::Lock>(), {}, {}, {}, kReadOnly,
                          nullptr);
    CBindings bindings({kFirst});
    std::uint32_t status = 9, index = 9;
    EXPECT_EQ(1, agent.SnmpQuery(SNMP_PDU_GET, bindings.List(), &status, &index));
    EXPECT_EQ(0u, status);
    EXPECT_TRUE(agent.held);
    EXPECT_FALSE(agent.m_requestLock.IsHeld());
}

// Exceptions.

TEST_F(QueryTest, AnExceptionOutOfAHookEndsTheRequestAtOnce)
{
    m_agent.atPreQuery = [](std::uint8_t, RFC1157VarBindList *, std::uint32_t * status,
                            std::uint32_t * index) -> std::int32_t {
        *status = 7;
        *index = 3;
        throw 1;
    };
    CBindings bindings({kFirst});
    EXPECT_EQ((SOutcome{0, 7, 3}), Query(SNMP_PDU_GET, bindings));
    EXPECT_EQ(0, m_agent.postQueries);
    EXPECT_EQ(0u, CountTraced("Ret[1]")) << "no closing trace";
    std::string name = g_moduleName;
    name.resize(20, ' ');
    EXPECT_TRUE(TracedInOrder({{1, "\n\n" + name + ": ##### EXCEPTION in SnmpQuery() !! #####\n"},
                               Frame(3, "Status changed to: exception (SnmpExtensionQuery) (13)")}));
    EXPECT_FALSE(m_agent.m_requestLock.IsHeld());
}

TEST_F(QueryTest, AnExceptionOutOfATreeCallbackIsOnlyAStatus)
{
    class CThrowingAgent : public CQueryAgent {
    public:
        std::uint32_t Throw(RFC1157VarBind *, std::uint8_t) { throw std::string("no"); }
    } agent;
    agent.MibInsertVarOid(kFirst, "first", ASN_INTEGER, agent.Callback<&CThrowingAgent::Throw>(), {}, {}, {}, kReadOnly,
                          nullptr);
    CBindings bindings({kFirst});
    std::uint32_t status = 9, index = 9;
    EXPECT_EQ(1, agent.SnmpQuery(SNMP_PDU_GET, bindings.List(), &status, &index));
    EXPECT_EQ(5u, status);
    EXPECT_EQ(1u, index);
    EXPECT_FALSE(agent.m_requestLock.IsHeld());
}

TEST_F(QueryTest, ThePredefinedCallbacksGiveUnknownAndZero)
{
    m_agent.MibInsertVarOid("1.3.6.1.4.1.88417.2.49.2.1.0", "unknown", ASN_INTEGER,
                            CSnmpAgent::Callback<&CSnmpAgent::fGetUnknownEnumValue>(), {}, {}, {}, kReadOnly, nullptr);
    m_agent.MibInsertVarOid("1.3.6.1.4.1.88417.2.49.2.2.0", "zero", ASN_INTEGER,
                            CSnmpAgent::Callback<&CSnmpAgent::fGetNullValue>(), {}, {}, {}, kReadOnly, nullptr);
    CBindings bindings({"1.3.6.1.4.1.88417.2.49.2.1.0", "1.3.6.1.4.1.88417.2.49.2.2.0"});
    EXPECT_EQ((SOutcome{1, 0, 0}), Query(SNMP_PDU_GET, bindings));
    EXPECT_EQ(ASN_INTEGER, bindings.Type(0));
    EXPECT_EQ(1, bindings.Number(0));
    EXPECT_EQ(ASN_INTEGER, bindings.Type(1));
    EXPECT_EQ(0, bindings.Number(1));
    EXPECT_TRUE(TracedInOrder({Frame(4, "fGetUnknownEnumValue() -> return unknown(1) value"),
                               Frame(4, "fGetNullValue() -> return 0 value")}));
}
