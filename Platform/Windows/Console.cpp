#include "Platform/Console.h"

#include <atomic>

#include "System.h"

namespace {

/// The output of the console that OpenConsole found. Relaxed: the handle is all there is to it.
constinit std::atomic<HANDLE> g_output{nullptr};

} // namespace

bool Platform::OpenConsole() noexcept
{
    const CLastErrorKeeper keeper;
    ::AllocConsole(); // fails where the process has one
    const HANDLE output = ::GetStdHandle(STD_OUTPUT_HANDLE);
    const bool there = output != nullptr && output != INVALID_HANDLE_VALUE;
    g_output.store(there ? output : nullptr, std::memory_order_relaxed);
    return there;
}

void Platform::WriteConsole(char const * text, std::size_t size) noexcept
{
    const CLastErrorKeeper keeper;
    const HANDLE output = g_output.load(std::memory_order_relaxed);
    DWORD written = 0;
    if (output != nullptr) ::WriteConsoleA(output, text, static_cast<DWORD>(size), &written, nullptr);
}

void Platform::WriteDebugger(char const * text) noexcept
{
    const CLastErrorKeeper keeper;
    ::OutputDebugStringA(text);
}
