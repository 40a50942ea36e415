#ifndef PLATFORM_ERROR_H
#define PLATFORM_ERROR_H

#include <cstdint>
#include <string>

namespace Platform {

/// The system's own error number: errno on POSIX, GetLastError on Windows. 0 is success. Functions of this
/// room take it at once after the call that failed and return it. Everything here: any thread.
using ErrorCode = std::uint32_t;
inline constexpr ErrorCode Success = 0;

/// Conditions that code above the seam has to tell apart; each has the system's own number.
ErrorCode ErrorNotFound() noexcept; ///< no such file, key or value
ErrorCode ErrorAccessDenied() noexcept;
ErrorCode ErrorAlreadyExists() noexcept;
ErrorCode ErrorInsufficientBuffer() noexcept; ///< the call said how much room it needs
ErrorCode ErrorWouldBlock() noexcept;         ///< of sockets
ErrorCode ErrorNotSupported() noexcept;

/// The calling thread's last error, as the system keeps it.
ErrorCode LastError() noexcept;
void SetLastError(ErrorCode error) noexcept;

/// The calling thread's errno of the C library (the same as LastError on POSIX).
int CrtError() noexcept;
/// The C library's text of an errno value. Never empty.
std::string CrtErrorText(int error);
/// The system's text of an error as it comes, on Windows with its line's end; empty when it has none.
std::string ErrorText(ErrorCode error);

/// Keeps the thread's last error over a scope that must not disturb it.
class CLastErrorKeeper {
public:
    CLastErrorKeeper() noexcept : m_error(LastError()) {}
    ~CLastErrorKeeper() { SetLastError(m_error); }
    CLastErrorKeeper(CLastErrorKeeper const &) = delete;
    CLastErrorKeeper & operator=(CLastErrorKeeper const &) = delete;

private:
    ErrorCode m_error;
};

} // namespace Platform

#endif
