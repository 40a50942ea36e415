#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <random>
#include <utility>

#include "PoolUnderTest.h"
#include "VLK/ResultCodes.h"

using namespace VLK;
using namespace VLK::Threading;
using Delegates_and_Calls::CDelegate;
using Exceptions::CThrowState;

namespace {

constexpr std::uint64_t Jobs = 1000000;
constexpr std::uint64_t JobsForAStop = 2000;     ///< so many run between two stops,
constexpr std::uint64_t JobsWithoutIdling = 500; ///< fewer where nearly every job makes a thread
constexpr int Producers = 2;
constexpr std::chrono::milliseconds LongDeadline{300000};
constexpr unsigned int LongDeadlineMs = 300000;

/// What all jobs share.
struct SLedger {
    SLedger()
    {
        due.Init(false, false);
        open.Init(/*initialState=*/true, /*manualReset=*/true);
        interrupt.Init();
        interrupt.Set();
    }

    std::atomic<std::uint64_t> taken{0}; ///< by the pool
    std::atomic<std::uint64_t> ran{0};
    std::atomic<std::uint64_t> gone{0};             ///< destroyed
    std::atomic<std::uint64_t> dueAt{JobsForAStop}; ///< the next stop, in jobs that ran
    CEvent due;                                     ///< time for a stop
    CEvent open;                                    ///< producers may go on
    CWaitInterrupt interrupt;                       ///< for jobs to leave behind
};

/// One job. Counts its only run and its end.
class CJob {
public:
    CJob(SLedger & ledger, std::uint64_t number) noexcept : m_pLedger(&ledger), m_uNumber(number) {}
    CJob(CJob && other) noexcept : m_pLedger(std::exchange(other.m_pLedger, nullptr)), m_uNumber(other.m_uNumber) {}
    CJob & operator=(CJob &&) = delete;
    ~CJob()
    {
        if (m_pLedger != nullptr) ++m_pLedger->gone;
    }
    void operator()() const
    {
        if (++m_pLedger->ran >= m_pLedger->dueAt && m_pLedger->dueAt.exchange(Jobs) != Jobs) m_pLedger->due.Set();
        if (m_uNumber % 97 == 0) CCurrentThread().SetWaitInterrupt(m_pLedger->interrupt);
        if (m_uNumber % 1009 == 0) Fail();
    }

private:
    static void Fail()
    {
        CThrowState state;
        try {
            VLK_RAISE(state, Errors::IndexOutOfBounds);
        }
        VLK_THROW_NEXT_VOID(state)
    }

    SLedger * m_pLedger;
    std::uint64_t m_uNumber;
};

/// Enqueues every job until it is taken: a stop may be in the way.
void Produce(CThreadPool & pool, SLedger & ledger, std::uint64_t count)
{
    for (std::uint64_t i = 0; i < count; ++i) {
        CDelegate const job = DelegateOf(CJob(ledger, i));
        std::uint32_t raised = 0;
        while ((raised = RaisedBy([&] { pool.Enqueue(job); })) != 0) {
            ASSERT_EQ(Errors::PoolNotInitialized, raised);
            ASSERT_EQ(URET_OK, ledger.open.Wait(LongDeadlineMs));
        }
        ++ledger.taken;
    }
}

/// Stops the pool again and again, in every fourth case with an interrupt pending, and opens it with other numbers.
class CStopper {
public:
    CStopper(CThreadPool & pool, SLedger & ledger, unsigned int seed) : m_Pool(pool), m_Ledger(ledger), m_Random(seed)
    {
    }
    void Open()
    {
        constexpr unsigned int idleTimes[] = {0xFFFFFFFF, 1, 0xFFFFFFFF, 0};
        unsigned int const idleTime = idleTimes[Below(4)];
        m_Ledger.dueAt = m_Ledger.ran + (idleTime != 0 ? JobsForAStop : JobsWithoutIdling);
        m_Pool.Init(Below(4), 1 + Below(5), idleTime);
        m_Ledger.open.Set();
    }
    void Run()
    {
        while (m_Ledger.gone < Jobs && m_Ledger.due.Wait(LongDeadlineMs) == URET_OK) {
            m_Ledger.open.Reset();
            CCurrentThread current;
            bool const interrupted = Below(4) == 0;
            current.SetWaitInterrupt(interrupted ? &m_Ledger.interrupt : nullptr);
            std::uint32_t const raised = RaisedBy([this] { m_Pool.Stop(); });
            EXPECT_TRUE(raised == 0 || raised == Errors::WaitInterrupt) << std::hex << raised;
            current.SetWaitInterrupt(nullptr);
            // A pool that had no thread at this moment is open still.
            std::uint32_t const opening = RaisedBy([this] { Open(); });
            EXPECT_TRUE(opening == 0 || opening == Errors::PoolAlreadyInitialized) << std::hex << opening;
            m_Ledger.open.Set();
            ++m_nStops;
        }
    }
    int Stops() const { return m_nStops; }

private:
    unsigned int Below(unsigned int limit) { return static_cast<unsigned int>(m_Random() % limit); }

    CThreadPool & m_Pool;
    SLedger & m_Ledger;
    std::mt19937 m_Random;
    int m_nStops = 0;
};

} // namespace

class PoolStressTest : public CFoundationTest {};

TEST_F(PoolStressTest, OfAMillionJobsEachRunsOnceThroughAllStopsInterruptsAndExceptions)
{
    unsigned int const seed = std::random_device()();
    std::printf("seed %u\n", seed);
    SLedger ledger;
    CThread stopping;
    CThread producing[Producers];
    {
        CPoolUnderTest pool;
        CStopper stopper(pool, ledger, seed);
        stopper.Open();
        for (CThread & thread : producing)
            StartThread(thread, [&] { Produce(pool, ledger, Jobs / Producers); });
        StartThread(stopping, [&] { stopper.Run(); });
        for (CThread & thread : producing)
            ASSERT_EQ(URET_OK, thread.Wait(LongDeadlineMs));
        EXPECT_EQ(Jobs, ledger.taken);
        // What a stop left in the queue needs one more job to be run.
        EXPECT_TRUE(HoldsWithin(LongDeadline, [&] {
            RaisedBy([&] { pool.Enqueue(CDelegate()); });
            return ledger.gone == Jobs;
        }));
        ledger.due.Set();
        ASSERT_EQ(URET_OK, stopping.Wait(LongDeadlineMs));
        std::printf("%d stops\n", stopper.Stops());
        EXPECT_LT(20, stopper.Stops()); // a busy machine lets more than the due jobs run between two
    }
    EXPECT_EQ(Jobs, ledger.ran);
    EXPECT_EQ(Jobs, ledger.gone);
}
