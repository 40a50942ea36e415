#include "Platform/File.h"

#include <gtest/gtest.h>

#include "Support/TempDirectory.h"

using namespace Platform;

namespace {

CFileHandle Open(std::string const & path, FileMode mode)
{
    FileHandle handle = NoFile;
    EXPECT_EQ(Success, OpenFile(handle, path, mode));
    return CFileHandle(handle);
}

} // namespace

TEST(FileTest, WritesReadsAndTellsTheSize)
{
    const CTempDirectory directory;
    const std::string path = directory.File("a");
    ErrorCode error = 1;
    {
        const CFileHandle file = Open(path, FileMode::WriteOrCreate);
        EXPECT_EQ(5u, WriteFile(file.Get(), "hello", 5, error));
        EXPECT_EQ(Success, error);
    }
    {
        const CFileHandle file = Open(path, FileMode::WriteOrCreate);
        EXPECT_EQ(1u, WriteFile(file.Get(), "J", 1, error)); // the position is at the start
        EXPECT_EQ(Success, SeekToEnd(file.Get()));
        EXPECT_EQ(1u, WriteFile(file.Get(), "!", 1, error));
    }
    const CFileHandle file = Open(path, FileMode::ReadExisting);
    std::uint64_t size = 0;
    EXPECT_EQ(Success, FileSize(file.Get(), size));
    EXPECT_EQ(6u, size);
    char text[16] = {};
    EXPECT_EQ(6u, ReadFile(file.Get(), text, sizeof text, error));
    EXPECT_EQ(Success, error);
    EXPECT_STREQ("Jello!", text);
    EXPECT_EQ(Success, SeekTo(file.Get(), 4));
    EXPECT_EQ(1u, ReadFile(file.Get(), text, 1, error));
    EXPECT_EQ('o', text[0]);
    EXPECT_EQ(0u, WriteFile(file.Get(), "x", 1, error));
    EXPECT_NE(Success, error);
}

TEST(FileTest, AMissingFileIsNotFoundAndTheHandleStays)
{
    const CTempDirectory directory;
    FileHandle handle = NoFile;
    EXPECT_EQ(ErrorNotFound(), OpenFile(handle, directory.File("none"), FileMode::ReadExisting));
    EXPECT_EQ(NoFile, handle);
    EXPECT_EQ(ErrorNotFound(), DeleteFile(directory.File("none")));
    EXPECT_EQ(ErrorNotFound(), MoveFile(directory.File("none"), directory.File("b")));
    EXPECT_EQ(ErrorNotFound(), PutInPlace(directory.File("none"), directory.File("b")));
    EXPECT_EQ(ErrorNotFound(), MakePrivate(directory.File("none")));
}

TEST(FileTest, CreateExclusiveRefusesAnOldFile)
{
    const CTempDirectory directory;
    const std::string path = directory.File("lock");
    Open(path, FileMode::CreateExclusive);
    FileHandle handle = NoFile;
    EXPECT_EQ(ErrorAlreadyExists(), OpenFile(handle, path, FileMode::CreateExclusive));
    EXPECT_EQ(Success, DeleteFile(path));
    EXPECT_FALSE(directory.Exists("lock"));
}

TEST(FileTest, DirectoriesAreRefused)
{
    const CTempDirectory directory;
    FileHandle handle = NoFile;
    EXPECT_NE(Success, OpenFile(handle, directory.File(""), FileMode::ReadExisting));
    EXPECT_NE(Success, OpenFile(handle, directory.File(""), FileMode::WriteOrCreate));
    EXPECT_EQ(nullptr, OpenStream(directory.File(""), "r"));
    EXPECT_EQ(NoFile, handle);
}

TEST(FileTest, BothMovesReplaceTheTarget)
{
    for (ErrorCode (*const move)(std::string const &, std::string const &) noexcept : {&MoveFile, &PutInPlace}) {
        const CTempDirectory directory;
        directory.Write("a", "new");
        directory.Write("b", "old");
        EXPECT_EQ(Success, move(directory.File("a"), directory.File("b")));
        EXPECT_EQ("new", directory.Read("b"));
        EXPECT_FALSE(directory.Exists("a"));
    }
}

TEST(FileTest, StreamsFollowTheirMode)
{
    const CTempDirectory directory;
    const std::string path = directory.File("s");
    const auto write = [&](char const * mode, char const * text) {
        std::FILE * const stream = OpenStream(path, mode);
        ASSERT_NE(nullptr, stream) << mode;
        std::fputs(text, stream);
        std::fclose(stream);
    };
    EXPECT_EQ(nullptr, OpenStream(path, "rb"));
    EXPECT_EQ(ErrorNotFound(), LastError());
    write("w", "one");
    write("ab", "two");
    EXPECT_EQ("onetwo", directory.Read("s"));
    write("r+", "ONE");
    EXPECT_EQ("ONEtwo", directory.Read("s"));
    write("wb", "");
    EXPECT_EQ("", directory.Read("s"));
    EXPECT_EQ(nullptr, OpenStream(path, "q"));
    EXPECT_EQ(nullptr, OpenStream(path, "wx"));
    EXPECT_EQ(ErrorAlreadyExists(), LastError());
}

TEST(FileTest, TellsTheCurrentDirectory)
{
    std::string path;
    ASSERT_EQ(Success, CurrentDirectory(path));
    EXPECT_EQ(std::filesystem::current_path().string(), path);
}
