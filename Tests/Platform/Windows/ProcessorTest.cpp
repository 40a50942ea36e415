#include "Platform/Process.h"

#include <gtest/gtest.h>

#include <windows.h>

TEST(ProcessorTest, TheProcessorIsOneOfTheActiveOnesOfAllGroups)
{
    std::uint32_t processor = 0xFFFFFFFF;
    ASSERT_TRUE(Platform::CurrentProcessor(processor));
    EXPECT_LT(processor, ::GetActiveProcessorCount(ALL_PROCESSOR_GROUPS));
}

TEST(ProcessorTest, AProcessThatMayNotBeOpenedTellsWhy)
{
    Platform::ProcessHandle process = nullptr;
    EXPECT_EQ(static_cast<Platform::ErrorCode>(ERROR_INVALID_PARAMETER), Platform::OpenProcess(process, 0));
    EXPECT_EQ(nullptr, process);
}
