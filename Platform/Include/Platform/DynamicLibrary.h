#ifndef PLATFORM_DYNAMIC_LIBRARY_H
#define PLATFORM_DYNAMIC_LIBRARY_H

#include <string>

#include "Platform/Handle.h"

/// Loading of extension libraries at run time. Any thread.
namespace Platform {

using ModuleHandle = void *;

/// Loads the library `file` with all its symbols bound and none of them made visible to others; a name without a folder
/// lies in the current one. Windows: libraries that it needs are looked for beside it first. On failure returns null
/// and puts the system's one-line answer into `reason`.
ModuleHandle LoadModule(std::string const & file, std::string & reason);
/// Gives up one load of the module. Null is ignored.
void UnloadModule(ModuleHandle module) noexcept;
/// Address of an exported symbol, or null.
void * ModuleSymbol(ModuleHandle module, char const * name) noexcept;
/// The ending of a library's file name on this system, with its dot.
char const * ModuleFileSuffix() noexcept;

struct SModuleTraits {
    using Type = ModuleHandle;
    static Type None() noexcept { return nullptr; }
    static void Close(Type handle) noexcept { UnloadModule(handle); }
};
using CModuleHandle = THandle<SModuleTraits>;

} // namespace Platform

#endif
