#include "Platform/Wait.h"

#include <gtest/gtest.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cstdint>

#include "Platform/Waitables.h"

namespace {

using namespace Platform;

TEST(WaitEventTest, DescriptorsNeverTakeThePlaceOfAStandardStream)
{
    // Frees the place of standard input for a moment.
    const int kept = ::dup(STDIN_FILENO);
    ASSERT_GE(kept, 0);
    ::close(STDIN_FILENO);
    {
        const CWaitableHandle event = Event(false, false);
        EXPECT_GT(reinterpret_cast<std::intptr_t>(EventForHost(event.Get())), STDERR_FILENO);
        EXPECT_EQ(-1, ::read(STDIN_FILENO, nullptr, 0)); // and the place is free again
    }
    ::dup2(kept, STDIN_FILENO);
    ::close(kept);
}

TEST(WaitEventTest, TheHostsDescriptorIsReadableWhileSignalledAndReadingConsumes)
{
    const CWaitableHandle event = Event(true, false);
    const int descriptor = static_cast<int>(reinterpret_cast<std::intptr_t>(EventForHost(event.Get())));
    std::uint64_t count = 0;
    EXPECT_EQ(8, ::read(descriptor, &count, sizeof count));
    EXPECT_EQ(WaitResult::Timeout, Look(event));
    EXPECT_EQ(nullptr, EventForHost(nullptr));
}

TEST(WaitEventTest, AdoptedDescriptorIsAnAutoResetEvent)
{
    WaitHandle handle = nullptr;
    const int descriptor = ::eventfd(1, EFD_CLOEXEC); // a blocking one
    ASSERT_EQ(Success, AdoptEvent(handle, reinterpret_cast<void *>(static_cast<std::intptr_t>(descriptor))));
    const CWaitableHandle event(handle);
    EXPECT_EQ(WaitResult::Signaled, Look(event));
    EXPECT_EQ(WaitResult::Timeout, Look(event));
    EXPECT_EQ(Success, SetEvent(event.Get()));
    EXPECT_EQ(WaitResult::Signaled, Look(event));
}

} // namespace
