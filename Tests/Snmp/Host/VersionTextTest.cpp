#include "Snmp/Host/VersionText.h"

#include <gtest/gtest.h>

#include "Platform/Text.h"

namespace {

struct SCleaning {
    char const * name;
    std::string text, cleaned;
};
class CleanVersionTextTest : public testing::TestWithParam<SCleaning> {};

} // namespace

TEST_P(CleanVersionTextTest, ReplacesWhatCantBeShown)
{
    std::string text = GetParam().text;
    EXPECT_EQ(GetParam().text != GetParam().cleaned, CleanVersionText(text, '?'));
    EXPECT_EQ(GetParam().cleaned, text);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, CleanVersionTextTest,
    testing::Values(SCleaning{"Empty", "", ""}, SCleaning{"Ascii", "Kestrix 7.10 (c)", "Kestrix 7.10 (c)"},
                    SCleaning{"Control", "a\x01z", "a?z"}, SCleaning{"Delete", "a\x7Fz", "a?z"},
                    SCleaning{"Escape", "\x1B[0m", "?[0m"}, SCleaning{"LineFeedStays", "a\nz", "a\nz"},
                    SCleaning{"CarriageReturnStays", "a\rz", "a\rz"},
                    SCleaning{"TabIsAControlCharacter", "a\tz", "a?z"},
                    SCleaning{"Code169Stays", "\xA9 Norvane", "\xA9 Norvane"},
                    SCleaning{"Code174Stays", "x\xAE", "x\xAE"}, SCleaning{"Code255Stays", "x\xFF", "x\xFF"},
                    SCleaning{"SeveralGo", "\x01\x02\x03", "???"}),
    [](const auto & test) { return std::string(test.param.name); });

TEST(CleanVersionTextTableTest, TheListedBytesStayAndOthersWhenTheSystemCallsThemText)
{
    const std::string kept = "\n\r\x8B\x8C\x9B\x9C\x9F\xA9\xAB\xAE\xB2\xB3\xBB\xC0\xC1\xC2\xC4\xC6\xC7\xC8\xC9\xCA\xCB"
                             "\xCE\xCF\xD4\xD6\xD9\xDB\xDC\xDF\xE0\xE1\xE2\xE4\xE6\xE7\xE8\xE9\xEA\xEB\xEE\xEF\xF4\xF6"
                             "\xF9\xFB\xFC\xFF";
    ASSERT_EQ(49u, kept.size());
    for (int code = 1; code < 256; ++code) {
        std::string text(1, static_cast<char>(code));
        const bool isControl = code < 0x20 || code == 0x7F;
        const bool stays = kept.find(text) != std::string::npos ||
                           (!isControl && Platform::IsPrintOrSpaceOrLegal(static_cast<std::uint32_t>(code)));
        EXPECT_EQ(!stays, CleanVersionText(text, '?')) << code;
    }
}
