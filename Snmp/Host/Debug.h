#ifndef SNMP_HOST_DEBUG_H
#define SNMP_HOST_DEBUG_H

#include <atomic>
#include <cstdarg>
#include <cstdint>

#include "Platform/Attributes.h"

/// The agent's own diagnostic trace, one for the process.
///
/// Configured from the registry alone: "SOFTWARE\Debug" and its subkey named after the application. Writes to a
/// file, a console and the system's debugger, each up to its own level, with optional stamps ahead of the text.
/// Never disturbs its caller: keeps the thread's last error and lets no exception out.
///
/// Levels: 1 milestones and errors, 2 requests and lifecycle, 3 steps, 4 detail, 5 entries and exits, 6 traffic
/// of the tree lock. A trace site looks like this, so that a disabled trace costs one read:
///
///     if (CDebug::Enabled()) CDebug::Trace(3, "\n%-20s: text", g_moduleName);
///
/// Any thread; calls may overlap. The lines of overlapping calls stay whole but their order is not defined.
class CDebug {
public:
    /// Writes a line to every output whose level is at least `level` (0 counts as 1).
    /// format: as printf; the newlines at its start stand ahead of the stamps.
    /// A text that doesn't fit 65636 bytes together with its stamps is cut and marked.
    static void Trace(unsigned level, char const * format, ...) noexcept PLATFORM_PRINTF(2, 3);
    /// The same with the arguments as a list.
    static void TraceArguments(unsigned level, char const * format, std::va_list arguments) noexcept
        PLATFORM_PRINTF(2, 0);

    /// Whether any output can produce text. A snapshot without ordering: a change of the configuration may be
    /// seen a few calls late.
    static bool Enabled() noexcept
    {
        // Unlikely, so that the sites' code lies aside of what runs all the time.
        if (m_enabled.load(std::memory_order_relaxed) != 0) [[unlikely]]
            return true;
        return false;
    }

    /// Sets the trace up anew and reads the registry.
    /// appName: names the registry subkey and the application in the texts, cut to 47 bytes; copied. Null only
    /// switches the trace off, until the next call.
    /// writeBanner: with an enabled trace, write a line with the name and the time.
    static void Init(char const * appName, bool writeBanner) noexcept;

private:
    static std::atomic<std::int32_t> m_enabled;
    friend class CDebugSetup;
};

#endif
