#include <atomic>
#include <boost/asio/post.hpp>
#include <boost/asio/thread_pool.hpp>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

#include "Ratio.h"
#include "VLK/Delegates.h"
#include "VLK/ThreadPool.h"
#include "VLK/Threads.h"

// Small jobs through the foundation's pool against boost::asio::thread_pool, which keeps a fixed number of threads and
// queues everything. Both make and release the job's callable inside the loop. Time on the wall: the threads' processor
// time would hide the waiting, which is a part of what is measured.

namespace {

using VLK::Delegates_and_Calls::CCall;
using VLK::Delegates_and_Calls::TDelegate;
using VLK::Threading::CCallBackGuard;
using VLK::Threading::CThreadPool;

constexpr unsigned int kForever = 0xFFFFFFFF;

/// Waits without the means of either side.
class CCountdown {
public:
    void Set(std::uint64_t count) { m_Left.store(count); }
    void Done()
    {
        if (m_Left.fetch_sub(1) == 1) m_Left.notify_all();
    }
    void Await() const
    {
        for (std::uint64_t left = m_Left.load(); left != 0; left = m_Left.load())
            m_Left.wait(left);
    }

private:
    std::atomic<std::uint64_t> m_Left{0};
};

/// Two pools with the same number of threads.
struct SPools {
    explicit SPools(unsigned int threads) : baseline(threads)
    {
        // The foundation's pool makes one thread more than its maximum, and keeps one more than its minimum.
        subject.Init(threads - 1, threads - 1, kForever);
    }
    ~SPools()
    {
        baseline.join();
        subject.Stop();
    }

    CCallBackGuard guard;
    CCountdown countdown; ///< outlives the pools: their jobs count on it
    boost::asio::thread_pool baseline;
    CThreadPool subject;
};

template <class TWork>
double WallNanosecondsEach(std::uint64_t operations, TWork work)
{
    auto const start = std::chrono::steady_clock::now();
    work();
    std::chrono::duration<double, std::nano> const time = std::chrono::steady_clock::now() - start;
    return time.count() / static_cast<double>(operations);
}

/// `batch` jobs handed over at once, then waited for; `batches` times.
Bench::SPair Batches(unsigned int threads, std::uint64_t batch, std::uint64_t batches)
{
    auto const pools = std::make_shared<SPools>(threads);
    auto const run = [pools, batch, batches](auto const & enqueue) {
        return WallNanosecondsEach(batch * batches, [&] {
            for (std::uint64_t i = 0; i < batches; ++i) {
                pools->countdown.Set(batch);
                for (std::uint64_t n = 0; n < batch; ++n)
                    enqueue();
                pools->countdown.Await();
            }
        });
    };
    return {[pools, run] {
                return run(
                    [&] { boost::asio::post(pools->baseline, [pools = pools.get()] { pools->countdown.Done(); }); });
            },
            [pools, run] {
                return run([&] {
                    TDelegate<CCall> const job([pools = pools.get()] { pools->countdown.Done(); });
                    if (pools->subject.Enqueue(job) != VLK::URET_OK) std::abort();
                });
            }};
}

} // namespace

int main(int argc, char ** argv)
{
    for (unsigned int const threads : {2u, 4u}) {
        std::string const pool = "/threads:" + std::to_string(threads);
        Bench::AddRatio("PoolBatchOf10000" + pool, 1.5, [threads] { return Batches(threads, 10000, 10); });
        Bench::AddRatio("PoolJobAndWait" + pool, 3.0, [threads] { return Batches(threads, 1, 5000); });
    }
    return Bench::Main(argc, argv);
}
