#ifndef TESTS_SNMP_HOST_DEBUG_FAKES_H
#define TESTS_SNMP_HOST_DEBUG_FAKES_H

#include <cstddef>
#include <string>
#include <vector>

#include "Platform/Clock.h"

/// The clock, the console, the debugger and the heap of a test of the trace.
namespace DebugFakes {

/// What the clock shows from now on.
void SetTickMs(std::uint64_t milliseconds);
void SetLocalTime(Platform::SLocalTime const & time);

/// Whether there is a console to open; it is opened at most once per process.
void AllowConsole(bool allowed);
unsigned ConsolesOpened();
std::string ConsoleText();
std::vector<std::string> DebuggerLines();
void ClearOutputs();

/// Lets the next allocations of at least `bytes` bytes fail, `times` of them, and no others.
void FailAllocations(std::size_t bytes, int times);

} // namespace DebugFakes

#endif
