#include "Platform/Console.h"

#include <gtest/gtest.h>

#include "Platform/Error.h"

using namespace Platform;

TEST(ConsoleTest, DebuggerLinesNeverShowOnTheStandardStreams)
{
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    SetLastError(4711);
    WriteDebugger("a line\n");
    WriteDebugger("");
    const ErrorCode error = LastError();
    EXPECT_EQ("", testing::internal::GetCapturedStdout());
    EXPECT_EQ("", testing::internal::GetCapturedStderr());
    EXPECT_EQ(4711u, error);
}
