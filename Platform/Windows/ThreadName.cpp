#include "Platform/Thread.h"

#include <cstring>

#include "System.h"

namespace Platform {

namespace {

constexpr int MaxNameLength = 255; ///< characters; the system takes far more than any name here has

/// What a debugger reads out of the exception that tells it a thread's name.
struct SNameForDebugger {
    DWORD type = 0x1000;
    LPCSTR name;
    DWORD threadId;
    DWORD flags = 0;
};
constexpr DWORD NameException = 0x406D1388;

LONG CALLBACK PassOverNameException(EXCEPTION_POINTERS * exception)
{
    return exception->ExceptionRecord->ExceptionCode == NameException ? EXCEPTION_CONTINUE_EXECUTION
                                                                      : EXCEPTION_CONTINUE_SEARCH;
}

/// By an exception that nobody but a debugger looks at; one that doesn't know it hands it back.
void TellDebugger(char const * name) noexcept
{
    if (::IsDebuggerPresent() == 0) return;
    const SNameForDebugger record{.name = name, .threadId = ::GetCurrentThreadId()};
    ULONG_PTR arguments[sizeof record / sizeof(ULONG_PTR)];
    static_assert(sizeof arguments == sizeof record);
    std::memcpy(arguments, &record, sizeof record);
    void * const handler = ::AddVectoredExceptionHandler(/*first=*/1, &PassOverNameException);
    if (handler == nullptr) return;
    ::RaiseException(NameException, 0, static_cast<DWORD>(std::size(arguments)), arguments);
    ::RemoveVectoredExceptionHandler(handler);
}

/// Where the system keeps names of threads; older ones don't.
void TellSystem(char const * name) noexcept
{
    using SetDescription = HRESULT(WINAPI *)(HANDLE thread, PCWSTR description);
    const HMODULE library = ::GetModuleHandleA("kernelbase.dll");
    const FARPROC found = library != nullptr ? ::GetProcAddress(library, "SetThreadDescription") : nullptr;
    if (found == nullptr) return;
    wchar_t wide[MaxNameLength + 1] = {};
    const auto length = static_cast<int>(::strnlen(name, MaxNameLength));
    ::MultiByteToWideChar(CP_ACP, 0, name, length, wide, MaxNameLength);
    reinterpret_cast<SetDescription>(reinterpret_cast<void (*)()>(found))(::GetCurrentThread(), wide);
}

} // namespace

void NameCurrentThread(char const * name) noexcept
{
    if (name == nullptr) return;
    const CLastErrorKeeper keeper;
    TellSystem(name);
    TellDebugger(name);
}

} // namespace Platform
