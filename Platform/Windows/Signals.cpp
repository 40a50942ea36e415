#include "Platform/Signals.h"

#include <atomic>

#include "System.h"

namespace Platform {

namespace {

std::atomic<bool> g_stopRequested{false};
std::atomic<CWakeUp const *> g_wakeUp{nullptr};

/// Runs on a thread of its own.
BOOL WINAPI OnConsoleEvent(DWORD event)
{
    g_stopRequested.store(true, std::memory_order_relaxed);
    if (CWakeUp const * wakeUp = g_wakeUp.load(std::memory_order_relaxed)) wakeUp->Signal();
    // Behind the return from the others the system ends the process: until then it gives some seconds' time.
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) ::Sleep(INFINITE);
    return TRUE;
}

} // namespace

ErrorCode WatchStopRequests(CWakeUp const & wakeUp) noexcept
{
    g_wakeUp.store(&wakeUp, std::memory_order_relaxed);
    return ::SetConsoleCtrlHandler(&OnConsoleEvent, TRUE) != 0 ? Success : LastError();
}

bool StopRequested() noexcept
{
    return g_stopRequested.load(std::memory_order_relaxed);
}

void IgnoreBrokenPipes() noexcept {}

} // namespace Platform
