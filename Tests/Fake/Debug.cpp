#include "Fake/Debug.h"

#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <utility>

#include "Snmp/Host/Debug.h"

namespace {

std::mutex g_lock; // for g_lines
std::vector<FakeDebug::SLine> g_lines;

} // namespace

std::atomic<std::int32_t> CDebug::m_enabled{0};

/// The setter of the private word, by the friendship that the real trace's set-up has.
class CDebugSetup {
public:
    static void Enable(bool enabled) { CDebug::m_enabled.store(enabled ? 1 : 0, std::memory_order_relaxed); }
};

void CDebug::Trace(unsigned level, char const * format, ...) noexcept
{
    std::va_list arguments;
    va_start(arguments, format);
    TraceArguments(level, format, arguments);
    va_end(arguments);
}

void CDebug::TraceArguments(unsigned level, char const * format, std::va_list arguments) noexcept
{
    std::va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, again);
    va_end(again);
    std::string text(static_cast<std::size_t>(length < 0 ? 0 : length) + 1, '\0');
    std::vsnprintf(text.data(), text.size(), format, arguments);
    text.pop_back();
    const std::lock_guard lock(g_lock);
    g_lines.push_back({level, std::move(text)});
}

void CDebug::Init(char const *, bool) noexcept {}

void FakeDebug::Enable(bool enabled)
{
    CDebugSetup::Enable(enabled);
}

std::vector<FakeDebug::SLine> FakeDebug::Take(unsigned highestLevel)
{
    const std::lock_guard lock(g_lock);
    std::vector<SLine> lines = std::exchange(g_lines, {});
    std::erase_if(lines, [highestLevel](SLine const & line) { return line.level > highestLevel; });
    return lines;
}

std::vector<std::string> FakeDebug::Texts(unsigned level)
{
    const std::lock_guard lock(g_lock);
    std::vector<std::string> texts;
    for (SLine const & line : g_lines) {
        if (line.level == level) texts.push_back(line.text);
    }
    return texts;
}
