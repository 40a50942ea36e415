#include "MibFixture.h"

namespace {

constexpr std::uint32_t kNone = kNoOidIndex;
constexpr char const * kOid = "1.3.6.1";
constexpr char const * kCell = "1.3.6.1.0.0";

using testing::ElementsAre;
using testing::HasSubstr;

/// The entry that the tree stores for a writable object, as an extended callback sees it in the check of a SET.
struct SStored {
    bool exists = false;
    MibEntry entry;
};

SStored Stored(CTestAgent & agent, std::string const & oid)
{
    SStored stored;
    agent.SetGlobalCheckSet(CTestAgent::Global());
    const auto keep = [&stored](MibEntry * entry, RFC1157VarBind *) {
        stored.exists = true;
        stored.entry = *entry;
        return 0u;
    };
    agent.On("Global", keep);
    agent.On("Ex", keep);
    CheckSet(agent, oid);
    agent.SetGlobalCheckSet({});
    agent.TakeCalls();
    return stored;
}

/// The copy of an entry that its extended callback sees in a GET.
SStored Read(CTestAgent & agent, std::string const & oid)
{
    SStored read;
    agent.On("Ex", [&read](MibEntry * entry, RFC1157VarBind *) {
        read.exists = true;
        read.entry = *entry;
        return 0u;
    });
    Get(agent, oid);
    agent.TakeCalls();
    return read;
}

// Constants

TEST(MibInsertTest, AScalarConstantFromTextAnswersWithItsValue)
{
    CTestAgent agent;
    const CRecordedTrace trace;
    agent.MibInsertConstOid(kOid, "kxrAgentId", "abc", ASN_OCTETSTRING, 0);
    EXPECT_THAT(trace.Lines(), ElementsAre("1|\n## Const MIB entry  : kxrAgentId                     - Oid=1.3.6.1, "
                                           "Value=OctetString: \"abc\""));
    const SReply reply = Get(agent, kOid);
    EXPECT_EQ(1, reply.found);
    EXPECT_EQ(0u, reply.status);
    EXPECT_EQ("kxrAgentId", reply.name);
    EXPECT_EQ("OctetString: \"abc\"", reply.value);
}

TEST(MibInsertTest, AScalarConstantFromANumberThatIsWritableSaysSo)
{
    CTestAgent agent;
    const CRecordedTrace trace;
    agent.MibInsertConstOid(kOid, "kxrX", 5u, ASN_INTEGER, 2);
    EXPECT_THAT(trace.Lines(), ElementsAre("1|\n## Const MIB entry  : kxrX                           (RW) - "
                                           "Oid=1.3.6.1, Value=Integer: 5 (0x5)"));
    EXPECT_EQ("Integer: 5 (0x5)", Get(agent, kOid).value);
    const SStored stored = Stored(agent, kOid);
    ASSERT_TRUE(stored.exists);
    EXPECT_EQ(2u, stored.entry.access);
    EXPECT_EQ(ASN_NULL, stored.entry.type);
    EXPECT_EQ("kxrX", stored.entry.name);
    EXPECT_EQ("1.3.6.1", TextOf(stored.entry.varbind.name));
    EXPECT_EQ(nullptr, stored.entry.context);
    EXPECT_FALSE(stored.entry.GetFunc.IsSet());
}

struct SConstant {
    char const * name;
    std::uint32_t type;
    char const * text;
    std::string fromText;   // the value after an insert with the text
    std::string fromNumber; // after an insert with the number 7
};

std::ostream & operator<<(std::ostream & out, SConstant const & test)
{
    return out << test.name;
}

class ConstantTest : public testing::TestWithParam<SConstant> {};

TEST_P(ConstantTest, KeepsItsValueInEveryFamilyAndAccess)
{
    SConstant const & test = GetParam();
    for (const std::uint32_t access : {0u, 2u}) {
        CTestAgent agent;
        agent.MibInsertConstOid("1.1", "x", test.text, test.type, access);
        agent.MibInsertConstOid("1.2", "x", 7u, test.type, access);
        EXPECT_EQ(test.fromText, Get(agent, "1.1").value);
        EXPECT_EQ(test.fromNumber, Get(agent, "1.2").value);
        if (access != 0) continue;
        agent.MibInsertConstTableOid("1.3.0", "x", test.text, test.type, 1);
        agent.MibInsertConstTableOid("1.3.0", "x", 7u, test.type, 2);
        agent.MibInsertConstStringIndexOid("1.4", "x", test.text, test.type, "a", kNone);
        agent.MibInsertConstStringIndexOid("1.4", "x", 7u, test.type, "b", 3);
        EXPECT_EQ(test.fromText, Get(agent, "1.3.1").value);
        EXPECT_EQ(test.fromNumber, Get(agent, "1.3.2").value);
        EXPECT_EQ(test.fromText, Get(agent, "1.4.1.97").value);
        EXPECT_EQ(test.fromNumber, Get(agent, "1.4.1.98.3").value);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Types, ConstantTest,
    testing::Values(SConstant{"Integer", 2, "-3", "Integer: -3 (0xFFFFFFFD)", "Integer: 7 (0x7)"},
                    SConstant{"Bits", 3, "1", "Null", "Null"},
                    SConstant{"OctetString", 4, "abc", "OctetString: \"abc\"", "Null"},
                    SConstant{"EmptyOctetString", 4, "", "OctetString: NULL", "Null"},
                    SConstant{"NullOctetString", 4, nullptr, "OctetString: NULL", "Null"},
                    SConstant{"Null", 5, "1", "Null", "Null"},
                    SConstant{"ObjectIdentifier", 6, "1.3", "ObjectIdentifier", "Null"},
                    SConstant{"IpAddress", 64, "1.2.3.4", "IpAddress: 1.2.3.4", "IpAddress: 7.0.0.0"},
                    SConstant{"Counter32", 65, "8", "Counter32: 8 (0x8)", "Counter32: 7 (0x7)"},
                    SConstant{"Gauge32", 66, "8", "Gauge32: 8 (0x8)", "Gauge32: 7 (0x7)"},
                    SConstant{"Timeticks", 67, "8", "Timeticks: 8 (0x8)", "Timeticks: 7 (0x7)"},
                    SConstant{"Opaque", 68, "8", "Null", "Null"}, SConstant{"Counter64", 70, "8", "Null", "Null"},
                    SConstant{"UInteger32", 71, "8", "UInteger32", "UInteger32"},
                    SConstant{"TypeBelow", 1, "8", "Null", "Null"}, SConstant{"TypeAbove", 72, "8", "Null", "Null"}),
    [](auto const & test) { return std::string(test.param.name); });

TEST(MibInsertTest, AnOidConstantIsACopyOfItsOwn)
{
    CTestAgent agent;
    agent.MibInsertConstOid(kOid, "x", "1.3.7", ASN_OBJECTIDENTIFIER, 0);
    CVarBind binding;
    FillBinding(binding, kOid);
    std::uint32_t status = 9;
    ASSERT_EQ(1, agent.MibGetVarbind(binding.Get(), SNMP_PDU_GET, &status, nullptr));
    EXPECT_EQ((TArcs{1, 3, 7}), ArcsOf(binding->value.asnValue.object));
}

TEST(MibInsertTest, ATextIndexBringsItsLengthItsBytesAndTheExtraIndex)
{
    CTestAgent agent;
    const CRecordedTrace trace;
    agent.MibInsertConstStringIndexOid("1.3.6", "kxrCol", "v", ASN_OCTETSTRING, "ab", 9);
    agent.MibInsertConstStringIndexOid("1.3.6", "kxrCol", 5u, ASN_INTEGER, "ab", kNone);
    agent.MibInsertConstStringIndexOid("1.3.6", "kxrCol", 6u, ASN_INTEGER, "", 0);
    agent.MibInsertConstStringIndexOid("1.3.6", "kxrCol", 7u, ASN_INTEGER, nullptr, 4);
    EXPECT_THAT(
        trace.Lines(),
        ElementsAre("1|\n## Const table entry: kxrCol                         - Oid=1.3.6.2.97.98.9, "
                    "Value=OctetString: \"v\"",
                    "1|\n## Const table entry: kxrCol                         - Oid=1.3.6.2.97.98, "
                    "Value=Integer: 5 (0x5)",
                    "1|\n## Const table entry: kxrCol                         - Oid=1.3.6.0.0, Value=Integer: 6 (0x6)",
                    "1|\n## Const table entry: kxrCol                         - Oid=1.3.6.4, Value=Integer: 7 (0x7)"));
    EXPECT_THAT(Walk(agent), ElementsAre("1.3.6.0.0", "1.3.6.2.97.98", "1.3.6.2.97.98.9", "1.3.6.4"));
}

TEST(MibInsertTest, ACellTracesTheOidWithItsIndexes)
{
    CTestAgent agent;
    const CRecordedTrace trace;
    agent.MibInsertConstTableOid(kCell, "kxrCell", "abc", ASN_OCTETSTRING, 7, 8, kNone, kNone, kNone);
    agent.MibInsertConstTableOid(kCell, nullptr, 3u, ASN_GAUGE32, 7, 9, kNone, kNone, kNone);
    EXPECT_THAT(trace.Lines(),
                ElementsAre("1|\n## Const table entry: kxrCell                        - Oid=1.3.6.1.7.8, "
                            "Value=OctetString: \"abc\"",
                            "1|\n## Const table entry:                                - Oid=1.3.6.1.7.9, "
                            "Value=Gauge32: 3 (0x3)"));
    EXPECT_EQ("", Get(agent, "1.3.6.1.7.9").name);
}

TEST(MibInsertTest, ACellOfBytesTakesAnyStreamType)
{
    CTestAgent agent;
    const std::uint8_t bytes[] = {1, 2, 3};
    for (const std::uint32_t type : {ASN_OCTETSTRING, ASN_OPAQUE, ASN_BITS, ASN_IPADDRESS}) {
        agent.MibInsertConstTableOid("1.3.0", "x", bytes, 3, type, type);
        CVarBind binding;
        FillBinding(binding, "1.3." + std::to_string(type));
        std::uint32_t status = 9;
        ASSERT_EQ(1, agent.MibGetVarbind(binding.Get(), SNMP_PDU_GET, &status, nullptr));
        EXPECT_EQ(type, binding->value.asnType);
        EXPECT_EQ("\x01\x02\x03", Octets(binding->value));
        EXPECT_NE(0, binding->value.asnValue.string.dynamic);
    }
}

TEST(MibInsertTest, ACellOfNoBytesIsAnEmptyValueOfItsType)
{
    CTestAgent agent;
    const std::uint8_t bytes[] = {1};
    for (const std::uint32_t type : {2u, 3u, 4u, 5u, 6u, 64u, 65u, 68u, 70u, 71u, 99u}) {
        agent.MibInsertConstTableOid("1.3.0.0", "x", static_cast<std::uint8_t const *>(nullptr), 3, type, type, 1);
        agent.MibInsertConstTableOid("1.3.0.0", "x", bytes, 0, type, type, 2);
        for (char const * last : {".1", ".2"}) {
            CVarBind binding;
            FillBinding(binding, "1.3." + std::to_string(type) + last);
            std::uint32_t status = 9;
            ASSERT_EQ(1, agent.MibGetVarbind(binding.Get(), SNMP_PDU_GET, &status, nullptr));
            EXPECT_EQ(type, binding->value.asnType);
            EXPECT_EQ(0u, binding->value.asnValue.string.length);
        }
    }
}

TEST(MibInsertTest, BytesUnderATypeWithoutAStreamLeaveTheCellNull)
{
    CTestAgent agent;
    const std::uint8_t bytes[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    for (const std::uint32_t type : {ASN_INTEGER, ASN_OBJECTIDENTIFIER, ASN_COUNTER64}) {
        agent.MibInsertConstTableOid("1.3.0", "x", bytes, sizeof(bytes), type, type);
        EXPECT_EQ("Null", Get(agent, "1.3." + std::to_string(type)).value);
    }
}

TEST(MibInsertTest, AnOidThatDoesNotParseLandsUnderTheEmptyKeyWithoutAValue)
{
    CTestAgent agent;
    const CRecordedTrace trace;
    agent.MibInsertConstOid("1.x", "kxrBad", 5u, ASN_INTEGER, 0);
    agent.MibInsertConstOid("5", "kxrBad", "5", ASN_INTEGER, 0);
    agent.MibInsertConstStringIndexOid("", "kxrBad", 5u, ASN_INTEGER, "ab", 3);
    agent.MibInsertConstTableOid(nullptr, "kxrBad", 5u, ASN_INTEGER, 1, 2, 3, 4, 5);
    const std::uint8_t byte = 1;
    agent.MibInsertConstTableOid("x.0", "kxrBad", &byte, 1, ASN_OCTETSTRING, 1);
    for (std::string const & line : trace.Lines())
        EXPECT_THAT(line, HasSubstr("Oid=, Value=Null"));
    EXPECT_EQ(5u, trace.Lines().size());
    EXPECT_EQ(1u, agent.MibSize());
    EXPECT_EQ(0, Get(agent, "").found); // an empty OID counts as no object
    agent.MibInsertVarTableOidEx("x", "kxrBad", 4, CTestAgent::Ex(), 1, 2, 3, 4, 5);
    agent.MibInsertVarOid("x", "kxrBad", 4, CTestAgent::Get(), {}, {}, {}, 0, nullptr);
    EXPECT_EQ(1u, agent.MibSize());
    EXPECT_EQ(0, Get(agent, "").found);
    EXPECT_THAT(agent.TakeCalls(), ElementsAre());
}

TEST(MibInsertTest, InAppendModeCellsGrowBehindTheColumn)
{
    CTestAgent agent;
    agent.m_indexAppendMode = 1;
    agent.MibInsertConstTableOid("1.3.6", "x", 1u, ASN_INTEGER, 4, 5, kNone, 6, kNone);
    EXPECT_THAT(Walk(agent), ElementsAre("1.3.6.4.5"));
}

// Variables

TEST(MibInsertTest, AScalarVariableHasAnEmptyValueOfItsType)
{
    CTestAgent agent;
    int context = 0;
    const CRecordedTrace trace;
    agent.MibInsertVarOid(kOid, "kxrVar", ASN_GAUGE32, CTestAgent::Get(), CTestAgent::Set(), {}, CTestAgent::CheckGet(),
                          2, &context);
    EXPECT_THAT(trace.Lines(), ElementsAre("1|\n## Var MIB entry    : kxrVar                         - Oid=1.3.6.1, "
                                           "Value=Gauge32: 0 (0x0)"));
    const SStored stored = Stored(agent, kOid);
    ASSERT_TRUE(stored.exists);
    EXPECT_EQ("kxrVar", stored.entry.name);
    EXPECT_TRUE(stored.entry.GetFunc.IsSet());
    EXPECT_TRUE(stored.entry.SetFunc.IsSet());
    EXPECT_FALSE(stored.entry.GetSetFunc.IsSet());
    EXPECT_TRUE(stored.entry.CheckGetFunc.IsSet());
    EXPECT_EQ(2u, stored.entry.access);
    EXPECT_EQ(ASN_NULL, stored.entry.type);
    EXPECT_EQ(&context, stored.entry.context);
    EXPECT_EQ(0u, stored.entry.contextSize);
    EXPECT_EQ("Gauge32: 0 (0x0)", ValueText(stored.entry.varbind));
}

TEST(MibInsertTest, AnExtendedScalarStoresItsTypeAndNoValue)
{
    CTestAgent agent;
    int context = 0;
    {
        const CRecordedTrace trace;
        agent.MibInsertVarOidEx(kOid, "kxrVarEx", ASN_GAUGE32, CTestAgent::Ex(), &context);
        EXPECT_THAT(trace.Lines(),
                    ElementsAre("1|\n## Var MIB entry    : kxrVarEx                       - Oid=1.3.6.1"));
    }
    const SStored read = Read(agent, kOid);
    ASSERT_TRUE(read.exists);
    EXPECT_EQ("kxrVarEx", read.entry.name);
    EXPECT_EQ(ASN_GAUGE32, read.entry.type);
    EXPECT_EQ(0u, read.entry.access);
    EXPECT_EQ(&context, read.entry.context);
    EXPECT_EQ("Null", ValueText(read.entry.varbind));
    EXPECT_EQ("1.3.6.1", TextOf(read.entry.varbind.name));
}

TEST(MibInsertTest, TableVariablesTakeIndexesAndLeaveTypeAndValueAlone)
{
    CTestAgent agent;
    int context = 0;
    const CRecordedTrace trace;
    agent.MibInsertVarTableOid(kCell, "kxrCell", ASN_GAUGE32, CTestAgent::Get(), CTestAgent::Set(), {}, {}, 2, 3, 4,
                               kNone, kNone, kNone);
    agent.MibInsertVarTableOid(kCell, "kxrCell", ASN_GAUGE32, {}, {}, {}, CTestAgent::CheckGet(), 2, &context, 3, 5,
                               kNone, kNone, kNone);
    const SStored first = Stored(agent, "1.3.6.1.3.4");
    ASSERT_TRUE(first.exists);
    EXPECT_EQ(nullptr, first.entry.context);
    EXPECT_EQ(ASN_NULL, first.entry.type);
    EXPECT_EQ("Null", ValueText(first.entry.varbind));
    EXPECT_TRUE(first.entry.GetFunc.IsSet() && first.entry.SetFunc.IsSet());
    const SStored second = Stored(agent, "1.3.6.1.3.5");
    ASSERT_TRUE(second.exists);
    EXPECT_EQ(&context, second.entry.context);
    EXPECT_TRUE(second.entry.CheckGetFunc.IsSet());
    EXPECT_FALSE(second.entry.GetFunc.IsSet());
}

TEST(MibInsertTest, TableVariablesTraceTheirOidAndMarkWritableOnes)
{
    CTestAgent agent;
    const CRecordedTrace trace;
    agent.MibInsertVarTableOid(kCell, "kxrRo", 2, {}, {}, {}, {}, 0, 1, 2, kNone, kNone, kNone);
    agent.MibInsertVarTableOid(kCell, "kxrRw", 2, {}, {}, {}, {}, 2, 1, 3, kNone, kNone, kNone);
    agent.MibInsertVarTableOidEx(kCell, "kxrEx", 2, CTestAgent::Ex(), 1, 4, kNone, kNone, kNone);
    agent.MibInsertVarStringIndexOid(kOid, "kxrText", 2, {}, {}, {}, {}, 0, "a");
    EXPECT_THAT(trace.Lines(),
                ElementsAre("1|\n## Var table entry  : kxrRo                          - Oid=1.3.6.1.1.2",
                            "1|\n## Var table entry  : kxrRw                          (RW) - Oid=1.3.6.1.1.3",
                            "1|\n## Var table entry  : kxrEx                          - Oid=1.3.6.1.1.4",
                            "1|\n## Var table entry:   kxrText                        - Oid=1.3.6.1.1.97"));
}

TEST(MibInsertTest, ATextIndexedVariableHasNoContext)
{
    CTestAgent agent;
    agent.MibInsertVarStringIndexOid(kOid, "kxrText", ASN_GAUGE32, CTestAgent::Get(), {}, CTestAgent::GetSet(), {}, 2,
                                     "a");
    agent.MibInsertVarStringIndexOid(kOid, "kxrText", ASN_GAUGE32, {}, {}, {}, {}, 2, "b");
    const SStored stored = Stored(agent, "1.3.6.1.1.98");
    ASSERT_TRUE(stored.exists);
    EXPECT_EQ(nullptr, stored.entry.context);
    EXPECT_EQ(ASN_NULL, stored.entry.type);
    Get(agent, "1.3.6.1.1.97");
    CheckSet(agent, "1.3.6.1.1.97");
    EXPECT_THAT(agent.TakeCalls(), ElementsAre("Get(0)", "GetSet(2)"));
}

TEST(MibInsertTest, ExtendedTableVariablesStoreTypeAndContext)
{
    CTestAgent agent;
    int context = 0;
    agent.MibInsertVarTableOidEx(kCell, "kxrEx", ASN_COUNTER32, CTestAgent::Ex(), 1, 4, kNone, kNone, kNone);
    agent.MibInsertVarTableOidEx(kCell, "kxrEx", ASN_GAUGE32, CTestAgent::Ex(), &context, 1, 5, kNone, kNone, kNone);
    const SStored first = Read(agent, "1.3.6.1.1.4");
    ASSERT_TRUE(first.exists);
    EXPECT_EQ(nullptr, first.entry.context);
    EXPECT_EQ(ASN_COUNTER32, first.entry.type);
    EXPECT_EQ(0u, first.entry.access);
    const SStored second = Read(agent, "1.3.6.1.1.5");
    ASSERT_TRUE(second.exists);
    EXPECT_EQ(&context, second.entry.context);
    EXPECT_EQ(ASN_GAUGE32, second.entry.type);
}

TEST(MibInsertTest, AStringContextIsCopiedWithItsTerminator)
{
    CTestAgent agent;
    std::string context = "some context";
    {
        const CRecordedTrace trace;
        agent.MibInsertOidWithStringContext(kCell, "kxrCtx", 2, {}, {}, {}, {}, 2, context.c_str(), 1, 2, kNone, kNone,
                                            kNone);
        EXPECT_THAT(trace.Lines(),
                    ElementsAre("1|\n## Var table entry  : kxrCtx                         (RW) - Oid=1.3.6.1.1.2",
                                "4|\nCSnmpMibTree        : MibInsertOidWithStringContext: Context string: "
                                "\"some context\""));
    }
    context.assign("gone");
    const SStored stored = Stored(agent, "1.3.6.1.1.2");
    ASSERT_TRUE(stored.exists);
    EXPECT_EQ(13u, stored.entry.contextSize);
    EXPECT_STREQ("some context", static_cast<char const *>(stored.entry.context));
}

TEST(MibInsertTest, AStringContextMayBeEmptyOrNull)
{
    CTestAgent agent;
    agent.MibInsertOidWithStringContext(kCell, "x", 2, {}, {}, {}, {}, 2, "", 1, 2, kNone, kNone, kNone);
    EXPECT_EQ(1u, Stored(agent, "1.3.6.1.1.2").entry.contextSize);
    agent.MibInsertOidWithStringContext(kCell, "x", 2, {}, {}, {}, {}, 2, nullptr, 1, 2, kNone, kNone, kNone);
    const SStored stored = Stored(agent, "1.3.6.1.1.2");
    EXPECT_EQ(0u, stored.entry.contextSize);
    EXPECT_EQ(nullptr, stored.entry.context);
}

// Inserting again

TEST(MibReinsertTest, LeavesOneEntryWithTheLaterData)
{
    CTestAgent agent;
    agent.MibInsertConstOid(kOid, "first", 1u, ASN_INTEGER, 0);
    agent.MibInsertConstOid(kOid, "second", "text", ASN_OCTETSTRING, 0);
    EXPECT_EQ(1u, agent.MibSize());
    EXPECT_EQ("second", Get(agent, kOid).name);
    EXPECT_EQ("OctetString: \"text\"", Get(agent, kOid).value);
    agent.MibInsertConstOid(kOid, "third", "longer text than before", ASN_OCTETSTRING, 0);
    EXPECT_EQ("OctetString: \"longer text than before\"", Get(agent, kOid).value);
    agent.MibInsertConstOid(kOid, "fourth", 2u, ASN_COUNTER32, 0);
    EXPECT_EQ("Counter32: 2 (0x2)", Get(agent, kOid).value);
    agent.MibInsertConstOid(kOid, "fourth", 3u, ASN_GAUGE32, 0);
    EXPECT_EQ("Gauge32: 3 (0x3)", Get(agent, kOid).value);
    EXPECT_EQ(1u, agent.MibSize());
}

TEST(MibReinsertTest, ANullNameKeepsTheOldOneAndAnEmptyNameDoesNot)
{
    CTestAgent agent;
    agent.MibInsertConstOid(kOid, "first", 1u, ASN_INTEGER, 0);
    agent.MibInsertConstOid(kOid, nullptr, 2u, ASN_INTEGER, 0);
    EXPECT_EQ("first", Get(agent, kOid).name);
    agent.MibInsertConstOid(kOid, nullptr, "text", ASN_OCTETSTRING, 0);
    EXPECT_EQ("first", Get(agent, kOid).name);
    agent.MibInsertVarOid(kOid, nullptr, 2, CTestAgent::Get(), {}, {}, {}, 0, nullptr);
    EXPECT_EQ("first", Get(agent, kOid).name);
    agent.MibInsertConstOid(kOid, "", 2u, ASN_INTEGER, 0);
    EXPECT_EQ("", Get(agent, kOid).name);
}

TEST(MibReinsertTest, AConstantOverAVariableDropsItsPlainCallbacks)
{
    CTestAgent agent;
    agent.MibInsertVarOid(kOid, "x", 2, CTestAgent::Get(), CTestAgent::Set(), CTestAgent::GetSet(),
                          CTestAgent::CheckGet(), 2, nullptr);
    agent.MibInsertConstOid(kOid, "x", 5u, ASN_INTEGER, 0);
    EXPECT_EQ("Integer: 5 (0x5)", Get(agent, kOid).value);
    EXPECT_EQ(4u, CheckSet(agent, kOid).status);
    EXPECT_THAT(agent.TakeCalls(), ElementsAre());
}

TEST(MibReinsertTest, AConstantOverAnExtendedVariableLeavesItsCallbackAndType)
{
    CTestAgent agent;
    agent.MibInsertVarOidEx(kOid, "x", ASN_GAUGE32, CTestAgent::Ex(), nullptr);
    agent.MibInsertConstOid(kOid, "x", 5u, ASN_INTEGER, 0);
    const SStored read = Read(agent, kOid);
    ASSERT_TRUE(read.exists);
    EXPECT_EQ(ASN_GAUGE32, read.entry.type);
    EXPECT_EQ("Integer: 5 (0x5)", ValueText(read.entry.varbind));
}

TEST(MibReinsertTest, AnExtendedInsertOverAConstantLeavesItsValue)
{
    CTestAgent agent;
    agent.MibInsertConstOid(kOid, "const", "abc", ASN_OCTETSTRING, 0);
    agent.MibInsertVarOidEx(kOid, nullptr, ASN_GAUGE32, CTestAgent::Ex(), nullptr);
    const SStored read = Read(agent, kOid);
    ASSERT_TRUE(read.exists);
    EXPECT_EQ("const", read.entry.name);
    EXPECT_EQ("OctetString: \"abc\"", ValueText(read.entry.varbind));
    EXPECT_EQ("1.3.6.1", TextOf(read.entry.varbind.name));
    EXPECT_EQ(1u, agent.MibSize());
}

TEST(MibReinsertTest, AnExtendedInsertLeavesTheFourPlainCallbacks)
{
    CTestAgent agent;
    agent.MibInsertVarOid(kOid, "x", 2, CTestAgent::Get(), {}, {}, CTestAgent::CheckGet(), 0, nullptr);
    agent.MibInsertVarOidEx(kOid, "x", 2, CTestAgent::Ex(), nullptr);
    Get(agent, kOid);
    EXPECT_THAT(agent.TakeCalls(), ElementsAre("CheckGet(3)", "Ex(0)", "Get(0)"));
}

TEST(MibReinsertTest, ABorrowedContextIsOverwrittenWithoutBeingFreed)
{
    CTestAgent agent;
    const auto first = std::make_unique<int>(1);
    int second = 2;
    agent.MibInsertVarTableOid(kCell, "x", 2, {}, {}, {}, {}, 2, first.get(), 1, 2, kNone, kNone, kNone);
    agent.MibInsertVarTableOid(kCell, "x", 2, {}, {}, {}, {}, 2, &second, 1, 2, kNone, kNone, kNone);
    EXPECT_EQ(&second, Stored(agent, "1.3.6.1.1.2").entry.context);
    EXPECT_EQ(1, *first);
}

TEST(MibReinsertTest, ABorrowedContextOverAnOwnedOneIsNotTakenForOwned)
{
    CTestAgent agent;
    int context = 0;
    agent.MibInsertOidWithStringContext(kCell, "x", 2, {}, {}, {}, {}, 2, "text", 1, 2, kNone, kNone, kNone);
    agent.MibInsertVarTableOid(kCell, "x", 2, {}, {}, {}, {}, 2, &context, 1, 2, kNone, kNone, kNone);
    const SStored stored = Stored(agent, "1.3.6.1.1.2");
    EXPECT_EQ(&context, stored.entry.context);
    EXPECT_EQ(0u, stored.entry.contextSize);
    agent.MibInsertOidWithStringContext(kCell, "x", 2, {}, {}, {}, {}, 2, "new text", 1, 2, kNone, kNone, kNone);
    EXPECT_STREQ("new text", static_cast<char const *>(Stored(agent, "1.3.6.1.1.2").entry.context));
}

TEST(MibReinsertTest, AnObjectKeepsItsAddressWhenItIsReplaced)
{
    CTestAgent agent;
    MibEntry * address = nullptr;
    agent.SetGlobalCheckSet(CTestAgent::Global());
    agent.On("Global", [&address](MibEntry * entry, RFC1157VarBind *) {
        EXPECT_TRUE(address == nullptr || address == entry);
        address = entry;
        return 0u;
    });
    agent.MibInsertConstOid(kOid, "x", 1u, ASN_INTEGER, 2);
    EXPECT_EQ(0u, CheckSet(agent, kOid).status);
    agent.MibInsertConstOid(kOid, "x", 2u, ASN_INTEGER, 0); // read-only for a while
    for (std::uint32_t i = 0; i < 300; ++i)
        agent.MibInsertConstTableOid("1.3.6.0", "y", i, ASN_INTEGER, i + 2);
    agent.MibInsertConstOid(kOid, "x", "text", ASN_OCTETSTRING, 2);
    EXPECT_EQ(0u, CheckSet(agent, kOid).status);
    EXPECT_EQ(2u, agent.TakeCalls().size());
}

TEST(MibReinsertTest, OnlyTheLowByteOfTheAccessIsStored)
{
    CTestAgent agent;
    agent.MibInsertConstOid("1.1", "x", 1u, ASN_INTEGER, 0x102);
    agent.MibInsertConstOid("1.2", "x", 1u, ASN_INTEGER, 0x200);
    EXPECT_EQ(0u, CheckSet(agent, "1.1").status);
    EXPECT_EQ(4u, CheckSet(agent, "1.2").status);
    EXPECT_EQ(2u, Stored(agent, "1.1").entry.access);
}

// The base inserts

TEST(MibInsertEntryTest, StoresACopyOfTheBindingWithoutATrace)
{
    CTestAgent agent;
    const CRecordedTrace trace;
    {
        CVarBind binding;
        FillBinding(binding, kOid);
        SetVarBindOctets(binding.Get(), "bytes", 5, ASN_BITS);
        agent.MibInsertEntry(binding.Get(), "kxrBits", 0, {}, {}, {}, {}, nullptr);
    }
    EXPECT_THAT(trace.Lines(), ElementsAre());
    EXPECT_EQ("kxrBits", Get(agent, kOid).name);
    EXPECT_EQ("Bits", Get(agent, kOid).value);
    agent.MibInsertEntry(nullptr, "x", 0, {}, {}, {}, {}, nullptr);
    agent.MibInsertEntryEx(nullptr, "x", {}, 2, nullptr, 0);
    EXPECT_EQ(1u, agent.MibSize());
}

TEST(MibInsertEntryTest, KeepsValuesOfEveryType)
{
    CTestAgent agent;
    CVarBind binding;
    FillBinding(binding, kOid);
    binding->value.asnType = ASN_COUNTER64;
    binding->value.asnValue.counter64.quadPart = 0x1122334455667788u;
    agent.MibInsertEntry(binding.Get(), "x", 0, {}, {}, {}, {}, nullptr);
    CVarBind reply;
    FillBinding(reply, kOid);
    std::uint32_t status = 9;
    ASSERT_EQ(1, agent.MibGetVarbind(reply.Get(), SNMP_PDU_GET, &status, nullptr));
    const std::uint64_t number = reply->value.asnValue.counter64.quadPart;
    EXPECT_EQ(0x1122334455667788u, number);
}

TEST(MibInsertEntryTest, TheExtendedFormStoresTheAccessItIsGiven)
{
    CTestAgent agent;
    const COid oid(kOid);
    agent.MibInsertEntryEx(oid.Get(), "x", CTestAgent::Ex(), ASN_GAUGE32, nullptr, 2);
    const SStored stored = Stored(agent, kOid);
    ASSERT_TRUE(stored.exists);
    EXPECT_EQ(2u, stored.entry.access);
    EXPECT_EQ(ASN_GAUGE32, stored.entry.type);
}

TEST(MibTreeLockTest, EachOperationTracesTakeAndRelease)
{
    const std::vector<std::string> lock = {
        "6|\nCSnmpMibTree        : Locking MIB tree ...", "6|\nCSnmpMibTree        : ...MIB tree locked",
        "6|\nCSnmpMibTree        : Unlocking MIB tree ...", "6|\nCSnmpMibTree        : ...MIB tree unlocked"};
    CTestAgent agent;
    CVarBind binding;
    FillBinding(binding, "1.9");
    std::uint32_t status = 0;
    const COid root("1.9");
    const std::vector<std::function<void()>> operations = {
        [&] { agent.MibInsertConstOid(kOid, "x", 1u, ASN_INTEGER, 0); },
        [&] { agent.MibInsertConstOid(kOid, "x", 1u, ASN_INTEGER, 2); },
        [&] { agent.MibInsertVarOidEx(kOid, "x", 2, CTestAgent::Ex(), nullptr); },
        [&] { agent.MibInsertVarTableOid(kCell, "x", 2, {}, {}, {}, {}, 2, 1, 2, kNone, kNone, kNone); },
        [&] { agent.MibInsertVarStringIndexOid(kCell, "x", 2, {}, {}, {}, {}, 2, "a"); },
        [&] { agent.MibInsertOidWithStringContext(kCell, "x", 2, {}, {}, {}, {}, 2, "a", 1, 2, 3, 4, 5); },
        [&] { agent.MibGetVarbind(binding.Get(), SNMP_PDU_GET, &status, nullptr); },
        [&] { agent.MibCheckSetVarbind(binding.Get(), &status, nullptr); },
        [&] { agent.MibSetVarbind(binding.Get(), &status); },
        [&] { agent.MibDeleteOids(root.Get()); },
        [&] { agent.MibClear(); },
    };
    for (auto const & operation : operations) {
        const CRecordedTrace trace;
        operation();
        std::vector<std::string> lines = trace.Lines(6);
        std::erase_if(lines, [](std::string const & line) { return line[0] != '6'; });
        EXPECT_EQ(lock, lines);
    }
}

TEST(MibClearTest, DropsAllEntries)
{
    CTestAgent agent;
    for (std::uint32_t i = 0; i < 1000; ++i)
        agent.MibInsertConstTableOid("1.3.0", "x", i, ASN_INTEGER, i);
    agent.MibInsertOidWithStringContext(kCell, "x", 2, {}, {}, {}, {}, 2, "a", 1, 2, kNone, kNone, kNone);
    agent.MibClear();
    EXPECT_EQ(0u, agent.MibSize());
    EXPECT_EQ(0, GetNext(agent, "0.0").found);
    agent.MibInsertConstOid(kOid, "x", 1u, ASN_INTEGER, 0);
    EXPECT_THAT(Walk(agent), ElementsAre(kOid));
}

} // namespace
