#ifndef TESTS_SUPPORT_WINDOWS_SYSTEM_HANDLE_H
#define TESTS_SUPPORT_WINDOWS_SYSTEM_HANDLE_H

#include "Platform/Native/SockAddr.h"

#include <windows.h>

#include "Platform/Handle.h"

/// Handles of the system, closed at their end. For the files of this folder.

struct SSystemHandleTraits {
    using Type = HANDLE;
    static Type None() noexcept { return nullptr; }
    static void Close(Type handle) noexcept { ::CloseHandle(handle); }
};
using CSystemHandle = Platform::THandle<SSystemHandleTraits>;

struct SRegistryKeyTraits {
    using Type = HKEY;
    static Type None() noexcept { return nullptr; }
    static void Close(Type key) noexcept { ::RegCloseKey(key); }
};
using CNativeKey = Platform::THandle<SRegistryKeyTraits>;

struct SServiceTraits {
    using Type = SC_HANDLE;
    static Type None() noexcept { return nullptr; }
    static void Close(Type handle) noexcept { ::CloseServiceHandle(handle); }
};
using CNativeService = Platform::THandle<SServiceTraits>;

#endif
