#include "Platform/SharedModule.h"

#include "Platform/Native/SockAddr.h" // the system's interface without its second names for ours

namespace {

/// What the thread that loads this library has asked the system not to ask the user.
const DWORD g_errorModeAtLoad = ::GetThreadErrorMode();

} // namespace

extern "C" __declspec(dllexport) DWORD ErrorModeAtLoad()
{
    return g_errorModeAtLoad;
}

/// Platform::OpenSharedModule, called by a library.
extern "C" __declspec(dllexport) Platform::ModuleHandle OpenSharedModuleFromALibrary(char const * baseName)
{
    return Platform::OpenSharedModule(baseName);
}
