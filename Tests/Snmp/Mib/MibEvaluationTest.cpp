#include <stdexcept>

#include "MibFixture.h"

namespace {

constexpr std::uint32_t kNone = kNoOidIndex;
constexpr char const * kOid = "1.3.6.1.0";

using testing::ElementsAre;

/// An agent with one writable object that has the callbacks of the test.
class MibEvaluationTest : public testing::Test {
protected:
    struct SSlots {
        bool get = false;
        bool set = false;
        bool getSet = false;
        bool checkGet = false;
        bool ex = false;
    };

    void Insert(SSlots const & slots, std::uint32_t access = 2)
    {
        const auto pick = [](bool set, MibCallback callback) { return set ? callback : MibCallback{}; };
        m_agent.MibInsertVarOid(kOid, "kxrVar", ASN_INTEGER, pick(slots.get, CTestAgent::Get()),
                                pick(slots.set, CTestAgent::Set()), pick(slots.getSet, CTestAgent::GetSet()),
                                pick(slots.checkGet, CTestAgent::CheckGet()), access, nullptr);
        const COid oid(kOid);
        if (slots.ex) m_agent.MibInsertEntryEx(oid.Get(), nullptr, CTestAgent::Ex(), ASN_INTEGER, nullptr, access);
    }
    std::uint32_t CheckStatus()
    {
        const SReply reply = CheckSet(m_agent, kOid, 9);
        EXPECT_EQ(1, reply.found);
        EXPECT_EQ("kxrVar", reply.name);
        return reply.status;
    }
    std::uint32_t CommitStatus(std::uint32_t number = 9)
    {
        const SReply reply = Commit(m_agent, kOid, number);
        EXPECT_EQ(1, reply.found);
        return reply.status;
    }
    /// The stored value, read without callbacks.
    std::string StoredValue()
    {
        for (char const * name : {"Get", "Ex", "CheckGet"})
            m_agent.Fail(name, 0);
        const std::string value = Get(m_agent, kOid).value;
        m_agent.TakeCalls();
        return value;
    }

    CTestAgent m_agent;
};

// GET and GETNEXT

TEST_F(MibEvaluationTest, GetRunsCheckExtendedAndGetInARow)
{
    Insert({true, true, true, true, true});
    EXPECT_EQ(0u, Get(m_agent, kOid).status);
    EXPECT_THAT(m_agent.TakeCalls(), ElementsAre("CheckGet(3)", "Ex(0)", "Get(0)"));
    EXPECT_EQ(0u, GetNext(m_agent, "1.3").status);
    EXPECT_THAT(m_agent.TakeCalls(), ElementsAre("CheckGet(3)", "Ex(0)", "Get(0)"));
}

TEST_F(MibEvaluationTest, AFailedCheckSkipsTheOthersAndRepliesTheStoredValue)
{
    m_agent.MibInsertConstOid(kOid, "kxrVar", 17u, ASN_INTEGER, 0);
    m_agent.MibInsertVarTableOid(kOid, nullptr, 2, CTestAgent::Get(), {}, {}, CTestAgent::CheckGet(), 0, kNone, kNone,
                                 kNone, kNone, kNone);
    m_agent.Fail("CheckGet", 5);
    const SReply reply = Get(m_agent, kOid);
    EXPECT_EQ(1, reply.found);
    EXPECT_EQ(5u, reply.status);
    EXPECT_EQ("Integer: 17 (0x11)", reply.value);
    EXPECT_EQ("kxrVar", reply.name);
    EXPECT_THAT(m_agent.TakeCalls(), ElementsAre("CheckGet(3)"));
}

TEST_F(MibEvaluationTest, AFailedExtendedCallbackSkipsGet)
{
    Insert({true, false, false, true, true});
    m_agent.Fail("Ex", 16);
    EXPECT_EQ(16u, Get(m_agent, kOid).status);
    EXPECT_THAT(m_agent.TakeCalls(), ElementsAre("CheckGet(3)", "Ex(0)"));
}

TEST_F(MibEvaluationTest, AFailedGetNextStillMovesTheCallerToTheObject)
{
    Insert({true, false, false, false, false});
    m_agent.Fail("Get", 5);
    const SReply reply = GetNext(m_agent, "1.3");
    EXPECT_EQ(1, reply.found);
    EXPECT_EQ(5u, reply.status);
    EXPECT_EQ(kOid, reply.oid);
}

TEST_F(MibEvaluationTest, WhatAGetWritesReachesTheCallerAndNotTheTree)
{
    Insert({true, false, false, false, false});
    m_agent.On("Get", [](MibEntry *, RFC1157VarBind * binding) {
        EXPECT_EQ(kOid, TextOf(binding->name));
        SetVarBindFromText(binding, "written", ASN_OCTETSTRING);
        return 0u;
    });
    EXPECT_EQ("OctetString: \"written\"", Get(m_agent, kOid).value);
    EXPECT_EQ("Integer: 0 (0x0)", StoredValue());
}

TEST_F(MibEvaluationTest, AnExtendedGetWorksOnACopyOfTheEntryToo)
{
    Insert({false, false, false, false, true});
    m_agent.On("Ex", [](MibEntry * entry, RFC1157VarBind * binding) {
        EXPECT_EQ(&entry->varbind, binding);
        EXPECT_EQ("kxrVar", entry->name);
        entry->name = "changed";
        entry->access = 0;
        return 0u;
    });
    EXPECT_EQ("kxrVar", Get(m_agent, kOid).name);
    EXPECT_EQ("kxrVar", Get(m_agent, kOid).name);
    m_agent.Fail("Ex", 0);
    EXPECT_EQ(0u, CommitStatus());
}

TEST_F(MibEvaluationTest, AStreamThatACallbackOnlyLendsIsCopiedForTheCaller)
{
    Insert({true, false, false, false, false});
    std::uint8_t lent[] = {'a', 'b'};
    m_agent.On("Get", [&lent](MibEntry *, RFC1157VarBind * binding) {
        ClearVarBindValue(binding);
        binding->value.asnType = ASN_OCTETSTRING;
        binding->value.asnValue.string = {lent, 2, 0};
        return 0u;
    });
    CVarBind binding;
    FillBinding(binding, kOid);
    std::uint32_t status = 9;
    ASSERT_EQ(1, m_agent.MibGetVarbind(binding.Get(), SNMP_PDU_GET, &status, nullptr));
    lent[0] = 'x';
    EXPECT_EQ("ab", Octets(binding->value));
}

TEST_F(MibEvaluationTest, AnUnknownOidLeavesTheBindingAsItWas)
{
    Insert({});
    for (const std::uint32_t type : {160u, 161u}) {
        CVarBind binding;
        FillBinding(binding, "1.9", 7, ASN_GAUGE32);
        std::uint32_t status = 0;
        std::string name = "old";
        EXPECT_EQ(0, m_agent.MibGetVarbind(binding.Get(), type, &status, &name));
        EXPECT_EQ(2u, status);
        EXPECT_EQ("1.9", TextOf(binding->name));
        EXPECT_EQ("Gauge32: 7 (0x7)", ValueText(*binding.Get()));
        EXPECT_EQ("old", name);
    }
}

TEST_F(MibEvaluationTest, GetNextBehindTheLastKeyFindsNothing)
{
    Insert({});
    const SReply reply = GetNext(m_agent, kOid);
    EXPECT_EQ(0, reply.found);
    EXPECT_EQ(2u, reply.status);
    EXPECT_EQ(kOid, reply.oid);
}

TEST_F(MibEvaluationTest, OtherRequestTypesFindNothing)
{
    Insert({});
    for (const std::uint32_t type : {0u, 159u, 162u, 163u, 164u, 165u, 416u}) {
        const SReply reply = Ask(m_agent, kOid, type);
        EXPECT_EQ(0, reply.found) << type;
        EXPECT_EQ(2u, reply.status);
    }
}

TEST_F(MibEvaluationTest, AColumnWithoutAnIndexIsFoundByGetNextAlone)
{
    m_agent.MibInsertConstTableOid("1.3.6.0.0", "x", 1u, ASN_INTEGER, 4, 5);
    EXPECT_EQ(0, Get(m_agent, "1.3.6").found);
    EXPECT_EQ(0, Get(m_agent, "1.3.6.4").found);
    EXPECT_EQ(0, Get(m_agent, "1.3.6.4.5.0").found);
    EXPECT_EQ("1.3.6.4.5", GetNext(m_agent, "1.3.6").oid);
    EXPECT_EQ("1.3.6.4.5", GetNext(m_agent, "1.3.6.4").oid);
}

TEST_F(MibEvaluationTest, GetNextWalksColumnByColumn)
{
    for (std::uint32_t row = 1; row <= 2; ++row) {
        for (std::uint32_t column = 1; column <= 2; ++column) {
            m_agent.MibInsertConstTableOid("1.3.0.0", "x", 1u, ASN_INTEGER, column, row);
        }
    }
    EXPECT_THAT(Walk(m_agent), ElementsAre("1.3.1.1", "1.3.1.2", "1.3.2.1", "1.3.2.2"));
}

TEST_F(MibEvaluationTest, TheReplyReplacesOldValuesOfEveryKind)
{
    m_agent.MibInsertConstOid("1.2", "x", 5u, ASN_INTEGER, 0);
    m_agent.MibInsertConstOid("1.3", "x", "abc", ASN_OCTETSTRING, 0);
    for (char const * oid : {"1.2", "1.3", "1.2.3.4"}) {
        for (auto const & [text, type] :
             {std::pair{"old", ASN_OCTETSTRING}, {"1.2.3.4", ASN_IPADDRESS}, {"1.2.3", ASN_OBJECTIDENTIFIER}}) {
            CVarBind binding;
            FillBinding(binding, oid);
            SetVarBindFromText(binding.Get(), text, type);
            std::uint32_t status = 9;
            EXPECT_EQ(oid == std::string("1.3") ? 0 : 1,
                      m_agent.MibGetVarbind(binding.Get(), SNMP_PDU_GETNEXT, &status, nullptr));
            EXPECT_EQ("1.3", TextOf(binding->name));
        }
    }
}

TEST_F(MibEvaluationTest, AnObjectNameIsNotNeeded)
{
    Insert({});
    CVarBind binding;
    FillBinding(binding, kOid, 1, ASN_INTEGER);
    std::uint32_t status = 9;
    EXPECT_EQ(1, m_agent.MibGetVarbind(binding.Get(), SNMP_PDU_GET, &status, nullptr));
    EXPECT_EQ(1, m_agent.MibCheckSetVarbind(binding.Get(), &status, nullptr));
}

// The check of a SET

TEST_F(MibEvaluationTest, CheckSetOfAnUnknownOid)
{
    Insert({true, true, true, true, true});
    const SReply reply = CheckSet(m_agent, "1.3.6.1");
    EXPECT_EQ(0, reply.found);
    EXPECT_EQ(2u, reply.status);
    EXPECT_THAT(m_agent.TakeCalls(), ElementsAre());
}

TEST_F(MibEvaluationTest, CheckSetRunsThePlainOneThenTheExtendedOne)
{
    m_agent.SetGlobalCheckSet(CTestAgent::Global());
    Insert({true, true, true, true, true});
    EXPECT_EQ(0u, CheckStatus());
    EXPECT_THAT(m_agent.TakeCalls(), ElementsAre("GetSet(2)", "Ex(2)"));
}

TEST_F(MibEvaluationTest, CheckSetRunsTheGlobalOneWithoutAPlainOne)
{
    m_agent.SetGlobalCheckSet(CTestAgent::Global());
    Insert({true, true, false, true, true});
    m_agent.On("Global", [](MibEntry * entry, RFC1157VarBind * binding) {
        EXPECT_EQ("kxrVar", entry->name);
        EXPECT_EQ("Integer: 9 (0x9)", ValueText(*binding));
        return 0u;
    });
    EXPECT_EQ(0u, CheckStatus());
    EXPECT_THAT(m_agent.TakeCalls(), ElementsAre("Global(2)", "Ex(2)"));
}

TEST_F(MibEvaluationTest, CheckSetStopsAtTheFirstFailure)
{
    m_agent.SetGlobalCheckSet(CTestAgent::Global());
    Insert({false, false, true, false, true});
    m_agent.Fail("GetSet", 10);
    EXPECT_EQ(10u, CheckStatus());
    EXPECT_THAT(m_agent.TakeCalls(), ElementsAre("GetSet(2)"));
    Insert({false, false, false, false, true});
    m_agent.Fail("Global", 7);
    EXPECT_EQ(7u, CheckStatus());
    EXPECT_THAT(m_agent.TakeCalls(), ElementsAre("Global(2)"));
}

TEST_F(MibEvaluationTest, CheckSetWithoutCallbacksPasses)
{
    Insert({});
    EXPECT_EQ(0u, CheckStatus());
}

TEST_F(MibEvaluationTest, CheckSetWorksOnTheCallersBindingAndTheStoredEntry)
{
    Insert({false, false, true, false, true});
    m_agent.On("GetSet", [](MibEntry *, RFC1157VarBind * binding) {
        SetVarBindNumber(binding, 10, ASN_INTEGER);
        return 0u;
    });
    m_agent.On("Ex", [](MibEntry * entry, RFC1157VarBind *) {
        entry->name = "kxrNew";
        return 0u;
    });
    const SReply reply = CheckSet(m_agent, kOid, 9);
    EXPECT_EQ("Integer: 10 (0xA)", reply.value);
    m_agent.Fail("Ex", 0);
    EXPECT_EQ("kxrNew", CheckSet(m_agent, kOid).name);
}

TEST_F(MibEvaluationTest, CheckSetDoesNotCompareTypes)
{
    m_agent.MibInsertConstOid(kOid, "kxrVar", "text", ASN_OCTETSTRING, 2);
    EXPECT_EQ(0u, CheckStatus());
}

// The commit of a SET

TEST_F(MibEvaluationTest, CommitOfAnUnknownOid)
{
    Insert({true, true, true, true, true});
    const SReply reply = Commit(m_agent, "1.3.6.1");
    EXPECT_EQ(0, reply.found);
    EXPECT_EQ(2u, reply.status);
    EXPECT_THAT(m_agent.TakeCalls(), ElementsAre());
}

TEST_F(MibEvaluationTest, CommitRunsTheExtendedOneInsteadOfThePlainOne)
{
    m_agent.SetGlobalCheckSet(CTestAgent::Global());
    Insert({true, true, true, true, true});
    EXPECT_EQ(0u, CommitStatus());
    EXPECT_THAT(m_agent.TakeCalls(), ElementsAre("Ex(1)"));
}

TEST_F(MibEvaluationTest, CommitRunsThePlainOneAlone)
{
    Insert({true, true, true, true, false});
    EXPECT_EQ(0u, CommitStatus());
    EXPECT_THAT(m_agent.TakeCalls(), ElementsAre("Set(1)"));
    EXPECT_EQ("Integer: 9 (0x9)", StoredValue());
}

TEST_F(MibEvaluationTest, CommitWithoutCallbacksStoresTheValue)
{
    Insert({});
    EXPECT_EQ(0u, CommitStatus(12));
    EXPECT_EQ("Integer: 12 (0xC)", Get(m_agent, kOid).value);
}

TEST_F(MibEvaluationTest, AFailedCommitLeavesTheStoredValue)
{
    for (const bool ex : {false, true}) {
        Insert({false, true, false, false, ex});
        for (char const * name : {"Set", "Ex"})
            m_agent.Fail(name, 14);
        EXPECT_EQ(14u, CommitStatus(12));
        EXPECT_EQ("Integer: 0 (0x0)", StoredValue());
    }
}

TEST_F(MibEvaluationTest, CommitStoresWhatTheCallbackMadeOfTheBinding)
{
    Insert({false, true, false, false, false});
    m_agent.On("Set", [](MibEntry *, RFC1157VarBind * binding) {
        SetVarBindNumber(binding, 10, ASN_INTEGER);
        return 0u;
    });
    EXPECT_EQ(0u, CommitStatus(9));
    EXPECT_EQ("Integer: 10 (0xA)", StoredValue());
}

class ReadOnlyTest : public MibEvaluationTest, public testing::WithParamInterface<std::uint32_t> {};

TEST_P(ReadOnlyTest, BothPhasesGiveStatus4AndNoCallbackRuns)
{
    m_agent.SetGlobalCheckSet(CTestAgent::Global());
    Insert({true, true, true, true, true}, GetParam());
    const CRecordedTrace trace;
    EXPECT_EQ(4u, CheckStatus());
    EXPECT_EQ(4u, CommitStatus());
    EXPECT_THAT(m_agent.TakeCalls(), ElementsAre());
    EXPECT_THAT(trace.Lines(3), ElementsAre("3|\nCSnmpMibTree (CHSET): read-only object -> SET not possible",
                                            "3|\nCSnmpMibTree (SET)  : SNMP SET not enabled -> read-only object"));
}

TEST_P(ReadOnlyTest, SoDoConstants)
{
    m_agent.MibInsertConstOid(kOid, "kxrVar", 1u, ASN_INTEGER, GetParam());
    EXPECT_EQ(4u, CheckStatus());
    EXPECT_EQ(4u, CommitStatus());
    EXPECT_EQ("Integer: 1 (0x1)", Get(m_agent, kOid).value);
}

INSTANTIATE_TEST_SUITE_P(Access, ReadOnlyTest, testing::Values(0u, 1u, 3u, 4u, 255u));

// Exceptions

TEST_F(MibEvaluationTest, AnExceptionGivesStatus5AndReleasesTheLock)
{
    Insert({true, true, true, true, true});
    for (char const * name : {"Get", "Set", "GetSet", "CheckGet", "Ex"}) {
        m_agent.On(name, [](MibEntry *, RFC1157VarBind *) -> std::uint32_t { throw std::runtime_error("x"); });
    }
    EXPECT_EQ(5u, Get(m_agent, kOid).status);
    EXPECT_THAT(m_agent.TakeCalls(), ElementsAre("CheckGet(3)"));
    EXPECT_EQ(5u, CheckStatus());
    EXPECT_THAT(m_agent.TakeCalls(), ElementsAre("GetSet(2)"));
    EXPECT_EQ(5u, CommitStatus());
    EXPECT_THAT(m_agent.TakeCalls(), ElementsAre("Ex(1)"));
    const CRecordedTrace trace;
    EXPECT_EQ(5u, CommitStatus());
    EXPECT_EQ("6|\nCSnmpMibTree        : ...MIB tree unlocked", trace.Lines(6).back());
    EXPECT_EQ("Integer: 0 (0x0)", StoredValue());
}

// Callbacks that change the tree

TEST_F(MibEvaluationTest, ACallbackMayDeleteItsOwnObject)
{
    const COid oid(kOid);
    for (char const * name : {"Get", "Set", "GetSet", "Ex"}) {
        m_agent.On(name, [this, &oid](MibEntry * entry, RFC1157VarBind * binding) {
            m_agent.MibDeleteOids(oid.Get());
            EXPECT_TRUE(entry == nullptr || entry->name == "kxrVar"); // still there to look at
            EXPECT_EQ(kOid, TextOf(binding->name));
            return 0u;
        });
    }
    Insert({true, false, false, false, false});
    EXPECT_EQ(1, Get(m_agent, kOid).found);
    EXPECT_EQ(0, Get(m_agent, kOid).found);
    Insert({false, true, true, false, true});
    EXPECT_EQ(0u, CheckStatus());
    EXPECT_EQ(0, CheckSet(m_agent, kOid).found);
    Insert({false, true, true, false, true});
    EXPECT_EQ(0u, CommitStatus());
    EXPECT_EQ(0, Commit(m_agent, kOid).found);
    EXPECT_EQ(0u, m_agent.MibSize());
}

TEST_F(MibEvaluationTest, ACallbackMayReplaceItsOwnObjectAndItsContext)
{
    m_agent.MibInsertOidWithStringContext("1.3.6.1.0", "kxrVar", 2, {}, {}, {}, {}, 2, "first", 0, kNone, kNone, kNone,
                                          kNone);
    m_agent.SetGlobalCheckSet(CTestAgent::Global());
    m_agent.On("Global", [this](MibEntry * entry, RFC1157VarBind *) {
        auto const * const context = static_cast<char const *>(entry->context);
        m_agent.MibInsertOidWithStringContext("1.3.6.1.0", "kxrVar", 2, {}, {}, {}, {}, 2, "second", 0, kNone, kNone,
                                              kNone, kNone);
        EXPECT_STREQ("first", context); // kept until the callback is back
        EXPECT_STREQ("second", static_cast<char const *>(entry->context));
        return 0u;
    });
    EXPECT_EQ(0u, CheckStatus());
}

TEST_F(MibEvaluationTest, ACallbackMayInsertTheEntryItWasGiven)
{
    for (const std::uint32_t access : {0u, 2u}) {
        Insert({false, false, false, false, true});
        m_agent.On("Ex", [this, access](MibEntry * entry, RFC1157VarBind *) {
            m_agent.MibInsertEntry(&entry->varbind, entry->name.c_str(), access, {}, {}, {}, {}, entry->context);
            return 0u;
        });
        EXPECT_EQ(0u, CheckStatus());
        EXPECT_EQ("kxrVar", Get(m_agent, kOid).name);
        EXPECT_EQ(1u, m_agent.MibSize());
    }
}

TEST_F(MibEvaluationTest, ACallbackMayClearTheTreeAndFillItAgain)
{
    Insert({false, true, false, false, true});
    m_agent.On("Ex", [this](MibEntry *, RFC1157VarBind *) {
        m_agent.MibClear();
        Insert({});
        return 0u;
    });
    EXPECT_EQ(0u, CommitStatus(33));
    EXPECT_EQ("Integer: 0 (0x0)", Get(m_agent, kOid).value); // the new object isn't the one that was set
    EXPECT_EQ(1u, m_agent.MibSize());
}

TEST_F(MibEvaluationTest, ACallbackMayAskTheTree)
{
    m_agent.MibInsertConstOid("1.3.7", "other", 70u, ASN_INTEGER, 0);
    Insert({true, false, false, false, false});
    m_agent.On("Get", [this](MibEntry *, RFC1157VarBind * binding) {
        EXPECT_EQ("Integer: 70 (0x46)", Get(m_agent, "1.3.7").value);
        SetVarBindNumber(binding, 71, ASN_INTEGER);
        return 0u;
    });
    EXPECT_EQ("Integer: 71 (0x47)", Get(m_agent, kOid).value);
}

TEST_F(MibEvaluationTest, ACommitThatChangesTheNameDoesNotHoldUpADelete)
{
    Insert({false, true, false, false, false});
    m_agent.On("Set", [](MibEntry *, RFC1157VarBind * binding) {
        binding->name.ids[4] = 0;
        binding->name.ids[3] = 0; // 1.3.6.0.0, below the key
        return 0u;
    });
    EXPECT_EQ(0u, CommitStatus());
    m_agent.MibInsertConstOid("1.3.6.2", "x", 1u, ASN_INTEGER, 0);
    const COid root("1.3.6");
    EXPECT_EQ(1u, m_agent.MibDeleteOids(root.Get(), 2, kNone, kNone, kNone, kNone));
    EXPECT_EQ(1u, m_agent.MibSize());
    EXPECT_EQ(1u, m_agent.MibDeleteOids(root.Get()));
}

// Traces

TEST_F(MibEvaluationTest, TracesAGetWithAllItsCallbacks)
{
    Insert({true, false, false, true, true});
    const CRecordedTrace trace;
    Get(m_agent, kOid);
    EXPECT_THAT(
        trace.Lines(6),
        ElementsAre("4|\nCSnmpMibTree (GET)  : Get varbind for OID=1.3.6.1.0",
                    "6|\nCSnmpMibTree        : Locking MIB tree ...", "6|\nCSnmpMibTree        : ...MIB tree locked",
                    "4|\nCSnmpMibTree (GET)  :   request type=GET",
                    "4|\nCSnmpMibTree (GET)  :   -> object found, name=\"kxrVar\"",
                    "4|\nCSnmpMibTree (GET)  :   CheckGetFunc() callback found, execute it...",
                    "4|\nCSnmpMibTree (GET)  :   GetSetChecksetFuncEx() callback found, execute it...",
                    "4|\nCSnmpMibTree (GET)  :   GetFunc() callback found, execute it...",
                    "5|\nCSnmpMibTree (GET)  : reply that object by caller's varbind",
                    "6|\nCSnmpMibTree        : Unlocking MIB tree ...",
                    "6|\nCSnmpMibTree        : ...MIB tree unlocked", "4|\nCSnmpMibTree (GET)  : item found=1"));
}

TEST_F(MibEvaluationTest, TracesAGetNextOfAConstant)
{
    m_agent.MibInsertConstOid("1.3.7", "kxrConst", 70u, ASN_INTEGER, 0);
    const CRecordedTrace trace;
    GetNext(m_agent, "1.3");
    EXPECT_THAT(trace.Lines(), ElementsAre("4|\nCSnmpMibTree (GET)  : Get varbind for OID=1.3",
                                           "4|\nCSnmpMibTree (GET)  :   request type=GETNEXT",
                                           "4|\nCSnmpMibTree (GET)  :   -> object found, name=\"kxrConst\"",
                                           "5|\nCSnmpMibTree (GET)  : reply that object by caller's varbind",
                                           "4|\nCSnmpMibTree (GET)  : item found=1"));
}

TEST_F(MibEvaluationTest, TracesWhatIsNotFoundAndUnknownRequests)
{
    const CRecordedTrace trace;
    GetNext(m_agent, "1.3");
    Ask(m_agent, "1.3", 165);
    EXPECT_THAT(trace.Lines(), ElementsAre("4|\nCSnmpMibTree (GET)  : Get varbind for OID=1.3",
                                           "4|\nCSnmpMibTree (GET)  :   request type=GETNEXT",
                                           "4|\nCSnmpMibTree (GET)  : item found=0",
                                           "4|\nCSnmpMibTree (GET)  : Get varbind for OID=1.3",
                                           "4|\nCSnmpMibTree (GET)  : item found=0"));
}

TEST_F(MibEvaluationTest, TracesTheCallbacksOfACheck)
{
    m_agent.SetGlobalCheckSet(CTestAgent::Global());
    const CRecordedTrace trace;
    Insert({false, false, true, false, true});
    CheckStatus();
    Insert({});
    CheckStatus();
    std::vector<std::string> lines = trace.Lines();
    std::erase_if(lines, [](std::string const & line) { return line[0] == '1'; });
    EXPECT_THAT(lines, ElementsAre("4|\nCSnmpMibTree (CHSET):   GetSetFunc() callback found, execute it...",
                                   "4|\nCSnmpMibTree (CHSET):   GetSetChecksetFuncEx() callback found, execute it...",
                                   "4|\nCSnmpMibTree (CHSET):   Global CHECKSET callback found and no other callback "
                                   "available, execute it...",
                                   "4|\nCSnmpMibTree (CHSET):   GetSetChecksetFuncEx() callback found, execute it..."));
}

TEST_F(MibEvaluationTest, TracesTheCallbacksOfACommit)
{
    Insert({false, true, false, false, false});
    const CRecordedTrace trace;
    CommitStatus();
    EXPECT_THAT(trace.Lines(), ElementsAre("4|\nCSnmpMibTree (SET)  :   SetFunc() callback found, execute it..."));
}

TEST_F(MibEvaluationTest, TracesTheExtendedCallbackOfACommit)
{
    Insert({false, true, false, false, true});
    const CRecordedTrace trace;
    CommitStatus();
    EXPECT_THAT(trace.Lines(),
                ElementsAre("4|\nCSnmpMibTree (SET)  :   GetSetChecksetFuncEx() callback found, execute it..."));
}

} // namespace
