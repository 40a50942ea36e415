#ifndef TESTS_SUPPORT_TEMP_DIRECTORY_H
#define TESTS_SUPPORT_TEMP_DIRECTORY_H

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

/// A directory of its own for one test, removed with all in it.
class CTempDirectory {
public:
    CTempDirectory()
    {
        std::random_device random;
        do {
            m_path = std::filesystem::temp_directory_path() / ("kxra-test-" + std::to_string(random()));
        } while (!std::filesystem::create_directory(m_path)); // until it is nobody else's
        std::filesystem::permissions(m_path, std::filesystem::perms::owner_all);
    }
    ~CTempDirectory()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    CTempDirectory(CTempDirectory const &) = delete;
    CTempDirectory & operator=(CTempDirectory const &) = delete;

    std::string File(std::string const & name) const { return (m_path / name).string(); }
    /// Writes a file anew and returns its path.
    std::string Write(std::string const & name, std::string const & bytes) const
    {
        std::ofstream(m_path / name, std::ios::binary) << bytes;
        return File(name);
    }
    /// The bytes of a file; empty when there is none.
    std::string Read(std::string const & name) const
    {
        std::ifstream file(m_path / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    bool Exists(std::string const & name) const { return std::filesystem::exists(m_path / name); }

private:
    std::filesystem::path m_path;
};

#endif
