#include "Tools/Estate.h"

#include <algorithm>
#include <array>
#include <vector>

#include "Tools/BadInput.h"

namespace Coresim {

namespace {

/// The numbers behind an object's colon.
std::vector<int> ParseIndex(std::string_view text)
{
    std::vector<int> index;
    for (std::size_t at = 0; at <= text.size();) {
        std::size_t const end = std::min(text.find('.', at), text.size());
        index.push_back(ParseInt32(text.substr(at, end - at)));
        at = end + 1;
    }
    return index;
}

/// The row of a table that bears the index, and its field set.
template <class TTable, class TIndexOf>
void SetInRow(TTable & table, std::vector<int> const & wanted, TIndexOf indexOf, std::string_view field,
              std::string const & text)
{
    for (auto & row : table) {
        auto const index = indexOf(row);
        if (std::equal(index.begin(), index.end(), wanted.begin(), wanted.end())) return SetField(row, field, text);
    }
    throw CBadInput("there is no such row");
}

struct SKind {
    std::string_view name;
    ERequest request;
    void (*set)(SEstate &, std::vector<int> const & index, std::string_view field, std::string const & text);
};

constexpr SKind kRows[] = {
    {"controller", RequestControllers,
     [](SEstate & data, std::vector<int> const & index, std::string_view field, std::string const & text) {
         SetInRow(
             data.controllers, index, [](auto const & row) { return std::array{row.Nr}; }, field, text);
     }},
    {"drive", RequestDrives,
     [](SEstate & data, std::vector<int> const & index, std::string_view field, std::string const & text) {
         SetInRow(
             data.drives, index,
             [](auto const & row) {
                 return std::array{row.CtrlNr, row.Nr};
             },
             field, text);
     }},
    {"member", RequestContents,
     [](SEstate & data, std::vector<int> const & index, std::string_view field, std::string const & text) {
         SetInRow(
             data.contents, index,
             [](auto const & row) {
                 return std::array{row.CtrlNr, row.LogicalDriveNr, row.Nr, row.Idx};
             },
             field, text);
     }},
    {"device", RequestDevices,
     [](SEstate & data, std::vector<int> const & index, std::string_view field, std::string const & text) {
         SetInRow(
             data.devices, index,
             [](auto const & row) {
                 return std::array{row.CtrlNr, row.Channel, row.Target, row.LUN};
             },
             field, text);
     }},
};

constexpr char const * kObjects = "status, numbers, controller:C, drive:C.N, member:C.L.N.I, device:C.CH.T.L";

} // namespace

int SProgress::Value(std::chrono::steady_clock::time_point now) const noexcept
{
    double const seconds = std::chrono::duration<double>(now - since).count();
    return static_cast<int>(std::clamp(start + perSecond * seconds, std::min(start, limit), std::max(start, limit)));
}

std::uint64_t CEstate::Set(std::string_view object, std::string_view field, std::string const & text)
{
    const std::lock_guard lock(m_lock);
    if (object == "status") {
        SetField(m_data.status, field, text);
        return MaskOf(RequestStatus);
    }
    if (object == "numbers") {
        SetField(m_data.numbers, field, text);
        return MaskOf(RequestControllerInfo) | MaskOf(RequestDriveInfo) | MaskOf(RequestDeviceInfo);
    }
    std::size_t const colon = object.find(':');
    if (colon != std::string_view::npos) {
        for (SKind const & kind : kRows) {
            if (kind.name != object.substr(0, colon)) continue;
            kind.set(m_data, ParseIndex(object.substr(colon + 1)), field, text);
            return MaskOf(kind.request);
        }
    }
    throw CBadInput("'" + std::string(object) + "' is no object (" + kObjects + ")");
}

void CEstate::SetProgress(int controller, int drive, int value)
{
    const std::lock_guard lock(m_lock);
    SProgress & progress = m_data.progress[{controller, drive}];
    progress.start = value;
    progress.since = std::chrono::steady_clock::now();
}

int CEstate::Progress(int controller, int drive) const
{
    const std::lock_guard lock(m_lock);
    auto const found = m_data.progress.find({controller, drive});
    return found == m_data.progress.end() ? 0 : found->second.Value(std::chrono::steady_clock::now());
}

SNMP::ORBA_STATUS CEstate::Status() const
{
    const std::lock_guard lock(m_lock);
    return m_data.status;
}

int CEstate::NumberOf(ERequest infoRequest) const
{
    const std::lock_guard lock(m_lock);
    auto const told = [](int number, std::size_t rows) { return number >= 0 ? number : static_cast<int>(rows); };
    switch (infoRequest) {
    case RequestControllerInfo:
        return told(m_data.numbers.NumberRaidControllers, m_data.controllers.size());
    case RequestDriveInfo:
        return told(m_data.numbers.NumberLogicalDrives, m_data.drives.size());
    default:
        return told(m_data.numbers.NumberPhysicalDevices, m_data.devices.size());
    }
}

SNMP::ORBA_ADAPTERTABLE CEstate::Controllers() const
{
    const std::lock_guard lock(m_lock);
    return m_data.controllers;
}

SNMP::ORBA_LOGICALDRIVETABLE CEstate::Drives() const
{
    const std::lock_guard lock(m_lock);
    return m_data.drives;
}

SNMP::ORBA_LOGICALDRIVECONTENTSTABLE CEstate::Contents() const
{
    const std::lock_guard lock(m_lock);
    return m_data.contents;
}

SNMP::ORBA_PHYSICALDEVICETABLE CEstate::Devices() const
{
    const std::lock_guard lock(m_lock);
    return m_data.devices;
}

} // namespace Coresim
