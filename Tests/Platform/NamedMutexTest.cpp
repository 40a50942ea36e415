#include "Platform/NamedMutex.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "Support/Deadline.h"

namespace {

using namespace Platform;

/// A name that no other run of the tests uses.
std::string UniqueName(char const * text)
{
    return std::string(text) + "-" + std::to_string(::getpid());
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

/// Another process that owns a mutex until it ends, which it does without releasing.
class COwnerProcess {
public:
    explicit COwnerProcess(std::string const & name)
    {
        if (::pipe(m_toChild) != 0 || ::pipe(m_toParent) != 0) return;
        m_child = ::fork();
        if (m_child == 0) Run(name);
    }
    ~COwnerProcess()
    {
        End();
        for (const int descriptor : {m_toChild[0], m_toChild[1], m_toParent[0], m_toParent[1]})
            ::close(descriptor);
    }
    /// Waits for the child; whether it took the mutex.
    bool HasTaken()
    {
        char taken = 0;
        return ::read(m_toParent[0], &taken, 1) == 1 && taken == 1;
    }
    void End()
    {
        if (m_child <= 0) return;
        EXPECT_EQ(1, ::write(m_toChild[1], "", 1));
        ::waitpid(m_child, nullptr, 0);
        m_child = 0;
    }

private:
    [[noreturn]] void Run(std::string const & name)
    {
        const CNamedMutexHandle mutex = Open(name);
        const char taken = TakeNamedMutex(mutex.Get(), 0) ? 1 : 0;
        char byte = 0;
        const bool told = ::write(m_toParent[1], &taken, 1) == 1;
        ::_exit(told && ::read(m_toChild[0], &byte, 1) == 1 ? 0 : 1);
    }
    int m_toChild[2] = {-1, -1};
    int m_toParent[2] = {-1, -1};
    pid_t m_child = 0;
};

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
    COwnerProcess owner(name);
    ASSERT_TRUE(owner.HasTaken());
    const CNamedMutexHandle mutex = Open(name);
    EXPECT_FALSE(TakeNamedMutex(mutex.Get(), 0));
    EXPECT_FALSE(TakeNamedMutex(mutex.Get(), 5));
    owner.End();
    EXPECT_TRUE(TakeNamedMutex(mutex.Get(), 0));
    ReleaseNamedMutex(mutex.Get());
}

TEST(NamedMutexTest, GivesWayToAnotherProcessWhenItsThreadEnded)
{
    const std::string name = UniqueName("given");
    {
        COwnerProcess early(name);
        ASSERT_TRUE(early.HasTaken());
    }
    const CNamedMutexHandle mutex = Open(name);
    std::thread([&] { EXPECT_TRUE(TakeNamedMutex(mutex.Get(), 0)); }).join();
    // A process of its own sees only the lock on the file.
    EXPECT_EQ(0, std::system(("flock -n /dev/shm/kxra-mutex." + name + " true").c_str()));
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
