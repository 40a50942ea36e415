#include "Platform/File.h"

#include <algorithm>
#include <cstring>
#include <direct.h>
#include <fcntl.h>
#include <io.h>

#include "System.h"

namespace {

constexpr DWORD MostAtOnce = 0x40000000; ///< bytes of one call of the system

/// How a file is opened: what for, what others may do meanwhile, what if it is there or not, and whether somebody in
/// the way is waited for.
struct SHow {
    DWORD access, sharing, disposition;
    bool patient;
};

/// Takes the error of the call before. A missing directory is a missing file, as for the C library.
Platform::ErrorCode PathError() noexcept
{
    const Platform::ErrorCode error = Platform::LastError();
    return error == ERROR_PATH_NOT_FOUND ? Platform::ErrorCode{ERROR_FILE_NOT_FOUND} : error;
}

Platform::ErrorCode ResultOf(BOOL succeeded) noexcept
{
    return succeeded != 0 ? Platform::Success : PathError();
}

HANDLE SystemHandle(Platform::FileHandle file) noexcept
{
    return reinterpret_cast<HANDLE>(static_cast<std::intptr_t>(file));
}

/// How somebody patient bears with others: whoever deletes or renames a file holds it for a moment in a way that shuts
/// out everybody else, and one that is being deleted is denied to all until it is gone. One thread, for one attempt.
class CPatience {
public:
    /// False when it is at an end, else after a moment. Keeps the last error.
    bool Again() const noexcept
    {
        if (::GetTickCount64() - m_Begun >= EndMs) return false;
        const Platform::CLastErrorKeeper keeper;
        ::Sleep(1);
        return true;
    }

private:
    static constexpr ULONGLONG EndMs = 250; ///< from the beginning on

    const ULONGLONG m_Begun = ::GetTickCount64();
};

bool IsShutOut(DWORD error) noexcept
{
    return error == ERROR_SHARING_VIOLATION || error == ERROR_ACCESS_DENIED;
}

/// Of a name that can't be opened.
enum class NameState : std::uint8_t {
    Free,
    Visible, ///< a file or folder is there, for good as far as that can be told
    Veiled   ///< taken, but hidden from view: on its way out, or in a folder that is closed to us
};

NameState Look(char const * path) noexcept
{
    const Platform::CLastErrorKeeper keeper;
    if (::GetFileAttributesA(path) != INVALID_FILE_ATTRIBUTES) return NameState::Visible;
    return IsShutOut(::GetLastError()) ? NameState::Veiled : NameState::Free;
}

/// Whether an open that was shut out may come through in a moment: what is visible now may be the file that has taken
/// the place of the one in the way.
bool IsPassing(SHow const & how, NameState state) noexcept
{
    return how.disposition != CREATE_NEW || state == NameState::Free;
}

/// CreateFile, which has its own name for "is there already" only where it can look at what is there.
HANDLE Create(char const * path, SHow const & how) noexcept
{
    const CPatience patience;
    for (;;) {
        const HANDLE opened = ::CreateFileA(path, how.access, how.sharing, /*not inherited*/ nullptr, how.disposition,
                                            FILE_ATTRIBUTE_NORMAL, nullptr);
        if (opened != INVALID_HANDLE_VALUE || !how.patient) return opened;
        const DWORD error = ::GetLastError();
        if (!IsShutOut(error)) return opened;
        const NameState state = Look(path);
        if (!IsPassing(how, state) || !patience.Again()) {
            ::SetLastError(how.disposition == CREATE_NEW && state != NameState::Free ? ERROR_FILE_EXISTS : error);
            return opened;
        }
    }
}

/// A handle to a file that is no directory (the system refuses those itself) and no pipe.
Platform::ErrorCode OpenHandle(Platform::CSystemHandle & out, char const * path, SHow const & how) noexcept
{
    const HANDLE opened = Create(path, how);
    if (opened == INVALID_HANDLE_VALUE) return PathError();
    out.Reset(opened);
    if (::GetFileType(opened) != FILE_TYPE_PIPE) return Platform::Success;
    out.Reset();
    return ERROR_BAD_FILE_TYPE;
}

/// The C library's mode of a stream, taken apart.
struct SStreamMode {
    explicit SStreamMode(char const * mode) noexcept
        : kind(mode[0]), update(std::strchr(mode, '+') != nullptr), exclusive(std::strchr(mode, 'x') != nullptr)
    {
    }
    bool IsKnown() const noexcept { return kind == 'r' || kind == 'w' || kind == 'a'; }
    SHow How() const noexcept
    {
        const DWORD writing = kind == 'a' ? DWORD{FILE_APPEND_DATA} : DWORD{GENERIC_WRITE};
        const DWORD access = (kind == 'r' || update ? DWORD{GENERIC_READ} : 0) | (kind != 'r' || update ? writing : 0);
        const DWORD disposition = kind == 'r'   ? OPEN_EXISTING
                                  : exclusive   ? CREATE_NEW
                                  : kind == 'w' ? CREATE_ALWAYS
                                                : OPEN_ALWAYS;
        return {access, FILE_SHARE_READ | FILE_SHARE_WRITE, disposition, /*patient=*/true};
    }
    int DescriptorFlags() const noexcept
    {
        return _O_BINARY | _O_NOINHERIT | (kind == 'a' ? _O_APPEND : 0) | (kind == 'r' && !update ? _O_RDONLY : 0);
    }

    const char kind;
    const bool update;
    const bool exclusive;
};

} // namespace

Platform::ErrorCode Platform::OpenFile(FileHandle & out, std::string const & path, FileMode mode) noexcept
{
    // The first two are for a trace, which opens its file for each line and must hold up nobody.
    static constexpr SHow Modes[] = {
        {GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING, /*patient=*/false},
        {GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, OPEN_ALWAYS, /*patient=*/false},
        {GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, CREATE_NEW, /*patient=*/true}};
    CSystemHandle file;
    const ErrorCode error = OpenHandle(file, path.c_str(), Modes[static_cast<unsigned>(mode)]);
    if (error == Success) out = reinterpret_cast<std::intptr_t>(file.Release());
    return error;
}

void Platform::CloseFile(FileHandle file) noexcept
{
    if (file != NoFile) ::CloseHandle(SystemHandle(file));
}

Platform::ErrorCode Platform::FileSize(FileHandle file, std::uint64_t & out) noexcept
{
    LARGE_INTEGER size{};
    if (::GetFileSizeEx(SystemHandle(file), &size) == 0) return LastError();
    out = static_cast<std::uint64_t>(size.QuadPart);
    return Success;
}

Platform::ErrorCode Platform::SeekTo(FileHandle file, std::uint64_t offset) noexcept
{
    LARGE_INTEGER distance{};
    distance.QuadPart = static_cast<LONGLONG>(offset);
    return ResultOf(::SetFilePointerEx(SystemHandle(file), distance, nullptr, FILE_BEGIN));
}

Platform::ErrorCode Platform::SeekToEnd(FileHandle file) noexcept
{
    return ResultOf(::SetFilePointerEx(SystemHandle(file), LARGE_INTEGER{}, nullptr, FILE_END));
}

std::size_t Platform::ReadFile(FileHandle file, void * data, std::size_t size, ErrorCode & error) noexcept
{
    error = Success;
    std::size_t done = 0;
    while (done < size) {
        const auto piece = static_cast<DWORD>(std::min<std::size_t>(size - done, MostAtOnce));
        DWORD moved = 0;
        if (::ReadFile(SystemHandle(file), static_cast<char *>(data) + done, piece, &moved, nullptr) == 0) {
            error = LastError();
            break;
        }
        if (moved == 0) break;
        done += moved;
    }
    return done;
}

std::size_t Platform::WriteFile(FileHandle file, void const * data, std::size_t size, ErrorCode & error) noexcept
{
    error = Success;
    std::size_t done = 0;
    while (done < size) {
        const auto piece = static_cast<DWORD>(std::min<std::size_t>(size - done, MostAtOnce));
        DWORD moved = 0;
        if (::WriteFile(SystemHandle(file), static_cast<char const *>(data) + done, piece, &moved, nullptr) == 0) {
            error = LastError();
            break;
        }
        done += moved;
    }
    return done;
}

Platform::ErrorCode Platform::DeleteFile(std::string const & path) noexcept
{
    return ResultOf(::DeleteFileA(path.c_str()));
}

Platform::ErrorCode Platform::MoveFile(std::string const & from, std::string const & to) noexcept
{
    return ResultOf(::MoveFileExA(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING));
}

Platform::ErrorCode Platform::PutInPlace(std::string const & from, std::string const & to) noexcept
{
    const CPatience patience;
    for (;;) {
        const ErrorCode error = MoveFile(from, to);
        if (!IsShutOut(error) || !patience.Again()) return error;
    }
}

Platform::ErrorCode Platform::MakePrivate(std::string const & path) noexcept
{
    const DWORD attributes = ::GetFileAttributesA(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) return PathError();
    return ResultOf(::SetFileAttributesA(path.c_str(), attributes & ~DWORD{FILE_ATTRIBUTE_READONLY}));
}

std::FILE * Platform::OpenStream(std::string const & path, char const * mode) noexcept
{
    const SStreamMode wanted(mode);
    CSystemHandle file;
    const ErrorCode error =
        wanted.IsKnown() ? OpenHandle(file, path.c_str(), wanted.How()) : ErrorCode{ERROR_INVALID_PARAMETER};
    if (error != Success) {
        SetLastError(error);
        return nullptr;
    }
    const int descriptor = ::_open_osfhandle(reinterpret_cast<std::intptr_t>(file.Get()), wanted.DescriptorFlags());
    if (descriptor == -1) {
        SetLastError(ERROR_TOO_MANY_OPEN_FILES);
        return nullptr;
    }
    static_cast<void>(file.Release()); // the descriptor closes it
    char const plain[] = {wanted.kind, 'b', wanted.update ? '+' : '\0', '\0'};
    std::FILE * const stream = ::_fdopen(descriptor, plain);
    if (stream != nullptr) return stream; // and the stream the descriptor
    ::_close(descriptor);
    SetLastError(ERROR_TOO_MANY_OPEN_FILES);
    return nullptr;
}

Platform::ErrorCode Platform::CurrentDirectory(std::string & out)
{
    std::string path(MAX_PATH, '\0');
    while (::_getcwd(path.data(), static_cast<int>(path.size())) == nullptr) {
        if (errno != ERANGE) return ERROR_NOT_ENOUGH_MEMORY; // what else the C library can mean
        path.resize(path.size() * 2);
    }
    out.assign(path.c_str());
    return Success;
}
