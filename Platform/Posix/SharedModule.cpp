#include "Platform/SharedModule.h"

#include <dlfcn.h>
#include <limits.h>
#include <link.h>

#include <cstdio>
#include <cstring>

#include "../MangledName.h"

namespace Platform {

namespace {

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
    char symbol[MangledNameRoom];
    return module != nullptr && MangleName(qualifiedName, symbol) ? Quietly(::dlsym(module, symbol)) : nullptr;
}

} // namespace Platform
