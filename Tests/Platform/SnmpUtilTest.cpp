#include "Platform/SnmpUtil.h"

#include "Platform/SnmpValues.h"
#include "SnmpUtilBase.h"

namespace {

struct SComparison {
    char const * name;
    CArcs left, right;
    std::uint32_t arcs;
    int sign;
};
class OidCompareTest : public testing::TestWithParam<SComparison> {};

int Sign(int number)
{
    return number < 0 ? -1 : number > 0 ? 1 : 0;
}

constexpr std::uint32_t All = 0xFFFFFFFF;

} // namespace

TEST_P(OidCompareTest, ComparesUnsignedArcByArcAndTheShorterIsFirst)
{
    COid left(GetParam().left);
    COid right(GetParam().right);
    EXPECT_EQ(GetParam().sign, Sign(SnmpUtilOidNCmp(left.Get(), right.Get(), GetParam().arcs)));
    EXPECT_EQ(-GetParam().sign, Sign(SnmpUtilOidNCmp(right.Get(), left.Get(), GetParam().arcs)));
    if (GetParam().arcs != All) return;
    EXPECT_EQ(GetParam().sign, Sign(SnmpUtilOidCmp(left.Get(), right.Get())));
    EXPECT_EQ(-GetParam().sign, Sign(SnmpUtilOidCmp(right.Get(), left.Get())));
}

INSTANTIATE_TEST_SUITE_P(Oids, OidCompareTest,
                         testing::Values(SComparison{"Equal", {1, 3, 6}, {1, 3, 6}, All, 0},
                                         SComparison{"BothEmpty", {}, {}, All, 0},
                                         SComparison{"EmptyFirst", {}, {0}, All, -1},
                                         SComparison{"Shorter", {1, 3}, {1, 3, 0}, All, -1},
                                         SComparison{"LastArc", {1, 3, 5}, {1, 3, 6}, All, -1},
                                         SComparison{"EarlyArcBeatsLength", {2}, {1, 9, 9}, All, 1},
                                         SComparison{"UnsignedArcs", {1, 0x7FFFFFFF}, {1, 0x80000000}, All, -1},
                                         SComparison{"LargestArc", {0xFFFFFFFF}, {0}, All, 1},
                                         SComparison{"PrefixEqual", {1, 3, 6}, {1, 3, 7}, 2, 0},
                                         SComparison{"PrefixLonger", {1, 3}, {1, 3, 7}, 3, -1},
                                         SComparison{"PrefixOfOneTooShort", {1}, {1, 3}, 2, -1},
                                         SComparison{"NothingCompared", {1}, {2}, 0, 0}),
                         [](const auto & test) { return std::string(test.param.name); });

TEST_F(SnmpUtilTest, OidCopyIsDeepAndAnEmptyOneStaysEmpty)
{
    COid source({1, 3, 6});
    AsnObjectIdentifier copy{77, reinterpret_cast<std::uint32_t *>(16)}; // overwritten, never freed
    ASSERT_EQ(1, SnmpUtilOidCpy(&copy, source.Get()));
    source.Get()->ids[0] = 9;
    EXPECT_EQ((CArcs{1, 3, 6}), ArcsOf(copy));
    SnmpUtilOidFree(&copy);
    EXPECT_EQ(0u, copy.idLength);
    EXPECT_TRUE(copy.ids == nullptr);
    SnmpUtilOidFree(&copy);
    AsnObjectIdentifier empty{0, nullptr};
    ASSERT_EQ(1, SnmpUtilOidCpy(&copy, &empty));
    EXPECT_EQ(0u, copy.idLength);
}

TEST_F(SnmpUtilTest, AppendAddsTheArcsOfTheTail)
{
    COid target({1, 3});
    COid tail({6, 1});
    COid empty({});
    EXPECT_EQ(1, SnmpUtilOidAppend(target.Get(), tail.Get()));
    EXPECT_EQ((CArcs{1, 3, 6, 1}), ArcsOf(*target.Get()));
    EXPECT_EQ(1, SnmpUtilOidAppend(target.Get(), empty.Get()));
    EXPECT_EQ(1, SnmpUtilOidAppend(empty.Get(), tail.Get()));
    EXPECT_EQ((CArcs{6, 1}), ArcsOf(*empty.Get()));
    EXPECT_EQ(1, SnmpUtilOidAppend(tail.Get(), tail.Get()));
    EXPECT_EQ((CArcs{6, 1, 6, 1}), ArcsOf(*tail.Get()));
}

TEST_F(SnmpUtilTest, NumbersAreCopiedAsTheyAre)
{
    for (const int type : {ASN_INTEGER, ASN_COUNTER32, ASN_GAUGE32, ASN_TIMETICKS, ASN_UINTEGER32, ASN_NULL}) {
        AsnAny source{};
        source.asnType = static_cast<std::uint8_t>(type);
        source.asnValue.unsigned32 = 0xFFFFFFFE;
        AsnAny copy{};
        ASSERT_EQ(1, SnmpUtilAsnAnyCpy(&copy, &source));
        EXPECT_EQ(type, copy.asnType);
        EXPECT_EQ(0xFFFFFFFEu, static_cast<std::uint32_t>(copy.asnValue.unsigned32));
        SnmpUtilAsnAnyFree(&copy);
        EXPECT_EQ(ASN_NULL, copy.asnType);
    }
    AsnAny source{};
    source.asnType = ASN_COUNTER64;
    source.asnValue.counter64.quadPart = 0x123456789ABCDEF0;
    AsnAny copy{};
    ASSERT_EQ(1, SnmpUtilAsnAnyCpy(&copy, &source));
    const std::uint64_t counted = copy.asnValue.counter64.quadPart;
    EXPECT_EQ(0x123456789ABCDEF0u, counted);
}

TEST_F(SnmpUtilTest, StreamsAreCopiedAndBecomeDynamic)
{
    for (const int type : {ASN_OCTETSTRING, ASN_BITS, ASN_IPADDRESS, ASN_OPAQUE}) {
        const AsnAny source = Stream(static_cast<std::uint8_t>(type), "text", /*dynamic=*/0);
        AsnAny copy{};
        ASSERT_EQ(1, SnmpUtilAsnAnyCpy(&copy, &source));
        EXPECT_EQ("text", TextOf(copy));
        EXPECT_NE(0, static_cast<int>(copy.asnValue.string.dynamic));
        EXPECT_FALSE(copy.asnValue.string.stream == source.asnValue.string.stream);
        SnmpUtilAsnAnyFree(&copy);
        EXPECT_EQ(ASN_NULL, copy.asnType);
        EXPECT_TRUE(copy.asnValue.string.stream == nullptr);
    }
    const AsnAny empty = Stream(ASN_OCTETSTRING, "", /*dynamic=*/0);
    AsnAny copy{};
    ASSERT_EQ(1, SnmpUtilAsnAnyCpy(&copy, &empty));
    EXPECT_EQ(ASN_OCTETSTRING, copy.asnType);
    EXPECT_TRUE(copy.asnValue.string.stream == nullptr);
}

TEST_F(SnmpUtilTest, FreeLeavesAStreamThatIsNotDynamic)
{
    AsnAny value = Stream(ASN_OCTETSTRING, "borrowed", /*dynamic=*/0);
    SnmpUtilAsnAnyFree(&value);
    EXPECT_EQ(ASN_NULL, value.asnType);
}

TEST_F(SnmpUtilTest, ListCopyIsDeep)
{
    const CSample sample;
    RFC1157VarBindList copy{nullptr, 0};
    ASSERT_EQ(1, SnmpUtilVarBindListCpy(&copy, sample.Get()));
    ASSERT_EQ(3u, copy.len);
    RFC1157VarBind const * const list = copy.list;
    EXPECT_EQ((CArcs{1, 3, 6}), ArcsOf(list[2].name));
    EXPECT_EQ("value", TextOf(list[0].value));
    EXPECT_EQ((CArcs{1, 3}), ArcsOf(list[1].value.asnValue.object));
    const std::uint64_t number = list[2].value.asnValue.counter64.quadPart;
    EXPECT_EQ(1ULL << 40, number);
    SnmpUtilVarBindListFree(&copy);
    EXPECT_EQ(0u, copy.len);
    EXPECT_TRUE(copy.list == nullptr);
}

TEST_F(SnmpUtilTest, AnEmptyListGivesAnEmptyList)
{
    const RFC1157VarBindList empty{nullptr, 0};
    RFC1157VarBindList copy{nullptr, 9};
    EXPECT_EQ(1, SnmpUtilVarBindListCpy(&copy, &empty));
    EXPECT_EQ(0u, copy.len);
    EXPECT_EQ(0, SnmpUtilVarBindListCpy(&copy, nullptr));
}

TEST(SnmpStructureTest, TheStructuresArePackedOnFourBytes)
{
    EXPECT_EQ(12u, sizeof(AsnObjectIdentifier));
    EXPECT_EQ(16u, sizeof(AsnOctetString));
    EXPECT_EQ(20u, sizeof(AsnAny));
    EXPECT_EQ(32u, sizeof(RFC1157VarBind));
    EXPECT_EQ(12u, sizeof(RFC1157VarBindList));
    EXPECT_EQ(4u, alignof(RFC1157VarBind));
}
