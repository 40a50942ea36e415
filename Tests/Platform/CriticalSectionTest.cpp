#include "Platform/CriticalSection.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "Platform/Error.h"
#include "Support/Deadline.h"

namespace {

using Platform::CCriticalLock;
using Platform::CCriticalSection;

bool OthersCanEnter(CCriticalSection & section)
{
    bool entered = false;
    std::thread([&] {
        entered = section.TryEnter();
        if (entered) section.Leave();
    }).join();
    return entered;
}

TEST(CriticalSectionTest, IsRecursiveForItsOwnerAndClosedToOthers)
{
    CCriticalSection section;
    EXPECT_FALSE(section.IsHeld());
    section.Enter();
    section.Enter();
    EXPECT_TRUE(section.TryEnter());
    EXPECT_TRUE(section.IsHeldByMe());
    for (int i = 0; i < 3; ++i) {
        EXPECT_FALSE(OthersCanEnter(section));
        section.Leave();
    }
    EXPECT_FALSE(section.IsHeld());
    EXPECT_FALSE(section.IsHeldByMe());
    EXPECT_TRUE(OthersCanEnter(section));
}

TEST(CriticalSectionTest, LeavingWhatOneDoesNotHoldIsIgnored)
{
    CCriticalSection section;
    section.Leave();
    section.Enter();
    std::thread([&] {
        EXPECT_TRUE(section.IsHeld());
        EXPECT_FALSE(section.IsHeldByMe());
        section.Leave();
    }).join();
    EXPECT_TRUE(section.IsHeldByMe());
    section.Leave();
}

TEST(CriticalSectionTest, MayBeDestroyedByItsOwnerWhileHeld)
{
    auto * const section = new CCriticalSection;
    section->Enter();
    section->Enter();
    delete section;
}

TEST(CriticalSectionTest, RemembersItsSpinCount)
{
    CCriticalSection section(4000);
    EXPECT_EQ(4000u, section.SetSpinCount(10));
    EXPECT_EQ(10u, section.SetSpinCount(0));
}

TEST(CriticalSectionTest, ThreadsExcludeEachOther)
{
    CCriticalSection section;
    int counter = 0; // guarded by the section
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&] {
            for (int n = 0; n < 5000; ++n) {
                const CCriticalLock outer(section);
                const CCriticalLock inner(section);
                ++counter;
            }
        });
    for (std::thread & thread : threads)
        thread.join();
    EXPECT_EQ(20000, counter);
}

TEST(CriticalSectionTest, EveryThreadThatSleepsForTheSectionGetsItsTurn)
{
    CCriticalSection section;
    int turns = 0; // guarded by the section
    for (int round = 0; round < 20; ++round) {
        std::vector<std::thread> threads;
        std::atomic<int> begun{0};
        section.Enter();
        for (int i = 0; i < 6; ++i)
            threads.emplace_back([&] {
                begun.fetch_add(1);
                const CCriticalLock lock(section);
                ++turns;
            });
        ASSERT_TRUE(HoldsWithin(kDeadline, [&] { return begun.load() == 6; }));
        EXPECT_EQ(6 * round, turns);
        section.Leave();
        for (std::thread & thread : threads)
            thread.join();
    }
    EXPECT_EQ(120, turns);
}

TEST(CriticalSectionTest, WaitingForTheSectionLeavesTheLastErrorAlone)
{
    constexpr Platform::ErrorCode some = 71;
    CCriticalSection section;
    for (int round = 0; round < 20; ++round) {
        std::atomic<bool> begun{false};
        Platform::ErrorCode seen = Platform::Success;
        section.Enter();
        std::thread waiter([&] {
            Platform::SetLastError(some);
            begun = true;
            const CCriticalLock lock(section);
            seen = Platform::LastError();
        });
        ASSERT_TRUE(HoldsWithin(kDeadline, [&] { return begun.load(); }));
        section.Leave();
        waiter.join();
        EXPECT_EQ(some, seen);
    }
}

} // namespace
