#include "Module.h"

#include <VLK/EventHandler.h>
#include <VLK/ThreadPool.h>
#include <VLK/WaitableCall.h>
#include <atomic>

#include "Uses.h"

using namespace VLK;
using namespace VLK::Delegates_and_Calls;

namespace {

constexpr unsigned int kDeadline = 20000; // ms
constexpr int kJobs = 8;
constexpr int kLastOne = 3; // an id of this module's own

} // namespace

void UsePool()
{
    std::atomic<int> done{0};
    Threading::CEventHandler notices;
    Threading::CThreadPool pool;
    pool.Init(/*minThreads=*/1, /*maxThreads=*/2, /*idleTime=*/kDeadline);
    for (int i = 0; i < kJobs; ++i)
        pool.Enqueue(TDelegate<CCall>([&] {
            if (++done == kJobs) notices.notifyOne(kLastOne);
        }));
    REQUIRE(notices.wait_for({kLastOne}, kDeadline).notified);

    TDelegate<CWaitableCall> const last([&] { done = -1; });
    pool.Enqueue(last);
    REQUIRE(CWaitableCall(last).Wait(kDeadline) == URET_OK);
    REQUIRE(done == -1);
    pool.Stop();
}
