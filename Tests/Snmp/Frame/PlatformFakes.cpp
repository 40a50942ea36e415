#include "PlatformFakes.h"

#include "Platform/Thread.h"
#include "Platform/Wait.h"

using Platform::ErrorCode;
using Platform::WaitHandle;
using Modules = std::map<std::string, void *>;

SPlatformFakes g_fakes;

// The linker turns each call of the platform's function into one of __wrap_..., and __real_... is the function.

#define REAL(name) __real_##name
#define WRAP(name) __wrap_##name

extern "C" {

ErrorCode REAL(_ZN8Platform8NewEventERPNS_9SWaitableEbb)(WaitHandle & out, bool initialState, bool manualReset);
ErrorCode WRAP(_ZN8Platform8NewEventERPNS_9SWaitableEbb)(WaitHandle & out, bool initialState, bool manualReset);
ErrorCode WRAP(_ZN8Platform8NewEventERPNS_9SWaitableEbb)(WaitHandle & out, bool initialState, bool manualReset)
{
    if (g_fakes.failEvents != 0 && (g_fakes.failEvents >> g_fakes.eventsMade++ % 32 & 1u) != 0) return kFakeError;
    return REAL(_ZN8Platform8NewEventERPNS_9SWaitableEbb)(out, initialState, manualReset);
}

#define START_THREAD _ZN8Platform11StartThreadERPNS_9SWaitableERjPDoFjPvES4_jb
#define EXPAND(macro, name) macro(name)

ErrorCode EXPAND(REAL, START_THREAD)(WaitHandle & out, std::uint32_t & id, Platform::ThreadEntry entry, void * argument,
                                     std::uint32_t stackBytes, bool suspended);
ErrorCode EXPAND(WRAP, START_THREAD)(WaitHandle & out, std::uint32_t & id, Platform::ThreadEntry entry, void * argument,
                                     std::uint32_t stackBytes, bool suspended);
ErrorCode EXPAND(WRAP, START_THREAD)(WaitHandle & out, std::uint32_t & id, Platform::ThreadEntry entry, void * argument,
                                     std::uint32_t stackBytes, bool suspended)
{
    if (g_fakes.startThreadError != Platform::Success) return g_fakes.startThreadError;
    return EXPAND(REAL, START_THREAD)(out, id, entry, argument, stackBytes, suspended);
}

std::uint64_t REAL(_ZN8Platform11TickCountMsEv)();
std::uint64_t WRAP(_ZN8Platform11TickCountMsEv)();
std::uint64_t WRAP(_ZN8Platform11TickCountMsEv)()
{
    return g_fakes.tickCountMs ? *g_fakes.tickCountMs : REAL(_ZN8Platform11TickCountMsEv)();
}

#define LOADED_MODULES                                                                                                 \
    _ZN8Platform13LoadedModulesERSt3mapINSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEEPvSt4lessIS6_ESaISt4pairIKS6_S7_EEE

ErrorCode EXPAND(REAL, LOADED_MODULES)(Modules & out);
ErrorCode EXPAND(WRAP, LOADED_MODULES)(Modules & out);
ErrorCode EXPAND(WRAP, LOADED_MODULES)(Modules & out)
{
    if (g_fakes.loadedModulesError != Platform::Success) return g_fakes.loadedModulesError;
    if (!g_fakes.loadedModules) return EXPAND(REAL, LOADED_MODULES)(out);
    out = *g_fakes.loadedModules;
    return Platform::Success;
}

void * REAL(_ZN8Platform9PinModuleEPKc)(char const * name);
void * WRAP(_ZN8Platform9PinModuleEPKc)(char const * name);
void * WRAP(_ZN8Platform9PinModuleEPKc)(char const * name)
{
    if (!g_fakes.loadedModules) return REAL(_ZN8Platform9PinModuleEPKc)(name);
    g_fakes.pinned.push_back(name);
    return g_fakes.pinHandle;
}

bool WRAP(_ZN8Platform24RunsInCompatibilityLayerEv)();
bool WRAP(_ZN8Platform24RunsInCompatibilityLayerEv)()
{
    return g_fakes.inCompatibilityLayer;
}
}
