#include "Platform/FaultFilter.h"

#include <gtest/gtest.h>

#include <thread>

#include <windows.h>

using Platform::RunUnderFaultFilter;

namespace {

/// What a body and its filter do, in their order.
struct SCourse {
    std::string steps;
};

void Note(void * course, char const * step)
{
    static_cast<SCourse *>(course)->steps += step;
}

void TouchNothing(void * course)
{
    Note(course, "begin ");
    int volatile * volatile nowhere = nullptr;
    *nowhere = 1;
    Note(course, "never ");
}

void NoteFault(void * course) noexcept
{
    Note(course, "fault ");
}

} // namespace

TEST(FaultFilterTest, AFaultEndsTheBodyAndTheThreadGoesOn)
{
    SCourse course;
    RunUnderFaultFilter(&TouchNothing, &NoteFault, &course);
    Note(&course, "behind");
    EXPECT_EQ("begin fault behind", course.steps);
}

TEST(FaultFilterTest, AnExceptionOfTheSystemThatWasRaisedIsAFaultToo)
{
    SCourse course;
    RunUnderFaultFilter([](void *) { ::RaiseException(STATUS_INTEGER_OVERFLOW, 0, 0, nullptr); }, &NoteFault, &course);
    EXPECT_EQ("fault ", course.steps);
}

TEST(FaultFilterTest, TheInnermostFilterOfTheThreadIsCalled)
{
    SCourse course;
    RunUnderFaultFilter(
        [](void * argument) {
            RunUnderFaultFilter(&TouchNothing, &NoteFault, argument);
            Note(argument, "outer ");
            int volatile * volatile nowhere = nullptr;
            *nowhere = 1;
        },
        [](void * argument) noexcept { Note(argument, "its fault"); }, &course);
    EXPECT_EQ("begin fault outer its fault", course.steps);
}

TEST(FaultFilterTest, AfterAnExceptionOfTheLanguageTheOuterFilterIsTheThreadsAgain)
{
    SCourse course;
    RunUnderFaultFilter(
        [](void * argument) {
            try {
                RunUnderFaultFilter([](void *) { throw 7; }, &NoteFault, argument);
            } catch (int) {
            }
            TouchNothing(argument);
        },
        [](void * argument) noexcept { Note(argument, "its fault"); }, &course);
    EXPECT_EQ("begin its fault", course.steps);
}

TEST(FaultFilterTest, EachThreadHasItsOwn)
{
    SCourse mine;
    RunUnderFaultFilter(
        [](void * argument) {
            SCourse others;
            std::thread([&] { RunUnderFaultFilter(&TouchNothing, &NoteFault, &others); }).join();
            EXPECT_EQ("begin fault ", others.steps);
            TouchNothing(argument);
        },
        &NoteFault, &mine);
    EXPECT_EQ("begin fault ", mine.steps);
}
