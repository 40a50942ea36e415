#ifndef PLATFORM_FAULT_FILTER_H
#define PLATFORM_FAULT_FILTER_H

/// Faults: what goes wrong below the language, such as an access to memory that isn't there.
namespace Platform {

/// Runs `body`. Windows: an exception of the system that nobody inside takes care of calls `onFault`, on the same
/// thread and on top of the stack that it came up on, and then ends `body` where it stands, without the destructors on
/// its way. POSIX: a fault ends the process; `onFault` is never called. What the language throws passes through on
/// both. Both functions get `argument`.
void RunUnderFaultFilter(void (*body)(void * argument), void (*onFault)(void * argument) noexcept, void * argument);

} // namespace Platform

#endif
