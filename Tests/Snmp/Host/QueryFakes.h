#ifndef TESTS_SNMP_HOST_QUERY_FAKES_H
#define TESTS_SNMP_HOST_QUERY_FAKES_H

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "Platform/Error.h"

/// A host as a test wants it: its services, processes, version and directories. One thread.
namespace QueryFakes {

struct SService {
    std::uint32_t configSize = 100;
    Platform::ErrorCode configError = Platform::Success; ///< in the place of the configuration
    Platform::ErrorCode statusError = Platform::Success;
    bool asksForNoMore = false; ///< says that the buffer is too small and asks for the same size again
};

struct SProcess {
    std::uint32_t id;
    Platform::ErrorCode openError = Platform::Success;
    bool hasModules = true;
    Platform::ErrorCode nameError = Platform::Success;
    std::string name;
};

struct SHost {
    Platform::ErrorCode managerError = Platform::Success;
    bool managerIsNull = false; ///< opening says success and gives no handle
    Platform::ErrorCode closeError = Platform::Success;
    std::map<std::string, SService> services;
    int openHandles = 0;                    ///< of managers, services and processes
    std::vector<std::uint32_t> configRooms; ///< buffer sizes that were offered, in order

    Platform::ErrorCode enumError = Platform::Success;
    std::vector<SProcess> processes;

    Platform::ErrorCode versionError = Platform::Success;
    std::uint32_t major = 6, minor = 1, build = 7601;

    std::string systemDirectory = "/no/system", otherDirectory; ///< empty: there is none
    std::string versionFile;
    bool hasVersionFile = false;
};

/// The host of the running test.
SHost & Host();

} // namespace QueryFakes

#endif
