#include "Platform/SharedModule.h"

#include <dlfcn.h>
#include <limits.h>
#include <link.h>

#include <cstdio>
#include <cstring>

namespace Platform {

namespace {

constexpr std::size_t SymbolRoom = 512;

/// Looks for a loaded library by the last part of its path.
struct SLoadedSearch {
    char const * fileName;
    char path[PATH_MAX];

    static int Look(dl_phdr_info * info, std::size_t, void * search) noexcept
    {
        return static_cast<SLoadedSearch *>(search)->Matches(info->dlpi_name) ? 1 : 0;
    }
    bool Matches(char const * loaded) noexcept
    {
        char const * const slash = std::strrchr(loaded, '/');
        if (slash == nullptr || std::strcmp(slash + 1, fileName) != 0) return false;
        return static_cast<std::size_t>(std::snprintf(path, sizeof(path), "%s", loaded)) < sizeof(path);
    }
};

/// Nobody is told that there is nothing: who is loading this library at the moment may ask for an error of its own.
void * Quietly(void * found) noexcept
{
    if (found == nullptr) ::dlerror();
    return found;
}

ModuleHandle OpenLoaded(char const * fileName) noexcept
{
    SLoadedSearch search{fileName, {}};
    // Opened behind the search, which holds a lock of the loader.
    if (::dl_iterate_phdr(&SLoadedSearch::Look, &search) == 0) return nullptr;
    return Quietly(::dlopen(search.path, RTLD_NOW | RTLD_NOLOAD));
}

/// Writes the name as the compiler's binary interface has it: _ZN, each part behind its length, E.
bool Mangle(char const * qualifiedName, char (&symbol)[SymbolRoom]) noexcept
{
    std::size_t used = static_cast<std::size_t>(std::snprintf(symbol, SymbolRoom, "_ZN"));
    for (char const * part = qualifiedName; part != nullptr && used < SymbolRoom;) {
        char const * const end = std::strstr(part, "::");
        int const length = static_cast<int>(end != nullptr ? static_cast<std::size_t>(end - part) : std::strlen(part));
        used +=
            static_cast<std::size_t>(std::snprintf(symbol + used, SymbolRoom - used, "%d%.*s", length, length, part));
        part = end != nullptr ? end + 2 : nullptr;
    }
    if (used + 2 > SymbolRoom) return false;
    std::memcpy(symbol + used, "E", 2);
    return true;
}

} // namespace

ModuleHandle OpenSharedModule(char const * baseName) noexcept
{
    char fileName[NAME_MAX + 1];
    int const length = std::snprintf(fileName, sizeof(fileName), "%s.so", baseName);
    if (length < 0 || static_cast<std::size_t>(length) >= sizeof(fileName)) return nullptr;
    if (ModuleHandle const loaded = OpenLoaded(fileName)) return loaded;
    return Quietly(::dlopen(fileName, RTLD_NOW | RTLD_LOCAL));
}

void * SharedObject(ModuleHandle module, char const * qualifiedName) noexcept
{
    char symbol[SymbolRoom];
    return module != nullptr && Mangle(qualifiedName, symbol) ? Quietly(::dlsym(module, symbol)) : nullptr;
}

} // namespace Platform
