#include "Platform/StaticLock.h"

#include <gtest/gtest.h>

#include <mutex>
#include <thread>
#include <type_traits>
#include <vector>

namespace {

using Platform::CStaticLock;

constinit CStaticLock g_lock;
static_assert(std::is_trivially_destructible_v<CStaticLock>);

/// Takes the lock in a constructor that may run before any other initialiser.
struct SEarlyUser {
    SEarlyUser() { const std::lock_guard lock(g_lock); }
};
const SEarlyUser g_earlyUser;

TEST(StaticLockTest, IsClosedToOthersWhileItIsHeld)
{
    bool entered = true;
    {
        const std::lock_guard lock(g_lock);
        std::thread([&] { entered = g_lock.try_lock(); }).join();
    }
    EXPECT_FALSE(entered);
    EXPECT_TRUE(g_lock.try_lock());
    g_lock.unlock();
}

TEST(StaticLockTest, KeepsThreadsApart)
{
    constexpr int rounds = 20000;
    int count = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&] {
            for (int round = 0; round < rounds; ++round) {
                const std::lock_guard lock(g_lock);
                ++count;
            }
        });
    for (std::thread & thread : threads)
        thread.join();
    EXPECT_EQ(count, 4 * rounds);
}

} // namespace
