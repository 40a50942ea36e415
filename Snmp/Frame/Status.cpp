#include "Snmp/Frame/FrameTrace.h"
#include "Snmp/Frame/SnmpAgent.h"

namespace {

struct SStatusText {
    std::uint32_t code;
    char const * text;
};

constexpr SStatusText kStatusTexts[] = {{1, "loaded"},
                                        {2, "initializing"},
                                        {3, "starting"},
                                        {4, "started"},
                                        {5, "stopping"},
                                        {6, "stopped"},
                                        {7, "unloading"},
                                        {8, "unloaded"},
                                        {10, "exception (SnmpExtensionInit)"},
                                        {11, "exception (InitializeMib)"},
                                        {12, "exception (SnmpExtensionClose)"},
                                        {13, "exception (SnmpExtensionQuery)"},
                                        {14, "exception (SnmpExtensionTrap)"},
                                        {15, "exception"}};

char const * StatusText(std::uint32_t code) noexcept
{
    for (SStatusText const & status : kStatusTexts)
        if (status.code == code) return status.text;
    return "unknown";
}

} // namespace

void CSnmpAgent::SetAgentStatus(std::uint32_t code)
{
    FRAME_TRACE(3, "Status changed to: %s (%d)", StatusText(code), static_cast<int>(code));
}
