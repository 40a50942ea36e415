#include "Tools/Worker.h"

#include <future>

#include <gtest/gtest.h>

#include "Support/Deadline.h"

namespace {

using namespace Coresim;
using namespace VLK;
using Call = Delegates_and_Calls::TDelegate<Delegates_and_Calls::CCall>;

/// A body that has nothing to do until it is stopped.
Call Idler()
{
    return Call([] {
        Threading::CEvent never;
        never.Init(/*initialState=*/false, /*manualReset=*/true);
        never.Wait(Platform::Infinite);
    });
}

TEST(WorkerTest, AThreadThatIsStoppedAtOnceEnds)
{
    for (int i = 0; i < 200; ++i) {
        CWorker worker;
        worker.Start(Idler());
        worker.Stop(); // before it has begun, more often than not
    }
}

TEST(WorkerTest, AnEndedThreadMayBeStoppedAgainAndOneThatWasNeverStartedToo)
{
    CWorker worker;
    worker.Stop();
    worker.Start(Call([] {}));
    worker.Stop();
    worker.Stop();
}

TEST(WorkerTest, AnInterruptedThreadStopsItsWorkersAllTheSame)
{
    Threading::CCallBackGuard guard;
    Threading::CCurrentThread current;
    Threading::CWaitInterrupt interrupt;
    interrupt.Init();
    interrupt.Set();
    current.SetWaitInterrupt(interrupt);
    unsigned int const mask = current.GetInterruptMask();
    {
        CWorker worker;
        worker.Start(Idler());
        EXPECT_NO_THROW(worker.Stop());
    }
    EXPECT_EQ(mask, current.GetInterruptMask());
    EXPECT_THROW(current.CheckInterrupt(), unsigned int); // it is still to come
    current.SetWaitInterrupt(nullptr);
}

TEST(WorkerTest, AThreadThatIsStoppedWhileItStopsAnotherEndsBehindIt)
{
    Threading::CEvent stopping;
    stopping.Init(/*initialState=*/false, /*manualReset=*/true);
    std::promise<void> release;
    CWorker inner;
    inner.Start(Call([&] { release.get_future().wait(); })); // doesn't see interrupts
    CWorker outer;
    outer.Start(Call([&] {
        stopping.Set();
        inner.Stop();
        Idler()();
    }));
    ASSERT_EQ(URET_OK, stopping.Wait(kDeadlineMs));
    ASSERT_TRUE(HoldsWithin(kDeadline, [&] { return inner.IsStopping(); }));
    auto stopped = std::async(std::launch::async, [&] { outer.Stop(); });
    ASSERT_TRUE(HoldsWithin(kDeadline, [&] { return outer.IsStopping(); }));
    release.set_value();
    EXPECT_EQ(std::future_status::ready, stopped.wait_for(kDeadline));
}

} // namespace
