#include <gtest/gtest.h>

#include <future>
#include <initializer_list>
#include <optional>
#include <string>
#include <system_error>

#include "FailingLock.h"
#include "FailingMemory.h"
#include "Foundation.h"
#include "VLK/EventHandler.h"

/// What a handler does when a lock or memory can't be had.

using namespace VLK;
using VLK::Threading::CEventHandler;
using TResult = CEventHandler::TResult;

namespace {

constexpr TResult Nothing{};

class EventHandlerFaultTest : public CFoundationTest {};

/// Runs the operation on a new handler with each of its locks failing in turn, until none of them is left to fail.
/// `check` gets the handler after each failure. Returns how many of the locks raised: those that the system's condition
/// takes within itself may fail unseen, and then the operation ends as ever.
template <class TPrepare, class TOperation, class TCheck>
unsigned int SweepLocks(TPrepare const & prepare, TOperation const & operation, TCheck const & check)
{
    unsigned int raisedLocks = 0;
    for (unsigned int n = 1; n < 100; ++n) {
        SCOPED_TRACE("lock " + std::to_string(n));
        CEventHandler handler;
        prepare(handler);
        bool raised = false;
        bool fired = false;
        try {
            CFailingLock const lock(n);
            struct SFired {
                ~SFired() { fired = lock.Fired(); }
                CFailingLock const & lock;
                bool & fired;
            } const tell{lock, fired};
            operation(handler);
        } catch (std::system_error const & error) {
            raised = true;
            EXPECT_EQ(std::errc::resource_unavailable_try_again, error.code());
        }
        EXPECT_TRUE(fired || !raised);
        if (!fired) return raisedLocks;
        if (raised) ++raisedLocks;
        check(handler);
    }
    ADD_FAILURE() << "no end of locks";
    return 0;
}

/// Notifies and takes as if nothing had happened before.
void ExpectUsable(CEventHandler & handler)
{
    auto waiting = std::async(std::launch::async, [&] { return handler.wait_for({9}, kDeadlineMs); });
    handler.notifyOne(9);
    EXPECT_EQ((TResult{true, 9}), waiting.get());
    EXPECT_EQ(Nothing, handler.wait_for({9}, 0));
}

TEST_F(EventHandlerFaultTest, ANotificationWhoseLockFailsRaisesASystemErrorAndIsNotMade)
{
    unsigned int const locks = SweepLocks([](CEventHandler &) {}, [](CEventHandler & handler) { handler.notifyOne(5); },
                                          [](CEventHandler & handler) {
                                              EXPECT_EQ(Nothing, handler.wait_for({5}, 0));
                                              ExpectUsable(handler);
                                          });
    EXPECT_EQ(2u, locks); // of the notifications and of the condition
}

TEST_F(EventHandlerFaultTest, ANotificationWhoseLockFailsLeavesEarlierOnesOfItsId)
{
    SweepLocks([](CEventHandler & handler) { handler.notifyOne(5); },
               [](CEventHandler & handler) { handler.notifyOne(5); },
               [](CEventHandler & handler) {
                   EXPECT_EQ((TResult{true, 5}), handler.wait_for({5}, 0));
                   EXPECT_EQ(Nothing, handler.wait_for({5}, 0));
               });
}

TEST_F(EventHandlerFaultTest, ALookWhoseLockFailsRaisesASystemErrorAndTakesNothing)
{
    unsigned int const locks = SweepLocks([](CEventHandler & handler) { handler.notifyOne(5); },
                                          [](CEventHandler & handler) {
                                              EXPECT_EQ((TResult{true, 5}), handler.wait_for({5}, 0));
                                          },
                                          [](CEventHandler & handler) {
                                              EXPECT_EQ((TResult{true, 5}), handler.wait_for({5}, 0));
                                              EXPECT_EQ(Nothing, handler.wait_for({5}, 0));
                                              ExpectUsable(handler);
                                          });
    EXPECT_LE(1u, locks);
}

TEST_F(EventHandlerFaultTest, AWaitWhoseLockFailsBeforeOrBehindItRaisesASystemErrorAndTakesNothing)
{
    unsigned int const locks = SweepLocks([](CEventHandler & handler) { handler.notifyOne(4); },
                                          [](CEventHandler & handler) { EXPECT_EQ(Nothing, handler.wait_for({5}, 1)); },
                                          [](CEventHandler & handler) {
                                              EXPECT_EQ((TResult{true, 4}), handler.wait_for({5, 4}, 0));
                                              ExpectUsable(handler);
                                          });
    EXPECT_LE(3u, locks); // the first look, the condition, and again behind the wait
}

TEST_F(EventHandlerFaultTest, TheSystemErrorLeavesOnAThreadThatDisabledThrowingToo)
{
    CEventHandler handler;
    handler.notifyOne(5);
    Exceptions::CThrowState state;
    state.DisableThrow();
    {
        CFailingLock const lock(1);
        EXPECT_THROW(handler.notifyOne(5), std::system_error);
    }
    {
        CFailingLock const lock(1);
        EXPECT_THROW(handler.wait_for({5}, 0), std::system_error);
    }
    EXPECT_EQ(1u, state.DisableThrow()); // still
    EXPECT_EQ((TResult{true, 5}), handler.wait_for({5}, 0));
    EXPECT_EQ(Nothing, handler.wait_for({5}, 0));
}

TEST_F(EventHandlerFaultTest, WithoutMemoryTheConstructorDoesNotRaiseAndTheNextCallDoes)
{
    unsigned int n = 1;
    for (bool fired = true; fired; ++n) {
        SCOPED_TRACE("allocation " + std::to_string(n));
        ASSERT_LT(n, 100u);
        std::optional<CEventHandler> handler;
        {
            CFailingMemory const noMemory(n, CFailingMemory::FailOne);
            EXPECT_NO_THROW(handler.emplace());
            fired = noMemory.Fired();
        }
        std::uint32_t const expected = fired ? Errors::NullPointer : 0;
        EXPECT_EQ(expected, RaisedBy([&] { handler->notifyOne(1); }));
        EXPECT_EQ(expected, RaisedBy([&] { handler->wait_for({1}, 0); }));
    }
    EXPECT_LT(2u, n); // something has failed
}

TEST_F(EventHandlerFaultTest, ANotificationWithoutMemoryRaisesOutOfMemoryAndIsNotMade)
{
    CEventHandler handler;
    handler.notifyOne(4);
    EXPECT_EQ(Errors::OutOfMemory, RaisedBy([&] {
                  CFailingMemory const noMemory(1, CFailingMemory::FailOne);
                  handler.notifyOne(5);
              }));
    EXPECT_EQ(Nothing, handler.wait_for({5}, 0));
    EXPECT_EQ((TResult{true, 4}), handler.wait_for({4}, 0));
    ExpectUsable(handler);
}

} // namespace
