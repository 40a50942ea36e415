#include "Arcs.h"

#include <gtest/gtest.h>

namespace {

using Service::CArcs;
using Service::CommonArcs;
using Service::CompareArcs;
using Service::IsInside;

TEST(ArcsTest, CompareOrdersArcByArcAndTheShorterFirst)
{
    EXPECT_EQ(0, CompareArcs(CArcs{1, 3, 6}, CArcs{1, 3, 6}));
    EXPECT_EQ(0, CompareArcs(CArcs{}, CArcs{}));
    EXPECT_LT(CompareArcs(CArcs{1, 3}, CArcs{1, 3, 0}), 0);
    EXPECT_GT(CompareArcs(CArcs{1, 3, 0}, CArcs{1, 3}), 0);
    EXPECT_LT(CompareArcs(CArcs{1, 2, 9}, CArcs{1, 3}), 0);
}

TEST(ArcsTest, CompareTakesArcsAsUnsigned)
{
    EXPECT_GT(CompareArcs(CArcs{0xFFFFFFFF}, CArcs{0x7FFFFFFF}), 0);
}

TEST(ArcsTest, TheRootIsInsideItsSubtreeAndItsParentIsNot)
{
    const CArcs root{1, 3, 6};
    EXPECT_TRUE(IsInside(root, root));
    EXPECT_TRUE(IsInside(CArcs{1, 3, 6, 0}, root));
    EXPECT_FALSE(IsInside(CArcs{1, 3}, root));
    EXPECT_FALSE(IsInside(CArcs{1, 3, 7, 1}, root));
}

TEST(ArcsTest, CommonCountsTheArcsAtTheFrontUpToTheFirstDifference)
{
    for (std::size_t length = 0; length <= 10; ++length) {
        const CArcs arcs(length, 5);
        CArcs longer = arcs;
        longer.push_back(5);
        EXPECT_EQ(length, CommonArcs(arcs, arcs));
        EXPECT_EQ(length, CommonArcs(arcs, longer));
        EXPECT_EQ(length, CommonArcs(longer, arcs));
        for (std::size_t i = 0; i < length; ++i) {
            CArcs other = arcs;
            other[i] = 6;
            EXPECT_EQ(i, CommonArcs(arcs, other)) << length;
        }
    }
}

} // namespace
