#ifndef TESTS_PLATFORM_WINDOWS_CONSOLE_PROCESS_H
#define TESTS_PLATFORM_WINDOWS_CONSOLE_PROCESS_H

#include <gtest/gtest.h>

#include <string>

#include "Platform/Native/SockAddr.h" // the system's interface without its second names for ours
#include "Support/Deadline.h"

/// Runs the calling test in another process of this program, which has a console without a window, since this one may
/// have none and the system may be unable to show one. True in that other process: there the test goes on.
inline bool RunsInAProcessWithConsole()
{
    static constexpr char Mark[] = "KXRA_TEST_HAS_CONSOLE";
    if (::GetEnvironmentVariableA(Mark, nullptr, 0) != 0) return true;
    char program[MAX_PATH] = {};
    ::GetModuleFileNameA(nullptr, program, MAX_PATH);
    testing::TestInfo const & test = *testing::UnitTest::GetInstance()->current_test_info();
    std::string command =
        std::string("\"") + program + "\" --gtest_brief=1 --gtest_filter=" + test.test_suite_name() + "." + test.name();
    STARTUPINFOA how{};
    how.cb = sizeof how;
    PROCESS_INFORMATION process{};
    ::SetEnvironmentVariableA(Mark, "1");
    const BOOL started = ::CreateProcessA(program, command.data(), nullptr, nullptr, /*bInheritHandles=*/FALSE,
                                          CREATE_NO_WINDOW, nullptr, nullptr, &how, &process);
    ::SetEnvironmentVariableA(Mark, nullptr);
    EXPECT_NE(0, started);
    if (started == 0) return false;
    EXPECT_EQ(DWORD{WAIT_OBJECT_0}, ::WaitForSingleObject(process.hProcess, 6 * kDeadlineMs));
    DWORD exitCode = 99;
    ::GetExitCodeProcess(process.hProcess, &exitCode);
    EXPECT_EQ(0u, exitCode) << command;
    ::CloseHandle(process.hThread);
    ::CloseHandle(process.hProcess);
    return false;
}

#endif
