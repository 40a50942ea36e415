#include "Platform/Clock.h"

#include <atomic>

#include "System.h"
#include "UnbiasedTime.h"

namespace Platform {

namespace {

constexpr std::uint64_t StepsPerMs = 10000; ///< of 100 ns
/// From 1601-01-01, where the system's file time begins, to 1970-01-01.
constexpr std::uint64_t UnixEpochSteps = 116444736000000000;

using QueryTime = void(WINAPI *)(PULONGLONG steps);

void WINAPI QueryInTicks(PULONGLONG steps)
{
    ::QueryUnbiasedInterruptTime(steps);
}

/// The fine form is newer than the oldest system that this runs on.
QueryTime FindFineQuery() noexcept
{
    const HMODULE library = ::GetModuleHandleA("kernelbase.dll");
    const FARPROC found = library != nullptr ? ::GetProcAddress(library, "QueryUnbiasedInterruptTimePrecise") : nullptr;
    return found != nullptr ? reinterpret_cast<QueryTime>(reinterpret_cast<void (*)()>(found)) : &QueryInTicks;
}

} // namespace

std::uint64_t UnbiasedTime() noexcept
{
    // Found out by each thread that comes before it is known: no lock, and all find the same.
    static constinit std::atomic<QueryTime> known{nullptr};
    QueryTime query = known.load(std::memory_order_relaxed);
    if (query == nullptr) {
        const CLastErrorKeeper keeper;
        query = FindFineQuery();
        known.store(query, std::memory_order_relaxed);
    }
    ULONGLONG steps = 0;
    query(&steps);
    return steps;
}

std::uint64_t MonotonicMs() noexcept
{
    ULONGLONG steps = 0;
    ::QueryUnbiasedInterruptTime(&steps); // GetTickCount64 would count sleep
    return steps / StepsPerMs;
}

std::uint64_t TickCountMs() noexcept
{
    return ::GetTickCount64();
}

std::uint64_t PerformanceCounter() noexcept
{
    LARGE_INTEGER value{};
    ::QueryPerformanceCounter(&value);
    return static_cast<std::uint64_t>(value.QuadPart);
}

std::uint64_t PerformanceFrequency() noexcept
{
    LARGE_INTEGER value{};
    return ::QueryPerformanceFrequency(&value) != 0 ? static_cast<std::uint64_t>(value.QuadPart) : 0;
}

std::uint64_t UnixTimeMs() noexcept
{
    FILETIME now{};
    ::GetSystemTimeAsFileTime(&now);
    const std::uint64_t steps = (std::uint64_t{now.dwHighDateTime} << 32) | now.dwLowDateTime;
    return (steps - UnixEpochSteps) / StepsPerMs;
}

SLocalTime LocalTime() noexcept
{
    SYSTEMTIME now{};
    ::GetLocalTime(&now);
    return {now.wYear, now.wMonth, now.wDay, now.wHour, now.wMinute, now.wSecond, now.wMilliseconds};
}

} // namespace Platform
