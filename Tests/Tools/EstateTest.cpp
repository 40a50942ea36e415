#include "Tools/Estate.h"

#include <gtest/gtest.h>

#include "Tools/BadInput.h"
#include "Tools/Synthetic.h"

namespace {

using namespace Coresim;
using std::chrono::seconds;

struct SSetCase {
    char const * name;
    char const * object;
    char const * field;
    std::uint64_t mask;
};

class EstateSetTest : public testing::TestWithParam<SSetCase> {};

TEST_P(EstateSetTest, SaysWhichRequestsHaveNews)
{
    CEstate estate(MakeSyntheticEstate({2, 2, 4}));
    EXPECT_EQ(GetParam().mask, estate.Set(GetParam().object, GetParam().field, "3"));
}

INSTANTIATE_TEST_SUITE_P(Table, EstateSetTest,
                         testing::Values(SSetCase{"Status", "status", "Overall", 1u << 1},
                                         SSetCase{"Controller", "controller:1", "Status", 1u << 2},
                                         SSetCase{"Numbers", "numbers", "NumberRaidControllers",
                                                  1u << 3 | 1u << 5 | 1u << 7},
                                         SSetCase{"Drive", "drive:1.0", "Status", 1u << 4},
                                         SSetCase{"Device", "device:0.0.3.0", "Status", 1u << 6},
                                         SSetCase{"Member", "member:1.1.0.2", "SpanNr", 1u << 8}),
                         [](auto const & test) { return std::string(test.param.name); });

TEST(EstateTest, ARefusedChangeChangesNothing)
{
    CEstate estate(MakeSyntheticEstate({1, 1, 1}));
    EXPECT_THROW(estate.Set("drive:0.0", "Status", "bad"), CBadInput);
    EXPECT_THROW(estate.Set("drive:0.1", "Status", "3"), CBadInput);
    EXPECT_THROW(estate.Set("drive:0", "Status", "3"), CBadInput);
    EXPECT_THROW(estate.Set("drive:0.0.0", "Status", "3"), CBadInput);
    EXPECT_THROW(estate.Set("drive:", "Status", "3"), CBadInput);
    EXPECT_THROW(estate.Set("drive", "Status", "3"), CBadInput);
    EXPECT_THROW(estate.Set("drive:0.0", "Stats", "3"), CBadInput);
    EXPECT_EQ(2, estate.Drives()[0].Status);
}

TEST(EstateTest, NumbersFollowTheTablesUntilTheyAreSet)
{
    CEstate estate(MakeSyntheticEstate({2, 3, 4}));
    EXPECT_EQ(2, estate.NumberOf(RequestControllerInfo));
    EXPECT_EQ(6, estate.NumberOf(RequestDriveInfo));
    EXPECT_EQ(8, estate.NumberOf(RequestDeviceInfo));
    estate.Set("numbers", "NumberLogicalDrives", "99");
    EXPECT_EQ(99, estate.NumberOf(RequestDriveInfo));
}

TEST(ProgressTest, CountsUpToItsLimitAndNoFurther)
{
    SProgress progress;
    progress.start = 10;
    progress.perSecond = 5;
    progress.limit = 100;
    EXPECT_EQ(10, progress.Value(progress.since));
    EXPECT_EQ(35, progress.Value(progress.since + seconds(5)));
    EXPECT_EQ(100, progress.Value(progress.since + seconds(1000)));
}

TEST(ProgressTest, CountsDownToALimitBelowItsStart)
{
    SProgress progress;
    progress.start = 50;
    progress.perSecond = -10;
    progress.limit = 0;
    EXPECT_EQ(20, progress.Value(progress.since + seconds(3)));
    EXPECT_EQ(0, progress.Value(progress.since + seconds(30)));
}

TEST(ProgressTest, ASetCounterWithoutASpeedStaysWhereItIs)
{
    CEstate estate{SEstate()};
    EXPECT_EQ(0, estate.Progress(0, 0));
    estate.SetProgress(0, 0, 47);
    EXPECT_EQ(47, estate.Progress(0, 0));
}

struct SNumberCase {
    char const * name;
    char const * text;
    bool good;
    std::int64_t value;
};

class ParseInt32Test : public testing::TestWithParam<SNumberCase> {};

TEST_P(ParseInt32Test, TakesWholeDecimalNumbersOfItsRangeAlone)
{
    if (!GetParam().good) {
        EXPECT_THROW(ParseInt32(GetParam().text), CBadInput);
    } else {
        EXPECT_EQ(GetParam().value, ParseInt32(GetParam().text));
    }
}

INSTANTIATE_TEST_SUITE_P(Edges, ParseInt32Test,
                         testing::Values(SNumberCase{"Zero", "0", true, 0}, SNumberCase{"Negative", "-1", true, -1},
                                         SNumberCase{"Largest", "2147483647", true, 2147483647},
                                         SNumberCase{"Smallest", "-2147483648", true, -2147483648LL},
                                         SNumberCase{"OneTooLarge", "2147483648", false, 0},
                                         SNumberCase{"OneTooSmall", "-2147483649", false, 0},
                                         SNumberCase{"Empty", "", false, 0}, SNumberCase{"Blank", " 1", false, 0},
                                         SNumberCase{"Rest", "1x", false, 0}, SNumberCase{"Hex", "0x1", false, 0}),
                         [](auto const & test) { return std::string(test.param.name); });

} // namespace
