#include "Tools/Fields.h"

#include <charconv>
#include <iterator>

#include "Tools/BadInput.h"

namespace Coresim {

namespace {

using SNMP::ORBA_ADAPTERENTRY;
using SNMP::ORBA_LOGICALDRIVECONTENTSENTRY;
using SNMP::ORBA_LOGICALDRIVEENTRY;
using SNMP::ORBA_PHYSICALDEVICEENTRY;
using SNMP::ORBA_STATUS;

template <class TRecord>
struct SField {
    std::string_view name;
    void (*set)(TRecord &, std::string const &);
};

void Store(std::string & field, std::string const & text)
{
    field = text;
}

/// Numbers and enumerated fields alike.
template <class TNumber>
void Store(TNumber & field, std::string const & text)
{
    field = ParseInt32(text);
}

template <class>
struct TOwner;
template <class TRecord, class TValue>
struct TOwner<TValue TRecord::*> {
    using Type = TRecord;
};

template <auto MEMBER>
void Set(typename TOwner<decltype(MEMBER)>::Type & record, std::string const & text)
{
    Store(record.*MEMBER, text);
}

constexpr SField<SNumbers> kNumbers[] = {
    {"NumberRaidControllers", &Set<&SNumbers::NumberRaidControllers>},
    {"NumberLogicalDrives", &Set<&SNumbers::NumberLogicalDrives>},
    {"NumberPhysicalDevices", &Set<&SNumbers::NumberPhysicalDevices>},
};

constexpr SField<ORBA_STATUS> kStatus[] = {
    {"LogicalDrives", &Set<&ORBA_STATUS::LogicalDrives>},
    {"PhysicalDevices", &Set<&ORBA_STATUS::PhysicalDevices>},
    {"Controllers", &Set<&ORBA_STATUS::Controllers>},
    {"Overall", &Set<&ORBA_STATUS::Overall>},
};

constexpr SField<ORBA_ADAPTERENTRY> kController[] = {
    {"Nr", &Set<&ORBA_ADAPTERENTRY::Nr>},
    {"ModelName", &Set<&ORBA_ADAPTERENTRY::ModelName>},
    {"ManufacturerName", &Set<&ORBA_ADAPTERENTRY::ManufacturerName>},
    {"BusLocation", &Set<&ORBA_ADAPTERENTRY::BusLocation>},
    {"BusLocationText", &Set<&ORBA_ADAPTERENTRY::BusLocationText>},
    {"HardwareRevision", &Set<&ORBA_ADAPTERENTRY::HardwareRevision>},
    {"FirmwareRevision", &Set<&ORBA_ADAPTERENTRY::FirmwareRevision>},
    {"BiosRevision", &Set<&ORBA_ADAPTERENTRY::BiosRevision>},
    {"NumberChannels", &Set<&ORBA_ADAPTERENTRY::NumberChannels>},
    {"MaxChannelInUse", &Set<&ORBA_ADAPTERENTRY::MaxChannelInUse>},
    {"NumberPhysDisks", &Set<&ORBA_ADAPTERENTRY::NumberPhysDisks>},
    {"NumberLogicalDrives", &Set<&ORBA_ADAPTERENTRY::NumberLogicalDrives>},
    {"CacheSize", &Set<&ORBA_ADAPTERENTRY::CacheSize>},
    {"BBUStatus", &Set<&ORBA_ADAPTERENTRY::BBUStatus>},
    {"Status", &Set<&ORBA_ADAPTERENTRY::Status>},
    {"Interface", &Set<&ORBA_ADAPTERENTRY::Interface>},
    {"BusLocationSegment", &Set<&ORBA_ADAPTERENTRY::BusLocationSegment>},
    {"BusLocationBus", &Set<&ORBA_ADAPTERENTRY::BusLocationBus>},
    {"BusLocationDevice", &Set<&ORBA_ADAPTERENTRY::BusLocationDevice>},
    {"BusLocationFunction", &Set<&ORBA_ADAPTERENTRY::BusLocationFunction>},
    {"BusLocationSlot", &Set<&ORBA_ADAPTERENTRY::BusLocationSlot>},
    {"SerialNo", &Set<&ORBA_ADAPTERENTRY::SerialNo>},
    {"DriverName", &Set<&ORBA_ADAPTERENTRY::DriverName>},
    {"DriverRevision", &Set<&ORBA_ADAPTERENTRY::DriverRevision>},
    {"BBUStatusEx", &Set<&ORBA_ADAPTERENTRY::BBUStatusEx>},
    {"DisplayName", &Set<&ORBA_ADAPTERENTRY::DisplayName>},
    {"HostName", &Set<&ORBA_ADAPTERENTRY::HostName>},
    {"UEFIDriverRevision", &Set<&ORBA_ADAPTERENTRY::UEFIDriverRevision>},
};

constexpr SField<ORBA_LOGICALDRIVEENTRY> kDrive[] = {
    {"CtrlNr", &Set<&ORBA_LOGICALDRIVEENTRY::CtrlNr>},
    {"Nr", &Set<&ORBA_LOGICALDRIVEENTRY::Nr>},
    {"ArraySize", &Set<&ORBA_LOGICALDRIVEENTRY::ArraySize>},
    {"TotalSize", &Set<&ORBA_LOGICALDRIVEENTRY::TotalSize>},
    {"RaidLevel", &Set<&ORBA_LOGICALDRIVEENTRY::RaidLevel>},
    {"RaidLevelStr", &Set<&ORBA_LOGICALDRIVEENTRY::RaidLevelStr>},
    {"StripeSize", &Set<&ORBA_LOGICALDRIVEENTRY::StripeSize>},
    {"WriteMode", &Set<&ORBA_LOGICALDRIVEENTRY::WriteMode>},
    {"Status", &Set<&ORBA_LOGICALDRIVEENTRY::Status>},
    {"Name", &Set<&ORBA_LOGICALDRIVEENTRY::Name>},
    {"ArraySizeMB", &Set<&ORBA_LOGICALDRIVEENTRY::ArraySizeMB>},
    {"TotalSizeMB", &Set<&ORBA_LOGICALDRIVEENTRY::TotalSizeMB>},
    {"OSDeviceName", &Set<&ORBA_LOGICALDRIVEENTRY::OSDeviceName>},
    {"ReadMode", &Set<&ORBA_LOGICALDRIVEENTRY::ReadMode>},
    {"CacheMode", &Set<&ORBA_LOGICALDRIVEENTRY::CacheMode>},
    {"DiskCacheMode", &Set<&ORBA_LOGICALDRIVEENTRY::DiskCacheMode>},
    {"InitStatus", &Set<&ORBA_LOGICALDRIVEENTRY::InitStatus>},
    {"StatusEx", &Set<&ORBA_LOGICALDRIVEENTRY::StatusEx>},
    {"DisplayName", &Set<&ORBA_LOGICALDRIVEENTRY::DisplayName>},
};

constexpr SField<ORBA_LOGICALDRIVECONTENTSENTRY> kMember[] = {
    {"CtrlNr", &Set<&ORBA_LOGICALDRIVECONTENTSENTRY::CtrlNr>},
    {"LogicalDriveNr", &Set<&ORBA_LOGICALDRIVECONTENTSENTRY::LogicalDriveNr>},
    {"Nr", &Set<&ORBA_LOGICALDRIVECONTENTSENTRY::Nr>},
    {"Channel", &Set<&ORBA_LOGICALDRIVECONTENTSENTRY::Channel>},
    {"Target", &Set<&ORBA_LOGICALDRIVECONTENTSENTRY::Target>},
    {"LUN", &Set<&ORBA_LOGICALDRIVECONTENTSENTRY::LUN>},
    {"Idx", &Set<&ORBA_LOGICALDRIVECONTENTSENTRY::Idx>},
    {"SpanNr", &Set<&ORBA_LOGICALDRIVECONTENTSENTRY::SpanNr>},
};

constexpr SField<ORBA_PHYSICALDEVICEENTRY> kDevice[] = {
    {"CtrlNr", &Set<&ORBA_PHYSICALDEVICEENTRY::CtrlNr>},
    {"Channel", &Set<&ORBA_PHYSICALDEVICEENTRY::Channel>},
    {"Target", &Set<&ORBA_PHYSICALDEVICEENTRY::Target>},
    {"LUN", &Set<&ORBA_PHYSICALDEVICEENTRY::LUN>},
    {"ModelName", &Set<&ORBA_PHYSICALDEVICEENTRY::ModelName>},
    {"VendorName", &Set<&ORBA_PHYSICALDEVICEENTRY::VendorName>},
    {"FirmwareRevision", &Set<&ORBA_PHYSICALDEVICEENTRY::FirmwareRevision>},
    {"Capacity", &Set<&ORBA_PHYSICALDEVICEENTRY::Capacity>},
    {"MaxTransferRate", &Set<&ORBA_PHYSICALDEVICEENTRY::MaxTransferRate>},
    {"Type", &Set<&ORBA_PHYSICALDEVICEENTRY::Type>},
    {"ConfiguredDisk", &Set<&ORBA_PHYSICALDEVICEENTRY::ConfiguredDisk>},
    {"ForeignConfig", &Set<&ORBA_PHYSICALDEVICEENTRY::ForeignConfig>},
    {"Interface", &Set<&ORBA_PHYSICALDEVICEENTRY::Interface>},
    {"Errors", &Set<&ORBA_PHYSICALDEVICEENTRY::Errors>},
    {"NrBadBlocks", &Set<&ORBA_PHYSICALDEVICEENTRY::NrBadBlocks>},
    {"SmartStatus", &Set<&ORBA_PHYSICALDEVICEENTRY::SmartStatus>},
    {"Status", &Set<&ORBA_PHYSICALDEVICEENTRY::Status>},
    {"SerialNumber", &Set<&ORBA_PHYSICALDEVICEENTRY::SerialNumber>},
    {"Idx", &Set<&ORBA_PHYSICALDEVICEENTRY::Idx>},
    {"StatusEx", &Set<&ORBA_PHYSICALDEVICEENTRY::StatusEx>},
    {"CapacityMB", &Set<&ORBA_PHYSICALDEVICEENTRY::CapacityMB>},
    {"EnclosureNumber", &Set<&ORBA_PHYSICALDEVICEENTRY::EnclosureNumber>},
    {"Slot", &Set<&ORBA_PHYSICALDEVICEENTRY::Slot>},
    {"DisplayName", &Set<&ORBA_PHYSICALDEVICEENTRY::DisplayName>},
    {"PowerStatus", &Set<&ORBA_PHYSICALDEVICEENTRY::PowerStatus>},
    {"MediaType", &Set<&ORBA_PHYSICALDEVICEENTRY::MediaType>},
    {"SSDPowerOnHours", &Set<&ORBA_PHYSICALDEVICEENTRY::SSDPowerOnHours>},
    {"SSDRatedWriteEndurance", &Set<&ORBA_PHYSICALDEVICEENTRY::SSDRatedWriteEndurance>},
    {"SSDRemainingReservedSpace", &Set<&ORBA_PHYSICALDEVICEENTRY::SSDRemainingReservedSpace>},
    {"SSDEstimatedLifetime",
     [](ORBA_PHYSICALDEVICEENTRY & record, std::string const & text) { record.SetSSDEstimatedLifetime(text); }},
    {"SSDTotalDataWritten",
     [](ORBA_PHYSICALDEVICEENTRY & record, std::string const & text) { record.SetSSDTotalDataWritten(text); }},
};

template <class TRecord, std::size_t COUNT>
void SetIn(SField<TRecord> const (&fields)[COUNT], TRecord & record, std::string_view name, std::string const & text)
{
    for (SField<TRecord> const & field : fields) {
        if (field.name != name) continue;
        try {
            field.set(record, text);
        } catch (CBadInput const & bad) {
            throw CBadInput(std::string(name) + ": " + bad.what());
        }
        return;
    }
    throw CBadInput("there is no field '" + std::string(name) + "' here");
}

/// skip: characters in front of the digits.
template <class TNumber>
TNumber ParseWhole(std::string_view text, std::size_t skip, int base, char const * range)
{
    TNumber value{};
    auto const [end, error] = std::from_chars(text.data() + skip, text.data() + text.size(), value, base);
    if (error == std::errc::result_out_of_range)
        throw CBadInput("'" + std::string(text) + "' is out of range (" + range + ")");
    if (error != std::errc() || end != text.data() + text.size())
        throw CBadInput("'" + std::string(text) + "' is no number");
    return value;
}

} // namespace

std::int32_t ParseInt32(std::string_view text)
{
    return ParseWhole<std::int32_t>(text, 0, 10, "-2147483648 to 2147483647");
}

std::uint64_t ParseUnsigned64(std::string_view text)
{
    bool const hexadecimal = text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
    return ParseWhole<std::uint64_t>(text, hexadecimal ? 2 : 0, hexadecimal ? 16 : 10, "0 to 2^64 - 1");
}

double ParseSeconds(std::string_view text)
{
    double value = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed);
    if (error != std::errc() || end != text.data() + text.size())
        throw CBadInput("'" + std::string(text) + "' is no number");
    if (!(value >= 0 && value <= 1e6)) throw CBadInput("'" + std::string(text) + "' is out of range (0 to 1000000)");
    return value;
}

void SetField(SNumbers & record, std::string_view field, std::string const & text)
{
    SetIn(kNumbers, record, field, text);
}

void SetField(ORBA_STATUS & record, std::string_view field, std::string const & text)
{
    SetIn(kStatus, record, field, text);
}

void SetField(ORBA_ADAPTERENTRY & record, std::string_view field, std::string const & text)
{
    SetIn(kController, record, field, text);
}

void SetField(ORBA_LOGICALDRIVEENTRY & record, std::string_view field, std::string const & text)
{
    SetIn(kDrive, record, field, text);
}

void SetField(ORBA_LOGICALDRIVECONTENTSENTRY & record, std::string_view field, std::string const & text)
{
    SetIn(kMember, record, field, text);
}

void SetField(ORBA_PHYSICALDEVICEENTRY & record, std::string_view field, std::string const & text)
{
    SetIn(kDevice, record, field, text);
}

} // namespace Coresim
