#include "Snmp/Host/DebugSettings.h"

#include "Platform/Registry.h"

namespace {

constexpr char RootKey[] = "SOFTWARE\\Debug";
constexpr std::uint32_t DefaultFileLimit = 10;

constexpr char const * SwitchNames[DebugSwitchCount] = {"TimeStampOn", "DateStampOn", "ThreadIdOn",   "CpuIdOn",
                                                        "AppNameOn",   "MemUsageOn",  "HandleCountOn"};

bool OpenForReading(Platform::CRegistryKey & key, std::string const & path)
{
    Platform::ErrorCode error = key.Open(path, Platform::RegistryView::View64, Platform::RegistryAccess::Read);
    if (error == Platform::ErrorAccessDenied())
        error = key.Open(path, Platform::RegistryView::Default, Platform::RegistryAccess::Read);
    return error == Platform::Success;
}

std::uint32_t ReadNumber(Platform::CRegistryKey const & key, char const * name, std::uint32_t fallback)
{
    std::uint32_t number = fallback;
    Platform::ReadDword(key, name, number);
    return number;
}

/// Empty when there is none, when it is no text, or when it is longer than its room.
std::string ReadTraceFile(Platform::CRegistryKey const & key)
{
    Platform::SRegistryValue value;
    if (key.Query("TraceFile", value) != Platform::Success) return {};
    const bool isText = value.type == Platform::RegString || value.type == Platform::RegExpandString;
    if (!isText || value.data.size() >= TraceFilePathRoom) return {};
    std::string path = value.data.c_str();
    if (value.type == Platform::RegExpandString && !path.empty()) path = Platform::ExpandEnvironment(path);
    if (path.size() >= TraceFilePathRoom) path.resize(TraceFilePathRoom - 1);
    return path;
}

void ReadApplication(Platform::CRegistryKey const & key, SDebugSettings & settings)
{
    for (std::size_t i = 0; i < DebugSwitchCount; ++i)
        settings.switches[i] = ReadNumber(key, SwitchNames[i], 0);
    settings.conLevel = ReadNumber(key, "ConDebugLevel", 0);
    settings.winLevel = ReadNumber(key, "WinDebugLevel", 0);
    settings.fileLevel = ReadNumber(key, "FileDebugLevel", 0);
    if (settings.fileLevel == 0) return;
    settings.traceFileLimit = ReadNumber(key, "TraceFileLimit", DefaultFileLimit);
    settings.traceFile = ReadTraceFile(key);
}

} // namespace

SDebugSettings ReadDebugSettings(char const * appName)
{
    SDebugSettings settings;
    Platform::CRegistryKey key;
    if (OpenForReading(key, RootKey)) settings.dynamicUpdate = ReadNumber(key, "DynamicUpdate", 0);
    settings.hasApplication = OpenForReading(key, std::string(RootKey) + '\\' + appName);
    if (settings.hasApplication) ReadApplication(key, settings);
    return settings;
}
