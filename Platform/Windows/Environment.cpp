#include "Platform/Environment.h"

#include <cerrno>
#include <cstdlib>

#include "System.h"

namespace Platform {

namespace {

std::string Variable(char const * name)
{
    char const * const value = std::getenv(name);
    return value != nullptr ? value : "";
}

} // namespace

ErrorCode SetEnvironmentText(char const * name, std::string const & value) noexcept
{
    // The C library has a copy of its own, in which an empty value means none; so the system's is set behind it.
    if (::_putenv_s(name, value.c_str()) != 0) return ERROR_INVALID_PARAMETER;
    return ::SetEnvironmentVariableA(name, value.c_str()) != FALSE ? Success : LastError();
}

std::string StateDirectory()
{
    const std::string own = Variable("KXRA_STATE_DIRECTORY");
    if (!own.empty()) return own;
    const std::string shared = Variable("ProgramData");
    return shared.empty() ? std::string() : shared + "\\Kestrix\\snmpd";
}

} // namespace Platform
