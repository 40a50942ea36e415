#include "Platform/File.h"

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Descriptor.h"

namespace {

constexpr mode_t Everyone = 0666; ///< less the process's mask
constexpr mode_t OwnerOnly = 0600;

bool IsFileToUse(int descriptor) noexcept
{
    struct stat status;
    if (::fstat(descriptor, &status) != 0) return false;
    if (S_ISDIR(status.st_mode)) {
        errno = EISDIR;
        return false;
    }
    // A pipe would block whoever opens or writes it, and raise SIGPIPE.
    if (S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode)) {
        errno = ENXIO;
        return false;
    }
    return true;
}

/// A descriptor of a file that is no directory and no pipe, or -1 with errno.
int OpenDescriptor(char const * path, int flags, mode_t mode) noexcept
{
    Platform::CDescriptor descriptor;
    do {
        descriptor.Reset(::open(path, flags | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, mode));
    } while (!descriptor && errno == EINTR);
    descriptor.Reset(Platform::BeyondStandardStreams(descriptor.Release()));
    return descriptor && IsFileToUse(descriptor.Get()) ? descriptor.Release() : -1;
}

int FlagsOfStreamMode(char const * mode) noexcept
{
    const bool update = std::strchr(mode, '+') != nullptr;
    const int access = update ? O_RDWR : mode[0] == 'r' ? O_RDONLY : O_WRONLY;
    const int exclusive = std::strchr(mode, 'x') != nullptr ? O_EXCL : 0;
    switch (mode[0]) {
    case 'r':
        return access;
    case 'w':
        return access | O_CREAT | O_TRUNC | exclusive;
    case 'a':
        return access | O_CREAT | O_APPEND | exclusive;
    default:
        return -1;
    }
}

} // namespace

Platform::ErrorCode Platform::OpenFile(FileHandle & out, std::string const & path, FileMode mode) noexcept
{
    struct SMode {
        int flags;
        mode_t permissions;
    };
    static constexpr SMode Modes[] = {
        {O_RDONLY, 0}, {O_WRONLY | O_CREAT, Everyone}, {O_WRONLY | O_CREAT | O_EXCL, OwnerOnly}};
    SMode const & how = Modes[static_cast<unsigned>(mode)];
    const int descriptor = OpenDescriptor(path.c_str(), how.flags, how.permissions);
    if (descriptor == -1) return LastErrno();
    out = descriptor;
    return Success;
}

void Platform::CloseFile(FileHandle file) noexcept
{
    if (file != NoFile) ::close(static_cast<int>(file));
}

Platform::ErrorCode Platform::FileSize(FileHandle file, std::uint64_t & out) noexcept
{
    struct stat status;
    if (::fstat(static_cast<int>(file), &status) != 0) return LastErrno();
    out = static_cast<std::uint64_t>(status.st_size);
    return Success;
}

Platform::ErrorCode Platform::SeekTo(FileHandle file, std::uint64_t offset) noexcept
{
    return ::lseek(static_cast<int>(file), static_cast<off_t>(offset), SEEK_SET) == -1 ? LastErrno() : Success;
}

Platform::ErrorCode Platform::SeekToEnd(FileHandle file) noexcept
{
    return ::lseek(static_cast<int>(file), 0, SEEK_END) == -1 ? LastErrno() : Success;
}

std::size_t Platform::ReadFile(FileHandle file, void * data, std::size_t size, ErrorCode & error) noexcept
{
    error = Success;
    std::size_t done = 0;
    while (done < size) {
        const ssize_t moved = ::read(static_cast<int>(file), static_cast<char *>(data) + done, size - done);
        if (moved == 0) break;
        if (moved > 0) {
            done += static_cast<std::size_t>(moved);
        } else if (errno != EINTR) {
            error = LastErrno();
            break;
        }
    }
    return done;
}

std::size_t Platform::WriteFile(FileHandle file, void const * data, std::size_t size, ErrorCode & error) noexcept
{
    error = Success;
    std::size_t done = 0;
    while (done < size) {
        const ssize_t moved = ::write(static_cast<int>(file), static_cast<char const *>(data) + done, size - done);
        if (moved >= 0) {
            done += static_cast<std::size_t>(moved);
        } else if (errno != EINTR) {
            error = LastErrno();
            break;
        }
    }
    return done;
}

Platform::ErrorCode Platform::DeleteFile(std::string const & path) noexcept
{
    return ::unlink(path.c_str()) != 0 ? LastErrno() : Success;
}

Platform::ErrorCode Platform::MoveFile(std::string const & from, std::string const & to) noexcept
{
    return std::rename(from.c_str(), to.c_str()) != 0 ? LastErrno() : Success;
}

Platform::ErrorCode Platform::PutInPlace(std::string const & from, std::string const & to) noexcept
{
    return MoveFile(from, to);
}

Platform::ErrorCode Platform::MakePrivate(std::string const & path) noexcept
{
    return ::chmod(path.c_str(), OwnerOnly) != 0 ? LastErrno() : Success;
}

std::FILE * Platform::OpenStream(std::string const & path, char const * mode) noexcept
{
    const int flags = FlagsOfStreamMode(mode);
    if (flags == -1) {
        errno = EINVAL;
        return nullptr;
    }
    CDescriptor descriptor(OpenDescriptor(path.c_str(), flags, Everyone));
    std::FILE * const stream = descriptor ? ::fdopen(descriptor.Get(), mode) : nullptr;
    if (stream != nullptr) static_cast<void>(descriptor.Release()); // the stream closes it
    return stream;
}

Platform::ErrorCode Platform::CurrentDirectory(std::string & out)
{
    std::string path(256, '\0');
    while (::getcwd(path.data(), path.size()) == nullptr) {
        if (errno != ERANGE) return LastErrno();
        path.resize(path.size() * 2);
    }
    out.assign(path.c_str());
    return Success;
}
