#ifndef PLATFORM_SUPERVISOR_H
#define PLATFORM_SUPERVISOR_H

#include <cstdint>

/// What a service owes to the supervisor that started it. Without one everything here does nothing.
namespace Platform {

/// Tells the supervisor a state, in systemd's words: "READY=1", "WATCHDOG=1", "STOPPING=1", "STATUS=text".
void TellSupervisor(char const * state) noexcept;
/// Milliseconds within which the supervisor wants a sign of life each time; 0: it wants none.
std::uint64_t SupervisorWatchdogMs() noexcept;
/// Whether standard error is the journal, so that a line may begin with its priority.
bool StandardErrorIsJournal() noexcept;

} // namespace Platform

#endif
