#include <gtest/gtest.h>

#include <filesystem>

#include "Platform/Module.h"
#include "Platform/Process.h"
#include "Snmp/Host/VersionInfo.h"

namespace {

/// A library with a version block among the system's libraries for programs of the other word size, for a scope; the
/// folder is made where the system has none, as Wine without its 32 bits has.
class CLibraryOfTheOtherWordSize {
public:
    CLibraryOfTheOtherWordSize() : m_name("kxra_other_" + std::to_string(Platform::CurrentProcessId()) + ".dll")
    {
        std::string folder;
        EXPECT_TRUE(Platform::OtherWordSizeDirectory(folder));
        m_madeFolder = std::filesystem::create_directory(folder);
        m_file = std::filesystem::path(folder) / m_name;
        std::filesystem::copy_file(KXRA_DEBUG_PROBE, m_file);
    }
    ~CLibraryOfTheOtherWordSize()
    {
        std::error_code ignored;
        std::filesystem::remove(m_file, ignored);
        if (m_madeFolder) std::filesystem::remove(m_file.parent_path(), ignored);
    }
    CLibraryOfTheOtherWordSize(CLibraryOfTheOtherWordSize const &) = delete;
    CLibraryOfTheOtherWordSize & operator=(CLibraryOfTheOtherWordSize const &) = delete;

    /// The file's path as a program of that word size is told it.
    std::string SeenPath() const
    {
        std::string system;
        EXPECT_TRUE(Platform::SystemLibraryDirectory(system));
        return system + '\\' + m_name;
    }

private:
    std::string const m_name;
    std::filesystem::path m_file;
    bool m_madeFolder = false;
};

} // namespace

TEST(OtherWordSizeTest, WhatTheSystemsDirectoryLacksIsLookedForWhereTheOtherWordSizeHasIt)
{
    const CLibraryOfTheOtherWordSize library;
    const std::string path = library.SeenPath();
    ASSERT_FALSE(std::filesystem::exists(path));
    EXPECT_NE(0u, CFileVersionInfo::GetSize(path.c_str()));
    CVersionResource version;
    version.Load(path.c_str());
    EXPECT_EQ(7u, version.GetProductMajor());
    EXPECT_EQ(10u, version.GetProductMinor());
}
