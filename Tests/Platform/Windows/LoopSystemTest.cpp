#include "Platform/LoopEvents.h"

#include <gtest/gtest.h>

#include "Platform/Windows/ReplacedImport.h"

namespace {

LONGLONG g_due = 0;
bool g_plain = false; ///< rings once, calls nobody and wakes no machine

BOOL WINAPI KeepDue(HANDLE, LARGE_INTEGER const * due, LONG period, PTIMERAPCROUTINE call, LPVOID, BOOL resume)
{
    g_due = due->QuadPart;
    g_plain = period == 0 && call == nullptr && resume == FALSE;
    return TRUE;
}

SHORT g_seen = 0; ///< of a socket

int WSAAPI PollSeen(LPWSAPOLLFD polled, ULONG, INT)
{
    polled->revents = g_seen;
    return g_seen != 0 ? 1 : 0;
}

} // namespace

TEST(LoopSystemTest, AnAlarmIsSetInTheSystemsStepsFromNowOn)
{
    const Platform::CAlarmClock clock;
    const TReplacedImport<decltype(::SetWaitableTimer)> kept("SetWaitableTimer", &KeepDue);
    clock.Arm(1);
    EXPECT_EQ(-10000, g_due);
    EXPECT_TRUE(g_plain);
    clock.Arm(0xFFFFFFFF);
    EXPECT_EQ(-10000 * 0xFFFFFFFFll, g_due);
    clock.Arm(0);
    EXPECT_LE(g_due, 0);
}

TEST(LoopSystemTest, WhatHungUpIsReadable)
{
    const Platform::CWakeUp wakeUp;
    const TReplacedImport<decltype(::WSAPoll)> polled("WSAPoll", &PollSeen);
    for (const auto & [seen, readable] : {std::pair{0, 0u}, std::pair{POLLRDNORM, 1u}, std::pair{POLLHUP, 1u}}) {
        g_seen = static_cast<SHORT>(seen);
        EXPECT_EQ(readable, Platform::ReadableNow(wakeUp.Descriptor(), -1)) << seen;
    }
}
