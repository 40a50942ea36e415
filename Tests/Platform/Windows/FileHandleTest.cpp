#include "Platform/File.h"

#include <gtest/gtest.h>

#include <io.h>
#include <thread>

#include "Platform/Clock.h"
#include "Platform/Native/SockAddr.h" // the system's interface without its second names for ours
#include "Support/TempDirectory.h"

namespace {

using Platform::CFileHandle;
using Platform::ErrorCode;
using Platform::FileHandle;
using Platform::FileMode;
using Platform::NoFile;
using Platform::Success;

HANDLE Raw(FileHandle file)
{
    return reinterpret_cast<HANDLE>(static_cast<std::intptr_t>(file));
}

ErrorCode Attempt(std::string const & path, FileMode mode)
{
    FileHandle handle = NoFile;
    const ErrorCode error = Platform::OpenFile(handle, path, mode);
    const CFileHandle owner(handle);
    return error;
}

bool IsInherited(HANDLE file)
{
    DWORD flags = HANDLE_FLAG_INHERIT;
    EXPECT_NE(0, ::GetHandleInformation(file, &flags));
    return (flags & HANDLE_FLAG_INHERIT) != 0;
}

bool IsShutOut(ErrorCode error)
{
    return error == ERROR_SHARING_VIOLATION || error == ERROR_ACCESS_DENIED;
}

TEST(FileTest, FilesAreNotInherited)
{
    const CTempDirectory directory;
    FileHandle handle = NoFile;
    ASSERT_EQ(Success, Platform::OpenFile(handle, directory.File("a"), FileMode::WriteOrCreate));
    const CFileHandle file(handle);
    EXPECT_FALSE(IsInherited(Raw(handle)));
    std::FILE * const stream = Platform::OpenStream(directory.File("b"), "w");
    ASSERT_NE(nullptr, stream);
    EXPECT_FALSE(IsInherited(reinterpret_cast<HANDLE>(::_get_osfhandle(::_fileno(stream)))));
    std::fclose(stream);
}

TEST(FileTest, OthersMayReadAndWriteAFileThatIsWritten)
{
    const CTempDirectory directory;
    const std::string path = directory.File("a");
    FileHandle handle = NoFile;
    ASSERT_EQ(Success, Platform::OpenFile(handle, path, FileMode::WriteOrCreate));
    const CFileHandle writer(handle);
    EXPECT_EQ(Success, Attempt(path, FileMode::WriteOrCreate));
    EXPECT_EQ(ErrorCode{ERROR_SHARING_VIOLATION}, Attempt(path, FileMode::ReadExisting))
        << "who reads suffers no writer";
    std::FILE * const stream = Platform::OpenStream(path, "rb");
    EXPECT_NE(nullptr, stream);
    if (stream != nullptr) std::fclose(stream);
}

TEST(FileTest, OthersMayOnlyReadAFileThatIsRead)
{
    const CTempDirectory directory;
    const std::string path = directory.Write("a", "x");
    FileHandle handle = NoFile;
    ASSERT_EQ(Success, Platform::OpenFile(handle, path, FileMode::ReadExisting));
    const CFileHandle reader(handle);
    EXPECT_EQ(Success, Attempt(path, FileMode::ReadExisting));
    EXPECT_EQ(ErrorCode{ERROR_SHARING_VIOLATION}, Attempt(path, FileMode::WriteOrCreate));
}

TEST(FileTest, AFileThatSomebodyHoldsForGoodHoldsUpNoTrace)
{
    const CTempDirectory directory;
    const std::string path = directory.Write("a", "x");
    const HANDLE holder = ::CreateFileA(path.c_str(), GENERIC_READ, /*dwShareMode=*/0, nullptr, OPEN_EXISTING,
                                        FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(INVALID_HANDLE_VALUE, holder);
    constexpr int attempts = 50; // of some microseconds each; a wait in each would sum up to seconds
    const std::uint64_t begun = Platform::MonotonicMs();
    for (int i = 0; i < attempts; ++i) {
        EXPECT_EQ(ErrorCode{ERROR_SHARING_VIOLATION}, Attempt(path, FileMode::ReadExisting));
        EXPECT_EQ(ErrorCode{ERROR_SHARING_VIOLATION}, Attempt(path, FileMode::WriteOrCreate));
    }
    EXPECT_LT(Platform::MonotonicMs() - begun, 2000u);
    ::CloseHandle(holder);
}

TEST(FileTest, AFileOnItsWayOutIsThereOrGoneForWhoWantsToMakeIt)
{
    const CTempDirectory directory;
    const std::string path = directory.Write("a", "x");
    const HANDLE holder =
        ::CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                      OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(INVALID_HANDLE_VALUE, holder);
    ASSERT_EQ(Success, Platform::DeleteFile(path));
    const ErrorCode error = Attempt(path, FileMode::CreateExclusive); // how soon the name is free is the file system's
    EXPECT_TRUE(error == Success || error == Platform::ErrorAlreadyExists()) << error;
    ::CloseHandle(holder);
    Platform::DeleteFile(path);
    EXPECT_EQ(Success, Attempt(path, FileMode::CreateExclusive));
}

TEST(FileTest, AFileInTheWayForAMomentIsReplacedOnceItIsFree)
{
    const CTempDirectory directory;
    const std::string fresh = directory.Write("a", "new");
    const std::string path = directory.Write("b", "old");
    FileHandle handle = NoFile;
    ASSERT_EQ(Success, Platform::OpenFile(handle, path, FileMode::ReadExisting));
    CFileHandle reader(handle);
    EXPECT_TRUE(IsShutOut(Platform::MoveFile(fresh, path)));
    EXPECT_TRUE(IsShutOut(Platform::PutInPlace(fresh, path))) << "nobody waits for ever";
    std::thread last([&] { reader.Reset(); });
    EXPECT_EQ(Success, Platform::PutInPlace(fresh, path));
    last.join();
    EXPECT_EQ("new", directory.Read("b"));
}

TEST(FileTest, AStreamIsOpenedOnceItsFileIsFreeAndNobodyWaitsForEver)
{
    const CTempDirectory directory;
    const std::string path = directory.Write("a", "x");
    FileHandle handle = NoFile;
    ASSERT_EQ(Success, Platform::OpenFile(handle, path, FileMode::ReadExisting));
    CFileHandle reader(handle);
    const std::uint64_t begun = Platform::MonotonicMs();
    EXPECT_EQ(nullptr, Platform::OpenStream(path, "a"));
    EXPECT_EQ(ErrorCode{ERROR_SHARING_VIOLATION}, Platform::LastError());
    EXPECT_GE(Platform::MonotonicMs() - begun, 150u) << "it was waited for";
    std::thread last([&] { reader.Reset(); });
    std::FILE * const stream = Platform::OpenStream(path, "a");
    last.join();
    ASSERT_NE(nullptr, stream) << Platform::LastError();
    std::fclose(stream);
}

TEST(FileTest, WhatGoesIntoAnAppendingStreamGoesToTheEndWhereverTheWriterThinksItIs)
{
    const CTempDirectory directory;
    std::FILE * const stream = Platform::OpenStream(directory.Write("a", "xy"), "a");
    ASSERT_NE(nullptr, stream);
    OVERLAPPED atTheStart{};
    DWORD written = 0;
    auto * const file = reinterpret_cast<HANDLE>(::_get_osfhandle(::_fileno(stream)));
    EXPECT_NE(FALSE, ::WriteFile(file, "z", 1, &written, &atTheStart));
    std::fclose(stream);
    EXPECT_EQ("xyz", directory.Read("a"));
}

TEST(FileTest, PipesAreRefused)
{
    const std::string name = R"(\\.\pipe\kxra-test-)" + std::to_string(::GetCurrentProcessId());
    const HANDLE pipe = ::CreateNamedPipeA(name.c_str(), PIPE_ACCESS_DUPLEX, PIPE_TYPE_BYTE, 2, 64, 64, 0, nullptr);
    ASSERT_NE(INVALID_HANDLE_VALUE, pipe);
    EXPECT_EQ(ErrorCode{ERROR_BAD_FILE_TYPE}, Attempt(name, FileMode::ReadExisting));
    ::CloseHandle(pipe);
}

TEST(FileTest, MakePrivateTakesTheReadOnlyMarkAwayAndNoOther)
{
    const CTempDirectory directory;
    const std::string path = directory.Write("a", "x");
    ASSERT_NE(0, ::SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN));
    const DWORD before = ::GetFileAttributesA(path.c_str());
    EXPECT_NE(0u, before & FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(Success, Platform::MakePrivate(path));
    EXPECT_EQ(before & ~DWORD{FILE_ATTRIBUTE_READONLY}, ::GetFileAttributesA(path.c_str()));
}

TEST(FileTest, StreamsChangeNoLineEnds)
{
    const CTempDirectory directory;
    std::FILE * stream = Platform::OpenStream(directory.File("s"), "w");
    ASSERT_NE(nullptr, stream);
    std::fputs("a\nb\r\n\x1A", stream);
    std::fclose(stream);
    EXPECT_EQ("a\nb\r\n\x1A", directory.Read("s"));
    stream = Platform::OpenStream(directory.File("s"), "r");
    ASSERT_NE(nullptr, stream);
    char text[16] = {};
    EXPECT_EQ(6u, std::fread(text, 1, sizeof text, stream));
    EXPECT_STREQ("a\nb\r\n\x1A", text);
    std::fclose(stream);
}

TEST(FileTest, AMissingFolderIsAMissingFile)
{
    const CTempDirectory directory;
    EXPECT_EQ(Platform::ErrorNotFound(), Attempt(directory.File("none") + "\\file", FileMode::ReadExisting));
    EXPECT_EQ(Platform::ErrorNotFound(), Platform::DeleteFile(directory.File("none") + "\\file"));
}

} // namespace
