#include "Support/ScopedVariable.h"

#include <windows.h>

void PutVariable(std::string const & name, std::optional<std::string> const & value)
{
    // The C library has a copy of its own, in which an empty value means none.
    ::_putenv_s(name.c_str(), value.value_or("").c_str());
    ::SetEnvironmentVariableA(name.c_str(), value ? value->c_str() : nullptr);
}
