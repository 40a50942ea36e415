#include <cstdio>
#include <memory>

#include "Platform/Clock.h"
#include "Platform/Module.h"
#include "Platform/Process.h"
#include "Snmp/Frame/Export.h"
#include "Snmp/Frame/Extension.h"
#include "Snmp/Frame/FrameTrace.h"
#include "Snmp/Frame/SnmpAgent.h"
#include "Snmp/Host/Process.h"

// The functions that the host calls. Their C forms stand in Platform/SnmpExtension.h.

namespace {

/// Threads killed before the present agent was attached.
std::uint32_t g_terminatedBefore = 0;

/// An address inside this library, by which its file is found; the host's module handle need not be one.
void const * AddressInside() noexcept
{
    return &g_moduleName;
}

void TraceAttach()
{
    const std::uint32_t pid = Platform::CurrentProcessId();
    if (!CDebug::Enabled()) return;
    std::string name;
    CProcess::GetName(name, pid);
    FRAME_TRACE(5, "DllMain: ** DLL_PROCESS_ATTACH (PID %d \"%s\") **", static_cast<int>(pid), name.c_str());
    FRAME_TRACE(2, "Starting SNMP agent...");
}

void Attach(void * module)
{
    // A library that the host has attached twice has one agent all the same.
    if (g_pAgent != nullptr) return;
    Platform::DisableThreadNotifications(module);
    g_agentClosed = 0;
    g_terminatedBefore = CThread::TerminatedCount();
    std::string path;
    if (Platform::ModulePath(AddressInside(), path) == Platform::Success) SetModuleName(path);
    std::printf("\n## SNMP DLL [%s] loaded\n", g_moduleName);
    std::fflush(stdout);
    CDebug::Init(g_moduleName, /*writeBanner=*/true);
    TraceAttach();
    g_pAgent = NewExtensionAgent();
    if (g_pAgent == nullptr) return;
    g_pAgent->SetRegistryName(ExtensionRegistryName());
    if (char const * const region = ExtensionRegion(); region != nullptr) g_pAgent->AddMibRegion(region, nullptr);
    g_pAgent->InitializeModule(AddressInside());
}

void DeleteAgent()
{
    FRAME_TRACE(5, "DllMain: Start delete agent instance...");
    if (Platform::TerminatedThreadsGoOn() && CThread::TerminatedCount() != g_terminatedBefore) {
        g_abandonedAgent = g_pAgent;
    } else {
        delete g_pAgent;
    }
    FRAME_TRACE(5, "DllMain: ... agent instance deleted");
}

void TraceUnloaded()
{
    PLAIN_TRACE(1, "\n\n%-20s: SNMP agent DLL unloaded\n", g_moduleName);
    const Platform::SLocalTime now = Platform::LocalTime();
    PLAIN_TRACE(1, "\n\n----- Application [%s] closed at %02d:%02d:%02d %02d/%02d/%02d -----\n", g_moduleName, now.hour,
                now.minute, now.second, now.month, now.day, now.year);
}

void Detach()
{
    try {
        FRAME_TRACE(5, "DllMain: ** DLL_PROCESS_DETACH **");
        SnmpClose();
        CSnmpAgent::SetAgentStatus(7);
        DeleteAgent();
    } catch (...) {
        EXCEPTION_TRACE(FRAME_HASH_LINE_78,
                        "\n                      %s - Exception in DLL_PROCESS_DETACH !!           ", g_moduleName);
    }
    g_pAgent = nullptr;
    TraceUnloaded();
}

} // namespace

extern "C" {

KXRA_EXPORT_ATTACH std::int32_t DllMain(void * module, std::uint32_t reason, void *)
try {
    switch (reason) {
    case DLL_PROCESS_ATTACH:
        Attach(module);
        break;
    case DLL_PROCESS_DETACH:
        Detach();
        break;
    case DLL_THREAD_ATTACH:
        FRAME_TRACE(5, "DllMain: ** DLL_THREAD_ATTACH ** (ID: %d)", static_cast<int>(Platform::CurrentThreadId()));
        break;
    case DLL_THREAD_DETACH:
        FRAME_TRACE(5, "DllMain: ** DLL_THREAD_DETACH ** (ID: %d)", static_cast<int>(Platform::CurrentThreadId()));
        break;
    default:
        break;
    }
    return 1;
} catch (...) {
    return 0;
}

KXRA_EXPORT std::int32_t SnmpExtensionInit(std::uint32_t dwUptimeReference, SnmpHandle * phTrapEvent,
                                           AsnObjectIdentifier * pFirstRegion)
{
    FRAME_TRACE(5, "DllEntry: SnmpExtensionInit()");
    *pFirstRegion = {};
    const std::int32_t success =
        g_pAgent != nullptr ? g_pAgent->SnmpInit(dwUptimeReference, phTrapEvent, pFirstRegion) : 0;
    FRAME_TRACE(5, "DllEntry: SnmpExtensionInit() ...exit with success=%d", success);
    return success;
}

KXRA_EXPORT std::int32_t SnmpExtensionInitEx(AsnObjectIdentifier * pNextRegion)
{
    FRAME_TRACE(5, "DllEntry: SnmpExtensionInitEx() enter...");
    *pNextRegion = {};
    const std::int32_t success = g_pAgent != nullptr ? g_pAgent->SnmpInitEx(pNextRegion) : 0;
    FRAME_TRACE(5, "DllEntry: SnmpExtensionInitEx() ...exit with success=%d", success);
    return success;
}

KXRA_EXPORT std::int32_t SnmpExtensionQuery(std::uint8_t bPduType, RFC1157VarBindList * pVarBindList,
                                            std::uint32_t * pErrorStatus, std::uint32_t * pErrorIndex)
{
    FRAME_TRACE(5, "DllEntry: SnmpExtensionQuery() enter...");
    const std::int32_t success =
        g_pAgent != nullptr ? g_pAgent->SnmpQuery(bPduType, pVarBindList, pErrorStatus, pErrorIndex) : 0;
    FRAME_TRACE(5, "DllEntry: SnmpExtensionQuery() ...exit with success=%d", success);
    return success;
}

KXRA_EXPORT std::int32_t SnmpExtensionTrap(AsnObjectIdentifier * pEnterprise, std::int32_t * pGenericTrap,
                                           std::int32_t * pSpecificTrap, std::uint32_t * pTimeStamp,
                                           RFC1157VarBindList * pVarBindList)
{
    FRAME_TRACE(5, "DllEntry: SnmpExtensionTrap() enter...");
    *pEnterprise = {};
    *pVarBindList = {};
    const std::int32_t success =
        g_pAgent != nullptr ? g_pAgent->SnmpTrap(pEnterprise, pGenericTrap, pSpecificTrap, pTimeStamp, pVarBindList)
                            : 0;
    FRAME_TRACE(5, "DllEntry: SnmpExtensionTrap() ...exit with success=%d", success);
    return success;
}

KXRA_EXPORT void SnmpExtensionClose()
{
    FRAME_TRACE(5, "DllEntry: SnmpExtensionClose() enter...");
    SnmpClose();
    FRAME_TRACE(5, "DllEntry: SnmpExtensionClose() ...exit");
}

} // extern "C"
