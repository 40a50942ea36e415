#include "Platform/Text.h"

#include <gtest/gtest.h>

#include <cstring>

using namespace Platform;

TEST(TextTest, ACharacterOfAsciiIsOneByteAndTheEndNone)
{
    char const * const text = "ab";
    EXPECT_EQ(1u, CharSize(text));
    EXPECT_EQ(text + 1, NextChar(text));
    char const * const end = text + std::strlen(text);
    EXPECT_EQ(0u, CharSize(end));
    EXPECT_EQ(end, NextChar(end));
}

TEST(TextTest, AsciiIsConvertedThereAndBackWithEveryNul)
{
    for (std::string const & text : {std::string(), std::string("abc"), std::string("a\0b\0", 4)}) {
        std::u16string units = u"old";
        ASSERT_TRUE(ToUtf16(text.data(), text.size(), units));
        EXPECT_EQ(std::u16string(text.begin(), text.end()), units);
        EXPECT_EQ(text, FromUtf16(units.data(), units.size()));
    }
}

TEST(TextTest, UnpairedSurrogatesBecomeQuestionMarks)
{
    const char16_t units[] = {0xD800, u'a', 0xDC00, 0xD801};
    EXPECT_EQ("?a??", FromUtf16(units, 4));
}

TEST(TextTest, PrintableAndSpaceCodesOfAscii)
{
    for (const std::uint32_t code : {0x20u, 0x41u, 0x7Eu, 0x09u, 0x0Du})
        EXPECT_TRUE(IsPrintOrSpaceOrLegal(code)) << code;
    for (const std::uint32_t code : {0x00u, 0x1Fu, 0x7Fu})
        EXPECT_FALSE(IsPrintOrSpaceOrLegal(code)) << code;
}
