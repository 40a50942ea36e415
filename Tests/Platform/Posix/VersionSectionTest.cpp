#include "Platform/Module.h"

#include <cstring>
#include <random>

#include <gtest/gtest.h>

#include <elf.h>

#include "Platform/VersionBlockAccess.h"
#include "Support/TempDirectory.h"

// The version block as a section of an ELF file.

using namespace Platform;

namespace {

constexpr char Probe[] = KXRA_VERSION_PROBE; ///< path of a library with a version block

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

} // namespace

TEST(VersionSectionTest, WhatIsNoTextIsAbsent)
{
    const std::string block = LoadVersionBlock(Probe);
    for (char const * const query : {"\\StringFileInfo", "\\StringFileInfo\\", "\\StringFileInfo\\040904E4",
                                     "\\StringFileInfo\\040904E4\\", "\\VarFileInfo\\"})
        EXPECT_EQ("<absent>", VersionText(block, query)) << query;
}

TEST(VersionSectionTest, EachTranslationHasItsOwnTexts)
{
    std::string block = "KXRAVER1" + std::string(52, '\0');
    const std::uint32_t count = 2;
    block.append(reinterpret_cast<char const *>(&count), 4);
    block += std::string("\x07\x04\xE4\x04\x09\x04\xE4\x04", 8);
    block += std::string("Name\0eins\0\0Name\0one\0Other\0two\0\0", 32);
    EXPECT_EQ("eins", VersionText(block, "\\StringFileInfo\\040704E4\\Name"));
    EXPECT_EQ("one", VersionText(block, "\\StringFileInfo\\040904E4\\Name"));
    EXPECT_EQ("two", VersionText(block, "\\StringFileInfo\\040904E4\\Other"));
    EXPECT_EQ("<absent>", VersionText(block, "\\StringFileInfo\\040704E4\\Other"));
}

TEST(VersionSectionTest, EveryShorterBlockIsSafe)
{
    const std::string block = LoadVersionBlock(Probe);
    const std::string query = "\\StringFileInfo\\040904E4\\ProductVersion";
    for (std::size_t size = 0; size < block.size(); ++size)
        EXPECT_EQ(size < block.find("7.10.2", block.find("ProductVersion")) + 7,
                  VersionText(block.substr(0, size), query) == "<absent>")
            << size;
}

TEST(VersionSectionTest, HostileFilesAreSafe)
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

TEST(VersionSectionTest, SectionNumbersTooLargeForTheHeaderAreFollowed)
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
    LoadVersionBlock(directory.Write("x", bytes));
}

TEST(NoOtherWordSizeTest, ThereIsNoOtherWordSizeAndNoSystemVersionFile)
{
    std::string path;
    EXPECT_TRUE(SystemLibraryDirectory(path));
    EXPECT_FALSE(OtherWordSizeDirectory(path));
    EXPECT_FALSE(SystemVersionFile(path));
    EXPECT_FALSE(RunsInCompatibilityLayer());
}
