#include "Tools/NlsTool/Placeholders.h"

#include <gtest/gtest.h>

using namespace NlsTool;

namespace {

struct SPair {
    char const * name;
    std::u32string standard;
    std::u32string translation;
    std::string fault;
};

class PlaceholdersTest : public testing::TestWithParam<SPair> {};

TEST_P(PlaceholdersTest, AreMeasuredByTheDefaultText)
{
    EXPECT_EQ(GetParam().fault, FaultOfPlaceholders(GetParam().standard, GetParam().translation));
}

std::string Differ(std::string const & found, std::string const & expected)
{
    return "the placeholders differ from the default text's: " + found + " instead of " + expected;
}

INSTANTIATE_TEST_SUITE_P(Good, PlaceholdersTest,
                         testing::Values(SPair{"NoneAtAll", U"a", U"b", ""},
                                         SPair{"TheSame", U"%s at %d", U"%s bei %d", ""},
                                         SPair{"AnotherWidth", U"%- 5s|%05d", U"%s|%+ 7d", ""},
                                         SPair{"FreeFillAndWidth", U"%s",
                                               U"%=\u00E4"
                                               U"20s",
                                               ""},
                                         SPair{"Margin", U"%s", U"%!s", ""},
                                         SPair{"PercentSigns", U"%d%% of it", U"davon %d %% da", ""},
                                         SPair{"WidthAndParameterFromValues", U"%0*.*H", U"%+ *.*H", ""},
                                         SPair{"ConstantParameter", U"%.16h", U"%.8h", ""},
                                         SPair{"TheFillMayBeAPercentSign", U"%-%5s", U"%s", ""},
                                         SPair{"FieldsOfAMaskInAnyOrder", U"%1 of %2", U"von %2 %1", ""},
                                         SPair{"AFieldOfAMaskTwice", U"%1 of %2", U"%2 %1 %2", ""},
                                         SPair{"AMaskWithPercentSigns", U"%1 %% %2", U"%% %2 %1", ""}),
                         [](auto const & test) { return std::string(test.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Bad, PlaceholdersTest,
    testing::Values(SPair{"Missing", U"%s", U"x", Differ("none", "'s'")},
                    SPair{"TooMany", U"x", U"%s", Differ("'s'", "none")},
                    SPair{"AnotherOrder", U"%s %d", U"%d %s", Differ("'d s'", "'s d'")},
                    SPair{"AnotherConversion", U"%d", U"%x", Differ("'x'", "'d'")},
                    SPair{"AWidthMore", U"%d", U"%0*d", Differ("'* d'", "'d'")},
                    SPair{"AParameterLess", U"%.16h", U"%h", Differ("'h'", "'.h'")},
                    SPair{"NoConversion", U"%s", U"100 % %s", "'% ' is no placeholder; a percent sign is written %%"},
                    SPair{"UnknownConversion", U"%s", U"%u", "'%u' is no placeholder; a percent sign is written %%"},
                    SPair{"PercentAtTheEnd", U"%s", U"%s %", "'%' is no placeholder; a percent sign is written %%"},
                    SPair{"FillAtTheEnd", U"%s", U"%-", "'%-' is no placeholder; a percent sign is written %%"},
                    SPair{"PointWithoutNumber", U"%s", U"%.s", "'%.s' is no placeholder; a percent sign is written %%"},
                    SPair{"SixParameters", U"%.1.2.3.4.5h", U"%.1.2.3.4.5.6h",
                          "'%.1.2.3.4.5.6h' is no placeholder; a percent sign is written %%"},
                    SPair{"TwoPercentSignsAtTheEnd", U"%d%% of it", U"%d %%",
                          "a text with placeholders can't end with %%"},
                    SPair{"AFieldOfAMaskLess", U"%1 of %2", U"%1", Differ("'%1'", "'%1 %2'")},
                    SPair{"AFieldOfAMaskThatIsNotThere", U"%1 of %2", U"%1 %2 %3", Differ("'%1 %2 %3'", "'%1 %2'")},
                    SPair{"FieldZeroOfAMask", U"%1 of %2", U"%1 %2 %0", Differ("'%0 %1 %2'", "'%1 %2'")}),
    [](auto const & test) { return std::string(test.param.name); });

} // namespace
