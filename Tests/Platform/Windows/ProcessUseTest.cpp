#include "Platform/Process.h"

#include <gtest/gtest.h>

#include "Platform/Native/SockAddr.h"

#include <windows.h>

#include <psapi.h>

using namespace Platform;

namespace {

constexpr double kMiB = 1 << 20;

} // namespace

TEST(ProcessUseTest, MemoryIsAsTheSystemTellsWhereWineKnowsNoPrivateBytes)
{
    PROCESS_MEMORY_COUNTERS_EX counters{};
    ASSERT_NE(FALSE, ::GetProcessMemoryInfo(::GetCurrentProcess(),
                                            reinterpret_cast<PROCESS_MEMORY_COUNTERS *>(&counters), sizeof counters));
    std::uint64_t privateBytes = 1;
    std::uint64_t workingSet = 1;
    ASSERT_TRUE(MemoryUse(privateBytes, workingSet));
    EXPECT_NEAR(static_cast<double>(counters.PrivateUsage), static_cast<double>(privateBytes), kMiB);
    EXPECT_NEAR(static_cast<double>(counters.WorkingSetSize), static_cast<double>(workingSet), kMiB);
}

TEST(ProcessUseTest, HandlesAreAsManyAsTheSystemTellsWhereWineCountsNone)
{
    DWORD known = 1;
    ASSERT_NE(FALSE, ::GetProcessHandleCount(::GetCurrentProcess(), &known));
    std::uint32_t count = 1;
    ASSERT_TRUE(HandleCount(count));
    EXPECT_EQ(known, count);
}

TEST(ProcessUseTest, TheProcessorIsOneOfTheActiveOnesOfAllGroups)
{
    std::uint32_t processor = 0xFFFFFFFF;
    ASSERT_TRUE(CurrentProcessor(processor));
    EXPECT_LT(processor, ::GetActiveProcessorCount(ALL_PROCESSOR_GROUPS));
}

TEST(ProcessUseTest, ChildProcessesInheritNoHandleOfAProcess)
{
    ProcessHandle process = nullptr;
    ASSERT_EQ(Success, OpenProcess(process, CurrentProcessId()));
    const CProcessHandle owner(process);
    DWORD flags = HANDLE_FLAG_INHERIT;
    EXPECT_NE(0, ::GetHandleInformation(reinterpret_cast<HANDLE>(process), &flags));
    EXPECT_EQ(0u, flags & HANDLE_FLAG_INHERIT);
}

TEST(ProcessUseTest, TheIdleProcessCannotBeOpened)
{
    ProcessHandle process = nullptr;
    EXPECT_EQ(static_cast<ErrorCode>(ERROR_INVALID_PARAMETER), OpenProcess(process, 0));
    EXPECT_EQ(nullptr, process);
}
