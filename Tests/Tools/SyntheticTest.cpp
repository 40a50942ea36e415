#include "Tools/Synthetic.h"

#include <set>
#include <tuple>

#include <gtest/gtest.h>

namespace {

using namespace Coresim;

TEST(SyntheticTest, HasTheSizeThatWasAskedForAndNoIndexTwice)
{
    SEstate const estate = MakeSyntheticEstate({3, 2, 1000});
    EXPECT_EQ(3u, estate.controllers.size());
    EXPECT_EQ(6u, estate.drives.size());
    EXPECT_EQ(3000u, estate.devices.size());
    std::set<std::tuple<int, int, int, int>> indexes;
    for (auto const & device : estate.devices)
        indexes.emplace(device.CtrlNr, device.Channel, device.Target, device.LUN);
    EXPECT_EQ(3000u, indexes.size());
    EXPECT_EQ(4, estate.controllers[0].NumberChannels);
}

TEST(SyntheticTest, TheRowsOfTheLargestSizesAreCountedWithoutAnOverflow)
{
    EXPECT_EQ(3, RowsOf({1, 1, 1}));
    EXPECT_EQ(20000100000, RowsOf({100000, 100000, 100000}));
    EXPECT_EQ(static_cast<std::size_t>(RowsOf({3, 2, 4})), [](SEstate const & e) {
        return e.controllers.size() + e.drives.size() + e.devices.size();
    }(MakeSyntheticEstate({3, 2, 4})));
}

TEST(SyntheticTest, AnEmptyEstateIsPossible)
{
    SEstate const estate = MakeSyntheticEstate({0, 5, 5});
    EXPECT_TRUE(estate.controllers.empty());
    EXPECT_TRUE(estate.drives.empty());
    EXPECT_TRUE(estate.devices.empty());
    EXPECT_TRUE(estate.contents.empty());
}

TEST(SyntheticTest, EveryMemberNamesADeviceThatIsThere)
{
    SEstate const estate = MakeSyntheticEstate({2, 2, 300});
    EXPECT_EQ(8u, estate.contents.size());
    for (auto const & member : estate.contents) {
        bool found = false;
        for (auto const & device : estate.devices)
            found = found || (device.CtrlNr == member.CtrlNr && device.Channel == member.Channel &&
                              device.Target == member.Target && device.LUN == member.LUN && device.Idx == member.Idx);
        EXPECT_TRUE(found) << member.CtrlNr << "." << member.Idx;
    }
}

} // namespace
