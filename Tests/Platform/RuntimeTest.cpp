#include "Platform/Runtime.h"

#include <gtest/gtest.h>

#include <memory>

using namespace Platform;

TEST(RuntimeTest, AHeapInOrderIsGood)
{
    const auto block = std::make_unique<char[]>(1000);
    EXPECT_EQ(HeapState::Good, CheckHeap());
}
