#include "Platform/File.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

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

TEST(FileTest, CreateExclusiveMakesAPrivateFile)
{
    const CTempDirectory directory;
    const std::string path = directory.File("lock");
    const CFileHandle file = Open(path, FileMode::CreateExclusive);
    EXPECT_EQ(static_cast<mode_t>(0600), ModeOf(path) & 0677);
}

TEST(FileTest, MakePrivateLeavesTheOwnerAlone)
{
    const CTempDirectory directory;
    const std::string path = directory.Write("a", "x");
    ASSERT_EQ(0, ::chmod(path.c_str(), 0755));
    EXPECT_EQ(Success, MakePrivate(path));
    EXPECT_EQ(static_cast<mode_t>(0600), ModeOf(path));
}

TEST(FileTest, PipesAreRefusedAtOnce)
{
    const CTempDirectory directory;
    FileHandle handle = NoFile;
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
