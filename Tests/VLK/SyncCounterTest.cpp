#include "VLK/SyncCounter.h"

#include <gtest/gtest.h>

#include <thread>

using VLK::Threading::CSyncCounter;

TEST(SyncCounterTest, DecrTellsWhoTakesItToZero)
{
    CSyncCounter counter(2);
    EXPECT_EQ(0u, counter.Decr());
    EXPECT_EQ(1u, counter.Decr());
    EXPECT_EQ(0u, counter.Decr());
    EXPECT_EQ(-1, counter.Count());
}

TEST(SyncCounterTest, IncrTellsThatTheCountCameFromMinusOne)
{
    CSyncCounter counter(-2);
    EXPECT_EQ(0u, counter.Incr());
    EXPECT_EQ(1u, counter.Incr());
    EXPECT_EQ(0u, counter.Incr());
    EXPECT_EQ(1, counter.Count());
}

TEST(SyncCounterTest, SetReplacesTheCount)
{
    CSyncCounter counter(7);
    counter.Set(-5);
    EXPECT_EQ(-5, counter.Count());
}

TEST(SyncCounterTest, ExactlyOneOfTwoThreadsTakesItToZero)
{
    constexpr int rounds = 2000;
    CSyncCounter counter(2 * rounds);
    unsigned int zeros[2] = {};
    std::thread other([&] {
        for (int i = 0; i < rounds; ++i)
            zeros[0] += counter.Decr();
    });
    for (int i = 0; i < rounds; ++i)
        zeros[1] += counter.Decr();
    other.join();
    EXPECT_EQ(1u, zeros[0] + zeros[1]);
    EXPECT_EQ(0, counter.Count());
}
