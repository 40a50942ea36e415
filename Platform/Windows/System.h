#ifndef PLATFORM_WINDOWS_SYSTEM_H
#define PLATFORM_WINDOWS_SYSTEM_H

/// The system's own interface, for the sources of this folder alone, which include windows.h in no other way: the
/// sockets must come first, and names of ours that are macros there are given back by SockAddr.h. A function with two
/// forms is called by the name of its form (::DeleteFileA), and with the scope in front, since many have a namesake
/// in Platform.
#include "Platform/Native/SockAddr.h"

#include <windows.h>

#include "Platform/Error.h"
#include "Platform/Handle.h"

namespace Platform {

/// A handle of the kernel. INVALID_HANDLE_VALUE, by which some calls say "none", must not be put into it.
struct SSystemHandleTraits {
    using Type = HANDLE;
    static Type None() noexcept { return nullptr; }
    static void Close(Type handle) noexcept { ::CloseHandle(handle); }
};
using CSystemHandle = THandle<SSystemHandleTraits>;

} // namespace Platform

#endif
