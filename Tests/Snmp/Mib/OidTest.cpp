#include "MibFixture.h"

namespace {

struct SOidText {
    char const * name;
    char const * text;
    TArcs arcs; // empty: the text is none
};

std::ostream & operator<<(std::ostream & out, SOidText const & test)
{
    return out << test.text;
}

class StrToOidTest : public testing::TestWithParam<SOidText> {};

TEST_P(StrToOidTest, ReadsTheArcsOrLeavesAnEmptyOid)
{
    COid oid("1.2.3.4.5.6.7"); // what was there goes
    EXPECT_EQ(GetParam().arcs.empty() ? 0 : 1, StrToOid(GetParam().text, oid.Get()));
    EXPECT_EQ(GetParam().arcs, ArcsOf(*oid.Get()));
    if (GetParam().arcs.empty()) {
        std::uint32_t const * const ids = oid.Get()->ids;
        EXPECT_EQ(nullptr, ids);
    }
}

TEST_P(StrToOidTest, IsReadTheSameByAnInsert)
{
    COid oid(GetParam().text);
    CPlainAgent tree;
    tree.MibInsertConstOid(GetParam().text, "x", 7u, ASN_INTEGER, 0);
    const auto expected = GetParam().arcs.empty() ? std::vector<std::string>() : std::vector{TextOf(*oid.Get())};
    EXPECT_EQ(expected, Walk(tree));
    EXPECT_EQ(1u, tree.MibSize()); // an OID that doesn't parse lands under the empty key
}

std::string LongText(std::size_t arcs)
{
    std::string text = "1";
    for (std::size_t i = 1; i < arcs; ++i)
        text += ".3";
    return text;
}

TArcs LongArcs(std::size_t arcs)
{
    TArcs all(arcs, 3);
    all[0] = 1;
    return all;
}

const std::string g_longest = LongText(48);
const std::string g_longer = LongText(49);
const std::string g_veryLong = LongText(1000);

INSTANTIATE_TEST_SUITE_P(
    Texts, StrToOidTest,
    testing::Values(
        SOidText{"ThreeArcs", "1.3.6", {1, 3, 6}}, SOidText{"LeadingDot", ".1.3.6", {1, 3, 6}},
        SOidText{"LeadingBlank", " 1.3.6", {1, 3, 6}}, SOidText{"BlanksAndDot", " \t .1.3.6", {1, 3, 6}},
        SOidText{"TwoArcs", "1.3", {1, 3}}, SOidText{"OneNumber", "5", {}}, SOidText{"OneNumberBehindADot", ".5", {}},
        SOidText{"Letter", "1.x", {}}, SOidText{"LetterFirst", "x.1", {}}, SOidText{"Minus", "1.-3", {}},
        SOidText{"BlankInside", "1. 3", {}}, SOidText{"OnlyBlanks", "   ", {}}, SOidText{"OnlyADot", ".", {}},
        SOidText{"TwoDots", "..", {0, 0}}, SOidText{"JunkBehindTheLastArcIsNotLookedAt", "1.3x", {1, 3}},
        SOidText{"BlankBehindTheLastArc", "1.3 ", {1, 3}}, SOidText{"EmptyPlaceLeavesZeroAtTheEnd", "1..3", {1, 3, 0}},
        SOidText{"DotAtTheEnd", "1.3.", {1, 3, 0}}, SOidText{"LeadingZeros", "01.0003", {1, 3}},
        SOidText{"Quoted", "1.3.\"ab\".7", {1, 3, 2, 97, 98, 7}}, SOidText{"QuotedAlone", "\"a\"", {1, 97}},
        SOidText{"QuotedEmpty", "1.3.\"\"", {1, 3, 0}}, SOidText{"QuotedEmptyInside", "1.\"\".3", {1, 0, 3}},
        SOidText{"QuoteNotClosed", "1.3.\"ab", {1, 3, 2, 97, 98}},
        SOidText{"QuotedDotsAndDigits", "1.\"1.2\"", {1, 3, 49, 46, 50}},
        SOidText{"TwoQuoted", "1.\"a\".\"b\"", {1, 1, 97, 1, 98}},
        SOidText{"QuoteWithoutADotBeforeIsCut", "1\"ab\"", {1, 1, 97}},
        SOidText{"QuotedByteAbove127IsSigned", "1.\"\xE4\"", {1, 1, 0xFFFFFFE4u}},
        SOidText{"LargestSigned", "1.2147483647", {1, 2147483647u}},
        SOidText{"LargestUnsigned", "1.4294967295", {1, 4294967295u}},
        SOidText{"LowBitsOfLarger", "1.4294967301", {1, 5}},
        SOidText{"FarTooLarge", "1.99999999999999999999999", {1, 0xFFFFFFFFu}},
        SOidText{"RoomOfTheBuffer", g_longest.c_str(), LongArcs(48)},
        SOidText{"OneMoreThanTheBuffer", g_longer.c_str(), LongArcs(49)},
        SOidText{"VeryLong", g_veryLong.c_str(), LongArcs(1000)}),
    [](auto const & test) { return std::string(test.param.name); });

TEST(StrToOidFailureTest, NullOrEmptyTextTouchesNothing)
{
    COid oid("1.3.6");
    EXPECT_EQ(0, StrToOid(nullptr, oid.Get()));
    EXPECT_EQ(0, StrToOid("", oid.Get()));
    EXPECT_EQ((TArcs{1, 3, 6}), ArcsOf(*oid.Get()));
    EXPECT_EQ(0, StrToOid("1.3", nullptr));
}

TEST(OidToStrTest, JoinsSignedDecimalsByDotsAndClearsWhatWasThere)
{
    const COid oid("1.0.2147483647.2147483648.4294967295");
    std::string text = "old";
    EXPECT_STREQ("1.0.2147483647.-2147483648.-1", OidToStr(text, oid.Get()));
    EXPECT_EQ("1.0.2147483647.-2147483648.-1", text);
}

TEST(OidToStrTest, LeavesTheTextAloneForANullOidAndClearsItForAnEmptyOne)
{
    std::string text = "old";
    EXPECT_STREQ("old", OidToStr(text, nullptr));
    const COid empty;
    EXPECT_STREQ("", OidToStr(text, empty.Get()));
}

TEST(OidAppendTest, AppendsOneNumber)
{
    COid oid("1.3");
    EXPECT_EQ(1, OidAppendNumber(oid.Get(), 4294967295u));
    EXPECT_EQ((TArcs{1, 3, 4294967295u}), ArcsOf(*oid.Get()));
    EXPECT_EQ(0, OidAppendNumber(nullptr, 1));
}

TEST(OidAppendTest, AppendsATextAsLengthAndUnsignedBytes)
{
    COid oid("1.3");
    EXPECT_EQ(1, OidAppendString(oid.Get(), "ab"));
    EXPECT_EQ((TArcs{1, 3, 2, 97, 98}), ArcsOf(*oid.Get()));
    EXPECT_EQ(1, OidAppendString(oid.Get(), "\xE4"));
    EXPECT_EQ((TArcs{1, 3, 2, 97, 98, 1, 0xE4}), ArcsOf(*oid.Get()));
}

TEST(OidAppendTest, AppendsOneZeroForAnEmptyTextAndNothingForNull)
{
    COid oid("1.3");
    EXPECT_EQ(1, OidAppendString(oid.Get(), ""));
    EXPECT_EQ(0, OidAppendString(oid.Get(), nullptr));
    EXPECT_EQ((TArcs{1, 3, 0}), ArcsOf(*oid.Get()));
    EXPECT_EQ(0, OidAppendString(nullptr, "a"));
}

struct SIndexCase {
    char const * name;
    int appendMode;
    char const * oid;
    std::uint32_t indexes[5];
    TArcs arcs;
};

std::ostream & operator<<(std::ostream & out, SIndexCase const & test)
{
    return out << test.oid;
}

class ApplyOidIndexesTest : public testing::TestWithParam<SIndexCase> {};

TEST_P(ApplyOidIndexesTest, PutsTheIndexesIntoTheOid)
{
    SIndexCase const & test = GetParam();
    CPlainAgent tree;
    tree.m_indexAppendMode = test.appendMode;
    COid oid(test.oid);
    tree.ApplyOidIndexes(oid.Get(), test.indexes[0], test.indexes[1], test.indexes[2], test.indexes[3],
                         test.indexes[4]);
    EXPECT_EQ(test.arcs, ArcsOf(*oid.Get()));
}

TEST_P(ApplyOidIndexesTest, IsDoneTheSameByAnInsert)
{
    SIndexCase const & test = GetParam();
    CPlainAgent tree;
    tree.m_indexAppendMode = test.appendMode;
    tree.MibInsertConstTableOid(test.oid, "x", 7u, ASN_INTEGER, test.indexes[0], test.indexes[1], test.indexes[2],
                                test.indexes[3], test.indexes[4]);
    AsnObjectIdentifier expected{static_cast<std::uint32_t>(test.arcs.size()),
                                 const_cast<std::uint32_t *>(test.arcs.data())};
    EXPECT_EQ(std::vector{TextOf(expected)}, Walk(tree));
}

constexpr std::uint32_t kNone = kNoOidIndex;

INSTANTIATE_TEST_SUITE_P(
    Cases, ApplyOidIndexesTest,
    testing::Values(SIndexCase{"OverwriteNone", 0, "1.2.0", {kNone, kNone, kNone, kNone, kNone}, {1, 2, 0}},
                    SIndexCase{"OverwriteOne", 0, "1.2.0", {7, kNone, kNone, kNone, kNone}, {1, 2, 7}},
                    SIndexCase{"OverwriteIndex1LeftOfIndex2", 0, "1.2.0.0", {8, 9, kNone, kNone, kNone}, {1, 2, 8, 9}},
                    SIndexCase{"OverwriteAll", 0, "1.2.0.0.0.0.0", {3, 4, 5, 6, 7}, {1, 2, 3, 4, 5, 6, 7}},
                    SIndexCase{
                        "OverwriteAbsentTakesNoPlace", 0, "1.2.0.0.0", {3, kNone, 5, kNone, kNone}, {1, 2, 0, 3, 5}},
                    SIndexCase{"OverwriteShorterOid", 0, "1.2", {3, 4, 5, 6, 7}, {6, 7}},
                    SIndexCase{"OverwriteZeroIsAnIndex", 0, "1.2.9", {0, kNone, kNone, kNone, kNone}, {1, 2, 0}},
                    SIndexCase{"AppendInOrder", 1, "1.2", {3, 4, 5, 6, 7}, {1, 2, 3, 4, 5, 6, 7}},
                    SIndexCase{"AppendUpToTheFirstAbsent", 1, "1.2", {3, kNone, 5, 6, 7}, {1, 2, 3}},
                    SIndexCase{"AppendNone", -1, "1.2", {kNone, 4, 5, 6, 7}, {1, 2}}),
    [](auto const & test) { return std::string(test.param.name); });

TEST(ApplyOidIndexesFailureTest, WritesNothingIntoAnEmptyOid)
{
    CPlainAgent tree;
    COid oid;
    tree.ApplyOidIndexes(oid.Get(), 1, 2, 3, 4, 5);
    EXPECT_EQ(0u, oid.Get()->idLength);
    tree.ApplyOidIndexes(nullptr, 1, 2, 3, 4, 5);
}

TEST(OidHelpersTest, AreMembersOfTheTreeToo)
{
    COid oid;
    EXPECT_EQ(1, CPlainAgent::StrToOid("1.3", oid.Get()));
    EXPECT_EQ(1, CPlainAgent::OidAppendNumber(oid.Get(), 6));
    EXPECT_EQ(1, CPlainAgent::OidAppendString(oid.Get(), "a"));
    std::string text;
    EXPECT_STREQ("1.3.6.1.97", CPlainAgent::OidToStr(text, oid.Get()));
    CVarBind binding;
    EXPECT_EQ(1, CPlainAgent::SetVarBindNumber(binding.Get(), 5, ASN_INTEGER));
    EXPECT_STREQ("Integer: 5 (0x5)", CPlainAgent::VarBindValueToText(text, &binding->value));
    EXPECT_EQ(1, CPlainAgent::SetVarBindFromText(binding.Get(), "x", ASN_OCTETSTRING));
    EXPECT_EQ(1, CPlainAgent::SetVarBindOctets(binding.Get(), "yz", 2, ASN_OCTETSTRING));
    EXPECT_EQ("yz", Octets(binding->value));
    CPlainAgent::ClearVarBindValue(binding.Get());
    EXPECT_EQ(ASN_NULL, binding->value.asnType);
}

} // namespace
