#include "Platform/DynamicLibrary.h"

#include <filesystem>

#include <gtest/gtest.h>

#include "Support/TempDirectory.h"

using namespace Platform;

namespace {

constexpr char Probe[] = KXRA_VERSION_PROBE; ///< path of a library

/// Another current directory for a scope.
class CInDirectory {
public:
    explicit CInDirectory(std::filesystem::path const & directory) : m_former(std::filesystem::current_path())
    {
        std::filesystem::current_path(directory);
    }
    ~CInDirectory() { std::filesystem::current_path(m_former); }
    CInDirectory(CInDirectory const &) = delete;
    CInDirectory & operator=(CInDirectory const &) = delete;

private:
    std::filesystem::path const m_former;
};

} // namespace

TEST(DynamicLibraryTest, ALoadedLibraryGivesTheSymbolsThatItExports)
{
    std::string reason = "kept";
    const CModuleHandle module(LoadModule(Probe, reason));
    ASSERT_TRUE(module) << reason;
    EXPECT_EQ("kept", reason);
    using ProbeFn = int (*)();
    const auto probe = reinterpret_cast<ProbeFn>(ModuleSymbol(module.Get(), "VersionProbe"));
    ASSERT_NE(nullptr, probe);
    EXPECT_EQ(1, probe());
    EXPECT_EQ(nullptr, ModuleSymbol(module.Get(), "NoSuchFunction"));
    EXPECT_EQ(ModuleFileSuffix(), std::filesystem::path(Probe).extension().string());
}

TEST(DynamicLibraryTest, WhatCannotBeLoadedIsNamedInOneLineWithTheReason)
{
    const CTempDirectory directory;
    for (std::string const & file :
         {directory.File("none") + ModuleFileSuffix(), directory.Write("text", "no library"), std::string()}) {
        std::string reason;
        EXPECT_EQ(nullptr, LoadModule(file, reason));
        EXPECT_NE(std::string::npos, reason.find(file)) << reason;
        EXPECT_GT(reason.size(), file.size() + 2);
        EXPECT_EQ(std::string::npos, reason.find_first_of("\r\n")) << reason;
    }
}

TEST(DynamicLibraryTest, ANameWithoutAFolderLiesInTheCurrentOne)
{
    const CTempDirectory directory;
    const std::string name = std::string("plain") + ModuleFileSuffix();
    std::filesystem::copy_file(Probe, directory.File(name));
    std::string reason;
    EXPECT_EQ(nullptr, LoadModule(name, reason));
    const CInDirectory here(directory.File(""));
    const CModuleHandle module(LoadModule(name, reason));
    EXPECT_TRUE(module) << reason;
}
