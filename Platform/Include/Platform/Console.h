#ifndef PLATFORM_CONSOLE_H
#define PLATFORM_CONSOLE_H

#include <cstddef>

/// Outputs for a trace. Any thread. Nothing here fails, changes the thread's last error or raises a signal: what can't
/// be written is lost.
namespace Platform {

/// Makes sure that there is a console to write to. POSIX: the standard output stream; Windows: the process's console,
/// made where it has none, behind its standard output. False when there is none.
bool OpenConsole() noexcept;
/// Behind a call of OpenConsole. size: bytes of the system's character set.
void WriteConsole(char const * text, std::size_t size) noexcept;

/// One line for whoever debugs this process: the debugger on Windows, the journal on POSIX (no output where no
/// journal runs). text: NUL-terminated, ends with a newline.
void WriteDebugger(char const * text) noexcept;

} // namespace Platform

#endif
