#include "Platform/Thread.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <string>
#include <thread>

#include "Platform/StartedThreads.h"

namespace {

using namespace Platform;

TEST(ThreadTest, ARunningThreadCannotBeSuspended)
{
    const CWaitableHandle event = ManualEvent();
    const CWaitableHandle begun = ManualEvent();
    struct SArgument {
        WaitHandle begun, event;
    } argument{begun.Get(), event.Get()};
    const SStarted thread = Start(
        [](void * pointer) noexcept -> std::uint32_t {
            const auto & it = *static_cast<SArgument *>(pointer);
            SetEvent(it.begun);
            return WaitForIt(it.event);
        },
        &argument);
    ASSERT_EQ(WaitResult::Signaled, WaitForOne(begun.Get(), kDeadlineMs, false).result);
    std::uint32_t previous = 99;
    EXPECT_EQ(ErrorNotSupported(), SuspendThread(thread.handle.Get(), previous));
    EXPECT_EQ(99u, previous);
    EXPECT_EQ(Success, ResumeThread(thread.handle.Get(), previous));
    EXPECT_EQ(0u, previous);
    SetEvent(event.Get());
    EXPECT_EQ(WaitResult::Signaled, AwaitEnd(thread));
    EXPECT_NE(Success, SuspendThread(thread.handle.Get(), previous));
}

TEST(TerminateThreadTest, AThreadThatNeverWaitsMayEndByItselfLater)
{
    SAbandoned * const shared = NewAbandoned();
    {
        const SStarted thread = Start(
            [](void * argument) noexcept -> std::uint32_t {
                auto * const its = static_cast<SAbandoned *>(argument);
                SetEvent(its->begun.Get());
                while (its->spin) {
                }
                its->ended = true;
                return 5;
            },
            shared);
        ASSERT_EQ(WaitResult::Signaled, WaitForOne(shared->begun.Get(), kDeadlineMs, false).result);
        EXPECT_EQ(Success, TerminateThread(thread.handle.Get(), 77));
        shared->spin = false;
        EXPECT_TRUE(HoldsWithin(kDeadline, [&] { return shared->ended.load(); }));
        EXPECT_EQ(77u, ExitCode(thread));
        EXPECT_EQ(WaitResult::Signaled, AwaitEnd(thread, 0));
    }
}

struct SNameCase {
    char const * name;
    char const * given;
    char const * expected;
};

class ThreadNameTest : public testing::TestWithParam<SNameCase> {};

TEST_P(ThreadNameTest, IsCutToWhatTheSystemTakes)
{
    std::string seen;
    std::thread([&] {
        NameCurrentThread(GetParam().given);
        char name[64] = {};
        ::pthread_getname_np(::pthread_self(), name, sizeof name);
        seen = name;
    }).join();
    EXPECT_EQ(GetParam().expected, seen);
}

INSTANTIATE_TEST_SUITE_P(Lengths, ThreadNameTest,
                         testing::Values(SNameCase{"Short", "abc", "abc"},
                                         SNameCase{"Fifteen", "123456789012345", "123456789012345"},
                                         SNameCase{"Sixteen", "1234567890123456", "123456789012345"},
                                         SNameCase{"NotThroughACharacter", "12345678901234\xC3\xA4", "12345678901234"}),
                         [](auto const & test) { return std::string(test.param.name); });

} // namespace
