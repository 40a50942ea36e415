#include <cstring>

#include "MibFixture.h"

namespace {

bool IsZero(AsnAny const & value)
{
    constexpr std::uint8_t zeros[sizeof(value.asnValue)] = {};
    return std::memcmp(&value.asnValue, zeros, sizeof(value.asnValue)) == 0;
}

class NumberTypeTest : public testing::TestWithParam<std::uint8_t> {};

TEST_P(NumberTypeTest, StoresTheNumberAndTheType)
{
    CVarBind binding;
    SetVarBindOctets(binding.Get(), "old", 3, ASN_OCTETSTRING);
    EXPECT_EQ(1, SetVarBindNumber(binding.Get(), 4294967295u, GetParam()));
    EXPECT_EQ(GetParam(), binding->value.asnType);
    EXPECT_EQ(4294967295u, binding->value.asnValue.unsigned32);
}

TEST_P(NumberTypeTest, ReadsTheNumberFromText)
{
    CVarBind binding;
    for (auto const & [text, number] :
         {std::pair{"17", 17u}, {" -1", 4294967295u}, {"+5x", 5u}, {"", 0u}, {"x", 0u}, {"2147483647", 2147483647u}}) {
        EXPECT_EQ(1, SetVarBindFromText(binding.Get(), text, GetParam()));
        EXPECT_EQ(GetParam(), binding->value.asnType);
        EXPECT_EQ(number, binding->value.asnValue.unsigned32) << text;
    }
}

INSTANTIATE_TEST_SUITE_P(Types, NumberTypeTest,
                         testing::Values(ASN_INTEGER, ASN_COUNTER32, ASN_GAUGE32, ASN_TIMETICKS, ASN_UINTEGER32));

class OtherTypeTest : public testing::TestWithParam<std::uint32_t> {};

TEST_P(OtherTypeTest, ANumberClearsTheValueAndFails)
{
    CVarBind binding;
    SetVarBindNumber(binding.Get(), 9, ASN_INTEGER);
    EXPECT_EQ(0, SetVarBindNumber(binding.Get(), 1, GetParam()));
    EXPECT_EQ(ASN_NULL, binding->value.asnType);
    EXPECT_TRUE(IsZero(binding->value));
}

INSTANTIATE_TEST_SUITE_P(Types, OtherTypeTest,
                         testing::Values(0u, 1u, 3u, 4u, 5u, 6u, 63u, 68u, 69u, 70u, 72u, 255u, 258u));

class TextlessTypeTest : public testing::TestWithParam<std::uint32_t> {};

TEST_P(TextlessTypeTest, ATextChangesNothing)
{
    CVarBind binding;
    SetVarBindNumber(binding.Get(), 9, ASN_INTEGER);
    EXPECT_EQ(0, SetVarBindFromText(binding.Get(), "1.2.3.4", GetParam()));
    EXPECT_EQ("Integer: 9 (0x9)", ValueText(*binding.Get()));
}

INSTANTIATE_TEST_SUITE_P(Types, TextlessTypeTest, testing::Values(0u, 1u, 3u, 5u, 63u, 68u, 69u, 70u, 72u, 255u));

TEST(VarBindTest, ANumberAsAnAddressIsItsFourBytes)
{
    CVarBind binding;
    const std::uint32_t number = 0x04030201u;
    EXPECT_EQ(1, SetVarBindNumber(binding.Get(), number, ASN_IPADDRESS));
    EXPECT_EQ(ASN_IPADDRESS, binding->value.asnType);
    EXPECT_EQ(1, binding->value.asnValue.address.dynamic);
    std::uint8_t bytes[4];
    std::memcpy(bytes, &number, 4);
    EXPECT_EQ(std::string(bytes, bytes + 4), Octets(binding->value));
}

TEST(VarBindTest, ATextIsStoredWithoutItsTerminator)
{
    CVarBind binding;
    EXPECT_EQ(1, SetVarBindFromText(binding.Get(), "abc", ASN_OCTETSTRING));
    EXPECT_EQ("abc", Octets(binding->value));
    EXPECT_EQ(1, binding->value.asnValue.string.dynamic);
}

TEST(VarBindTest, NullTextCountsAsEmpty)
{
    CVarBind binding;
    EXPECT_EQ(1, SetVarBindFromText(binding.Get(), nullptr, ASN_OCTETSTRING));
    EXPECT_EQ(ASN_OCTETSTRING, binding->value.asnType);
    EXPECT_TRUE(IsZero(binding->value));
    EXPECT_EQ(1, SetVarBindFromText(binding.Get(), nullptr, ASN_INTEGER));
    EXPECT_EQ(0, binding->value.asnValue.number);
}

TEST(VarBindTest, AnOidIsReadFromText)
{
    CVarBind binding;
    EXPECT_EQ(1, SetVarBindFromText(binding.Get(), "1.3.6", ASN_OBJECTIDENTIFIER));
    EXPECT_EQ(ASN_OBJECTIDENTIFIER, binding->value.asnType);
    EXPECT_EQ((TArcs{1, 3, 6}), ArcsOf(binding->value.asnValue.object));
    SetVarBindFromText(binding.Get(), "no", ASN_OBJECTIDENTIFIER);
    EXPECT_EQ(ASN_OBJECTIDENTIFIER, binding->value.asnType);
    EXPECT_EQ(0u, binding->value.asnValue.object.idLength);
}

TEST(VarBindTest, AnAddressIsTheLowBytesOfFourArcs)
{
    CVarBind binding;
    EXPECT_EQ(1, SetVarBindFromText(binding.Get(), "10.256.3.511.9", ASN_IPADDRESS));
    EXPECT_EQ(std::string("\x0A\x00\x03\xFF", 4), Octets(binding->value));
    EXPECT_EQ(ASN_IPADDRESS, binding->value.asnType);
}

TEST(VarBindTest, AnAddressOfFewerArcsLeavesTheValue)
{
    CVarBind binding;
    SetVarBindNumber(binding.Get(), 9, ASN_INTEGER);
    EXPECT_EQ(0, SetVarBindFromText(binding.Get(), "10.1.2", ASN_IPADDRESS));
    EXPECT_EQ(0, SetVarBindFromText(binding.Get(), "", ASN_IPADDRESS));
    EXPECT_EQ("Integer: 9 (0x9)", ValueText(*binding.Get()));
}

TEST(VarBindTest, OctetsAreCopiedAndNoneGiveAnEmptyValueOfTheType)
{
    CVarBind binding;
    EXPECT_EQ(1, SetVarBindOctets(binding.Get(), "a\0b", 3, ASN_OPAQUE));
    EXPECT_EQ(std::string("a\0b", 3), Octets(binding->value));
    EXPECT_EQ(ASN_OPAQUE, binding->value.asnType);
    for (auto const & [bytes, count] : {std::pair<char const *, std::uint32_t>{nullptr, 3}, {"abc", 0}}) {
        EXPECT_EQ(1, SetVarBindOctets(binding.Get(), bytes, count, ASN_BITS));
        EXPECT_EQ(ASN_BITS, binding->value.asnType);
        EXPECT_TRUE(IsZero(binding->value));
    }
}

TEST(VarBindTest, OctetsMayComeFromTheOldValue)
{
    CVarBind binding;
    SetVarBindOctets(binding.Get(), "abcdef", 6, ASN_OCTETSTRING);
    std::uint8_t const * const bytes = binding->value.asnValue.string.stream;
    EXPECT_EQ(1, SetVarBindOctets(binding.Get(), bytes + 2, 3, ASN_OCTETSTRING));
    EXPECT_EQ("cde", Octets(binding->value));
}

TEST(VarBindTest, OctetsUnderATagWithoutAStreamAreRefused)
{
    for (const std::uint32_t type : {ASN_INTEGER, ASN_NULL, ASN_OBJECTIDENTIFIER, ASN_COUNTER64}) {
        CVarBind binding;
        EXPECT_EQ(0, SetVarBindOctets(binding.Get(), "abcdefghijklmnop", 16, type));
        EXPECT_EQ(ASN_NULL, binding->value.asnType);
    }
}

TEST(VarBindTest, ClearingLeavesNullAndBorrowedStreamsAlone)
{
    std::uint8_t borrowed[] = {1, 2};
    for (const int type : {ASN_OCTETSTRING, ASN_IPADDRESS, ASN_OPAQUE, ASN_BITS}) {
        RFC1157VarBind binding{};
        binding.value.asnType = static_cast<std::uint8_t>(type);
        binding.value.asnValue.string = {borrowed, 2, 0};
        ClearVarBindValue(&binding);
        EXPECT_EQ(ASN_NULL, binding.value.asnType);
        EXPECT_TRUE(IsZero(binding.value));
    }
    CVarBind owned;
    SetVarBindFromText(owned.Get(), "1.3", ASN_OBJECTIDENTIFIER);
    ClearVarBindValue(owned.Get());
    EXPECT_EQ(ASN_NULL, owned->value.asnType);
    EXPECT_TRUE(IsZero(owned->value));
}

struct SValueText {
    char const * name;
    std::uint8_t type;
    std::string content; // of a stream; numbers are read from it
    std::string text;
};

std::ostream & operator<<(std::ostream & out, SValueText const & test)
{
    return out << test.text;
}

class NumberTextTest : public testing::TestWithParam<SValueText> {};

TEST_P(NumberTextTest, ShowsTypeAndNumberTwice)
{
    CVarBind binding;
    ASSERT_EQ(1, SetVarBindFromText(binding.Get(), GetParam().content.c_str(), GetParam().type));
    std::string text = "old";
    EXPECT_EQ(GetParam().text, VarBindValueToText(text, &binding->value));
}

INSTANTIATE_TEST_SUITE_P(
    Values, NumberTextTest,
    testing::Values(SValueText{"Integer", ASN_INTEGER, "26", "Integer: 26 (0x1A)"},
                    SValueText{"NegativeInteger", ASN_INTEGER, "-2", "Integer: -2 (0xFFFFFFFE)"},
                    SValueText{"Counter", ASN_COUNTER32, "-1", "Counter32: 4294967295 (0xFFFFFFFF)"},
                    SValueText{"Gauge", ASN_GAUGE32, "255", "Gauge32: 255 (0xFF)"},
                    SValueText{"Timeticks", ASN_TIMETICKS, "0", "Timeticks: 0 (0x0)"},
                    SValueText{"UInteger32ShowsItsNameAlone", ASN_UINTEGER32, "5", "UInteger32"},
                    SValueText{"Address", ASN_IPADDRESS, "10.0.200.255", "IpAddress: 10.0.200.255"},
                    SValueText{"Oid", ASN_OBJECTIDENTIFIER, "1.3.6", "ObjectIdentifier"}),
    [](auto const & test) { return std::string(test.param.name); });

class StreamTextTest : public testing::TestWithParam<SValueText> {};

TEST_P(StreamTextTest, ShowsTextOrBytes)
{
    std::string bytes = GetParam().content;
    AsnAny value{};
    value.asnType = GetParam().type;
    value.asnValue.string = {reinterpret_cast<std::uint8_t *>(bytes.data()), static_cast<std::uint32_t>(bytes.size()),
                             0};
    std::string text = "old";
    VarBindValueToText(text, &value);
    EXPECT_EQ(GetParam().text, text);
}

INSTANTIATE_TEST_SUITE_P(
    Values, StreamTextTest,
    testing::Values(SValueText{"Text", ASN_OCTETSTRING, "AB", "OctetString: \"AB\""},
                    SValueText{"EdgesOfText", ASN_OCTETSTRING, " \x7F ", "OctetString: \" \x7F \""},
                    SValueText{"TerminatorIsText", ASN_OCTETSTRING, std::string("AB\0", 3),
                               std::string("OctetString: \"AB\0\"", 18)},
                    SValueText{"LastByteIsNotLookedAt", ASN_OCTETSTRING, "A\x80", "OctetString: \"A\x80\""},
                    SValueText{"ZeroInside", ASN_OCTETSTRING, std::string("A\0B", 3), "OCTET STRING: 41 00 42 "},
                    SValueText{"BelowText", ASN_OCTETSTRING, "\x1F.", "OCTET STRING: 1F 2E "},
                    SValueText{"AboveText", ASN_OCTETSTRING, "\x80.", "OCTET STRING: 80 2E "},
                    SValueText{"Empty", ASN_OCTETSTRING, "", "OctetString: \"\""},
                    SValueText{"Opaque", ASN_OPAQUE, "AB", "Opaque: \"AB\""},
                    SValueText{"OpaqueBytesHaveTheSameHeading", ASN_OPAQUE, std::string("\0B", 2),
                               "OCTET STRING: 00 42 "},
                    SValueText{"Bits", ASN_BITS, "AB", "Bits"}, SValueText{"AddressOfFive", ASN_IPADDRESS, "12345", ""},
                    SValueText{"AddressOfThree", ASN_IPADDRESS, "123", ""},
                    SValueText{"Counter64", ASN_COUNTER64, "12345678", "Counter64"}),
    [](auto const & test) { return std::string(test.param.name); });

TEST(ValueTextTest, ShowsNullStreamsByTypeAndUnknownTypesAsMarks)
{
    for (auto const & [type, expected] : {std::pair<std::uint8_t, char const *>{ASN_OCTETSTRING, "OctetString: NULL"},
                                          {ASN_OPAQUE, "Opaque: NULL"},
                                          {ASN_IPADDRESS, ""},
                                          {ASN_NULL, "Null"},
                                          {ASN_BITS, "Bits"},
                                          {0, "??????"},
                                          {69, "??????"},
                                          {72, "??????"},
                                          {255, "??????"}}) {
        AsnAny value{};
        value.asnType = type;
        std::string text = "old";
        EXPECT_STREQ(expected, VarBindValueToText(text, &value));
        EXPECT_EQ(expected, text);
    }
}

TEST(ValueTextTest, ABindingShowsOidAndValue)
{
    CVarBind binding;
    FillBinding(binding, "1.3.6", 7, ASN_INTEGER);
    std::string text = "old";
    EXPECT_STREQ("Oid=1.3.6, Value=Integer: 7 (0x7)", VarBindToText(text, binding.Get()));
}

} // namespace
