#include "Platform/Module.h"

#include <cstring>
#include <filesystem>
#include <memory>

#include <gtest/gtest.h>

#include "Platform/DynamicLibrary.h"
#include "Platform/VersionBlockAccess.h"
#include "Support/TempDirectory.h"

using namespace Platform;

namespace {

constexpr char Probe[] = KXRA_VERSION_PROBE; ///< path of a library with a version block

int g_insideTheProgram = 0;

/// A library of the test, loaded for a scope.
class CProbe {
public:
    explicit CProbe(std::string const & path)
    {
        std::string reason;
        m_handle.Reset(LoadModule(path, reason));
        EXPECT_TRUE(m_handle) << reason;
    }
    void Unload() { m_handle.Reset(); }
    void * Symbol(char const * name) const { return ModuleSymbol(m_handle.Get(), name); }

private:
    CModuleHandle m_handle;
};

std::string LibraryName(std::string const & baseName)
{
    return baseName + ModuleFileSuffix();
}

std::string CopyProbe(CTempDirectory const & directory, std::string const & baseName)
{
    const std::string file = directory.File(LibraryName(baseName));
    std::filesystem::copy_file(Probe, file);
    return file;
}

} // namespace

TEST(VersionBlockTest, HoldsTheProjectsTexts)
{
    const std::string block = LoadVersionBlock(Probe);
    const std::string strings = "\\StringFileInfo\\040904E4\\";
    EXPECT_EQ("Kestrix RAID SNMP agent", VersionText(block, strings + "FileDescription"));
    EXPECT_EQ("Norvane", VersionText(block, strings + "CompanyName"));
    EXPECT_EQ("7.10.2.0", VersionText(block, strings + "FileVersion"));
    EXPECT_EQ("7.10.2", VersionText(block, strings + "ProductVersion"));
    EXPECT_EQ("Kestrix RAID", VersionText(block, strings + "ProductName"));
    EXPECT_EQ(LibraryName("probe"), VersionText(block, strings + "OriginalFilename"));
    EXPECT_EQ("kxra_version_probe", VersionText(block, strings + "InternalName"));
    EXPECT_EQ("say \"it\" \\ so", VersionText(block, strings + "Comments"));
    EXPECT_EQ("Norvane", VersionText(block, "\\stringfileinfo\\040904e4\\COMPANYNAME"));
}

TEST(VersionBlockTest, HoldsTheNumbersAndTheLanguage)
{
    const std::string block = LoadVersionBlock(Probe);
    void const * data = nullptr;
    std::uint32_t size = 0;
    ASSERT_TRUE(QueryVersionBlock(block, "\\", data, size));
    ASSERT_GE(size, sizeof(SFixedVersion));
    SFixedVersion fixed{};
    std::memcpy(&fixed, data, sizeof fixed);
    EXPECT_EQ(0xFEEF04BDu, fixed.signature);
    EXPECT_EQ(0x10000u, fixed.structVersion);
    EXPECT_EQ(7u << 16 | 10u, fixed.fileVersionMS);
    EXPECT_EQ(2u << 16 | 0u, fixed.fileVersionLS);
    EXPECT_EQ(fixed.fileVersionMS, fixed.productVersionMS);
    EXPECT_EQ(fixed.fileVersionLS, fixed.productVersionLS);
    EXPECT_EQ(0x3Fu, fixed.fileFlagsMask);
    EXPECT_EQ(0u, fixed.fileFlags);
    EXPECT_EQ(0x40004u, fixed.fileOS);
    EXPECT_EQ(2u, fixed.fileType);
    EXPECT_EQ(0u, fixed.fileSubtype);
    ASSERT_TRUE(QueryVersionBlock(block, "\\VarFileInfo\\Translation", data, size));
    ASSERT_EQ(4u, size);
    std::uint16_t pair[2];
    std::memcpy(pair, data, sizeof pair);
    EXPECT_EQ(0x0409, pair[0]);
    EXPECT_EQ(1252, pair[1]);
}

TEST(VersionBlockTest, WhatIsNotThereIsAbsent)
{
    const std::string block = LoadVersionBlock(Probe);
    for (char const * const query : {"\\x", "\\StringFileInfo\\040704E4\\CompanyName",
                                     "\\StringFileInfo\\040904E4\\Nothing", "\\VarFileInfo\\Nothing"})
        EXPECT_EQ("<absent>", VersionText(block, query)) << query;
    void const * data = nullptr;
    std::uint32_t size = 0;
    EXPECT_FALSE(QueryVersionBlock(block, nullptr, data, size));
    EXPECT_FALSE(QueryVersionBlock("", "\\", data, size));
    EXPECT_FALSE(QueryVersionBlock(std::string(200, '\0'), "\\", data, size));
}

TEST(VersionBlockTest, AFileWithoutABlockSaysWhy)
{
    const CTempDirectory directory;
    ErrorCode error = Success;
    EXPECT_EQ(0u, VersionBlockSize(directory.File("none"), error));
    EXPECT_EQ(ErrorNotFound(), error);
    EXPECT_EQ(0u, VersionBlockSize(directory.Write("text", "no library"), error));
    EXPECT_NE(Success, error);
    EXPECT_NE(ErrorNotFound(), error);
    std::string program;
    ASSERT_EQ(Success, ProgramPath(program));
    EXPECT_EQ(0u, VersionBlockSize(program, error)) << "this program has none";
    EXPECT_NE(Success, error);
    EXPECT_EQ(0u, VersionBlockSize(directory.File(""), error));
    EXPECT_NE(Success, error);
    std::string block = "kept";
    EXPECT_NE(Success, ReadVersionBlock(directory.File("text"), 10, block));
    EXPECT_EQ("kept", block);
}

TEST(VersionBlockTest, ReadGivesNoMoreThanAskedFor)
{
    std::string block;
    ASSERT_EQ(Success, ReadVersionBlock(Probe, 10, block));
    EXPECT_EQ(10u, block.size());
    void const * data = nullptr;
    std::uint32_t size = 0;
    EXPECT_FALSE(QueryVersionBlock(block, "\\", data, size));
}

TEST(ModuleTest, AnAddressOfTheProgramLeadsToTheProgram)
{
    std::string path;
    std::string program;
    ASSERT_EQ(Success, ModulePath(&g_insideTheProgram, path));
    ASSERT_EQ(Success, ProgramPath(program));
    EXPECT_EQ(program, path);
    EXPECT_TRUE(std::filesystem::path(path).is_absolute());
    EXPECT_TRUE(std::filesystem::exists(path));
}

TEST(ModuleTest, AnAddressOfALibraryLeadsToTheLibrary)
{
    const CTempDirectory directory;
    const std::string file = CopyProbe(directory, "inside");
    const CProbe probe(file);
    std::string path;
    ASSERT_EQ(Success, ModulePath(probe.Symbol("VersionProbe"), path));
    EXPECT_EQ(file, path);
}

TEST(ModuleTest, ALongPathIsToldInFull)
{
    const CTempDirectory directory;
    std::string folder = directory.File(std::string(90, 'a'));
    std::filesystem::create_directory(folder);
    folder = (std::filesystem::path(folder) / std::string(90, 'b')).string();
    std::filesystem::create_directory(folder);
    const std::string file = (std::filesystem::path(folder) / LibraryName("long")).string();
    std::filesystem::copy_file(Probe, file);
    const CProbe probe(file);
    std::string path;
    ASSERT_EQ(Success, ModulePath(probe.Symbol("VersionProbe"), path));
    EXPECT_EQ(file, path);
}

TEST(ModuleTest, AnAddressOfNoModuleIsNotFound)
{
    std::string path = "kept";
    const std::unique_ptr<int> heap = std::make_unique<int>(1);
    EXPECT_NE(Success, ModulePath(heap.get(), path));
    EXPECT_EQ("kept", path);
}

TEST(ModuleTest, ListsWhatIsLoaded)
{
    const CTempDirectory directory;
    std::map<std::string, void *> modules;
    {
        const CProbe probe(CopyProbe(directory, "listed"));
        ASSERT_EQ(Success, LoadedModules(modules));
        EXPECT_EQ(1u, modules.count(LibraryName("listed")));
        EXPECT_EQ(0u, modules.count(LibraryName("LISTED")));
        std::string program;
        ASSERT_EQ(Success, ProgramPath(program));
        EXPECT_EQ(1u, modules.count(std::filesystem::path(program).filename().string()));
        EXPECT_LE(modules.size(), 256u);
    }
    ASSERT_EQ(Success, LoadedModules(modules));
    EXPECT_EQ(0u, modules.count(LibraryName("listed")));
}

TEST(ModuleTest, APinnedModuleStaysAndOneThatIsNotLoadedIsNotLoaded)
{
    const CTempDirectory directory;
    const std::string file = CopyProbe(directory, "pinned");
    const std::string name = LibraryName("pinned");
    EXPECT_EQ(nullptr, PinModule(name.c_str()));
    EXPECT_EQ(nullptr, PinModule(file.c_str()));
    EXPECT_EQ(nullptr, PinModule(""));
    std::map<std::string, void *> modules;
    ASSERT_EQ(Success, LoadedModules(modules));
    EXPECT_EQ(0u, modules.count(name));
    CProbe probe(file);
    EXPECT_NE(nullptr, PinModule(name.c_str()));
    probe.Unload();
    ASSERT_EQ(Success, LoadedModules(modules));
    EXPECT_EQ(1u, modules.count(name));
}
