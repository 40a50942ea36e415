#include "Snmp/Frame/Globals.h"

#include <algorithm>

#include "Platform/Host.h"

CSnmpAgent * g_pAgent = nullptr;
CSnmpAgent * g_abandonedAgent = nullptr;
constinit TRelaxed<std::uint32_t> g_agentShutdown;
constinit TRelaxed<std::uint32_t> g_agentClosed;
char g_moduleName[kModuleNameRoom];

void SetModuleName(std::string const & path) noexcept
{
    const std::size_t separator = path.rfind(Platform::PathSeparator());
    const std::size_t start = separator == std::string::npos ? 0 : separator + 1;
    const std::size_t dot = path.rfind('.');
    const std::size_t end = dot == std::string::npos || dot < start ? path.size() : dot;
    const std::size_t length = std::min(end - start, kModuleNameRoom - 1);
    std::copy_n(path.data() + start, length, g_moduleName);
    g_moduleName[length] = '\0';
}
