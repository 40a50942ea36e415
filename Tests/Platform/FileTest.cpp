#include "Platform/File.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>

#include "Support/TempDirectory.h"

using namespace Platform;

namespace {

CFileHandle Open(std::string const & path, FileMode mode)
{
    FileHandle handle = NoFile;
    EXPECT_EQ(Success, OpenFile(handle, path, mode));
    return CFileHandle(handle);
}

mode_t ModeOf(std::string const & path)
{
    struct stat status {};
    EXPECT_EQ(0, ::stat(path.c_str(), &status));
    return status.st_mode & 0777;
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
    EXPECT_EQ(ErrorNotFound(), MakePrivate(directory.File("none")));
}

TEST(FileTest, CreateExclusiveMakesAPrivateFileAndRefusesAnOldOne)
{
    const CTempDirectory directory;
    const std::string path = directory.File("lock");
    {
        const CFileHandle file = Open(path, FileMode::CreateExclusive);
        EXPECT_EQ(static_cast<mode_t>(0600), ModeOf(path) & 0677);
    }
    FileHandle handle = NoFile;
    EXPECT_EQ(ErrorAlreadyExists(), OpenFile(handle, path, FileMode::CreateExclusive));
    EXPECT_EQ(Success, DeleteFile(path));
    EXPECT_FALSE(directory.Exists("lock"));
}

TEST(FileTest, MoveReplacesTheTarget)
{
    const CTempDirectory directory;
    directory.Write("a", "new");
    directory.Write("b", "old");
    EXPECT_EQ(Success, MoveFile(directory.File("a"), directory.File("b")));
    EXPECT_EQ("new", directory.Read("b"));
    EXPECT_FALSE(directory.Exists("a"));
}

TEST(FileTest, MakePrivateLeavesTheOwnerAlone)
{
    const CTempDirectory directory;
    const std::string path = directory.Write("a", "x");
    ASSERT_EQ(0, ::chmod(path.c_str(), 0755));
    EXPECT_EQ(Success, MakePrivate(path));
    EXPECT_EQ(static_cast<mode_t>(0600), ModeOf(path));
}

TEST(FileTest, DirectoriesAndPipesAreRefusedAtOnce)
{
    const CTempDirectory directory;
    FileHandle handle = NoFile;
    EXPECT_NE(Success, OpenFile(handle, directory.File(""), FileMode::ReadExisting));
    ASSERT_EQ(0, ::mkfifo(directory.File("pipe").c_str(), 0600));
    EXPECT_NE(Success, OpenFile(handle, directory.File("pipe"), FileMode::ReadExisting));
    EXPECT_NE(Success, OpenFile(handle, directory.File("pipe"), FileMode::WriteOrCreate));
    EXPECT_EQ(nullptr, OpenStream(directory.File("pipe"), "r"));
    EXPECT_EQ(NoFile, handle);
}

TEST(FileTest, FilesAreNotInherited)
{
    const CTempDirectory directory;
    const CFileHandle file = Open(directory.File("a"), FileMode::WriteOrCreate);
    EXPECT_NE(0, ::fcntl(static_cast<int>(file.Get()), F_GETFD) & FD_CLOEXEC);
}

TEST(FileTest, FilesNeverTakeThePlaceOfAStandardStream)
{
    const CTempDirectory directory;
    // Frees the place of standard input for a moment.
    const int kept = ::dup(STDIN_FILENO);
    ASSERT_GE(kept, 0);
    ::close(STDIN_FILENO);
    const CFileHandle file = Open(directory.File("a"), FileMode::WriteOrCreate);
    std::FILE * const stream = OpenStream(directory.File("b"), "w");
    EXPECT_GT(file.Get(), STDERR_FILENO);
    EXPECT_NE(0, ::fcntl(static_cast<int>(file.Get()), F_GETFD) & FD_CLOEXEC);
    EXPECT_TRUE(stream != nullptr && ::fileno(stream) > STDERR_FILENO);
    EXPECT_EQ(-1, ::read(STDIN_FILENO, nullptr, 0)); // and the place is free again
    if (stream != nullptr) std::fclose(stream);
    ::dup2(kept, STDIN_FILENO);
    ::close(kept);
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
