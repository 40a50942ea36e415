#ifndef PLATFORM_CONSOLE_H
#define PLATFORM_CONSOLE_H

#include <cstddef>

namespace Platform {

/// Makes sure that there is a console to write to. POSIX: the standard output stream. False when there is none.
bool OpenConsole() noexcept;
void WriteConsole(char const * text, std::size_t size) noexcept;

/// One line for whoever debugs this process: the debugger on Windows, the journal on POSIX (no output where no
/// journal runs). text: NUL-terminated, ends with a newline.
void WriteDebugger(char const * text) noexcept;

} // namespace Platform

#endif
