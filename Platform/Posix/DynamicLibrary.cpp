#include "Platform/DynamicLibrary.h"

#include <dlfcn.h>

namespace Platform {

ModuleHandle LoadModule(std::string const & file, std::string & reason)
{
    // A name without a directory would be looked up on the loader's search path instead of where it was named.
    const std::string path = file.find('/') == std::string::npos ? "./" + file : file;
    ModuleHandle module = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (module == nullptr) {
        char const * text = ::dlerror();
        reason = text != nullptr ? text : "unknown reason";
    }
    return module;
}

void UnloadModule(ModuleHandle module) noexcept
{
    if (module != nullptr) ::dlclose(module);
}

void * ModuleSymbol(ModuleHandle module, char const * name) noexcept
{
    return ::dlsym(module, name);
}

char const * ModuleFileSuffix() noexcept
{
    return ".so";
}

} // namespace Platform
