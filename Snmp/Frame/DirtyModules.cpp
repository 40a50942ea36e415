#include <map>

#include "Platform/Module.h"
#include "Platform/Registry.h"
#include "Snmp/Frame/FrameTrace.h"
#include "Snmp/Frame/SnmpAgent.h"

namespace {

/// Room for a value's name and for its data, the closing NUL included; what is longer ends the list.
constexpr std::size_t kListRoom = 260;

void LockModule(char const * name, std::map<std::string, void *> const & loaded)
{
    FRAME_TRACE(3, "Dirty module \"%s\" found in list", name);
    if (loaded.find(name) == loaded.end()) {
        FRAME_TRACE(3, "Dirty module %s was not already loaded before this agent!", name);
        return;
    }
    if (void * const handle = Platform::PinModule(name); handle != nullptr)
        FRAME_TRACE(3, "Dirty module %s (0x%X) successfully locked!", name,
                    static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(handle)));
}

} // namespace

void CSnmpAgent::LockDirtyModules()
{
    if (Platform::RunsInCompatibilityLayer()) return;
    Platform::CRegistryKey list;
    if (list.Open(m_commonRoot + "\\#LockList", Platform::RegistryView::View64, Platform::RegistryAccess::Full) !=
        Platform::Success)
        return;
    std::map<std::string, void *> loaded;
    if (Platform::LoadedModules(loaded) != Platform::Success) return;
    std::string label;
    Platform::SRegistryValue value;
    for (std::uint32_t i = 0; list.EnumValue(i, label, value) == Platform::Success; ++i) {
        if (label.size() >= kListRoom || value.data.size() >= kListRoom) return;
        LockModule(value.data.c_str(), loaded);
    }
}
