#include "Platform/Signals.h"

#include <atomic>
#include <cerrno>
#include <csignal>

namespace Platform {

namespace {
std::atomic<bool> g_stopRequested{false};
std::atomic<CWakeUp const *> g_wakeUp{nullptr};

void OnStopSignal(int) noexcept
{
    g_stopRequested.store(true, std::memory_order_relaxed);
    if (CWakeUp const * wakeUp = g_wakeUp.load(std::memory_order_relaxed)) wakeUp->Signal();
}
} // namespace

ErrorCode WatchStopRequests(CWakeUp const & wakeUp) noexcept
{
    g_wakeUp.store(&wakeUp, std::memory_order_relaxed);
    struct sigaction action {};
    action.sa_handler = OnStopSignal;
    ::sigemptyset(&action.sa_mask);
    for (const int signal : {SIGTERM, SIGINT})
        if (::sigaction(signal, &action, nullptr) != 0) return static_cast<ErrorCode>(errno);
    return Success;
}

bool StopRequested() noexcept
{
    return g_stopRequested.load(std::memory_order_relaxed);
}

void IgnoreBrokenPipes() noexcept
{
    ::signal(SIGPIPE, SIG_IGN);
}

} // namespace Platform
