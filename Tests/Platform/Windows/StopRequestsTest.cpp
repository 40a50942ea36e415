#include "Platform/Signals.h"

#include <gtest/gtest.h>

#include <vector>

#include "Native/Wine.h"
#include "Platform/Windows/ConsoleProcess.h"
#include "Platform/Windows/ReplacedImport.h"

using namespace Platform;

namespace {

CWakeUp const & WakeUp()
{
    static const CWakeUp wakeUp; // as long as the process
    return wakeUp;
}

/// What a console event does to a process that watches for requests.
void ExpectARequestAndNoEnd(DWORD event)
{
    ASSERT_EQ(Success, WatchStopRequests(WakeUp()));
    ::SetConsoleCtrlHandler(nullptr, FALSE); // a parent may have had Ctrl-C ignored
    EXPECT_FALSE(StopRequested());
    ASSERT_NE(0, ::GenerateConsoleCtrlEvent(event, 0)) << ::GetLastError();
    EXPECT_TRUE(HoldsWithin(kDeadline, [] { return StopRequested(); }));
    EXPECT_TRUE(HoldsWithin(kDeadline, [] { return ReadableNow(WakeUp().Descriptor(), -1) == 1u; }));
}

PHANDLER_ROUTINE g_handler = nullptr;
std::vector<DWORD> g_sleeps; ///< how long the handler wanted to sleep

BOOL WINAPI KeepHandler(PHANDLER_ROUTINE handler, BOOL)
{
    g_handler = handler;
    return TRUE;
}

BOOL WINAPI RefuseHandler(PHANDLER_ROUTINE, BOOL)
{
    ::SetLastError(ERROR_ACCESS_DENIED);
    return FALSE;
}

void WINAPI SleepNoted(DWORD ms)
{
    g_sleeps.push_back(ms);
}

} // namespace

TEST(StopRequestsTest, ControlCIsARequestAndNoEnd)
{
    const CConsoleProcess process;
    if (process.IsThis()) ExpectARequestAndNoEnd(CTRL_C_EVENT);
}

TEST(StopRequestsTest, ControlBreakIsARequestAndNoEndWhichWineCannotShow)
{
    if (RunsUnderWine()) GTEST_SKIP() << "Wine sends nobody a Ctrl-Break";
    const CConsoleProcess process;
    if (process.IsThis()) ExpectARequestAndNoEnd(CTRL_BREAK_EVENT);
}

TEST(StopRequestsTest, OnlyTheHandlerOfAnEndKeepsTheSystemWaitingAndForGood)
{
    const CConsoleProcess process; // where a request is nothing to other tests
    if (!process.IsThis()) return;
    const TReplacedImport<decltype(::SetConsoleCtrlHandler)> kept("SetConsoleCtrlHandler", &KeepHandler);
    const TReplacedImport<decltype(::Sleep)> noted("Sleep", &SleepNoted);
    ASSERT_EQ(Success, WatchStopRequests(WakeUp()));
    ASSERT_NE(nullptr, g_handler);
    for (const DWORD event : {DWORD{CTRL_C_EVENT}, DWORD{CTRL_BREAK_EVENT}})
        EXPECT_NE(FALSE, g_handler(event));
    EXPECT_EQ(std::vector<DWORD>(), g_sleeps);
    for (const DWORD event : {DWORD{CTRL_CLOSE_EVENT}, DWORD{CTRL_LOGOFF_EVENT}, DWORD{CTRL_SHUTDOWN_EVENT}})
        g_handler(event);
    EXPECT_EQ(std::vector<DWORD>(3, INFINITE), g_sleeps);
    EXPECT_TRUE(StopRequested());
}

TEST(StopRequestsTest, AHandlerThatTheSystemRefusesIsAnError)
{
    const CConsoleProcess process;
    if (!process.IsThis()) return;
    const TReplacedImport<decltype(::SetConsoleCtrlHandler)> refused("SetConsoleCtrlHandler", &RefuseHandler);
    EXPECT_EQ(ErrorAccessDenied(), WatchStopRequests(WakeUp()));
}
