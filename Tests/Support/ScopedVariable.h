#ifndef TESTS_SUPPORT_SCOPED_VARIABLE_H
#define TESTS_SUPPORT_SCOPED_VARIABLE_H

#include <cstdlib>
#include <optional>
#include <string>

/// Sets or removes an environment variable of this process. In Posix/ and Windows/.
void PutVariable(std::string const & name, std::optional<std::string> const & value);

/// Does it for a scope.
class CScopedVariable {
public:
    CScopedVariable(char const * name, std::optional<std::string> value) : m_name(name)
    {
        if (char const * const old = std::getenv(name)) m_old = old;
        PutVariable(m_name, value);
    }
    ~CScopedVariable() { PutVariable(m_name, m_old); }
    CScopedVariable(CScopedVariable const &) = delete;
    CScopedVariable & operator=(CScopedVariable const &) = delete;

private:
    std::string m_name;
    std::optional<std::string> m_old;
};

#endif
