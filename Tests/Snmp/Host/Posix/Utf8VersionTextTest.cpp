#include "Snmp/Host/VersionText.h"

#include <gtest/gtest.h>

#include "Platform/Text.h"

namespace {

struct SCleaning {
    char const * name;
    std::string text, cleaned;
};
class CleanUtf8TextTest : public testing::TestWithParam<SCleaning> {};

} // namespace

TEST_P(CleanUtf8TextTest, KeepsCharactersOfSeveralBytes)
{
    std::string text = GetParam().text;
    EXPECT_EQ(GetParam().text != GetParam().cleaned, CleanVersionText(text, '?'));
    EXPECT_EQ(GetParam().cleaned, text);
}

INSTANTIATE_TEST_SUITE_P(Texts, CleanUtf8TextTest,
                         testing::Values(SCleaning{"Code128Goes", "x\x80y", "x?y"},
                                         SCleaning{"Code254Goes", "x\xFE", "x?"},
                                         SCleaning{"CopyrightInUtf8", "© Norvane", "© Norvane"},
                                         SCleaning{"Umlauts", "Größe äÖÜ", "Größe äÖÜ"},
                                         SCleaning{"ThreeBytes", "5 €", "5 €"}, SCleaning{"FourBytes", "𝄞", "𝄞"}),
                         [](const auto & test) { return std::string(test.param.name); });

TEST(CleanUtf8TableTest, NoHighByteAloneIsText)
{
    for (std::uint32_t code = 0x80; code < 256; ++code)
        EXPECT_FALSE(Platform::IsPrintOrSpaceOrLegal(code)) << code;
}
