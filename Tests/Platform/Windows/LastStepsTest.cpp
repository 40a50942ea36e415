#include "Platform/Thread.h"

#include <gtest/gtest.h>

#include "Platform/StartedThreads.h"
#include "Platform/Windows/ReplacedImport.h"

// A thread that was ended by force may still be on its way out when the system's call returns.

namespace {

using Platform::Success;
using Platform::WaitResult;

using WaitFn = decltype(::WaitForSingleObject);

WaitFn * g_wait = nullptr;
Platform::WaitHandle g_lastStep = nullptr; ///< lets the thread go

BOOL WINAPI OrderTheEnd(HANDLE, DWORD)
{
    return TRUE;
}
DWORD WINAPI WaitWhileItGoes(HANDLE handle, DWORD ms)
{
    if (ms != 0) Platform::SetEvent(g_lastStep);
    return g_wait(handle, ms);
}

} // namespace

TEST(LastStepsTest, AThreadThatWasEndedByForceIsGoneWhenTheCallReturns)
{
    const Platform::CWaitableHandle lastStep = ManualEvent();
    g_lastStep = lastStep.Get();
    const SStarted thread = Start(&WaitForIt, lastStep.Get());
    {
        const TReplacedImport<decltype(::TerminateThread)> ordered("TerminateThread", &OrderTheEnd);
        const TReplacedImport<WaitFn> watched("WaitForSingleObject", &WaitWhileItGoes);
        g_wait = watched.System();
        EXPECT_EQ(Success, Platform::TerminateThread(thread.handle.Get(), 1));
    }
    EXPECT_EQ(WaitResult::Signaled, AwaitEnd(thread, 0));
    Platform::SetEvent(lastStep.Get());
    EXPECT_EQ(WaitResult::Signaled, AwaitEnd(thread));
}
