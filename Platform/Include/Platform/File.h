#ifndef PLATFORM_FILE_H
#define PLATFORM_FILE_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

#include "Platform/Error.h"
#include "Platform/Handle.h"

/// Files by path, in binary. Files opened here are not inherited by child processes. Directories and pipes are no
/// files: opening one fails and never blocks. Any thread; one file's handle is for one thread at a time.
namespace Platform {

using FileHandle = std::int64_t; ///< -1: none
inline constexpr FileHandle NoFile = -1;

enum class FileMode : std::uint8_t {
    ReadExisting,   ///< others may read meanwhile
    WriteOrCreate,  ///< others may read and write meanwhile; the position is at the start
    CreateExclusive ///< for writing; ErrorAlreadyExists when the file is there (the lock protocol relies on it)
};

/// New files are readable by their owner and the system's default for others; CreateExclusive: owner only. Windows: who
/// may read a file is the business of its folder, for all modes.
ErrorCode OpenFile(FileHandle & out, std::string const & path, FileMode mode) noexcept;
void CloseFile(FileHandle file) noexcept;
ErrorCode FileSize(FileHandle file, std::uint64_t & out) noexcept;
ErrorCode SeekTo(FileHandle file, std::uint64_t offset) noexcept;
ErrorCode SeekToEnd(FileHandle file) noexcept;
/// Bytes moved; fewer than asked only at the end of the file or on an error, which `error` tells.
std::size_t ReadFile(FileHandle file, void * data, std::size_t size, ErrorCode & error) noexcept;
std::size_t WriteFile(FileHandle file, void const * data, std::size_t size, ErrorCode & error) noexcept;
ErrorCode DeleteFile(std::string const & path) noexcept;
/// Renames; an existing target is replaced in one step.
ErrorCode MoveFile(std::string const & from, std::string const & to) noexcept;
/// MoveFile to a name that others open and replace as well. Windows: a target that was deleted while somebody else had
/// it open for a moment bars its name until that one is through; this waits for it, up to 250 ms.
ErrorCode PutInPlace(std::string const & from, std::string const & to) noexcept;
/// Readable and writable by the owner alone. Windows: writable; for whom, its folder says.
ErrorCode MakePrivate(std::string const & path) noexcept;
/// As fopen, but always in binary, and not inherited by child processes. Null with the reason in LastError.
std::FILE * OpenStream(std::string const & path, char const * mode) noexcept;
ErrorCode CurrentDirectory(std::string & out);

struct SFileTraits {
    using Type = FileHandle;
    static Type None() noexcept { return NoFile; }
    static void Close(Type handle) noexcept { CloseFile(handle); }
};
using CFileHandle = THandle<SFileTraits>;

} // namespace Platform

#endif
