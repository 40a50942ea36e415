#ifndef TESTS_SUPPORT_SCOPED_VARIABLE_H
#define TESTS_SUPPORT_SCOPED_VARIABLE_H

#include <optional>
#include <string>

#include <stdlib.h>

/// Sets or removes an environment variable for a scope.
class CScopedVariable {
public:
    CScopedVariable(char const * name, std::optional<std::string> value) : m_name(name)
    {
        if (char const * const old = ::getenv(name)) m_old = old;
        Put(value);
    }
    ~CScopedVariable() { Put(m_old); }
    CScopedVariable(CScopedVariable const &) = delete;
    CScopedVariable & operator=(CScopedVariable const &) = delete;

private:
    void Put(std::optional<std::string> const & value)
    {
        if (value)
            ::setenv(m_name.c_str(), value->c_str(), 1);
        else
            ::unsetenv(m_name.c_str());
    }
    std::string m_name;
    std::optional<std::string> m_old;
};

#endif
