#ifndef TOOLS_ESTATE_H
#define TOOLS_ESTATE_H

#include <chrono>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>

#include "Snmp/Include/Structure.h"
#include "Tools/Fields.h"

namespace Coresim {

/// Numbers of the requests that an agent sends; each is also the number of its bit in the event mask.
enum ERequest : std::uint32_t {
    RequestStatus = 1,
    RequestControllers = 2,
    RequestControllerInfo = 3,
    RequestDrives = 4,
    RequestDriveInfo = 5,
    RequestDevices = 6,
    RequestDeviceInfo = 7,
    RequestContents = 8,
    RequestEvents = 9,
    RequestProgress = 11
};
constexpr std::uint64_t MaskOf(ERequest request) noexcept
{
    return std::uint64_t{1} << request;
}
/// Everything that an agent wants to know when it has connected.
inline constexpr std::uint64_t kAllData = 0x1FE;

/// A counter that counts up by itself.
struct SProgress {
    double start = 0;
    double perSecond = 0;
    double limit = 100;
    std::chrono::steady_clock::time_point since = std::chrono::steady_clock::now();

    int Value(std::chrono::steady_clock::time_point now) const noexcept;
};

/// Controller and logical drive.
using DriveKey = std::pair<int, int>;

/// The data of an estate, without any protection.
struct SEstate {
    SNMP::ORBA_STATUS status;
    SNumbers numbers;
    SNMP::ORBA_ADAPTERTABLE controllers;
    SNMP::ORBA_LOGICALDRIVETABLE drives;
    SNMP::ORBA_LOGICALDRIVECONTENTSTABLE contents;
    SNMP::ORBA_PHYSICALDEVICETABLE devices;
    std::map<DriveKey, SProgress> progress;
};

/// The simulated RAID estate, shared by all sessions. Any thread.
class CEstate {
public:
    explicit CEstate(SEstate data) : m_data(std::move(data)) {}

    /// Changes one field. object: "status", "numbers", "controller:C", "drive:C.N", "member:C.L.N.I" or
    /// "device:C.CH.T.L", with the numbers of the row's index. Returns the event mask of what has changed. Raises
    /// CBadInput and changes nothing when there is no such object or field, or the text is no value of it.
    std::uint64_t Set(std::string_view object, std::string_view field, std::string const & text);

    /// Sets a progress counter, which goes on counting from there if it counts at all.
    void SetProgress(int controller, int drive, int value);
    /// The counter's present value; 0 for a drive without one.
    int Progress(int controller, int drive) const;

    SNMP::ORBA_STATUS Status() const;
    int NumberOf(ERequest infoRequest) const; ///< of RequestControllerInfo, RequestDriveInfo, RequestDeviceInfo
    SNMP::ORBA_ADAPTERTABLE Controllers() const;
    SNMP::ORBA_LOGICALDRIVETABLE Drives() const;
    SNMP::ORBA_LOGICALDRIVECONTENTSTABLE Contents() const;
    SNMP::ORBA_PHYSICALDEVICETABLE Devices() const;

private:
    mutable std::mutex m_lock; // guards the data; nothing is called under it
    SEstate m_data;
};

} // namespace Coresim

#endif
