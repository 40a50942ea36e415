#include "Platform/Error.h"

#include <cerrno>
#include <cstring>
#include <memory>

#include "System.h"

namespace Platform {

namespace {

/// Bytes of the C library's text, with its NUL.
constexpr std::size_t CrtTextRoom = 256;

struct SFreeText {
    void operator()(char * text) const noexcept { ::LocalFree(text); }
};

} // namespace

ErrorCode ErrorNotFound() noexcept
{
    return ERROR_FILE_NOT_FOUND;
}

ErrorCode ErrorAccessDenied() noexcept
{
    return ERROR_ACCESS_DENIED;
}

ErrorCode ErrorAlreadyExists() noexcept
{
    return ERROR_FILE_EXISTS;
}

ErrorCode ErrorInsufficientBuffer() noexcept
{
    return ERROR_INSUFFICIENT_BUFFER;
}

ErrorCode ErrorWouldBlock() noexcept
{
    return WSAEWOULDBLOCK;
}

ErrorCode ErrorNotSupported() noexcept
{
    return ERROR_NOT_SUPPORTED;
}

ErrorCode LastError() noexcept
{
    return ::GetLastError();
}

void SetLastError(ErrorCode error) noexcept
{
    ::SetLastError(error);
}

int CrtError() noexcept
{
    return errno;
}

std::string CrtErrorText(int error)
{
    char text[CrtTextRoom] = {};
    const bool known = ::strerror_s(text, sizeof text, error) == 0 && text[0] != '\0';
    return known ? text : "Unknown error " + std::to_string(error);
}

std::string ErrorText(ErrorCode error)
{
    constexpr DWORD how = FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;
    constexpr DWORD language = MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT);
    char * made = nullptr;
    const DWORD size = ::FormatMessageA(how, nullptr, error, language, reinterpret_cast<char *>(&made), 0, nullptr);
    const std::unique_ptr<char, SFreeText> owner(made);
    return size != 0 ? std::string(made, size) : std::string();
}

} // namespace Platform
