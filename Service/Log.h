#ifndef SERVICE_LOG_H
#define SERVICE_LOG_H

#include <string_view>

namespace Service {

/// Priorities of a log line, with the journal's numbers.
enum class EPriority : int { Error = 3, Warning = 4, Notice = 5, Info = 6 };

/// Log on standard error: one line a call, "kxra-snmpd: text", led by "<N>" where standard error is the
/// journal. Any thread.
class CLog {
public:
    /// Looks at what standard error is. Before the first line.
    static void Init() noexcept;
    /// Line ends inside `text` become blanks, so that a line stays one line.
    static void Write(EPriority priority, std::string_view text) noexcept;
};

} // namespace Service

#endif
