#include "Platform/SharedModule.h"

#include <cstdio>

#include "../MangledName.h"
#include "NoQuestions.h"
#include "System.h"

namespace Platform {

namespace {

constexpr std::size_t FileNameRoom = 256;

/// Whether this code is part of the program, and not of a library.
bool LiesInTheProgram() noexcept
{
    static constexpr char inside = 0;
    HMODULE module = nullptr;
    constexpr DWORD flags = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    return ::GetModuleHandleExA(flags, &inside, &module) != FALSE && module == ::GetModuleHandleA(nullptr);
}

} // namespace

ModuleHandle OpenSharedModule(char const * baseName) noexcept
{
    CLastErrorKeeper const lastError; // who is loading this library at the moment may ask for one of its own
    if (*baseName == '\0') return nullptr;
    char fileName[FileNameRoom];
    int const length = std::snprintf(fileName, sizeof(fileName), "%s.dll", baseName);
    if (length < 0 || static_cast<std::size_t>(length) >= sizeof(fileName)) return nullptr;
    HMODULE module = nullptr;
    if (::GetModuleHandleExA(/*dwFlags=*/0, fileName, &module) != FALSE) return module;
    // A library may be the one that is being loaded, and then the loader's lock is held, under which no other may be
    // loaded. A program's own code runs behind that.
    if (!LiesInTheProgram()) return nullptr;
    CNoQuestions const quiet;
    return ::LoadLibraryExA(fileName, nullptr, LOAD_LIBRARY_SEARCH_DEFAULT_DIRS);
}

void * SharedObject(ModuleHandle module, char const * qualifiedName) noexcept
{
    CLastErrorKeeper const lastError;
    char symbol[MangledNameRoom];
    if (module == nullptr || !MangleName(qualifiedName, symbol)) return nullptr;
    return reinterpret_cast<void *>(::GetProcAddress(static_cast<HMODULE>(module), symbol));
}

} // namespace Platform
