#include "VLK/EventHandler.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <initializer_list>
#include <thread>
#include <utility>
#include <vector>

#include "Foundation.h"

using namespace VLK;
using VLK::Threading::CEventHandler;
using TResult = CEventHandler::TResult;

namespace {

constexpr TResult Nothing{};
constexpr unsigned long long DeadlineMs = kDeadlineMs;

TResult Found(int id)
{
    return {true, id};
}

} // namespace

TEST(EventHandlerTest, AResultIsNothingByDefault)
{
    EXPECT_FALSE(Nothing.notified);
    EXPECT_EQ(0x7FFFFFFF, Nothing.id);
}

TEST(EventHandlerTest, NotificationsAreCountedAndTakenOneAtATime)
{
    CEventHandler handler;
    handler.notifyOne(5);
    handler.notifyOne(5);
    EXPECT_EQ(Found(5), handler.wait_for({5}, 0));
    EXPECT_EQ(Found(5), handler.wait_for({5}, 0));
    EXPECT_EQ(Nothing, handler.wait_for({5}, 0));
}

TEST(EventHandlerTest, TheOrderOfTheIdsDecidesAndNotThatOfTheNotifications)
{
    CEventHandler handler;
    handler.notifyOne(5);
    handler.notifyOne(7);
    EXPECT_EQ(Found(7), handler.wait_for({7, 5}, 0));
    EXPECT_EQ(Found(5), handler.wait_for({7, 5}, 0));
    EXPECT_EQ(Nothing, handler.wait_for({7, 5}, 0));
}

TEST(EventHandlerTest, OtherIdsKeepTheirNotifications)
{
    CEventHandler handler;
    for (int const id : {1, -2, 0x7FFFFFFF})
        handler.notifyOne(id);
    EXPECT_EQ(Nothing, handler.wait_for({3}, 0));
    EXPECT_EQ(Nothing, handler.wait_for({}, 0));
    EXPECT_EQ(Found(-2), handler.wait_for({-2}, 0)); // the gap closes
    EXPECT_EQ(Found(0x7FFFFFFF), handler.wait_for({0x7FFFFFFF}, 0));
    EXPECT_EQ(Found(1), handler.wait_for({1}, 0));
}

struct STime {
    char const * name;
    unsigned long long milliseconds;
};

class EventHandlerTimeTest : public testing::TestWithParam<STime> {};

TEST_P(EventHandlerTimeTest, EndsWithNothing)
{
    CEventHandler handler;
    handler.notifyOne(1);
    EXPECT_EQ(Nothing, handler.wait_for({2}, GetParam().milliseconds));
    EXPECT_EQ(Found(1), handler.wait_for({1}, GetParam().milliseconds));
}

INSTANTIATE_TEST_SUITE_P(Times, EventHandlerTimeTest,
                         testing::Values(STime{"NoneOnlyLooks", 0}, STime{"Short", 5},
                                         STime{"TheTopBitOnlyLooks", 0x8000000000000000ULL},
                                         STime{"TheLargestOnlyLooks", 0xFFFFFFFFFFFFFFFFULL}),
                         [](const auto & test) { return std::string(test.param.name); });

class EventHandlerWaitTest : public testing::TestWithParam<STime> {};

TEST_P(EventHandlerWaitTest, EndsWithTheNotification)
{
    CEventHandler handler;
    auto waiting = std::async(std::launch::async, [&] { return handler.wait_for({3, 4}, GetParam().milliseconds); });
    handler.notifyOne(2); // wakes nobody for good
    EXPECT_EQ(std::future_status::timeout, waiting.wait_for(std::chrono::milliseconds(5)));
    handler.notifyOne(4);
    EXPECT_EQ(Found(4), waiting.get());
    EXPECT_EQ(Found(2), handler.wait_for({2}, 0));
}

INSTANTIATE_TEST_SUITE_P(Times, EventHandlerWaitTest,
                         testing::Values(STime{"Deadline", DeadlineMs},
                                         STime{"BeyondTheEndOfTheClock", 0x7FFFFFFFFFFFFFFFULL}),
                         [](const auto & test) { return std::string(test.param.name); });

TEST(EventHandlerTest, WaitersForDifferentIdsAllGetTheirs)
{
    CEventHandler handler;
    constexpr int count = 8;
    std::vector<std::future<TResult>> waiting;
    for (int id = 0; id < count; ++id)
        waiting.push_back(
            std::async(std::launch::async, [&handler, id] { return handler.wait_for({id}, DeadlineMs); }));
    for (int id = count - 1; id >= 0; --id)
        handler.notifyOne(id);
    for (int id = 0; id < count; ++id)
        EXPECT_EQ(Found(id), waiting[static_cast<std::size_t>(id)].get());
}

TEST(EventHandlerTest, EveryNotificationIsTakenExactlyOnce)
{
    CEventHandler handler;
    constexpr int threads = 3;
    constexpr int each = 2000;
    std::atomic<int> taken{0};
    std::vector<std::thread> workers;
    for (int i = 0; i < threads; ++i) {
        workers.emplace_back([&] {
            for (int n = 0; n < each; ++n)
                handler.notifyOne(n % 2);
        });
        workers.emplace_back([&] {
            for (int n = 0; n < each; ++n)
                taken += handler.wait_for({1, 0}, DeadlineMs).notified ? 1 : 0;
        });
    }
    for (std::thread & worker : workers)
        worker.join();
    EXPECT_EQ(threads * each, taken);
    EXPECT_EQ(Nothing, handler.wait_for({0, 1}, 0));
}

TEST(EventHandlerTest, MovingTakesTheNotificationsAlong)
{
    CEventHandler handler;
    handler.notifyOne(1);
    CEventHandler moved(std::move(handler));
    EXPECT_EQ(Found(1), moved.wait_for({1}, 0));
}

class EventHandlerMovedTest : public CFoundationTest {};

TEST_F(EventHandlerMovedTest, AMovedFromOneRaisesNullPointer)
{
    CEventHandler handler;
    CEventHandler const moved(std::move(handler));
    EXPECT_EQ(Errors::NullPointer, RaisedBy([&] { handler.notifyOne(1); }));
    EXPECT_EQ(Errors::NullPointer, RaisedBy([&] { handler.wait_for({1}, 0); }));
    Exceptions::CThrowState state;
    state.DisableThrow();
    EXPECT_EQ(Nothing, handler.wait_for({1}, 0));
}
