#include "Fake/Debug.h"

#include <cstdio>
#include <mutex>

#include "Snmp/Host/Debug.h"

std::atomic<std::int32_t> CDebug::m_enabled{0};

/// Has the right to switch the trace on, which only CDebug's own set-up has otherwise.
class CDebugSetup {
public:
    static void Enable(bool enabled) { CDebug::m_enabled.store(enabled ? 1 : 0, std::memory_order_relaxed); }
};

namespace {

std::mutex g_lock; // guards both
std::vector<Fake::STraceLine> g_lines;
std::string g_lastInit;

} // namespace

void CDebug::TraceArguments(unsigned level, char const * format, std::va_list arguments) noexcept
try {
    std::va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, again);
    va_end(again);
    std::string text(static_cast<std::size_t>(length), '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, arguments);
    const std::lock_guard<std::mutex> lock(g_lock);
    g_lines.push_back({level, std::move(text)});
} catch (...) {
    // No memory for the line: it is lost, as in the real trace.
}

void CDebug::Trace(unsigned level, char const * format, ...) noexcept
{
    std::va_list arguments;
    va_start(arguments, format);
    TraceArguments(level, format, arguments);
    va_end(arguments);
}

void CDebug::Init(char const * appName, bool writeBanner) noexcept
try {
    const std::lock_guard<std::mutex> lock(g_lock);
    g_lastInit = appName != nullptr ? appName : "";
    if (writeBanner) g_lastInit += " (banner)";
} catch (...) {
    // No memory for the name: the old one stays.
}

void Fake::EnableTrace(bool enabled)
{
    CDebugSetup::Enable(enabled);
}

std::vector<Fake::STraceLine> Fake::TraceLines()
{
    const std::lock_guard<std::mutex> lock(g_lock);
    return g_lines;
}

void Fake::ClearTrace()
{
    const std::lock_guard<std::mutex> lock(g_lock);
    g_lines.clear();
}

std::string Fake::LastTraceInit()
{
    const std::lock_guard<std::mutex> lock(g_lock);
    return g_lastInit;
}
