#include "Support/ScopedVariable.h"

#include <stdlib.h>

void PutVariable(std::string const & name, std::optional<std::string> const & value)
{
    if (value)
        ::setenv(name.c_str(), value->c_str(), 1);
    else
        ::unsetenv(name.c_str());
}
