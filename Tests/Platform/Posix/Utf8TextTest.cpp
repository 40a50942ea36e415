#include "Platform/Text.h"

#include <gtest/gtest.h>

using namespace Platform;

namespace {

struct SCharacter {
    char const *name, *text;
    std::size_t size;
};
class CharSizeTest : public testing::TestWithParam<SCharacter> {};

struct SConversion {
    char const * name;
    std::string text;
    std::u16string units;
};
class Utf16Test : public testing::TestWithParam<SConversion> {};

class BrokenUtf8Test : public testing::TestWithParam<std::pair<char const *, std::string>> {};

} // namespace

TEST_P(CharSizeTest, TellsTheBytesOfTheFirstCharacter)
{
    EXPECT_EQ(GetParam().size, CharSize(GetParam().text));
    EXPECT_EQ(GetParam().text + GetParam().size, NextChar(GetParam().text));
}

INSTANTIATE_TEST_SUITE_P(Characters, CharSizeTest,
                         testing::Values(SCharacter{"End", "", 0}, SCharacter{"Ascii", "a\xC3", 1},
                                         SCharacter{"Two", "\xC3\xBCx", 2}, SCharacter{"Three", "\xE2\x82\xAC", 3},
                                         SCharacter{"Four", "\xF0\x9D\x84\x9E", 4}, SCharacter{"CutTwo", "\xC3", 1},
                                         SCharacter{"CutFour", "\xF0\x9D\x84", 1}, SCharacter{"LoneTail", "\x80", 1},
                                         SCharacter{"Overlong", "\xC0\x80", 1},
                                         SCharacter{"OverlongThree", "\xE0\x80\x80", 1},
                                         SCharacter{"Surrogate", "\xED\xA0\x80", 1},
                                         SCharacter{"BeyondTheLast", "\xF4\x90\x80\x80", 1},
                                         SCharacter{"NoLead", "\xFF", 1}, SCharacter{"BadTail", "\xC3x", 1}),
                         [](const auto & test) { return std::string(test.param.name); });

TEST_P(Utf16Test, ConvertsThereAndBack)
{
    std::u16string units;
    ASSERT_TRUE(ToUtf16(GetParam().text.data(), GetParam().text.size(), units));
    EXPECT_EQ(GetParam().units, units);
    EXPECT_EQ(GetParam().text, FromUtf16(units.data(), units.size()));
}

INSTANTIATE_TEST_SUITE_P(Texts, Utf16Test,
                         testing::Values(SConversion{"Empty", "", u""}, SConversion{"Ascii", "abc", u"abc"},
                                         SConversion{"Umlauts", "Größe", u"Größe"}, SConversion{"Euro", "€", u"€"},
                                         SConversion{"Clef", "𝄞x", u"𝄞x"},
                                         SConversion{"Nul", std::string("a\0b", 3), std::u16string(u"a\0b", 3)},
                                         SConversion{"Last", "\xF4\x8F\xBF\xBF", u"\xDBFF\xDFFF"}),
                         [](const auto & test) { return std::string(test.param.name); });

TEST_P(BrokenUtf8Test, IsRefusedAndTheOutputStays)
{
    std::u16string units = u"kept";
    EXPECT_FALSE(ToUtf16(GetParam().second.data(), GetParam().second.size(), units));
    EXPECT_EQ(u"kept", units);
}

INSTANTIATE_TEST_SUITE_P(Texts, BrokenUtf8Test,
                         testing::Values(std::pair("Cut", "a\xC3"), std::pair("Latin1", "\xFCx"),
                                         std::pair("Overlong", "\xC1\xBF"), std::pair("Surrogate", "\xED\xBF\xBF")),
                         [](const auto & test) { return std::string(test.param.first); });

TEST(Utf8TextTest, PrintableSpaceAndLegalCodes)
{
    for (const std::uint32_t code : {0x20u, 0x41u, 0x7Eu, 0x09u, 0x0Du, 0xBCC3u, 0x82E2u, 0x9DF0u, 0xA0C2u})
        EXPECT_TRUE(IsPrintOrSpaceOrLegal(code)) << code;
    for (const std::uint32_t code : {0x00u, 0x1Fu, 0x7Fu, 0x80u, 0xE9u, 0xFFu, 0x41C3u, 0x85C2u, 0x80C0u, 0xFFFFu})
        EXPECT_FALSE(IsPrintOrSpaceOrLegal(code)) << code;
}

TEST(Utf8TextTest, TheCodePageIsASetting)
{
    EXPECT_EQ(1252u, AnsiCodePage());
    SetAnsiCodePage(932);
    EXPECT_EQ(932u, AnsiCodePage());
    SetAnsiCodePage(1252);
}
