#include "Platform/Environment.h"

#include <cerrno>
#include <cstdlib>
#include <unistd.h>

namespace Platform {

namespace {
std::string Variable(char const * name)
{
    char const * value = std::getenv(name);
    return value != nullptr ? value : "";
}
} // namespace

ErrorCode SetEnvironmentText(char const * name, std::string const & value) noexcept
{
    return ::setenv(name, value.c_str(), /*overwrite=*/1) == 0 ? Success : static_cast<ErrorCode>(errno);
}

std::string StateDirectory()
{
    for (char const * name : {"KXRA_STATE_DIRECTORY", "STATE_DIRECTORY"}) {
        const std::string value = Variable(name);
        // systemd puts a colon between several directories; the first one is ours.
        if (!value.empty()) return value.substr(0, value.find(':'));
    }
    if (::geteuid() == 0) return "/var/lib/kestrix/snmpd";
    if (const std::string state = Variable("XDG_STATE_HOME"); !state.empty()) return state + "/kxra-snmpd";
    const std::string home = Variable("HOME");
    return home.empty() ? std::string() : home + "/.local/state/kxra-snmpd";
}

} // namespace Platform
