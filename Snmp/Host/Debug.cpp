#include "Snmp/Host/Debug.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <type_traits>

#include "Platform/Clock.h"
#include "Platform/Error.h"
#include "Platform/Process.h"
#include "Platform/Thread.h"
#include "Snmp/Host/DebugState.h"

constinit std::atomic<std::int32_t> CDebug::m_enabled{0};

namespace {

constexpr char TooSmall[] = "\n################# CDebug::Trace() - BUFFER TOO SMALL - FIXME! #################";
constexpr std::string_view Exception = "\n\n################# EXCEPTION in CDebug::Trace() #################\n";

constinit CDebugState g_state;
static_assert(std::is_trivially_destructible_v<CDebugState>, "it is used behind the static destructors");

/// One trace text in the making: newlines, stamps, message. Never longer than its room; NUL-terminated.
class CTraceText {
public:
    explicit CTraceText(char * buffer) noexcept : m_buffer(buffer) { m_buffer[0] = '\0'; }

    /// Takes the newlines at the start of the format; returns what is behind them.
    char const * TakeNewlines(char const * format) noexcept
    {
        while (*format == '\n' && m_size < TraceBufferRoom - 1) {
            m_buffer[m_size++] = '\n';
            ++format;
        }
        m_buffer[m_size] = '\0';
        return format;
    }

    void Stamp(char const * format, ...) noexcept PLATFORM_PRINTF(2, 3)
    {
        std::va_list arguments;
        va_start(arguments, format);
        const int size = std::vsnprintf(m_buffer + m_size, Room(), format, arguments);
        va_end(arguments);
        if (size > 0) m_size += std::min(static_cast<std::size_t>(size), Room() - 1);
    }

    void StampName(std::string const & name) noexcept
    {
        const std::size_t start = m_size;
        Stamp("%-13s  ", name.c_str());
        if (start + name.size() < m_size) m_buffer[start + name.size()] = ':';
    }

    /// A message that doesn't fit whole stands, cut, behind a mark that replaces everything before it.
    void Message(char const * format, std::va_list arguments) noexcept PLATFORM_PRINTF(2, 0)
    {
        std::va_list again;
        va_copy(again, arguments);
        const int size = std::vsnprintf(m_buffer + m_size, Room(), format, arguments);
        if (size < 0) {
            m_buffer[m_size] = '\0'; // a message that can't be formatted
        } else if (static_cast<std::size_t>(size) >= Room()) {
            std::memcpy(m_buffer, TooSmall, sizeof TooSmall);
            m_size = sizeof TooSmall - 1;
            std::vsnprintf(m_buffer + m_size, Room(), format, again);
        }
        va_end(again);
        m_size = std::strlen(m_buffer);
    }

    char const * Text() const noexcept { return m_buffer; }
    std::size_t Size() const noexcept { return m_size; }

private:
    /// Bytes left, the NUL's one among them.
    std::size_t Room() const noexcept { return TraceBufferRoom - m_size; }

    char * m_buffer;
    std::size_t m_size = 0;
};

void StampDate(CTraceText & text)
{
    const Platform::SLocalTime now = Platform::LocalTime();
    text.Stamp("[%02d-%02d-%02d] ", static_cast<int>(now.year), static_cast<int>(now.month), static_cast<int>(now.day));
}

void StampTime(CTraceText & text)
{
    const Platform::SLocalTime now = Platform::LocalTime();
    text.Stamp("[%02d:%02d:%02d.%03d] ", static_cast<int>(now.hour), static_cast<int>(now.minute),
               static_cast<int>(now.second), static_cast<int>(now.millisecond));
}

void StampThread(CTraceText & text)
{
    text.Stamp("(%06d) ", static_cast<int>(Platform::CurrentThreadId()));
}

void StampProcessor(CTraceText & text)
{
    std::uint32_t number = 0;
    if (Platform::CurrentProcessor(number)) text.Stamp("#%02d ", static_cast<int>(number));
}

void StampMemory(CTraceText & text)
{
    std::uint64_t privateBytes = 0;
    std::uint64_t workingSet = 0;
    if (Platform::MemoryUse(privateBytes, workingSet))
        text.Stamp("{PB %05dkB, MU %05dkB} ", static_cast<int>(privateBytes >> 10), static_cast<int>(workingSet >> 10));
}

void StampHandles(CTraceText & text)
{
    std::uint32_t count = 0;
    if (Platform::HandleCount(count)) text.Stamp("{%03d H} ", static_cast<int>(count));
}

void StampAppName(CTraceText & text)
{
    text.StampName(g_state.AppName());
}

struct SStamp {
    DebugSwitch which;
    void (*write)(CTraceText & text);
};
/// In the order in which they stand in a line.
constexpr SStamp Stamps[] = {{DebugSwitch::DateStamp, StampDate},  {DebugSwitch::TimeStamp, StampTime},
                             {DebugSwitch::ThreadId, StampThread}, {DebugSwitch::CpuId, StampProcessor},
                             {DebugSwitch::MemUsage, StampMemory}, {DebugSwitch::HandleCount, StampHandles},
                             {DebugSwitch::AppName, StampAppName}};

void WriteTrace(std::uint32_t level, char const * format, std::va_list arguments)
{
    const std::unique_ptr<char[]> buffer(new (std::nothrow) char[TraceBufferRoom]);
    if (!buffer) return;
    CTraceText text(buffer.get());
    char const * const message = text.TakeNewlines(format);
    for (SStamp const & stamp : Stamps)
        if (g_state.IsOn(stamp.which)) stamp.write(text);
    text.Message(message, arguments);
    g_state.Write(level, text.Text(), text.Size());
}

void RefreshQuietly() noexcept
{
    try {
        g_state.Refresh();
    } catch (...) {
        // Without memory the old settings stay, until the next call.
    }
}

void TraceBanner(char const * appName) noexcept
{
    const Platform::SLocalTime now = Platform::LocalTime();
    CDebug::Trace(1, "\n\n----- Application [%s] started at %02d:%02d:%02d %02d/%02d/%02d -----\n", appName,
                  static_cast<int>(now.hour), static_cast<int>(now.minute), static_cast<int>(now.second),
                  static_cast<int>(now.month), static_cast<int>(now.day), static_cast<int>(now.year));
}

/// Sets the trace up without a name when the library is loaded, and gives its mutex up when the library goes.
struct SDebugLife {
    SDebugLife() { CDebug::Init("", /*writeBanner=*/false); }
    ~SDebugLife() { g_state.Shutdown(); }
};
const SDebugLife g_life;

} // namespace

void CDebug::Init(char const * appName, bool writeBanner) noexcept
{
    try {
        g_state.Reset(appName);
        if (appName == nullptr) return;
        g_state.ReadRegistry();
        if (Enabled() && writeBanner) TraceBanner(g_state.AppName().c_str());
    } catch (...) {
        // Without memory there is no trace.
    }
}

void CDebug::Trace(unsigned level, char const * format, ...) noexcept
{
    std::va_list arguments;
    va_start(arguments, format);
    TraceArguments(level, format, arguments);
    va_end(arguments);
}

void CDebug::TraceArguments(unsigned level, char const * format, std::va_list arguments) noexcept
{
    const Platform::ErrorCode lastError = Platform::LastError();
    RefreshQuietly();
    const std::uint32_t wanted = level != 0 ? level : 1;
    if (g_state.Wants(wanted)) {
        try {
            WriteTrace(wanted, format, arguments);
        } catch (...) {
            g_state.WriteWhatGoes(wanted, Exception);
            return; // the last error is left as it is now
        }
    }
    Platform::SetLastError(lastError);
}
