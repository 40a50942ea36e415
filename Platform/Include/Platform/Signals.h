#ifndef PLATFORM_SIGNALS_H
#define PLATFORM_SIGNALS_H

#include "Platform/Error.h"
#include "Platform/LoopEvents.h"

/// Requests from outside to end the process.
namespace Platform {

/// From now on a request to end (SIGTERM, SIGINT; on Windows Ctrl-C, Ctrl-Break, and the end of console, session or
/// system, which gives some seconds' time) doesn't end the process but makes StopRequested true and
/// signals `wakeUp`, which must live as long as the process.
ErrorCode WatchStopRequests(CWakeUp const & wakeUp) noexcept;
bool StopRequested() noexcept;
/// Sending to a peer that has gone is reported by the call that sends, and ends no process.
void IgnoreBrokenPipes() noexcept;

} // namespace Platform

#endif
