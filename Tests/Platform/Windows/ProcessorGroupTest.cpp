#include "Platform/Process.h"

#include <gtest/gtest.h>

#include "Platform/Windows/ReplacedImport.h"

// A machine with more processors than one group holds, which the system numbers from 0 in each.

namespace {

constexpr WORD Groups = 3;
constexpr DWORD Active[Groups] = {64, 48, 64}; ///< processors of each group

PROCESSOR_NUMBER g_current{};

void WINAPI TellProcessor(PPROCESSOR_NUMBER out)
{
    *out = g_current;
}
WORD WINAPI TellGroups()
{
    return Groups;
}
DWORD WINAPI TellActive(WORD group)
{
    return Active[group];
}

class ProcessorGroupTest : public testing::Test {
protected:
    /// The number of the processor that the system calls so; -1 for none.
    static std::int64_t NumberOf(WORD group, BYTE number)
    {
        g_current = {group, number, 0};
        std::uint32_t out = 0;
        return Platform::CurrentProcessor(out) ? std::int64_t{out} : -1;
    }

private:
    const TReplacedImport<decltype(::GetCurrentProcessorNumberEx)> m_number{"GetCurrentProcessorNumberEx",
                                                                            &TellProcessor};
    const TReplacedImport<decltype(::GetActiveProcessorGroupCount)> m_groups{"GetActiveProcessorGroupCount",
                                                                             &TellGroups};
    const TReplacedImport<decltype(::GetActiveProcessorCount)> m_active{"GetActiveProcessorCount", &TellActive};
};

} // namespace

TEST_F(ProcessorGroupTest, ProcessorsAreCountedOnThroughTheGroups)
{
    EXPECT_EQ(0, NumberOf(0, 0));
    EXPECT_EQ(63, NumberOf(0, 63));
    EXPECT_EQ(64, NumberOf(1, 0));
    EXPECT_EQ(64 + 48 + 5, NumberOf(2, 5));
}

TEST_F(ProcessorGroupTest, AGroupThatIsNotThereHasNone)
{
    EXPECT_EQ(-1, NumberOf(3, 0));
}
