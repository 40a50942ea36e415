#include "Platform/Process.h"

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>

#include <dirent.h>
#include <fcntl.h>
#include <sched.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Descriptor.h"

/// An open directory of /proc: the process's own for good, so a later process with the same id is never met.
struct Platform::SProcess {
    int directory;
};

namespace {

constexpr std::size_t PathRoom = 4096;
constexpr char DeletedMark[] = " (deleted)";

struct SDirectoryCloser {
    void operator()(DIR * directory) const noexcept { ::closedir(directory); }
};
using CDirectory = std::unique_ptr<DIR, SDirectoryCloser>;

bool ParseId(char const * text, std::uint32_t & out) noexcept
{
    char const * const end = text + std::strlen(text);
    const auto [stop, error] = std::from_chars(text, end, out);
    return error == std::errc() && stop == end;
}

/// The program of a process: Success with its path, ENOENT when the process has none (a thread of the kernel, or a
/// process that has ended).
Platform::ErrorCode ReadProgram(int directory, char (&out)[PathRoom]) noexcept
{
    const ssize_t size = ::readlinkat(directory, "exe", out, PathRoom - 1);
    if (size < 0) return Platform::LastErrno();
    out[size] = '\0';
    return Platform::Success;
}

void StripDeletedMark(int directory, char * path) noexcept
{
    const std::size_t size = std::strlen(path);
    constexpr std::size_t markSize = sizeof(DeletedMark) - 1;
    if (size <= markSize || std::strcmp(path + size - markSize, DeletedMark) != 0) return;
    struct stat status;
    if (::fstatat(directory, "exe", &status, 0) == 0 && status.st_nlink == 0) path[size - markSize] = '\0';
}

} // namespace

std::uint32_t Platform::CurrentProcessId() noexcept
{
    return static_cast<std::uint32_t>(::getpid());
}

Platform::ErrorCode Platform::EnumProcesses(std::uint32_t * ids, std::uint32_t capacity, std::uint32_t & count) noexcept
{
    const CDirectory directory(::opendir("/proc"));
    if (!directory) return LastErrno();
    count = 0;
    while (count < capacity) {
        errno = 0;
        dirent const * const entry = ::readdir(directory.get());
        if (entry == nullptr) return LastErrno();
        std::uint32_t id = 0;
        if (ParseId(entry->d_name, id)) ids[count++] = id;
    }
    return Success;
}

Platform::ErrorCode Platform::OpenProcess(ProcessHandle & out, std::uint32_t id) noexcept
{
    char path[32];
    std::snprintf(path, sizeof path, "/proc/%u", id);
    const int directory = ::open(path, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (directory == -1) return LastErrno();
    char program[PathRoom];
    ErrorCode error = ReadProgram(directory, program);
    auto * const process = error == Success || error == ENOENT ? new (std::nothrow) SProcess{directory} : nullptr;
    if (process == nullptr) {
        ::close(directory);
        return error == Success || error == ENOENT ? static_cast<ErrorCode>(ENOMEM) : error;
    }
    out = process;
    return Success;
}

void Platform::CloseProcess(ProcessHandle process) noexcept
{
    if (process == nullptr) return;
    ::close(process->directory);
    delete process;
}

Platform::ErrorCode Platform::HasModules(ProcessHandle process) noexcept
{
    char program[PathRoom];
    return ReadProgram(process->directory, program);
}

Platform::ErrorCode Platform::ProcessName(ProcessHandle process, std::string & out)
{
    char program[PathRoom];
    const ErrorCode error = ReadProgram(process->directory, program);
    if (error != Success) return error;
    StripDeletedMark(process->directory, program);
    char const * const slash = std::strrchr(program, '/');
    out = slash != nullptr ? slash + 1 : program;
    return Success;
}

bool Platform::MemoryUse(std::uint64_t & privateBytes, std::uint64_t & workingSet) noexcept
{
    const int file = ::open("/proc/self/statm", O_RDONLY | O_CLOEXEC);
    if (file == -1) return false;
    char text[256];
    const ssize_t size = ::read(file, text, sizeof text - 1);
    ::close(file);
    if (size <= 0) return false;
    text[size] = '\0';
    unsigned long resident = 0;
    unsigned long data = 0;
    if (std::sscanf(text, "%*u %lu %*u %*u %*u %lu", &resident, &data) != 2) return false;
    const auto page = static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
    privateBytes = data * page;
    workingSet = resident * page;
    return true;
}

bool Platform::HandleCount(std::uint32_t & count) noexcept
{
    const CDirectory directory(::opendir("/proc/self/fd"));
    if (!directory) return false;
    std::uint32_t found = 0;
    while (dirent const * const entry = ::readdir(directory.get())) {
        std::uint32_t number = 0;
        if (ParseId(entry->d_name, number)) ++found;
    }
    count = found - 1; // the directory's own descriptor
    return true;
}

bool Platform::CurrentProcessor(std::uint32_t & number) noexcept
{
    const int processor = ::sched_getcpu();
    if (processor < 0) return false;
    number = static_cast<std::uint32_t>(processor);
    return true;
}
