#include "VLK/Delegates.h"

#include <gtest/gtest.h>

#include <memory>

#include "Foundation.h"

using namespace VLK;
using namespace VLK::Delegates_and_Calls;
using Exceptions::CErrorLog;
using Exceptions::CThrowState;

namespace {

struct SCounter {
    int calls = 0;
    void Count() { ++calls; }
    unsigned int CountAndTell() { return static_cast<unsigned int>(++calls); }
};

unsigned int Answer()
{
    return 42;
}
unsigned int OtherAnswer()
{
    return 43;
}
int g_iPlainCalls = 0;
void CountPlain()
{
    ++g_iPlainCalls;
}

void RaiseOutOfBounds()
{
    CThrowState state;
    try {
        VLK_RAISE(state, Errors::IndexOutOfBounds);
    }
    VLK_THROW_NEXT_VOID(state)
}

/// A delegate whose block keeps the error of its call.
class CKeepingCall : public CCall {
public:
    class CBlock : public CCbHead {
    public:
        void Call() override { RaisedBy(&RaiseOutOfBounds, m_ErrorLog); }
    };
    CKeepingCall() { Init(new CBlock); }
};

} // namespace

class DelegateTest : public CFoundationTest {};

TEST_F(DelegateTest, WithoutABlockCallsNothingAndSucceeds)
{
    CDelegate none;
    EXPECT_FALSE(none.IsValid());
    EXPECT_EQ(URET_OK, none());
    EXPECT_EQ(0u, none.GetError());
    none.Release();
    EXPECT_FALSE(none.IsValid());
}

TEST_F(DelegateTest, ACopyOfANullDelegateIsNull)
{
    const CDelegate none;
    CDelegate copy(none);
    EXPECT_FALSE(copy.IsValid());
    EXPECT_EQ(URET_OK, copy());
}

TEST_F(DelegateTest, CallsAMemberFunction)
{
    SCounter counter;
    TDelegate<CCall> call(&counter, &SCounter::Count);
    EXPECT_EQ(URET_OK, call());
    EXPECT_EQ(1, counter.calls);
    call.Bind(&counter, &SCounter::CountAndTell);
    EXPECT_EQ(URET_OK, call()); // the function's own result is dropped
    EXPECT_EQ(URET_OK, call());
    EXPECT_EQ(3, counter.calls);
}

TEST_F(DelegateTest, CopiesShareTheBlockUntilTheLastIsGone)
{
    const auto alive = std::make_shared<int>(0);
    CDelegate first = DelegateOf([alive] { ++*alive; });
    {
        CDelegate copy(first);
        CDelegate assigned;
        assigned = copy;
        EXPECT_EQ(2, alive.use_count());
        EXPECT_EQ(URET_OK, copy());
        EXPECT_EQ(URET_OK, assigned());
        first.Release();
        EXPECT_FALSE(first.IsValid());
        EXPECT_EQ(2, alive.use_count());
    }
    EXPECT_EQ(1, alive.use_count());
    EXPECT_EQ(2, *alive);
}

TEST_F(DelegateTest, AssigningToItselfKeepsTheBlock)
{
    SCounter counter;
    CDelegate call = TDelegate<CCall>(&counter, &SCounter::Count);
    CDelegate & same = call;
    call = same;
    EXPECT_EQ(URET_OK, call());
    EXPECT_EQ(1, counter.calls);
}

TEST_F(DelegateTest, AssigningReleasesTheFormerBlock)
{
    const auto alive = std::make_shared<int>(0);
    CDelegate call = DelegateOf([alive] {});
    call = CDelegate();
    EXPECT_EQ(1, alive.use_count());
}

TEST_F(DelegateTest, WhatTheCallRaisesGoesOn)
{
    CDelegate call = DelegateOf(&RaiseOutOfBounds);
    EXPECT_EQ(Errors::IndexOutOfBounds, RaisedBy([&] { call(); }));
    EXPECT_EQ(0u, call.GetError()); // the record is the exception's
}

TEST_F(DelegateTest, WithThrowingDisabledAFailingCallReturnsError)
{
    CDelegate call = DelegateOf(&RaiseOutOfBounds);
    CThrowState state;
    state.DisableThrow();
    EXPECT_EQ(URET_Error, call());
    EXPECT_EQ(Errors::IndexOutOfBounds, Threading::CCurrentThread().GetErrorLog().GetError());
}

TEST_F(DelegateTest, AnExceptionOfTheLibraryLeavesAsTheFoundationsOwn)
{
    CDelegate call = DelegateOf([] { throw std::bad_alloc(); });
    EXPECT_EQ(Errors::OutOfMemory, RaisedBy([&] { call(); }));
}

TEST_F(DelegateTest, TheBlocksRecordMovesOutOnce)
{
    CKeepingCall call;
    EXPECT_EQ(URET_OK, call());
    EXPECT_EQ(Errors::IndexOutOfBounds, call.GetError());
    CErrorLog log;
    EXPECT_EQ(Errors::IndexOutOfBounds, call.GetError(log));
    EXPECT_EQ(Errors::IndexOutOfBounds, log.GetError());
    EXPECT_EQ(0u, call.GetError());
    EXPECT_EQ(0u, call.GetError(log)); // empties the target
    EXPECT_EQ(0u, log.GetError());
}

TEST_F(DelegateTest, TheBlocksRecordGoesWithTheLastCopy)
{
    CErrorLog log;
    CDelegate kept;
    {
        CKeepingCall call;
        call();
        kept = call;
    }
    EXPECT_EQ(Errors::IndexOutOfBounds, kept.GetError());
    kept.Release(); // the leak check sees to the record
    EXPECT_EQ(0u, kept.GetError(log));
}

TEST(FastDelegateTest, UnboundDoesNothing)
{
    const TFastDelegateR<unsigned int> none;
    EXPECT_EQ(0u, none());
    CFastDelegate nothing;
    nothing();
    nothing.Bind(nullptr);
    nothing();
}

TEST(FastDelegateTest, CallsPlainAndMemberFunctions)
{
    TFastDelegateR<unsigned int> call(&Answer);
    EXPECT_EQ(42u, call());
    SCounter counter;
    call.Bind<&SCounter::CountAndTell>(counter);
    EXPECT_EQ(1u, call());
    EXPECT_EQ(2u, call());

    CFastDelegate quiet(&CountPlain);
    const int before = g_iPlainCalls;
    quiet();
    EXPECT_EQ(before + 1, g_iPlainCalls);
    quiet.Bind<&SCounter::Count>(counter);
    quiet();
    EXPECT_EQ(3, counter.calls);
}

TEST(FastDelegateTest, DiffersByFunctionAndByObject)
{
    using CCallback = TFastDelegateR<unsigned int>;
    SCounter one, two;
    const CCallback bound = CCallback::Of<&SCounter::CountAndTell>(one);
    EXPECT_FALSE(bound != CCallback::Of<&SCounter::CountAndTell>(one));
    EXPECT_TRUE(bound != CCallback::Of<&SCounter::CountAndTell>(two));
    EXPECT_TRUE(bound != CCallback(&Answer));
    EXPECT_TRUE(bound != CCallback());
    EXPECT_TRUE(CCallback(&Answer) != CCallback(&OtherAnswer));
    EXPECT_FALSE(CCallback(&Answer) != CCallback(&Answer));
    EXPECT_FALSE(CCallback() != CCallback());
}
