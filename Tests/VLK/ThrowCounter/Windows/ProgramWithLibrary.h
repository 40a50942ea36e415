#ifndef TESTS_VLK_THROW_COUNTER_WINDOWS_PROGRAM_WITH_LIBRARY_H
#define TESTS_VLK_THROW_COUNTER_WINDOWS_PROGRAM_WITH_LIBRARY_H

#include <filesystem>
#include <string>

#include "Support/TempDirectory.h"

/// A program whose loader finds a library by its name, for a scope: a copy in one folder with a copy of the library.
class CProgramWithLibrary {
public:
    CProgramWithLibrary(std::string const & program, std::string const & library)
        : m_program(CopyOf(program)), m_library(CopyOf(library))
    {
    }
    std::string const & File() const { return m_program; }

private:
    std::string CopyOf(std::filesystem::path const & file) const
    {
        std::string copy = m_folder.File(file.filename().string());
        std::filesystem::copy_file(file, copy);
        return copy;
    }

    CTempDirectory const m_folder;
    std::string const m_program;
    std::string const m_library;
};

#endif
