#ifndef TESTS_PLATFORM_STARTED_THREADS_H
#define TESTS_PLATFORM_STARTED_THREADS_H

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

#include "Native/Wine.h"
#include "Platform/Thread.h"
#include "Support/Deadline.h"

/// A thread of ours with its body's argument.
struct SStarted {
    Platform::CWaitableHandle handle;
    std::uint32_t id = 0;
};

inline SStarted Start(Platform::ThreadEntry entry, void * argument, bool suspended = false,
                      std::uint32_t stackBytes = 0)
{
    SStarted started;
    Platform::WaitHandle handle = nullptr;
    EXPECT_EQ(Platform::Success, Platform::StartThread(handle, started.id, entry, argument, stackBytes, suspended));
    started.handle.Reset(handle);
    return started;
}

inline Platform::WaitResult AwaitEnd(SStarted const & thread, std::uint32_t timeoutMs = kDeadlineMs)
{
    return Platform::WaitForOne(thread.handle.Get(), timeoutMs, false).result;
}

inline std::uint32_t ExitCode(SStarted const & thread)
{
    std::uint32_t code = 0;
    EXPECT_EQ(Platform::Success, Platform::ThreadExitCode(thread.handle.Get(), code));
    return code;
}

inline Platform::CWaitableHandle ManualEvent()
{
    Platform::WaitHandle handle = nullptr;
    EXPECT_EQ(Platform::Success, Platform::NewEvent(handle, false, /*manualReset=*/true));
    return Platform::CWaitableHandle(handle);
}

/// Behind the end of a thread that never began, Wine refuses one of the next starts now and then. It shall not be one
/// of another test's.
inline void StartThreadsThatWineMayRefuse()
{
    for (int i = 0; RunsUnderWine() && i < 20; ++i) {
        Platform::WaitHandle handle = nullptr;
        std::uint32_t id = 0;
        const auto body = [](void *) noexcept -> std::uint32_t { return 0; };
        if (Platform::StartThread(handle, id, body, nullptr, 0, /*suspended=*/false) != Platform::Success) continue;
        const Platform::CWaitableHandle thread(handle);
        Platform::WaitForOne(handle, kDeadlineMs, false);
    }
}

/// A body that ends with the event.
inline std::uint32_t WaitForIt(void * event) noexcept
{
    return Platform::WaitForOne(static_cast<Platform::WaitHandle>(event), kDeadlineMs, false).result ==
                   Platform::WaitResult::Signaled
               ? 1
               : 2;
}

/// What an abandoned thread of a test works with.
struct SAbandoned {
    Platform::CWaitableHandle begun = ManualEvent();
    Platform::CWaitableHandle never = ManualEvent();
    Platform::CWaitableHandle goOn = ManualEvent();
    Platform::CWaitableHandle mutex;
    std::atomic<bool> spin{true};
    std::atomic<int> behindTheWait{0};
    std::atomic<bool> ended{false};
};

/// Outlives the test, as the thread may do.
inline SAbandoned * NewAbandoned()
{
    static std::vector<std::unique_ptr<SAbandoned>> * const all = new std::vector<std::unique_ptr<SAbandoned>>;
    all->push_back(std::make_unique<SAbandoned>());
    return all->back().get();
}

#endif
