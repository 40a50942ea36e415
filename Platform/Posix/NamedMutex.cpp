#include "Platform/NamedMutex.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <string_view>

#include "../NameHash.h"
#include "../SharedByName.h"
#include "Descriptor.h"
#include "Mutex.h"
#include "Platform/Clock.h"

namespace Platform {

namespace {

constexpr std::size_t MaxNameBytes = 512;
constexpr std::size_t MaxPlainBytes = 180; // of a file name, beside the prefix and a hash of the rest
constexpr std::uint32_t RetryMs = 1;
constexpr int OpenFlags = O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;

struct SShared;
constinit TSharedByName<SShared> g_mutexes;

/// One mutex in this process. Threads exclude each other by the inner mutex, which knows when an owner ended;
/// processes by a lock on a file, which the system gives up for a process that ended.
struct SShared : TSharedByName<SShared>::SNamed {
    CDescriptor file;
    CWaitableHandle inner; // behind the file, which it unlocks for an owner that ends

    ErrorCode Open() noexcept;
};

/// The file that stands for a name, in the memory file system where there is one: that of a service with a
/// private /tmp is the others' too.
std::string PathFor(char const * name)
{
    const std::string_view used(name, ::strnlen(name, MaxNameBytes));
    std::string file(used.substr(0, MaxPlainBytes));
    std::replace(file.begin(), file.end(), '/', '_');
    if (used.size() > MaxPlainBytes) file.append(1, '-').append(std::to_string(NameHash(used)));
    std::string path = ::access("/dev/shm", W_OK) == 0 ? "/dev/shm/" : "/tmp/";
    return path.append("kxra-mutex.").append(file);
}

/// Opens the file or makes it, for every user. Creating is exclusive: in a directory that all may write, the
/// system refuses to open somebody else's file with O_CREAT.
CDescriptor OpenLockFile(char const * path, ErrorCode & error) noexcept
{
    for (int attempt = 0; attempt < 16; ++attempt) {
        CDescriptor file(BeyondStandardStreams(::open(path, OpenFlags)));
        if (!file && errno == ENOENT) {
            file.Reset(BeyondStandardStreams(::open(path, OpenFlags | O_CREAT | O_EXCL, 0666)));
            if (file) ::fchmod(file.Get(), 0666); // whatever the umask is
            if (!file && errno == EEXIST) continue;
        }
        struct stat status {};
        if (!file || ::fstat(file.Get(), &status) != 0) {
            error = LastErrno();
            return CDescriptor();
        }
        error = S_ISREG(status.st_mode) ? Success : ErrorCode{EINVAL};
        return error == Success ? std::move(file) : CDescriptor();
    }
    error = EBUSY;
    return CDescriptor();
}

ErrorCode SShared::Open() noexcept
{
    ErrorCode error = Success;
    file = OpenLockFile(name.c_str(), error);
    if (error != Success) return error;
    WaitHandle mutex = nullptr;
    error = NewMutex(mutex, /*initialOwner=*/false);
    if (error != Success) return error;
    inner.Reset(mutex);
    static_cast<SMutex *>(mutex)->SetFileLock(file.Get());
    return Success;
}

bool LockFile(int file, std::uint32_t timeoutMs) noexcept
{
    const std::uint64_t start = MonotonicMs();
    for (;;) {
        if (::flock(file, LOCK_EX | LOCK_NB) == 0) return true;
        if (errno != EWOULDBLOCK && errno != EINTR) return false;
        if (timeoutMs != Infinite && MonotonicMs() - start >= timeoutMs) return false;
        Sleep(RetryMs);
    }
}

} // namespace

struct SNamedMutex {
    SShared * shared = nullptr;
};

ErrorCode NewNamedMutex(NamedMutexHandle & out, char const * name) noexcept
try {
    if (name == nullptr || *name == '\0') return EINVAL;
    auto handle = std::make_unique<SNamedMutex>();
    const ErrorCode error = g_mutexes.Acquire(handle->shared, PathFor(name));
    if (error != Success) return error;
    out = handle.release();
    return Success;
} catch (std::bad_alloc const &) {
    return ENOMEM;
}

bool TakeNamedMutex(NamedMutexHandle mutex, std::uint32_t timeoutMs) noexcept
{
    if (mutex == nullptr) return false;
    SShared const & shared = *mutex->shared;
    const std::uint64_t start = MonotonicMs();
    // The owner itself has to wait as well, so it must not get in by recursion.
    const auto & inner = static_cast<SMutex const &>(*shared.inner.Get());
    if (inner.OwnedBy(ExistingThreadRecord())) {
        Sleep(timeoutMs);
        return false;
    }
    const WaitResult result = WaitForOne(shared.inner.Get(), timeoutMs, /*wakeable=*/false).result;
    if (result != WaitResult::Signaled && result != WaitResult::Abandoned) return false;
    const std::uint64_t spent = MonotonicMs() - start;
    const std::uint32_t left = timeoutMs == Infinite
                                   ? Infinite
                                   : timeoutMs - static_cast<std::uint32_t>(std::min<std::uint64_t>(spent, timeoutMs));
    if (LockFile(shared.file.Get(), left)) return true;
    ReleaseMutex(shared.inner.Get());
    return false;
}

void ReleaseNamedMutex(NamedMutexHandle mutex) noexcept
{
    if (mutex == nullptr) return;
    SShared const & shared = *mutex->shared;
    if (!static_cast<SMutex const &>(*shared.inner.Get()).OwnedBy(ExistingThreadRecord())) return;
    ::flock(shared.file.Get(), LOCK_UN);
    ReleaseMutex(shared.inner.Get());
}

void CloseNamedMutex(NamedMutexHandle mutex) noexcept
{
    if (mutex == nullptr) return;
    g_mutexes.Release(*mutex->shared);
    delete mutex;
}

} // namespace Platform
