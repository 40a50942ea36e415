#ifndef TESTS_SUPPORT_DEADLINE_H
#define TESTS_SUPPORT_DEADLINE_H

#include <chrono>
#include <thread>

/// How long a test waits for something that must happen, before it calls it missing.
inline constexpr std::chrono::milliseconds kDeadline{10000};
inline constexpr unsigned int kDeadlineMs = 10000;

/// Looks at the condition until it holds or the time is over. Returns whether it held.
template <class TCondition>
bool HoldsWithin(std::chrono::milliseconds time, TCondition condition)
{
    const auto end = std::chrono::steady_clock::now() + time;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= end) return condition();
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

#endif
