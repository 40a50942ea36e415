#include "Platform/Module.h"

#include <algorithm>

#include "System.h"

#define PSAPI_VERSION 1
#include <psapi.h>

namespace {

using Platform::ErrorCode;

constexpr DWORD MaxModules = 256;
constexpr DWORD NameRoom = 260;
constexpr UINT DirectoryRoom = 260;
constexpr DWORD KernelPathRoom = 520;
constexpr std::size_t PathStep = 260;

ErrorCode FileOf(HMODULE module, std::string & out)
{
    std::string path;
    for (;;) {
        path.resize(path.size() + PathStep);
        const DWORD size = ::GetModuleFileNameA(module, path.data(), static_cast<DWORD>(path.size()));
        if (size == 0) return Platform::LastError();
        // A path that was cut fills its room; the error is not set by every system, and not taken back by any.
        if (size < path.size()) {
            path.resize(size);
            out = std::move(path);
            return Platform::Success;
        }
    }
}

/// A directory as `get`, a function of the system, tells it.
bool Directory(UINT(WINAPI & get)(char *, UINT), std::string & out)
{
    char path[DirectoryRoom];
    const UINT size = get(path, DirectoryRoom);
    if (size == 0 || size >= DirectoryRoom) return false;
    out.assign(path, size);
    return true;
}

} // namespace

Platform::ErrorCode Platform::ModulePath(void const * addressInside, std::string & out)
{
    HMODULE module = nullptr;
    constexpr DWORD flags = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    if (::GetModuleHandleExA(flags, static_cast<char const *>(addressInside), &module) == FALSE) return LastError();
    return FileOf(module, out);
}

Platform::ErrorCode Platform::ProgramPath(std::string & out)
{
    return FileOf(nullptr, out);
}

Platform::ErrorCode Platform::LoadedModules(std::map<std::string, void *> & out)
{
    HMODULE handles[MaxModules];
    DWORD bytes = 0;
    const HANDLE process = ::GetCurrentProcess();
    if (::EnumProcessModules(process, handles, sizeof handles, &bytes) == FALSE) return LastError();
    const DWORD count = std::min<DWORD>(bytes / sizeof(HMODULE), MaxModules);
    std::map<std::string, void *> modules;
    for (DWORD i = 0; i < count; ++i) {
        char name[NameRoom] = {};
        if (::GetModuleBaseNameA(process, handles[i], name, NameRoom) != 0) modules.emplace(name, handles[i]);
    }
    out = std::move(modules);
    return Success;
}

void * Platform::PinModule(char const * name) noexcept
{
    HMODULE module = nullptr;
    return ::GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_PIN, name, &module) != FALSE ? module : nullptr;
}

bool Platform::RunsInCompatibilityLayer() noexcept
{
    BOOL inside = FALSE;
    return ::IsWow64Process(::GetCurrentProcess(), &inside) != FALSE && inside != FALSE;
}

bool Platform::SystemLibraryDirectory(std::string & out)
{
    return Directory(::GetSystemDirectoryA, out);
}

bool Platform::OtherWordSizeDirectory(std::string & out)
{
    return Directory(::GetSystemWow64DirectoryA, out);
}

bool Platform::SystemVersionFile(std::string & out)
{
    char path[KernelPathRoom];
    const DWORD size = ::GetModuleFileNameA(::GetModuleHandleA("kernel32"), path, KernelPathRoom);
    if (size == 0 || size >= KernelPathRoom) return false;
    out.assign(path, size);
    return true;
}
