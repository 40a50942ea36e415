#ifndef TESTS_PLATFORM_WINDOWS_CONSOLE_PROCESS_H
#define TESTS_PLATFORM_WINDOWS_CONSOLE_PROCESS_H

#include <gtest/gtest.h>

#include <string>

#include "Support/Deadline.h"
#include "Support/Windows/SystemHandle.h"

/// Runs the calling test in another process of this program, which has a console without a window, since this one may
/// have none and the system may be unable to show one. There the test goes on, while an object of this class stands;
/// here it has failed unless that process has ended well and the test was run there to its end.
class CConsoleProcess {
public:
    CConsoleProcess()
    {
        char name[MAX_PATH] = {};
        if (::GetEnvironmentVariableA(Mark, name, sizeof name) != 0)
            m_end.Reset(::OpenEventA(EVENT_MODIFY_STATE, /*bInheritHandle=*/FALSE, name));
        else
            RunThere();
    }
    ~CConsoleProcess()
    {
        if (IsThis()) ::SetEvent(m_end.Get());
    }
    CConsoleProcess(CConsoleProcess const &) = delete;
    CConsoleProcess & operator=(CConsoleProcess const &) = delete;

    /// Whether this is the other process.
    bool IsThis() const { return static_cast<bool>(m_end); }

private:
    static constexpr char Mark[] = "KXRA_TEST_HAS_CONSOLE"; ///< names the event that says: run to its end

    static void RunThere()
    {
        const std::string name = "KxraConsoleTest" + std::to_string(::GetCurrentProcessId());
        const CSystemHandle end(::CreateEventA(nullptr, /*bManualReset=*/TRUE, /*bInitialState=*/FALSE, name.c_str()));
        ASSERT_TRUE(static_cast<bool>(end)) << ::GetLastError();
        ::SetEnvironmentVariableA(Mark, name.c_str());
        const CSystemHandle process = Start();
        ::SetEnvironmentVariableA(Mark, nullptr);
        ASSERT_TRUE(static_cast<bool>(process)) << ::GetLastError();
        EXPECT_EQ(DWORD{WAIT_OBJECT_0}, ::WaitForSingleObject(process.Get(), 6 * kDeadlineMs));
        DWORD exitCode = 99;
        ::GetExitCodeProcess(process.Get(), &exitCode);
        EXPECT_EQ(0u, exitCode);
        EXPECT_EQ(DWORD{WAIT_OBJECT_0}, ::WaitForSingleObject(end.Get(), 0)) << "the test was not run to its end there";
    }
    static CSystemHandle Start()
    {
        char program[MAX_PATH] = {};
        ::GetModuleFileNameA(nullptr, program, MAX_PATH);
        testing::TestInfo const & test = *testing::UnitTest::GetInstance()->current_test_info();
        std::string command = std::string("\"") + program +
                              "\" --gtest_brief=1 --gtest_filter=" + test.test_suite_name() + "." + test.name();
        STARTUPINFOA how{};
        how.cb = sizeof how;
        PROCESS_INFORMATION process{};
        if (::CreateProcessA(program, command.data(), nullptr, nullptr, /*bInheritHandles=*/FALSE, CREATE_NO_WINDOW,
                             nullptr, nullptr, &how, &process) == FALSE)
            return CSystemHandle();
        ::CloseHandle(process.hThread);
        return CSystemHandle(process.hProcess);
    }

    CSystemHandle m_end;
};

#endif
