#include "Platform/Error.h"

#include <netdb.h>

#include <cerrno>
#include <cstring>

namespace Platform {

ErrorCode ErrorNotFound() noexcept
{
    return ENOENT;
}

ErrorCode ErrorAccessDenied() noexcept
{
    return EACCES;
}

ErrorCode ErrorAlreadyExists() noexcept
{
    return EEXIST;
}

ErrorCode ErrorInsufficientBuffer() noexcept
{
    return ERANGE;
}

ErrorCode ErrorWouldBlock() noexcept
{
    return EAGAIN;
}

ErrorCode ErrorNotSupported() noexcept
{
    return ENOTSUP;
}

ErrorCode LastError() noexcept
{
    return static_cast<ErrorCode>(errno);
}

void SetLastError(ErrorCode error) noexcept
{
    errno = static_cast<int>(error);
}

int CrtError() noexcept
{
    return errno;
}

std::string CrtErrorText(int error)
{
    char const * const text = ::strerrordesc_np(error);
    return text != nullptr ? std::string(text) : "Unknown error " + std::to_string(error);
}

std::string ErrorText(ErrorCode error)
{
    const int number = static_cast<int>(error);
    // The resolver's own numbers are the negative ones.
    char const * const text = number < 0 ? ::gai_strerror(number) : ::strerrordesc_np(number);
    return text != nullptr ? text : "";
}

} // namespace Platform
