#include "Platform/FaultFilter.h"

#include <gtest/gtest.h>

using Platform::RunUnderFaultFilter;

namespace {

void Count(void * counter) noexcept
{
    ++*static_cast<int *>(counter);
}

} // namespace

TEST(FaultFilterTest, RunsTheBodyOnceAndCallsNobodyWhereNothingGoesWrong)
{
    int runs = 0;
    RunUnderFaultFilter(
        &Count, [](void * counter) noexcept { *static_cast<int *>(counter) += 100; }, &runs);
    EXPECT_EQ(1, runs);
}

TEST(FaultFilterTest, WhatTheLanguageThrowsPassesThrough)
{
    int faults = 0;
    int caught = 0;
    try {
        RunUnderFaultFilter([](void *) { throw 7; }, &Count, &faults);
    } catch (int thrown) {
        caught = thrown;
    }
    EXPECT_EQ(7, caught);
    EXPECT_EQ(0, faults);
}

TEST(FaultFilterTest, WhatTheBodyCatchesIsItsOwnBusiness)
{
    int faults = 0;
    RunUnderFaultFilter(
        [](void *) {
            try {
                throw 7;
            } catch (int) {
            }
        },
        &Count, &faults);
    EXPECT_EQ(0, faults);
}
