#include "Agent/Src/MibTables.h"

#include <functional>

#include "Agent/Src/MibRoot.h"

namespace SNMP {

namespace {

template <class TEntry, class TMember>
constexpr bool kIsText =
    std::is_same_v<std::remove_cvref_t<std::invoke_result_t<TMember, TEntry const &>>, std::string>;

template <class TEntry, auto Member>
std::uint32_t NumberOf(TEntry const & entry)
{
    return static_cast<std::uint32_t>(static_cast<int>(entry.*Member));
}

template <class TEntry, auto Member>
std::string TextOf(TEntry const & entry)
{
    return std::invoke(Member, entry);
}

/// A column whose cells are a member of the entry, or what a getter gives.
template <class TEntry, auto Member>
constexpr SColumn<TEntry> Column(std::uint32_t arc, char const * name)
{
    if constexpr (kIsText<TEntry, decltype(Member)>) {
        return {arc, name, EColumnKind::Text, nullptr, &TextOf<TEntry, Member>};
    } else {
        return {arc, name, EColumnKind::Number, &NumberOf<TEntry, Member>, nullptr};
    }
}

template <auto Member>
constexpr SColumn<ORBA_ADAPTERENTRY> CtrlColumn(std::uint32_t arc, char const * name)
{
    return Column<ORBA_ADAPTERENTRY, Member>(arc, name);
}

constexpr std::uint32_t (*kCtrlIndexes[])(ORBA_ADAPTERENTRY const &) = {
    &NumberOf<ORBA_ADAPTERENTRY, &ORBA_ADAPTERENTRY::Nr>,
};

constexpr SColumn<ORBA_ADAPTERENTRY> kCtrlColumns[] = {
    CtrlColumn<&ORBA_ADAPTERENTRY::Nr>(1, "kxrCtrlNr"),
    CtrlColumn<&ORBA_ADAPTERENTRY::ModelName>(2, "kxrCtrlModelName"),
    CtrlColumn<&ORBA_ADAPTERENTRY::ManufacturerName>(3, "kxrCtrlManufacturerName"),
    CtrlColumn<&ORBA_ADAPTERENTRY::BusLocation>(4, "kxrCtrlBusLocation"),
    CtrlColumn<&ORBA_ADAPTERENTRY::BusLocationText>(5, "kxrCtrlBusLocationText"),
    CtrlColumn<&ORBA_ADAPTERENTRY::HardwareRevision>(6, "kxrCtrlHardwareRevision"),
    CtrlColumn<&ORBA_ADAPTERENTRY::FirmwareRevision>(7, "kxrCtrlFirmwareRevision"),
    CtrlColumn<&ORBA_ADAPTERENTRY::BiosRevision>(8, "kxrCtrlBiosRevision"),
    CtrlColumn<&ORBA_ADAPTERENTRY::NumberChannels>(9, "kxrCtrlNumberChannels"),
    CtrlColumn<&ORBA_ADAPTERENTRY::MaxChannelInUse>(10, "kxrCtrlMaxChannelInUse"),
    CtrlColumn<&ORBA_ADAPTERENTRY::NumberPhysDisks>(11, "kxrCtrlNumberPhysDisks"),
    CtrlColumn<&ORBA_ADAPTERENTRY::NumberLogicalDrives>(12, "kxrCtrlNumberLogicalDrives"),
    CtrlColumn<&ORBA_ADAPTERENTRY::CacheSize>(13, "kxrCtrlCacheSize"),
    CtrlColumn<&ORBA_ADAPTERENTRY::BBUStatus>(14, "kxrCtrlBBUStatus"),
    CtrlColumn<&ORBA_ADAPTERENTRY::Status>(15, "kxrCtrlStatus"),
    CtrlColumn<&ORBA_ADAPTERENTRY::Interface>(16, "kxrCtrlInterface"),
    CtrlColumn<&ORBA_ADAPTERENTRY::BusLocationBus>(17, "kxrCtrlBusLocationBus"),
    CtrlColumn<&ORBA_ADAPTERENTRY::BusLocationDevice>(18, "kxrCtrlBusLocationDevice"),
    CtrlColumn<&ORBA_ADAPTERENTRY::BusLocationFunction>(19, "kxrCtrlBusLocationFunction"),
    CtrlColumn<&ORBA_ADAPTERENTRY::BusLocationSlot>(20, "kxrCtrlBusLocationSlot"),
    CtrlColumn<&ORBA_ADAPTERENTRY::SerialNo>(21, "kxrCtrlSerialNo"),
    CtrlColumn<&ORBA_ADAPTERENTRY::DriverName>(22, "kxrCtrlDriverName"),
    CtrlColumn<&ORBA_ADAPTERENTRY::DriverRevision>(23, "kxrCtrlDriverRevision"),
    CtrlColumn<&ORBA_ADAPTERENTRY::BBUStatusEx>(24, "kxrCtrlBBUStatusEx"),
    CtrlColumn<&ORBA_ADAPTERENTRY::DisplayName>(25, "kxrCtrlDisplayName"),
    CtrlColumn<&ORBA_ADAPTERENTRY::HostName>(26, "kxrCtrlHostName"),
    CtrlColumn<&ORBA_ADAPTERENTRY::UEFIDriverRevision>(27, "kxrCtrlUEFIDriverRevision"),
    CtrlColumn<&ORBA_ADAPTERENTRY::BusLocationSegment>(28, "kxrCtrlBusLocationSegment"),
};

template <auto Member>
constexpr SColumn<ORBA_LOGICALDRIVEENTRY> LogicalDriveColumn(std::uint32_t arc, char const * name)
{
    return Column<ORBA_LOGICALDRIVEENTRY, Member>(arc, name);
}

constexpr std::uint32_t (*kLogicalDriveIndexes[])(ORBA_LOGICALDRIVEENTRY const &) = {
    &NumberOf<ORBA_LOGICALDRIVEENTRY, &ORBA_LOGICALDRIVEENTRY::CtrlNr>,
    &NumberOf<ORBA_LOGICALDRIVEENTRY, &ORBA_LOGICALDRIVEENTRY::Nr>,
};

constexpr SColumn<ORBA_LOGICALDRIVEENTRY> kLogicalDriveColumns[] = {
    LogicalDriveColumn<&ORBA_LOGICALDRIVEENTRY::CtrlNr>(1, "kxrLogicalDriveCtrlNr"),
    LogicalDriveColumn<&ORBA_LOGICALDRIVEENTRY::Nr>(2, "kxrLogicalDriveNr"),
    LogicalDriveColumn<&ORBA_LOGICALDRIVEENTRY::ArraySize>(3, "kxrLogicalDriveArraySize"),
    LogicalDriveColumn<&ORBA_LOGICALDRIVEENTRY::TotalSize>(4, "kxrLogicalDriveTotalSize"),
    LogicalDriveColumn<&ORBA_LOGICALDRIVEENTRY::RaidLevel>(5, "kxrLogicalDriveRaidLevel"),
    LogicalDriveColumn<&ORBA_LOGICALDRIVEENTRY::RaidLevelStr>(6, "kxrLogicalDriveRaidLevelStr"),
    LogicalDriveColumn<&ORBA_LOGICALDRIVEENTRY::StripeSize>(7, "kxrLogicalDriveStripeSize"),
    LogicalDriveColumn<&ORBA_LOGICALDRIVEENTRY::WriteMode>(8, "kxrLogicalDriveWriteMode"),
    {9, "kxrLogicalDriveProgress", EColumnKind::Progress, nullptr, nullptr},
    LogicalDriveColumn<&ORBA_LOGICALDRIVEENTRY::Status>(10, "kxrLogicalDriveStatus"),
    LogicalDriveColumn<&ORBA_LOGICALDRIVEENTRY::Name>(11, "kxrLogicalDriveName"),
    LogicalDriveColumn<&ORBA_LOGICALDRIVEENTRY::ArraySizeMB>(12, "kxrLogicalDriveArraySizeMB"),
    LogicalDriveColumn<&ORBA_LOGICALDRIVEENTRY::TotalSizeMB>(13, "kxrLogicalDriveTotalSizeMB"),
    LogicalDriveColumn<&ORBA_LOGICALDRIVEENTRY::OSDeviceName>(14, "kxrLogicalDriveOSDeviceName"),
    LogicalDriveColumn<&ORBA_LOGICALDRIVEENTRY::ReadMode>(15, "kxrLogicalDriveReadMode"),
    LogicalDriveColumn<&ORBA_LOGICALDRIVEENTRY::CacheMode>(16, "kxrLogicalDriveCacheMode"),
    LogicalDriveColumn<&ORBA_LOGICALDRIVEENTRY::DiskCacheMode>(17, "kxrLogicalDriveDiskCacheMode"),
    LogicalDriveColumn<&ORBA_LOGICALDRIVEENTRY::InitStatus>(18, "kxrLogicalDriveInitStatus"),
    LogicalDriveColumn<&ORBA_LOGICALDRIVEENTRY::StatusEx>(19, "kxrLogicalDriveStatusEx"),
    LogicalDriveColumn<&ORBA_LOGICALDRIVEENTRY::DisplayName>(20, "kxrLogicalDriveDisplayName"),
};

template <auto Member>
constexpr SColumn<ORBA_PHYSICALDEVICEENTRY> PhysicalDeviceColumn(std::uint32_t arc, char const * name)
{
    return Column<ORBA_PHYSICALDEVICEENTRY, Member>(arc, name);
}

constexpr std::uint32_t (*kPhysicalDeviceIndexes[])(ORBA_PHYSICALDEVICEENTRY const &) = {
    &NumberOf<ORBA_PHYSICALDEVICEENTRY, &ORBA_PHYSICALDEVICEENTRY::CtrlNr>,
    &NumberOf<ORBA_PHYSICALDEVICEENTRY, &ORBA_PHYSICALDEVICEENTRY::Channel>,
    &NumberOf<ORBA_PHYSICALDEVICEENTRY, &ORBA_PHYSICALDEVICEENTRY::Target>,
    &NumberOf<ORBA_PHYSICALDEVICEENTRY, &ORBA_PHYSICALDEVICEENTRY::LUN>,
};

constexpr SColumn<ORBA_PHYSICALDEVICEENTRY> kPhysicalDeviceColumns[] = {
    PhysicalDeviceColumn<&ORBA_PHYSICALDEVICEENTRY::CtrlNr>(1, "kxrPhysicalDeviceCtrlNr"),
    PhysicalDeviceColumn<&ORBA_PHYSICALDEVICEENTRY::Channel>(2, "kxrPhysicalDeviceChannel"),
    PhysicalDeviceColumn<&ORBA_PHYSICALDEVICEENTRY::Target>(3, "kxrPhysicalDeviceTarget"),
    PhysicalDeviceColumn<&ORBA_PHYSICALDEVICEENTRY::LUN>(4, "kxrPhysicalDeviceLUN"),
    PhysicalDeviceColumn<&ORBA_PHYSICALDEVICEENTRY::ModelName>(5, "kxrPhysicalDeviceModelName"),
    PhysicalDeviceColumn<&ORBA_PHYSICALDEVICEENTRY::VendorName>(6, "kxrPhysicalDeviceVendorName"),
    PhysicalDeviceColumn<&ORBA_PHYSICALDEVICEENTRY::Capacity>(7, "kxrPhysicalDeviceCapacity"),
    PhysicalDeviceColumn<&ORBA_PHYSICALDEVICEENTRY::MaxTransferRate>(8, "kxrPhysicalDeviceMaxTransferRate"),
    PhysicalDeviceColumn<&ORBA_PHYSICALDEVICEENTRY::Type>(9, "kxrPhysicalDeviceType"),
    PhysicalDeviceColumn<&ORBA_PHYSICALDEVICEENTRY::ConfiguredDisk>(10, "kxrPhysicalDeviceConfiguredDisk"),
    PhysicalDeviceColumn<&ORBA_PHYSICALDEVICEENTRY::Interface>(11, "kxrPhysicalDeviceInterface"),
    PhysicalDeviceColumn<&ORBA_PHYSICALDEVICEENTRY::Errors>(12, "kxrPhysicalDeviceErrors"),
    PhysicalDeviceColumn<&ORBA_PHYSICALDEVICEENTRY::NrBadBlocks>(13, "kxrPhysicalDeviceNrBadBlocks"),
    PhysicalDeviceColumn<&ORBA_PHYSICALDEVICEENTRY::SmartStatus>(14, "kxrPhysicalDeviceSmartStatus"),
    PhysicalDeviceColumn<&ORBA_PHYSICALDEVICEENTRY::Status>(15, "kxrPhysicalDeviceStatus"),
    PhysicalDeviceColumn<&ORBA_PHYSICALDEVICEENTRY::FirmwareRevision>(16, "kxrPhysicalDeviceFirmwareRevision"),
    PhysicalDeviceColumn<&ORBA_PHYSICALDEVICEENTRY::SerialNumber>(17, "kxrPhysicalDeviceSerialNumber"),
    PhysicalDeviceColumn<&ORBA_PHYSICALDEVICEENTRY::ForeignConfig>(18, "kxrPhysicalDeviceForeignConfig"),
    PhysicalDeviceColumn<&ORBA_PHYSICALDEVICEENTRY::Idx>(19, "kxrPhysicalDeviceIdx"),
    PhysicalDeviceColumn<&ORBA_PHYSICALDEVICEENTRY::StatusEx>(20, "kxrPhysicalDeviceStatusEx"),
    PhysicalDeviceColumn<&ORBA_PHYSICALDEVICEENTRY::CapacityMB>(21, "kxrPhysicalDeviceCapacityMB"),
    PhysicalDeviceColumn<&ORBA_PHYSICALDEVICEENTRY::EnclosureNumber>(22, "kxrPhysicalDeviceEnclosureNumber"),
    PhysicalDeviceColumn<&ORBA_PHYSICALDEVICEENTRY::Slot>(23, "kxrPhysicalDeviceSlot"),
    PhysicalDeviceColumn<&ORBA_PHYSICALDEVICEENTRY::DisplayName>(24, "kxrPhysicalDeviceDisplayName"),
    PhysicalDeviceColumn<&ORBA_PHYSICALDEVICEENTRY::PowerStatus>(25, "kxrPhysicalDevicePowerStatus"),
    PhysicalDeviceColumn<&ORBA_PHYSICALDEVICEENTRY::MediaType>(26, "kxrPhysicalDeviceMediaType"),
    PhysicalDeviceColumn<&ORBA_PHYSICALDEVICEENTRY::SSDPowerOnHours>(27, "kxrPhysicalDeviceSSDPowerOnHours"),
    PhysicalDeviceColumn<&ORBA_PHYSICALDEVICEENTRY::SSDRatedWriteEndurance>(28,
                                                                            "kxrPhysicalDeviceSSDRatedWriteEndurance"),
    PhysicalDeviceColumn<&ORBA_PHYSICALDEVICEENTRY::SSDRemainingReservedSpace>(
        29, "kxrPhysicalDeviceSSDRemainingReservedSpace"),
    PhysicalDeviceColumn<&ORBA_PHYSICALDEVICEENTRY::GetSSDEstimatedLifetime>(30,
                                                                             "kxrPhysicalDeviceSSDEstimatedLifetime"),
    PhysicalDeviceColumn<&ORBA_PHYSICALDEVICEENTRY::GetSSDTotalDataWritten>(31, "kxrPhysicalDeviceSSDTotalDataWritten"),
};

template <auto Member>
constexpr SColumn<ORBA_LOGICALDRIVECONTENTSENTRY> LogicalDriveContentsColumn(std::uint32_t arc, char const * name)
{
    return Column<ORBA_LOGICALDRIVECONTENTSENTRY, Member>(arc, name);
}

constexpr std::uint32_t (*kLogicalDriveContentsIndexes[])(ORBA_LOGICALDRIVECONTENTSENTRY const &) = {
    &NumberOf<ORBA_LOGICALDRIVECONTENTSENTRY, &ORBA_LOGICALDRIVECONTENTSENTRY::CtrlNr>,
    &NumberOf<ORBA_LOGICALDRIVECONTENTSENTRY, &ORBA_LOGICALDRIVECONTENTSENTRY::LogicalDriveNr>,
    &NumberOf<ORBA_LOGICALDRIVECONTENTSENTRY, &ORBA_LOGICALDRIVECONTENTSENTRY::Nr>,
    &NumberOf<ORBA_LOGICALDRIVECONTENTSENTRY, &ORBA_LOGICALDRIVECONTENTSENTRY::Idx>,
};

constexpr SColumn<ORBA_LOGICALDRIVECONTENTSENTRY> kLogicalDriveContentsColumns[] = {
    LogicalDriveContentsColumn<&ORBA_LOGICALDRIVECONTENTSENTRY::CtrlNr>(1, "kxrLogicalDriveContentsCtrlNr"),
    LogicalDriveContentsColumn<&ORBA_LOGICALDRIVECONTENTSENTRY::LogicalDriveNr>(
        2, "kxrLogicalDriveContentsLogicalDriveNr"),
    LogicalDriveContentsColumn<&ORBA_LOGICALDRIVECONTENTSENTRY::Nr>(3, "kxrLogicalDriveContentsNr"),
    LogicalDriveContentsColumn<&ORBA_LOGICALDRIVECONTENTSENTRY::Channel>(4, "kxrLogicalDriveContentsChannel"),
    LogicalDriveContentsColumn<&ORBA_LOGICALDRIVECONTENTSENTRY::Target>(5, "kxrLogicalDriveContentsTarget"),
    LogicalDriveContentsColumn<&ORBA_LOGICALDRIVECONTENTSENTRY::LUN>(6, "kxrLogicalDriveContentsLUN"),
    LogicalDriveContentsColumn<&ORBA_LOGICALDRIVECONTENTSENTRY::Idx>(7, "kxrLogicalDriveContentsIdx"),
    LogicalDriveContentsColumn<&ORBA_LOGICALDRIVECONTENTSENTRY::SpanNr>(8, "kxrLogicalDriveContentsSpanNr"),
};

} // namespace

constinit STableLayout<ORBA_ADAPTERENTRY> const kCtrlTable{"kxrCtrlTable", KXRA_MIB_ROOT ".1.4.2", kCtrlIndexes,
                                                           kCtrlColumns, false};
constinit STableLayout<ORBA_LOGICALDRIVEENTRY> const kLogicalDriveTable{
    "kxrLogicalDriveTable", KXRA_MIB_ROOT ".1.6.2", kLogicalDriveIndexes, kLogicalDriveColumns, true};
constinit STableLayout<ORBA_PHYSICALDEVICEENTRY> const kPhysicalDeviceTable{
    "kxrPhysicalDeviceTable", KXRA_MIB_ROOT ".1.5.2", kPhysicalDeviceIndexes, kPhysicalDeviceColumns, false};
constinit STableLayout<ORBA_LOGICALDRIVECONTENTSENTRY> const kLogicalDriveContentsTable{
    "kxrLogicalDriveContentsTable", KXRA_MIB_ROOT ".1.6.3", kLogicalDriveContentsIndexes, kLogicalDriveContentsColumns,
    false};

} // namespace SNMP
