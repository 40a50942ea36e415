#ifndef SNMP_HOST_DEBUG_SETTINGS_H
#define SNMP_HOST_DEBUG_SETTINGS_H

#include <array>
#include <cstdint>
#include <string>

/// The switches of the stamps, in the order of the registry's documentation.
enum class DebugSwitch : std::uint8_t { TimeStamp, DateStamp, ThreadId, CpuId, AppName, MemUsage, HandleCount, Count };
inline constexpr std::size_t DebugSwitchCount = static_cast<std::size_t>(DebugSwitch::Count);

/// What the registry says about the trace, with the defaults for what it doesn't say.
struct SDebugSettings {
    std::uint32_t dynamicUpdate = 0; ///< seconds between two readings, 0: read once
    bool hasApplication = false;     ///< whether the application has a key; without one the rest means nothing
    std::array<std::uint32_t, DebugSwitchCount> switches{};
    std::uint32_t conLevel = 0;
    std::uint32_t winLevel = 0;
    std::uint32_t fileLevel = 0;
    std::uint32_t traceFileLimit = 0; ///< MiB
    std::string traceFile;            ///< at most 259 bytes
};

inline constexpr std::size_t TraceFilePathRoom = 260; ///< bytes of a trace file's path with its NUL

/// Reads "SOFTWARE\Debug" and its subkey `appName`. Any thread. Raises nothing but out of memory.
SDebugSettings ReadDebugSettings(char const * appName);

#endif
