#include "Arcs.h"

#include <gtest/gtest.h>

namespace {

using Service::CArcs;
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

} // namespace
