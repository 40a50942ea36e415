#ifndef PLATFORM_SHARED_MODULE_H
#define PLATFORM_SHARED_MODULE_H

#include "Platform/DynamicLibrary.h"

/// Objects that libraries of a process share without being linked to each other. Any thread; also while a library is
/// being loaded.
namespace Platform {

/// Opens the library of this base name (without folder and ending): the one that the process has loaded, from whatever
/// folder; else the one that the loader finds on its own search path, with all its symbols bound and none of them made
/// visible to others. Windows: the second in the program's folder and the system's, never in the current one, and for a
/// call out of the program's own code only, since a library that calls may just be being loaded, and then must not load
/// another. The caller owns the result (CModuleHandle); null when there is no such library, which leaves no error
/// behind that others could take for theirs.
ModuleHandle OpenSharedModule(char const * baseName) noexcept;

/// Address of an object that the library exports: a variable of a namespace or a static member of a class, under its
/// full C++ name ("A::B::m_C"). Valid as long as the library is open. Null when it exports none.
void * SharedObject(ModuleHandle module, char const * qualifiedName) noexcept;

} // namespace Platform

#endif
