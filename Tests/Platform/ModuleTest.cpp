#include "Platform/Module.h"

#include <cstring>
#include <random>

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <elf.h>
#include <sys/stat.h>

#include "Support/TempDirectory.h"

using namespace Platform;

namespace {

constexpr char Probe[] = KXRA_VERSION_PROBE; ///< path of a library with a version block

int g_insideTheProgram = 0;

std::string Load(std::string const & path)
{
    ErrorCode error = 1;
    const std::uint32_t size = VersionBlockSize(path, error);
    EXPECT_NE(0u, size);
    EXPECT_EQ(Success, error);
    std::string block;
    EXPECT_EQ(Success, ReadVersionBlock(path, size, block));
    EXPECT_EQ(size, block.size());
    return block;
}

std::string Text(std::string const & block, std::string const & query)
{
    void const * data = nullptr;
    std::uint32_t size = 0;
    if (!QueryVersionBlock(block, query.c_str(), data, size)) return "<absent>";
    EXPECT_EQ('\0', static_cast<char const *>(data)[size - 1]);
    EXPECT_GE(static_cast<char const *>(data), block.data());
    EXPECT_LE(static_cast<char const *>(data) + size, block.data() + block.size());
    return static_cast<char const *>(data);
}

std::string FileBytes(std::string const & path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

template <class T>
T Peek(std::string const & bytes, std::size_t offset)
{
    T value{};
    std::memcpy(&value, bytes.data() + offset, sizeof value);
    return value;
}

template <class T>
void Poke(std::string & bytes, std::size_t offset, T value)
{
    std::memcpy(bytes.data() + offset, &value, sizeof value);
}

/// A library of the test, loaded for a scope.
class CProbe {
public:
    explicit CProbe(std::string const & path) : m_handle(::dlopen(path.c_str(), RTLD_NOW)) {}
    ~CProbe()
    {
        if (m_handle != nullptr) ::dlclose(m_handle);
    }
    void Unload() { ::dlclose(std::exchange(m_handle, nullptr)); }
    void * Symbol(char const * name) const { return ::dlsym(m_handle, name); }
    explicit operator bool() const { return m_handle != nullptr; }

private:
    void * m_handle;
};

std::string CopyProbe(CTempDirectory const & directory, char const * name)
{
    std::filesystem::copy_file(Probe, directory.File(name));
    return directory.File(name);
}

} // namespace

TEST(VersionBlockTest, HoldsTheProjectsTexts)
{
    const std::string block = Load(Probe);
    const std::string strings = "\\StringFileInfo\\040904E4\\";
    EXPECT_EQ("Kestrix RAID SNMP agent", Text(block, strings + "FileDescription"));
    EXPECT_EQ("Norvane", Text(block, strings + "CompanyName"));
    EXPECT_EQ("7.10.2", Text(block, strings + "ProductVersion"));
    EXPECT_EQ("probe.so", Text(block, strings + "OriginalFilename"));
    EXPECT_EQ("kxra_version_probe", Text(block, strings + "InternalName"));
    EXPECT_EQ("say \"it\" \\ so", Text(block, strings + "Comments"));
    EXPECT_EQ("Norvane", Text(block, "\\stringfileinfo\\040904e4\\COMPANYNAME"));
}

TEST(VersionBlockTest, HoldsTheNumbersAndTheLanguage)
{
    const std::string block = Load(Probe);
    void const * data = nullptr;
    std::uint32_t size = 0;
    ASSERT_TRUE(QueryVersionBlock(block, "\\", data, size));
    ASSERT_GE(size, sizeof(SFixedVersion));
    SFixedVersion fixed{};
    std::memcpy(&fixed, data, sizeof fixed);
    EXPECT_EQ(0xFEEF04BDu, fixed.signature);
    EXPECT_EQ(7u << 16 | 10u, fixed.fileVersionMS);
    EXPECT_EQ(2u << 16 | 0u, fixed.fileVersionLS);
    EXPECT_EQ(fixed.fileVersionMS, fixed.productVersionMS);
    EXPECT_EQ(fixed.fileVersionLS, fixed.productVersionLS);
    ASSERT_TRUE(QueryVersionBlock(block, "\\VarFileInfo\\Translation", data, size));
    ASSERT_EQ(4u, size);
    std::uint16_t pair[2];
    std::memcpy(pair, data, sizeof pair);
    EXPECT_EQ(0x0409, pair[0]);
    EXPECT_EQ(1252, pair[1]);
}

TEST(VersionBlockTest, WhatIsNotThereIsAbsent)
{
    const std::string block = Load(Probe);
    for (char const * const query : {"", "\\x", "\\StringFileInfo", "\\StringFileInfo\\", "\\StringFileInfo\\040904E4",
                                     "\\StringFileInfo\\040904E4\\", "\\StringFileInfo\\040704E4\\CompanyName",
                                     "\\StringFileInfo\\040904E4\\Nothing", "\\VarFileInfo\\"})
        EXPECT_EQ("<absent>", Text(block, query)) << query;
    void const * data = nullptr;
    std::uint32_t size = 0;
    EXPECT_FALSE(QueryVersionBlock(block, nullptr, data, size));
    EXPECT_FALSE(QueryVersionBlock("", "\\", data, size));
    EXPECT_FALSE(QueryVersionBlock(std::string(200, '\0'), "\\", data, size));
}

TEST(VersionBlockTest, EachTranslationHasItsOwnTexts)
{
    std::string block = "KXRAVER1" + std::string(52, '\0');
    const std::uint32_t count = 2;
    block.append(reinterpret_cast<char const *>(&count), 4);
    block += std::string("\x07\x04\xE4\x04\x09\x04\xE4\x04", 8);
    block += std::string("Name\0eins\0\0Name\0one\0Other\0two\0\0", 32);
    EXPECT_EQ("eins", Text(block, "\\StringFileInfo\\040704E4\\Name"));
    EXPECT_EQ("one", Text(block, "\\StringFileInfo\\040904E4\\Name"));
    EXPECT_EQ("two", Text(block, "\\StringFileInfo\\040904E4\\Other"));
    EXPECT_EQ("<absent>", Text(block, "\\StringFileInfo\\040704E4\\Other"));
}

TEST(VersionBlockTest, EveryShorterBlockIsSafe)
{
    const std::string block = Load(Probe);
    const std::string query = "\\StringFileInfo\\040904E4\\ProductVersion";
    for (std::size_t size = 0; size < block.size(); ++size)
        EXPECT_EQ(size < block.find("7.10.2", block.find("ProductVersion")) + 7,
                  Text(block.substr(0, size), query) == "<absent>")
            << size;
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
    EXPECT_EQ(0u, VersionBlockSize("/bin/sh", error));
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
}

TEST(VersionBlockTest, HostileFilesAreSafe)
{
    const CTempDirectory directory;
    const std::string original = FileBytes(Probe);
    const auto sections = Peek<Elf64_Ehdr>(original, 0).e_shoff;
    std::mt19937 random(20);
    for (int i = 0; i < 400; ++i) {
        std::string bytes = original;
        if (i % 4 == 0) bytes.resize(random() % bytes.size());
        // The header and the section table are what is followed.
        for (unsigned hits = 1 + random() % 4; hits != 0; --hits) {
            const std::size_t at =
                i % 2 == 0 ? random() % sizeof(Elf64_Ehdr)
                           : sections + random() % (bytes.size() > sections ? original.size() - sections : 1);
            if (at < bytes.size()) bytes[at] = static_cast<char>(random());
        }
        ErrorCode error = Success;
        const std::string path = directory.Write("x", bytes);
        const std::uint32_t size = VersionBlockSize(path, error);
        EXPECT_LE(size, 65536u);
        EXPECT_EQ(size == 0, error != Success);
    }
}

namespace {

struct SHostile {
    char const * name;
    std::size_t offset;
    std::uint64_t value;
    std::size_t width;
};
class HostileHeaderTest : public testing::TestWithParam<SHostile> {};

} // namespace

TEST_P(HostileHeaderTest, GivesNoBlock)
{
    const CTempDirectory directory;
    std::string bytes = FileBytes(Probe);
    std::memcpy(bytes.data() + GetParam().offset, &GetParam().value, GetParam().width);
    ErrorCode error = Success;
    EXPECT_EQ(0u, VersionBlockSize(directory.Write("x", bytes), error));
    EXPECT_NE(Success, error);
}

INSTANTIATE_TEST_SUITE_P(Fields, HostileHeaderTest,
                         testing::Values(SHostile{"Magic", 0, 0, 1}, SHostile{"Class32", EI_CLASS, ELFCLASS32, 1},
                                         SHostile{"BigEndian", EI_DATA, ELFDATA2MSB, 1},
                                         SHostile{"NoSections", offsetof(Elf64_Ehdr, e_shoff), 0, 8},
                                         SHostile{"SectionsBehindTheEnd", offsetof(Elf64_Ehdr, e_shoff), ~0ULL - 10, 8},
                                         SHostile{"EntrySize", offsetof(Elf64_Ehdr, e_shentsize), 1, 2},
                                         SHostile{"NamesBeyondTheSections", offsetof(Elf64_Ehdr, e_shstrndx), 0xFF00,
                                                  2},
                                         SHostile{"NamesInANamelessSection", offsetof(Elf64_Ehdr, e_shstrndx), 0, 2},
                                         SHostile{"MoreSectionsThanBytes", offsetof(Elf64_Ehdr, e_shnum), 0xFEFF, 2}),
                         [](const auto & test) { return std::string(test.param.name); });

TEST(VersionBlockTest, SectionNumbersTooLargeForTheHeaderAreFollowed)
{
    const CTempDirectory directory;
    std::string bytes = FileBytes(Probe);
    const auto header = Peek<Elf64_Ehdr>(bytes, 0);
    auto first = Peek<Elf64_Shdr>(bytes, header.e_shoff);
    first.sh_size = header.e_shnum;
    first.sh_link = header.e_shstrndx;
    Poke(bytes, header.e_shoff, first);
    Poke(bytes, offsetof(Elf64_Ehdr, e_shnum), std::uint16_t{0});
    Poke(bytes, offsetof(Elf64_Ehdr, e_shstrndx), std::uint16_t{SHN_XINDEX});
    Load(directory.Write("x", bytes));
}

TEST(ModuleTest, AnAddressOfTheProgramLeadsToTheProgram)
{
    std::string path;
    std::string program;
    ASSERT_EQ(Success, ModulePath(&g_insideTheProgram, path));
    ASSERT_EQ(Success, ProgramPath(program));
    EXPECT_EQ(program, path);
    EXPECT_EQ('/', path.front());
}

TEST(ModuleTest, AnAddressOfALibraryLeadsToTheLibrary)
{
    const CTempDirectory directory;
    const std::string file = CopyProbe(directory, "inside.so");
    const CProbe probe(file);
    ASSERT_TRUE(probe);
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
        const CProbe probe(CopyProbe(directory, "listed.so"));
        ASSERT_TRUE(probe);
        ASSERT_EQ(Success, LoadedModules(modules));
        EXPECT_EQ(1u, modules.count("listed.so"));
        EXPECT_EQ(0u, modules.count("LISTED.SO"));
        std::string program;
        ASSERT_EQ(Success, ProgramPath(program));
        EXPECT_EQ(1u, modules.count(program.substr(program.rfind('/') + 1)));
        EXPECT_LE(modules.size(), 256u);
    }
    ASSERT_EQ(Success, LoadedModules(modules));
    EXPECT_EQ(0u, modules.count("listed.so"));
}

TEST(ModuleTest, APinnedModuleStaysAndOneThatIsNotLoadedIsNotLoaded)
{
    const CTempDirectory directory;
    const std::string file = CopyProbe(directory, "pinned.so");
    EXPECT_EQ(nullptr, PinModule("pinned.so"));
    EXPECT_EQ(nullptr, PinModule(file.c_str()));
    std::map<std::string, void *> modules;
    ASSERT_EQ(Success, LoadedModules(modules));
    EXPECT_EQ(0u, modules.count("pinned.so"));
    CProbe probe(file);
    ASSERT_TRUE(probe);
    EXPECT_NE(nullptr, PinModule("pinned.so"));
    probe.Unload();
    ASSERT_EQ(Success, LoadedModules(modules));
    EXPECT_EQ(1u, modules.count("pinned.so"));
}

TEST(ModuleTest, ThereIsNoOtherWordSizeAndNoSystemVersionFile)
{
    std::string path;
    EXPECT_TRUE(SystemLibraryDirectory(path));
    EXPECT_FALSE(OtherWordSizeDirectory(path));
    EXPECT_FALSE(SystemVersionFile(path));
    EXPECT_FALSE(RunsInCompatibilityLayer());
}
