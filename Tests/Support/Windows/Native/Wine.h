#ifndef TESTS_SUPPORT_NATIVE_WINE_H
#define TESTS_SUPPORT_NATIVE_WINE_H

#include "Platform/Native/SockAddr.h" // the system's interface without its second names for ours

/// Whether the program runs under Wine, which can't show everything that its system promises.
inline bool RunsUnderWine()
{
    return ::GetProcAddress(::GetModuleHandleA("ntdll.dll"), "wine_get_version") != nullptr;
}

#endif
