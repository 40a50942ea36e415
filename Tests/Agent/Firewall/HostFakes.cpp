#include "HostFakes.h"

#include "Recorder.h"

SHostFakes g_hostFakes;

// The linker turns each call of the platform's function into one of __wrap_...

#define WRAP(name) __wrap_##name

extern "C" {

bool WRAP(_ZN8Platform18HasManagedFirewallEv)();
bool WRAP(_ZN8Platform18HasManagedFirewallEv)()
{
    return g_hostFakes.hasManagedFirewall;
}

Platform::ErrorCode WRAP(_ZN8Platform9OsVersionERNS_10SOsVersionE)(Platform::SOsVersion & out);
Platform::ErrorCode WRAP(_ZN8Platform9OsVersionERNS_10SOsVersionE)(Platform::SOsVersion & out)
{
    if (g_hostFakes.versionError == Platform::Success) out = g_hostFakes.version;
    return g_hostFakes.versionError;
}

void WRAP(_ZN8Platform5SleepEj)(std::uint32_t timeoutMs);
void WRAP(_ZN8Platform5SleepEj)(std::uint32_t timeoutMs)
{
    Recorder::Note("Sleep " + std::to_string(timeoutMs));
}
}
