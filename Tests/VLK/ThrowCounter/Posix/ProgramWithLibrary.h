#ifndef TESTS_VLK_THROW_COUNTER_POSIX_PROGRAM_WITH_LIBRARY_H
#define TESTS_VLK_THROW_COUNTER_POSIX_PROGRAM_WITH_LIBRARY_H

#include <cstdlib>
#include <filesystem>
#include <string>
#include <utility>

#include "Support/ScopedVariable.h"

/// A program whose loader finds a library by its name, for a scope: its folder is among those of the environment.
class CProgramWithLibrary {
public:
    CProgramWithLibrary(std::string program, std::string const & library)
        : m_program(std::move(program)), m_path("LD_LIBRARY_PATH", FoldersWith(library))
    {
    }
    std::string const & File() const { return m_program; }

private:
    static std::string FoldersWith(std::string const & library)
    {
        char const * const others = std::getenv("LD_LIBRARY_PATH");
        return std::filesystem::path(library).parent_path().string() + ':' + (others != nullptr ? others : "");
    }

    std::string const m_program;
    CScopedVariable const m_path;
};

#endif
