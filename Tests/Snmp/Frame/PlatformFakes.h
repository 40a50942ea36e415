#ifndef TESTS_SNMP_FRAME_PLATFORM_FAKES_H
#define TESTS_SNMP_FRAME_PLATFORM_FAKES_H

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Error.h"

/// What the platform answers instead of the system. Everything stays with the system until a field is set. Set
/// before threads run.
struct SPlatformFakes {
    std::uint32_t failEvents = 0; ///< bit n: the n-th event from 0 can't be made; eventsMade counts meanwhile
    std::uint32_t eventsMade = 0;
    Platform::ErrorCode startThreadError = Platform::Success;
    std::optional<std::uint64_t> tickCountMs;
    std::optional<std::map<std::string, void *>> loadedModules;
    Platform::ErrorCode loadedModulesError = Platform::Success;
    void * pinHandle = nullptr;
    std::vector<std::string> pinned; ///< names given to PinModule while loadedModules is set
    bool inCompatibilityLayer = false;
};

extern SPlatformFakes g_fakes;
inline constexpr Platform::ErrorCode kFakeError = 4711;

#endif
