#include "Tools/NlsTool/Files.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "Support/TempDirectory.h"

#include "Reasons.h"

using namespace NlsTool;

namespace {

std::size_t FilesIn(std::filesystem::path const & directory)
{
    std::size_t count = 0;
    for ([[maybe_unused]] auto const & file : std::filesystem::directory_iterator(directory))
        ++count;
    return count;
}

class FilesTest : public testing::Test {
protected:
    CTempDirectory m_directory;
};

TEST_F(FilesTest, WhatIsWrittenIsReadAgain)
{
    std::string const path = m_directory.File("x");
    for (std::size_t const size :
         {std::size_t{0}, std::size_t{1}, std::size_t{65536}, std::size_t{65537}, std::size_t{200000}}) {
        std::string const bytes(size, 'x');
        WriteWhole(path, bytes);
        EXPECT_EQ(bytes, ReadWhole(path));
    }
    EXPECT_EQ(1u, FilesIn(m_directory.File("")));
}

TEST_F(FilesTest, AFailedWriteLeavesWhatWasThereAndNothingElse)
{
    std::filesystem::create_directory(m_directory.File("directory"));
    EXPECT_EQ("write " + m_directory.File("directory") + ": not an ordinary file",
              ReasonsOf([&] { WriteWhole(m_directory.File("directory"), "x"); }));
    std::string const inside = m_directory.Write("file", "old") + "/x";
    EXPECT_TRUE(ReasonsOf([&] { WriteWhole(inside, "x"); }).starts_with("write " + inside));
    EXPECT_EQ("old", m_directory.Read("file"));
    EXPECT_EQ(2u, FilesIn(m_directory.File("")));
}

TEST_F(FilesTest, ALinkLeadsToTheFileThatIsWritten)
{
    std::filesystem::create_directory(m_directory.File("elsewhere"));
    std::string const target = m_directory.Write("elsewhere/target", "old");
    std::string const link = m_directory.File("link");
    std::filesystem::create_symlink(target, link);
    WriteWhole(link, "new");
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    EXPECT_EQ("new", m_directory.Read("elsewhere/target"));
    EXPECT_EQ(1u, FilesIn(m_directory.File("elsewhere")));
}

TEST_F(FilesTest, WhatIsNotThereIsNamedWithTheSystemsReason)
{
    std::string const path = m_directory.File("nothing");
    EXPECT_EQ("read " + path + ": No such file or directory (2)", ReasonsOf([&] { ReadWhole(path); }));
}

TEST_F(FilesTest, AFileOfMoreThan64MiBIsRefused)
{
    std::string const path = m_directory.Write("large", "");
    std::filesystem::resize_file(path, 64u << 20);
    EXPECT_EQ(std::size_t{64u << 20}, ReadWhole(path).size());
    std::filesystem::resize_file(path, (64u << 20) + 1);
    EXPECT_EQ("read " + path + ": the file is longer than 64 MiB", ReasonsOf([&] { ReadWhole(path); }));
}

} // namespace
