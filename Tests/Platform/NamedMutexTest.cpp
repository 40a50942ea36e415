#include "Platform/NamedMutex.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "Platform/Process.h"
#include "Support/ChildProcess.h"
#include "Support/Deadline.h"

namespace {

using namespace Platform;

constexpr char ChildProgram[] = KXRA_CHILD; ///< takes the mutex that it is told

/// A name that no other run of the tests uses.
std::string UniqueName(char const * text)
{
    return std::string(text) + "-" + std::to_string(CurrentProcessId());
}

CNamedMutexHandle Open(std::string const & name)
{
    NamedMutexHandle handle = nullptr;
    EXPECT_EQ(Success, NewNamedMutex(handle, name.c_str()));
    return CNamedMutexHandle(handle);
}

bool OthersCanTake(CNamedMutexHandle const & mutex)
{
    bool taken = false;
    std::thread([&] {
        taken = TakeNamedMutex(mutex.Get(), 0);
        if (taken) ReleaseNamedMutex(mutex.Get());
    }).join();
    return taken;
}

TEST(NamedMutexTest, HandlesOfOneNameShareOneMutex)
{
    const CNamedMutexHandle first = Open(UniqueName("share"));
    const CNamedMutexHandle second = Open(UniqueName("share"));
    const CNamedMutexHandle other = Open(UniqueName("share-not"));
    ASSERT_TRUE(TakeNamedMutex(first.Get(), 0));
    EXPECT_FALSE(OthersCanTake(second));
    EXPECT_TRUE(OthersCanTake(other));
    ReleaseNamedMutex(first.Get());
    EXPECT_TRUE(OthersCanTake(second));
}

TEST(NamedMutexTest, IsNotRecursive)
{
    const CNamedMutexHandle mutex = Open(UniqueName("recursive"));
    ASSERT_TRUE(TakeNamedMutex(mutex.Get(), 0));
    EXPECT_FALSE(TakeNamedMutex(mutex.Get(), 0));
    EXPECT_FALSE(TakeNamedMutex(mutex.Get(), 5));
    const CNamedMutexHandle other = Open(UniqueName("recursive"));
    EXPECT_FALSE(TakeNamedMutex(other.Get(), 0)) << "by another handle either";
    ReleaseNamedMutex(mutex.Get());
    EXPECT_TRUE(OthersCanTake(mutex));
}

TEST(NamedMutexTest, OnlyTheOwnerReleases)
{
    const CNamedMutexHandle mutex = Open(UniqueName("owner"));
    ASSERT_TRUE(TakeNamedMutex(mutex.Get(), 0));
    std::thread([&] { ReleaseNamedMutex(mutex.Get()); }).join();
    EXPECT_FALSE(OthersCanTake(mutex));
    ReleaseNamedMutex(mutex.Get());
    ReleaseNamedMutex(mutex.Get());
    EXPECT_TRUE(OthersCanTake(mutex));
}

TEST(NamedMutexTest, IsTakenFromAThreadThatEndedWithoutReleasing)
{
    const CNamedMutexHandle mutex = Open(UniqueName("abandoned"));
    std::thread([&] { EXPECT_TRUE(TakeNamedMutex(mutex.Get(), 0)); }).join();
    EXPECT_TRUE(TakeNamedMutex(mutex.Get(), 0));
    ReleaseNamedMutex(mutex.Get());
}

TEST(NamedMutexTest, ExcludesOtherProcessesUntilTheOwnerProcessEnds)
{
    const std::string name = UniqueName("process");
    CChildProcess owner(ChildProgram, {name});
    ASSERT_EQ("taken", owner.ReadLine());
    const CNamedMutexHandle mutex = Open(name);
    EXPECT_FALSE(TakeNamedMutex(mutex.Get(), 0));
    EXPECT_FALSE(TakeNamedMutex(mutex.Get(), 5));
    EXPECT_EQ(0, owner.End());
    EXPECT_TRUE(TakeNamedMutex(mutex.Get(), 0));
    EXPECT_EQ("refused", CChildProcess(ChildProgram, {name}).ReadLine());
    ReleaseNamedMutex(mutex.Get());
}

TEST(NamedMutexTest, GivesWayToAnotherProcessWhenItsThreadEnded)
{
    const std::string name = UniqueName("given");
    const CNamedMutexHandle mutex = Open(name);
    std::thread([&] { EXPECT_TRUE(TakeNamedMutex(mutex.Get(), 0)); }).join();
    CChildProcess other(ChildProgram, {name});
    EXPECT_EQ("taken", other.ReadLine());
    EXPECT_FALSE(TakeNamedMutex(mutex.Get(), 0));
    other.Kill();
    EXPECT_TRUE(TakeNamedMutex(mutex.Get(), 0));
    ReleaseNamedMutex(mutex.Get());
}

TEST(NamedMutexTest, GivesWayToAnotherProcessWithItsLastHandle)
{
    const std::string name = UniqueName("closed");
    CNamedMutexHandle first = Open(name);
    CNamedMutexHandle second = Open(name);
    ASSERT_TRUE(TakeNamedMutex(first.Get(), 0));
    first.Reset();
    CChildProcess witness(ChildProgram, {name}); // has it open, so that it outlives our handles
    EXPECT_EQ("refused", witness.ReadLine());
    second.Reset();
    EXPECT_EQ("taken", CChildProcess(ChildProgram, {name}).ReadLine());
}

TEST(NamedMutexTest, WaitsUntilTheOwnerReleases)
{
    const CNamedMutexHandle mutex = Open(UniqueName("wait"));
    int counter = 0; // guarded by the mutex
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&] {
            for (int n = 0; n < 100; ++n) {
                ASSERT_TRUE(TakeNamedMutex(mutex.Get(), kDeadlineMs));
                ++counter;
                ReleaseNamedMutex(mutex.Get());
            }
        });
    for (std::thread & thread : threads)
        thread.join();
    EXPECT_EQ(400, counter);
}

TEST(NamedMutexTest, TakesLongNamesAndPathsAndRefusesNone)
{
    const std::string path = UniqueName("CFileDebug_/var/log/agent:1");
    const CNamedMutexHandle first = Open(path);
    ASSERT_TRUE(TakeNamedMutex(first.Get(), 0));
    const CNamedMutexHandle longName = Open(UniqueName("") + std::string(600, 'x'));
    EXPECT_TRUE(TakeNamedMutex(longName.Get(), 0));
    NamedMutexHandle handle = nullptr;
    EXPECT_NE(Success, NewNamedMutex(handle, ""));
    EXPECT_NE(Success, NewNamedMutex(handle, nullptr));
    EXPECT_EQ(nullptr, handle);
    EXPECT_FALSE(TakeNamedMutex(nullptr, 0));
    ReleaseNamedMutex(nullptr);
    CloseNamedMutex(nullptr);
}

} // namespace
