#include "Platform/Supervisor.h"

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <sys/stat.h>
#include <systemd/sd-daemon.h>
#include <unistd.h>

namespace Platform {

void TellSupervisor(char const * state) noexcept
{
    ::sd_notify(/*unset_environment=*/0, state);
}

std::uint64_t SupervisorWatchdogMs() noexcept
{
    std::uint64_t microseconds = 0;
    return ::sd_watchdog_enabled(/*unset_environment=*/0, &microseconds) > 0 ? microseconds / 1000 : 0;
}

bool StandardErrorIsJournal() noexcept
{
    char const * stream = std::getenv("JOURNAL_STREAM");
    std::uintmax_t device = 0;
    std::uintmax_t inode = 0;
    if (stream == nullptr || std::sscanf(stream, "%" SCNuMAX ":%" SCNuMAX, &device, &inode) != 2) return false;
    struct stat status {};
    return ::fstat(STDERR_FILENO, &status) == 0 && status.st_dev == device && status.st_ino == inode;
}

} // namespace Platform
