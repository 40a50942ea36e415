#include "Platform/Text.h"

#include <gtest/gtest.h>

#include <windows.h>

using namespace Platform;

namespace {

constexpr std::uint32_t WesternEuropean = 1252;

} // namespace

TEST(AnsiTextTest, TheCodePageIsTheSystemsAndNoSetting)
{
    const std::uint32_t own = AnsiCodePage();
    EXPECT_EQ(::GetACP(), own);
    SetAnsiCodePage(932);
    EXPECT_EQ(own, AnsiCodePage());
}

TEST(AnsiTextTest, ALeadByteTakesItsTrailByteAlongWhereTheCodePageHasSuch)
{
    for (unsigned lead = 0x80; lead < 0x100; ++lead) {
        const char text[] = {static_cast<char>(lead), '@', '\0'};
        EXPECT_EQ(::IsDBCSLeadByte(static_cast<BYTE>(lead)) ? 2u : 1u, CharSize(text)) << lead;
        const char cut[] = {static_cast<char>(lead), '\0'};
        EXPECT_EQ(1u, CharSize(cut)) << lead;
    }
}

TEST(AnsiTextTest, WesternEuropeanCharactersAreOneByte)
{
    if (AnsiCodePage() != WesternEuropean) GTEST_SKIP() << "the system's code page is " << AnsiCodePage();
    std::u16string units;
    ASSERT_TRUE(ToUtf16("Gr\xF6\xDF\x65 \x80", 7, units));
    EXPECT_EQ(u"Gr\u00F6\u00DFe \u20AC", units);
    EXPECT_EQ("Gr\xF6\xDF\x65 \x80", FromUtf16(units.data(), units.size()));
}

TEST(AnsiTextTest, WhatTheCodePageDoesNotHaveBecomesAQuestionMark)
{
    if (AnsiCodePage() != WesternEuropean) GTEST_SKIP() << "the system's code page is " << AnsiCodePage();
    EXPECT_EQ("a?b", FromUtf16(u"a\u4E00b", 3));
}
