#include "Platform/NamedMutex.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "Platform/Process.h"
#include "Platform/Thread.h"

using namespace Platform;

TEST(NamedMutexTest, NoLaterThreadGetsTheNumberOfAnOwnerThatEnded)
{
    constexpr int enough = 1000; // threads, until the system gives a number away again
    NamedMutexHandle handle = nullptr;
    ASSERT_EQ(Success, NewNamedMutex(handle, ("number-" + std::to_string(CurrentProcessId())).c_str()));
    const CNamedMutexHandle mutex(handle);
    std::uint32_t owner = 0;
    std::thread([&] {
        owner = CurrentThreadId();
        EXPECT_TRUE(TakeNamedMutex(handle, 0));
    }).join();
    int namesakes = 0;
    for (int i = 0; i < enough; ++i)
        std::thread([&] { namesakes += CurrentThreadId() == owner; }).join();
    EXPECT_EQ(0, namesakes);
    EXPECT_TRUE(TakeNamedMutex(handle, 0));
    ReleaseNamedMutex(handle);
}
