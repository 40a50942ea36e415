#include "Platform/Process.h"

#include <gtest/gtest.h>

#include "Platform/Native/SockAddr.h"

#include <windows.h>

#define PSAPI_VERSION 1 // or names of ours are macros for the same names in kernel32
#include <psapi.h>

#include "Platform/Windows/ReplacedImport.h"

using namespace Platform;

namespace {

constexpr double kMiB = 1 << 20;

using EnumerateFn = BOOL WINAPI(DWORD *, DWORD, DWORD *);

/// What all processes would need, and not what was written.
BOOL WINAPI EnumerateMore(DWORD * ids, DWORD room, DWORD * needed)
{
    for (DWORD i = 0; i < room / sizeof *ids; ++i)
        ids[i] = i + 1;
    *needed = 2 * room;
    return TRUE;
}

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

TEST(ProcessUseTest, NoMoreProcessesAreToldThanHadRoom)
{
    const TReplacedImport<EnumerateFn> more("EnumProcesses", &EnumerateMore);
    std::uint32_t ids[4] = {};
    std::uint32_t count = 0;
    EXPECT_EQ(Success, Platform::EnumProcesses(ids, 4, count));
    EXPECT_EQ(4u, count);
    EXPECT_EQ(4u, ids[3]);
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
