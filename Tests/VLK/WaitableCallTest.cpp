#include "VLK/WaitableCall.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>

#include "Foundation.h"
#include "VLK/ThreadPool.h"
#include "VLK/Waiter.h"

using namespace VLK;
using namespace VLK::Delegates_and_Calls;
using namespace VLK::Threading;
using Exceptions::CErrorLog;
using Exceptions::CThrowState;

namespace {

using CBoundCall = TDelegate<CWaitableCall>;

void RaiseOutOfBounds()
{
    CThrowState state;
    try {
        VLK_RAISE(state, Errors::IndexOutOfBounds);
    }
    VLK_THROW_NEXT_VOID(state)
}

struct SCounter {
    int calls = 0;
    void Count() { ++calls; }
};

/// Gives its blocks to Init itself.
class COwnCall : public CWaitableCall {
public:
    class CBlock : public CCbHead {
    public:
        explicit CBlock(std::shared_ptr<int> alive) : m_Alive(std::move(alive)) {}
        void Call() override { Make(*this); }
        void Invoke() { ++*m_Alive; }

    private:
        std::shared_ptr<int> m_Alive;
    };
    unsigned int Take(CBlock * block) { return Init(block); }
};

} // namespace

class WaitableCallTest : public CFoundationTest {};

TEST_F(WaitableCallTest, TheWaitIsOverWhenTheCallHasEndedAndStaysSo)
{
    SCounter counter;
    CBoundCall call(&counter, &SCounter::Count);
    EXPECT_EQ(URET_Timeout, call.Wait(0));
    EXPECT_EQ(URET_OK, call());
    EXPECT_EQ(URET_OK, call.Wait(0));
    EXPECT_EQ(URET_OK, call.Wait(0));
    EXPECT_EQ(1, counter.calls);
}

TEST_F(WaitableCallTest, ACopyWaitsForTheSameCall)
{
    CBoundCall call([] {});
    CWaitableCall const copy(call);
    CDelegate job(call);
    EXPECT_EQ(URET_OK, job());
    EXPECT_EQ(URET_OK, CWaitableCall(copy).Wait(0));
}

TEST_F(WaitableCallTest, AnotherThreadsCallEndsTheWait)
{
    CEvent go;
    go.Init(false, false);
    bool called = false;
    CBoundCall call([&] {
        go.Wait(kDeadlineMs);
        called = true;
    });
    CThread thread;
    thread.Create(call, /*suspended=*/false);
    EXPECT_EQ(URET_Timeout, call.Wait(0));
    go.Set();
    EXPECT_EQ(URET_OK, call.Wait(kDeadlineMs));
    EXPECT_TRUE(called);
    EXPECT_EQ(URET_OK, thread.Wait(kDeadlineMs));
}

TEST_F(WaitableCallTest, OneOfSeveralObjectsOfAWaiter)
{
    CEvent never;
    never.Init(false, true);
    CBoundCall call([] {});
    CWaiter waiter;
    waiter << never << call;
    EXPECT_EQ(0u, CWaitHandle(call).Mask());
    EXPECT_EQ(URET_Timeout, waiter.Wait(0, false));
    call();
    EXPECT_EQ(URET_WaitObject1, waiter.Wait(0, false));
}

TEST_F(WaitableCallTest, WithoutABlockThereIsNothingToWaitFor)
{
    CWaitableCall none;
    EXPECT_EQ(nullptr, CWaitHandle(none).Block());
    CErrorLog log;
    EXPECT_EQ(Errors::SyncNotInitialized, RaisedBy([&] { none.Wait(0); }, log));
    CThrowState state;
    state.DisableThrow();
    EXPECT_EQ(URET_Error, none.Wait(0));
}

TEST_F(WaitableCallTest, TheBlockKeepsWhatTheCallRaisesAndTheWaitIsOver)
{
    CBoundCall call(&RaiseOutOfBounds);
    EXPECT_EQ(URET_OK, call());
    EXPECT_EQ(URET_OK, call.Wait(0));
    EXPECT_EQ(Errors::IndexOutOfBounds, call.GetError());
    CErrorLog log;
    EXPECT_EQ(Errors::IndexOutOfBounds, call.GetError(log));
    EXPECT_EQ(Errors::IndexOutOfBounds, log.GetError());
    EXPECT_EQ(0u, call.GetError());

    CBoundCall foreign([] { throw std::runtime_error("foreign"); });
    EXPECT_EQ(URET_OK, foreign());
    EXPECT_EQ(Errors::General, foreign.GetError());
}

TEST_F(WaitableCallTest, InitReleasesTheFormerBlock)
{
    auto const first = std::make_shared<int>(0);
    auto const second = std::make_shared<int>(0);
    {
        COwnCall call;
        EXPECT_EQ(URET_OK, call.Take(new COwnCall::CBlock(first)));
        call();
        EXPECT_EQ(URET_OK, call.Take(new COwnCall::CBlock(second)));
        EXPECT_EQ(1, first.use_count());
        EXPECT_EQ(URET_Timeout, call.Wait(0)); // a new event
        call();
        EXPECT_EQ(URET_OK, call.Wait(0));
    }
    EXPECT_EQ(1, *first);
    EXPECT_EQ(1, *second);
    EXPECT_EQ(1, second.use_count());
}

TEST_F(WaitableCallTest, ACancelBreaksTheWait)
{
    CBoundCall never([] {});
    CEvent entered;
    entered.Init(false, false);
    std::uint32_t raised = 0;
    CThread thread;
    StartThread(thread, [&] {
        entered.Set();
        raised = RaisedBy([&] { never.Wait(kDeadlineMs); });
    });
    ASSERT_EQ(URET_OK, entered.Wait(kDeadlineMs));
    thread.Cancel();
    ASSERT_EQ(URET_OK, thread.Wait(kDeadlineMs));
    EXPECT_EQ(Errors::ThreadInterrupt, raised);
}

TEST_F(WaitableCallTest, AsAPoolsJobItTellsItsEndAndItsError)
{
    CThreadPool pool;
    pool.Init(0, 0, 0xFFFFFFFF);
    CBoundCall good([] {});
    CBoundCall bad(&RaiseOutOfBounds);
    pool.Enqueue(bad);
    pool.Enqueue(good);
    CWaiter both;
    both << good << bad;
    EXPECT_EQ(URET_WaitObject0, both.Wait(kDeadlineMs, /*all=*/true));
    EXPECT_EQ(0u, good.GetError());
    EXPECT_EQ(Errors::IndexOutOfBounds, bad.GetError());
}
