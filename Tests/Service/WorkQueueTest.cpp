#include "WorkQueue.h"

#include <gtest/gtest.h>

#include "SetQuery.h"
#include "Support/AllocationFault.h"

namespace {

using Service::CJob;
using Service::CWorkQueue;
using Service::JobPtr;

/// What happened to a job.
struct SFate {
    int refusedWith = 0;
    bool gone = false;
};

class CFakeJob final : public CJob {
public:
    CFakeJob(SFate & fate, bool isRequest) : m_fate(fate), m_isRequest(isRequest) {}
    ~CFakeJob() override { m_fate.gone = true; }
    Service::CQuery & Query() noexcept override { return m_query; }
    bool Finish() override { return true; }
    void Refuse(int status) override { m_fate.refusedWith = status; }
    bool IsRequest() const noexcept override { return m_isRequest; }

private:
    SFate & m_fate;
    bool m_isRequest;
    Service::CSetQuery m_query;
};

class WorkQueueTest : public testing::Test {
protected:
    SFate m_first, m_second, m_third; // outlive the queue, which may still hold their jobs
    CWorkQueue m_queue{nullptr};

    bool Push(SFate & fate, std::uint64_t arrivedMs, bool isRequest = true)
    {
        JobPtr job(new CFakeJob(fate, isRequest));
        job->SetArrivedMs(arrivedMs);
        return m_queue.Push(job);
    }
};

TEST_F(WorkQueueTest, OneJobRunsAndTheOthersWaitInTheirOrder)
{
    SFate &first = m_first, &second = m_second;
    EXPECT_FALSE(m_queue.IsReady());
    Push(first, 1);
    Push(second, 2);
    EXPECT_TRUE(m_queue.IsReady());
    m_queue.Begin(10);
    EXPECT_TRUE(m_queue.IsBusy());
    EXPECT_FALSE(m_queue.IsReady());
    m_queue.End(/*again=*/false);
    EXPECT_TRUE(first.gone);
    EXPECT_FALSE(second.gone);
}

TEST_F(WorkQueueTest, AJobThatRunsAgainGoesBeforeTheOthers)
{
    SFate &first = m_first, &second = m_second;
    Push(first, 1);
    Push(second, 2);
    CJob & job = m_queue.Begin(10);
    m_queue.End(/*again=*/true);
    EXPECT_EQ(&job, &m_queue.Begin(11));
}

TEST_F(WorkQueueTest, RequestsAreBoundedAndOtherJobsAreNot)
{
    SFate &fate = m_first, &trap = m_second;
    for (std::size_t i = 0; i < Service::kMaxWaiting; ++i)
        ASSERT_TRUE(Push(fate, 1));
    EXPECT_FALSE(Push(fate, 1));
    EXPECT_TRUE(Push(trap, 1, /*isRequest=*/false));
}

TEST_F(WorkQueueTest, AJobForWhichThereIsNoMemoryStaysItsOwners)
{
    bool refused = false;
    for (std::size_t i = 0; i < Service::kMaxWaiting; ++i) {
        JobPtr job(new CFakeJob(m_first, /*isRequest=*/true));
        CJob const * const address = job.get();
        const CAllocationFault fault(1); // not every push needs memory
        const bool taken = m_queue.Push(job);
        refused = refused || !taken;
        ASSERT_EQ(taken ? nullptr : address, job.get());
    }
    EXPECT_TRUE(refused);
    EXPECT_TRUE(Push(m_second, 1));
}

TEST_F(WorkQueueTest, OldRequestsAreRefusedAlsoTheRunningOneAndOnlyOnce)
{
    SFate &running = m_first, &waiting = m_second, &young = m_third;
    Push(running, 1);
    Push(waiting, 2);
    Push(young, 50);
    CJob & job = m_queue.Begin(10);
    EXPECT_TRUE(m_queue.RefuseOlder(50, 5));
    EXPECT_EQ(5, running.refusedWith);
    EXPECT_TRUE(job.IsAnswered());
    EXPECT_TRUE(job.Query().IsDropped());
    EXPECT_FALSE(running.gone);
    EXPECT_TRUE(waiting.gone);
    EXPECT_EQ(0, young.refusedWith);
    EXPECT_FALSE(m_queue.RefuseOlder(50, 5));
    std::uint64_t arrived = 0;
    ASSERT_TRUE(m_queue.OldestArrival(arrived));
    EXPECT_EQ(50u, arrived);
}

TEST_F(WorkQueueTest, ForgottenRequestsAreNotAnswered)
{
    SFate &running = m_first, &waiting = m_second, &trap = m_third;
    Push(running, 1);
    Push(waiting, 2);
    Push(trap, 3, /*isRequest=*/false);
    CJob & job = m_queue.Begin(10);
    m_queue.ForgetRequests();
    EXPECT_TRUE(job.IsAnswered());
    EXPECT_TRUE(waiting.gone);
    EXPECT_FALSE(trap.gone);
    EXPECT_EQ(0, running.refusedWith);
    EXPECT_EQ(0, waiting.refusedWith);
}

} // namespace
