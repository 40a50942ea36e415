#include "Platform/Supervisor.h"

// No program of ours is a service of this system.
namespace Platform {

void TellSupervisor(char const *) noexcept {}

std::uint64_t SupervisorWatchdogMs() noexcept
{
    return 0;
}

bool StandardErrorIsJournal() noexcept
{
    return false;
}

} // namespace Platform
