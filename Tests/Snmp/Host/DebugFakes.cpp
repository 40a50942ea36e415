#include "DebugFakes.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <mutex>
#include <new>

#include "Platform/Console.h"

namespace {

constinit std::atomic<std::uint64_t> g_tickMs{0};
constinit std::atomic<bool> g_consoleAllowed{true};
constinit std::atomic<unsigned> g_consolesOpened{0};
constinit std::atomic<std::size_t> g_failFrom{0};
constinit std::atomic<int> g_failTimes{0};

std::mutex g_lock; // guards what follows
Platform::SLocalTime g_localTime{};
std::string g_console;
std::vector<std::string> g_debugger;

bool IsToFail(std::size_t size) noexcept
{
    return g_failTimes > 0 && size >= g_failFrom && g_failTimes-- > 0;
}

} // namespace

// All forms, since a sanitizer brings its own of those that are left out.

void * operator new(std::size_t size, std::nothrow_t const &) noexcept
{
    void * const block = IsToFail(size) ? nullptr : std::malloc(size != 0 ? size : 1);
    if (block == nullptr) errno = ENOMEM;
    return block;
}

void * operator new[](std::size_t size, std::nothrow_t const &) noexcept
{
    return operator new(size, std::nothrow);
}

void * operator new(std::size_t size)
{
    void * const block = operator new(size, std::nothrow);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}

void * operator new[](std::size_t size)
{
    return operator new(size);
}

void operator delete(void * block) noexcept
{
    std::free(block);
}

void operator delete[](void * block) noexcept
{
    std::free(block);
}

void operator delete(void * block, std::size_t) noexcept
{
    std::free(block);
}

void operator delete[](void * block, std::size_t) noexcept
{
    std::free(block);
}

std::uint64_t Platform::MonotonicMs() noexcept
{
    using namespace std::chrono;
    return static_cast<std::uint64_t>(duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count());
}

std::uint64_t Platform::TickCountMs() noexcept
{
    return g_tickMs;
}

std::uint64_t Platform::PerformanceCounter() noexcept
{
    return MonotonicMs();
}

std::uint64_t Platform::PerformanceFrequency() noexcept
{
    return 1000;
}

std::uint64_t Platform::UnixTimeMs() noexcept
{
    return g_tickMs;
}

Platform::SLocalTime Platform::LocalTime() noexcept
{
    const std::lock_guard lock(g_lock);
    return g_localTime;
}

bool Platform::OpenConsole() noexcept
{
    if (!g_consoleAllowed) return false;
    ++g_consolesOpened;
    return true;
}

void Platform::WriteConsole(char const * text, std::size_t size) noexcept
{
    const std::lock_guard lock(g_lock);
    g_console.append(text, size);
}

void Platform::WriteDebugger(char const * text) noexcept
{
    const std::lock_guard lock(g_lock);
    g_debugger.emplace_back(text);
}

void DebugFakes::SetTickMs(std::uint64_t milliseconds)
{
    g_tickMs = milliseconds;
}

void DebugFakes::SetLocalTime(Platform::SLocalTime const & time)
{
    const std::lock_guard lock(g_lock);
    g_localTime = time;
}

void DebugFakes::AllowConsole(bool allowed)
{
    g_consoleAllowed = allowed;
}

unsigned DebugFakes::ConsolesOpened()
{
    return g_consolesOpened;
}

std::string DebugFakes::ConsoleText()
{
    const std::lock_guard lock(g_lock);
    return g_console;
}

std::vector<std::string> DebugFakes::DebuggerLines()
{
    const std::lock_guard lock(g_lock);
    return g_debugger;
}

void DebugFakes::ClearOutputs()
{
    const std::lock_guard lock(g_lock);
    g_console.clear();
    g_debugger.clear();
}

void DebugFakes::FailAllocations(std::size_t bytes, int times)
{
    g_failFrom = bytes;
    g_failTimes = times;
}
