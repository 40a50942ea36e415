#include "Platform/Signals.h"

#include <gtest/gtest.h>

#include "Platform/Windows/ConsoleProcess.h"

using namespace Platform;

TEST(StopRequestsTest, ControlCIsARequestAndNoEnd)
{
    if (!RunsInAProcessWithConsole()) return;
    static const CWakeUp wakeUp;
    ASSERT_EQ(Success, WatchStopRequests(wakeUp));
    ::SetConsoleCtrlHandler(nullptr, FALSE); // a parent may have had Ctrl-C ignored
    EXPECT_FALSE(StopRequested());
    ASSERT_NE(0, ::GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0)) << ::GetLastError();
    EXPECT_TRUE(HoldsWithin(kDeadline, [] { return StopRequested(); }));
    EXPECT_TRUE(HoldsWithin(kDeadline, [] { return ReadableNow(wakeUp.Descriptor(), -1) == 1u; }));
}
