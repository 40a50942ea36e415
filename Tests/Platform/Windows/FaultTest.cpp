#include "Platform/FaultFilter.h"

#include <gtest/gtest.h>

#include <thread>

#include <excpt.h>
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

// As their makers call them: an exception of another compiler's C++, and a line for a debugger.
constexpr DWORD ForeignException = 0xE06D7363;
constexpr DWORD NewsForADebugger = 0x40010006;

} // namespace

/// The filter of the frame below.
extern "C" long KxraTakeEverything(EXCEPTION_POINTERS *, void *)
{
    return EXCEPTION_EXECUTE_HANDLER;
}

namespace {

/// Somebody else's frame, which takes whatever gets that far. Its labels stand once in the file.
[[gnu::noinline, gnu::noclone]] void RunInForeignFrame(void (*body)(void *), void * argument)
{
    __try1(KxraTakeEverything);
    body(argument);
    __except1;
}

/// What becomes of an exception that is raised under a filter inside of somebody else's frame.
std::string CourseOf(DWORD code)
{
    static DWORD raised;
    raised = code;
    SCourse course;
    // A thread of its own, since somebody else's frame cleans up nothing of ours.
    std::thread([&] {
        RunInForeignFrame(
            [](void * argument) {
                RunUnderFaultFilter([](void *) { ::RaiseException(raised, 0, 0, nullptr); }, &NoteFault, argument);
                Note(argument, "ended ");
            },
            &course);
    }).join();
    return course.steps;
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

TEST(FaultFilterTest, AWarningOfTheSystemIsAFaultToo)
{
    EXPECT_EQ("fault ended ", CourseOf(STATUS_DATATYPE_MISALIGNMENT));
}

TEST(FaultFilterTest, WhatAnotherLanguageThrowsPassesThrough)
{
    EXPECT_EQ("", CourseOf(ForeignException));
}

TEST(FaultFilterTest, NewsForADebuggerAreNoFault)
{
    EXPECT_EQ("", CourseOf(NewsForADebugger));
}
