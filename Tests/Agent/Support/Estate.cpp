#include "Tests/Agent/Support/Estate.h"

#include <gtest/gtest.h>

#include <ostream>

namespace {

// The wire order of each record, and the columns that its fields feed, written down here a second time so that the
// agent's own tables are checked by something.

enum class EKind { Number, Text };

struct SField {
    char const * name;
    EKind kind;
    int low; ///< of an enumerated field, whose values stay in its range; else 0
    int high;
};

struct SColumnOf {
    int arc;
    char const * object;
    char const * field;
};

struct STable {
    char const * oid;
    std::vector<SField> fields;
    std::vector<SColumnOf> columns;
    std::vector<char const *> indexes;
};

STable const kTable2{"1.4.2.1",
                     {{"Nr", EKind::Number, 0, 0},
                      {"ModelName", EKind::Text, 0, 0},
                      {"ManufacturerName", EKind::Text, 0, 0},
                      {"BusLocation", EKind::Text, 0, 0},
                      {"BusLocationText", EKind::Text, 0, 0},
                      {"HardwareRevision", EKind::Text, 0, 0},
                      {"FirmwareRevision", EKind::Text, 0, 0},
                      {"BiosRevision", EKind::Text, 0, 0},
                      {"NumberChannels", EKind::Number, 0, 0},
                      {"MaxChannelInUse", EKind::Number, 0, 0},
                      {"NumberPhysDisks", EKind::Number, 0, 0},
                      {"NumberLogicalDrives", EKind::Number, 0, 0},
                      {"CacheSize", EKind::Number, 0, 0},
                      {"BBUStatus", EKind::Number, 1, 7},
                      {"Status", EKind::Number, 1, 3},
                      {"Interface", EKind::Number, 2, 7},
                      {"BusLocationSegment", EKind::Number, 0, 0},
                      {"BusLocationBus", EKind::Number, 0, 0},
                      {"BusLocationDevice", EKind::Number, 0, 0},
                      {"BusLocationFunction", EKind::Number, 0, 0},
                      {"BusLocationSlot", EKind::Number, 0, 0},
                      {"SerialNo", EKind::Text, 0, 0},
                      {"DriverName", EKind::Text, 0, 0},
                      {"DriverRevision", EKind::Text, 0, 0},
                      {"BBUStatusEx", EKind::Number, 2, 7},
                      {"DisplayName", EKind::Text, 0, 0},
                      {"HostName", EKind::Text, 0, 0},
                      {"UEFIDriverRevision", EKind::Text, 0, 0}},
                     {{1, "kxrCtrlNr", "Nr"},
                      {2, "kxrCtrlModelName", "ModelName"},
                      {3, "kxrCtrlManufacturerName", "ManufacturerName"},
                      {4, "kxrCtrlBusLocation", "BusLocation"},
                      {5, "kxrCtrlBusLocationText", "BusLocationText"},
                      {6, "kxrCtrlHardwareRevision", "HardwareRevision"},
                      {7, "kxrCtrlFirmwareRevision", "FirmwareRevision"},
                      {8, "kxrCtrlBiosRevision", "BiosRevision"},
                      {9, "kxrCtrlNumberChannels", "NumberChannels"},
                      {10, "kxrCtrlMaxChannelInUse", "MaxChannelInUse"},
                      {11, "kxrCtrlNumberPhysDisks", "NumberPhysDisks"},
                      {12, "kxrCtrlNumberLogicalDrives", "NumberLogicalDrives"},
                      {13, "kxrCtrlCacheSize", "CacheSize"},
                      {14, "kxrCtrlBBUStatus", "BBUStatus"},
                      {15, "kxrCtrlStatus", "Status"},
                      {16, "kxrCtrlInterface", "Interface"},
                      {17, "kxrCtrlBusLocationBus", "BusLocationBus"},
                      {18, "kxrCtrlBusLocationDevice", "BusLocationDevice"},
                      {19, "kxrCtrlBusLocationFunction", "BusLocationFunction"},
                      {20, "kxrCtrlBusLocationSlot", "BusLocationSlot"},
                      {21, "kxrCtrlSerialNo", "SerialNo"},
                      {22, "kxrCtrlDriverName", "DriverName"},
                      {23, "kxrCtrlDriverRevision", "DriverRevision"},
                      {24, "kxrCtrlBBUStatusEx", "BBUStatusEx"},
                      {25, "kxrCtrlDisplayName", "DisplayName"},
                      {26, "kxrCtrlHostName", "HostName"},
                      {27, "kxrCtrlUEFIDriverRevision", "UEFIDriverRevision"},
                      {28, "kxrCtrlBusLocationSegment", "BusLocationSegment"}},
                     {"Nr"}};

STable const kTable4{"1.6.2.1",
                     {{"CtrlNr", EKind::Number, 0, 0},
                      {"Nr", EKind::Number, 0, 0},
                      {"ArraySize", EKind::Number, 0, 0},
                      {"TotalSize", EKind::Number, 0, 0},
                      {"RaidLevel", EKind::Number, 0, 0},
                      {"RaidLevelStr", EKind::Text, 0, 0},
                      {"StripeSize", EKind::Number, 0, 0},
                      {"WriteMode", EKind::Number, 1, 8},
                      {"Status", EKind::Number, 1, 9},
                      {"Name", EKind::Text, 0, 0},
                      {"ArraySizeMB", EKind::Number, 0, 0},
                      {"TotalSizeMB", EKind::Number, 0, 0},
                      {"OSDeviceName", EKind::Text, 0, 0},
                      {"ReadMode", EKind::Number, 0, 0},
                      {"CacheMode", EKind::Number, 0, 0},
                      {"DiskCacheMode", EKind::Number, 0, 0},
                      {"InitStatus", EKind::Number, 0, 0},
                      {"StatusEx", EKind::Number, 1, 15},
                      {"DisplayName", EKind::Text, 0, 0}},
                     {{1, "kxrLogicalDriveCtrlNr", "CtrlNr"},
                      {2, "kxrLogicalDriveNr", "Nr"},
                      {3, "kxrLogicalDriveArraySize", "ArraySize"},
                      {4, "kxrLogicalDriveTotalSize", "TotalSize"},
                      {5, "kxrLogicalDriveRaidLevel", "RaidLevel"},
                      {6, "kxrLogicalDriveRaidLevelStr", "RaidLevelStr"},
                      {7, "kxrLogicalDriveStripeSize", "StripeSize"},
                      {8, "kxrLogicalDriveWriteMode", "WriteMode"},
                      {10, "kxrLogicalDriveStatus", "Status"},
                      {11, "kxrLogicalDriveName", "Name"},
                      {12, "kxrLogicalDriveArraySizeMB", "ArraySizeMB"},
                      {13, "kxrLogicalDriveTotalSizeMB", "TotalSizeMB"},
                      {14, "kxrLogicalDriveOSDeviceName", "OSDeviceName"},
                      {15, "kxrLogicalDriveReadMode", "ReadMode"},
                      {16, "kxrLogicalDriveCacheMode", "CacheMode"},
                      {17, "kxrLogicalDriveDiskCacheMode", "DiskCacheMode"},
                      {18, "kxrLogicalDriveInitStatus", "InitStatus"},
                      {19, "kxrLogicalDriveStatusEx", "StatusEx"},
                      {20, "kxrLogicalDriveDisplayName", "DisplayName"}},
                     {"CtrlNr", "Nr"}};

STable const kTable6{"1.5.2.1",
                     {{"CtrlNr", EKind::Number, 0, 0},
                      {"Channel", EKind::Number, 0, 0},
                      {"Target", EKind::Number, 0, 0},
                      {"LUN", EKind::Number, 0, 0},
                      {"ModelName", EKind::Text, 0, 0},
                      {"VendorName", EKind::Text, 0, 0},
                      {"FirmwareRevision", EKind::Text, 0, 0},
                      {"Capacity", EKind::Number, 0, 0},
                      {"MaxTransferRate", EKind::Number, 0, 0},
                      {"Type", EKind::Number, 1, 98},
                      {"ConfiguredDisk", EKind::Number, 1, 2},
                      {"ForeignConfig", EKind::Number, 1, 2},
                      {"Interface", EKind::Number, 1, 9},
                      {"Errors", EKind::Number, 0, 0},
                      {"NrBadBlocks", EKind::Number, 0, 0},
                      {"SmartStatus", EKind::Number, 1, 4},
                      {"Status", EKind::Number, 1, 12},
                      {"SerialNumber", EKind::Text, 0, 0},
                      {"Idx", EKind::Number, 0, 0},
                      {"StatusEx", EKind::Number, 1, 20},
                      {"CapacityMB", EKind::Number, 0, 0},
                      {"EnclosureNumber", EKind::Number, 0, 0},
                      {"Slot", EKind::Number, 0, 0},
                      {"DisplayName", EKind::Text, 0, 0},
                      {"PowerStatus", EKind::Number, 0, 0},
                      {"MediaType", EKind::Number, 0, 0},
                      {"SSDPowerOnHours", EKind::Number, 0, 0},
                      {"SSDRatedWriteEndurance", EKind::Number, 0, 0},
                      {"SSDRemainingReservedSpace", EKind::Number, 0, 0},
                      {"SSDEstimatedLifetime", EKind::Text, 0, 0},
                      {"SSDTotalDataWritten", EKind::Text, 0, 0}},
                     {{1, "kxrPhysicalDeviceCtrlNr", "CtrlNr"},
                      {2, "kxrPhysicalDeviceChannel", "Channel"},
                      {3, "kxrPhysicalDeviceTarget", "Target"},
                      {4, "kxrPhysicalDeviceLUN", "LUN"},
                      {5, "kxrPhysicalDeviceModelName", "ModelName"},
                      {6, "kxrPhysicalDeviceVendorName", "VendorName"},
                      {7, "kxrPhysicalDeviceCapacity", "Capacity"},
                      {8, "kxrPhysicalDeviceMaxTransferRate", "MaxTransferRate"},
                      {9, "kxrPhysicalDeviceType", "Type"},
                      {10, "kxrPhysicalDeviceConfiguredDisk", "ConfiguredDisk"},
                      {11, "kxrPhysicalDeviceInterface", "Interface"},
                      {12, "kxrPhysicalDeviceErrors", "Errors"},
                      {13, "kxrPhysicalDeviceNrBadBlocks", "NrBadBlocks"},
                      {14, "kxrPhysicalDeviceSmartStatus", "SmartStatus"},
                      {15, "kxrPhysicalDeviceStatus", "Status"},
                      {16, "kxrPhysicalDeviceFirmwareRevision", "FirmwareRevision"},
                      {17, "kxrPhysicalDeviceSerialNumber", "SerialNumber"},
                      {18, "kxrPhysicalDeviceForeignConfig", "ForeignConfig"},
                      {19, "kxrPhysicalDeviceIdx", "Idx"},
                      {20, "kxrPhysicalDeviceStatusEx", "StatusEx"},
                      {21, "kxrPhysicalDeviceCapacityMB", "CapacityMB"},
                      {22, "kxrPhysicalDeviceEnclosureNumber", "EnclosureNumber"},
                      {23, "kxrPhysicalDeviceSlot", "Slot"},
                      {24, "kxrPhysicalDeviceDisplayName", "DisplayName"},
                      {25, "kxrPhysicalDevicePowerStatus", "PowerStatus"},
                      {26, "kxrPhysicalDeviceMediaType", "MediaType"},
                      {27, "kxrPhysicalDeviceSSDPowerOnHours", "SSDPowerOnHours"},
                      {28, "kxrPhysicalDeviceSSDRatedWriteEndurance", "SSDRatedWriteEndurance"},
                      {29, "kxrPhysicalDeviceSSDRemainingReservedSpace", "SSDRemainingReservedSpace"},
                      {30, "kxrPhysicalDeviceSSDEstimatedLifetime", "SSDEstimatedLifetime"},
                      {31, "kxrPhysicalDeviceSSDTotalDataWritten", "SSDTotalDataWritten"}},
                     {"CtrlNr", "Channel", "Target", "LUN"}};

STable const kTable8{"1.6.3.1",
                     {{"CtrlNr", EKind::Number, 0, 0},
                      {"LogicalDriveNr", EKind::Number, 0, 0},
                      {"Nr", EKind::Number, 0, 0},
                      {"Channel", EKind::Number, 0, 0},
                      {"Target", EKind::Number, 0, 0},
                      {"LUN", EKind::Number, 0, 0},
                      {"Idx", EKind::Number, 0, 0},
                      {"SpanNr", EKind::Number, 0, 0}},
                     {{1, "kxrLogicalDriveContentsCtrlNr", "CtrlNr"},
                      {2, "kxrLogicalDriveContentsLogicalDriveNr", "LogicalDriveNr"},
                      {3, "kxrLogicalDriveContentsNr", "Nr"},
                      {4, "kxrLogicalDriveContentsChannel", "Channel"},
                      {5, "kxrLogicalDriveContentsTarget", "Target"},
                      {6, "kxrLogicalDriveContentsLUN", "LUN"},
                      {7, "kxrLogicalDriveContentsIdx", "Idx"},
                      {8, "kxrLogicalDriveContentsSpanNr", "SpanNr"}},
                     {"CtrlNr", "LogicalDriveNr", "Nr", "Idx"}};

constexpr int kRows = 2;

bool IsIndex(STable const & table, std::string const & field)
{
    for (char const * index : table.indexes)
        if (field == index) return true;
    return false;
}

/// The value of a field in a row. Indexes stay the same over the variants, all else changes.
int NumberOf(STable const & table, std::size_t field, int row, unsigned int variant)
{
    SField const & f = table.fields[field];
    if (IsIndex(table, f.name)) return 3 + row * 5 + static_cast<int>(field % 7);
    int const raw = static_cast<int>(field) * 37 + row * 11 + static_cast<int>(variant) * 101;
    if (f.high != 0) return f.low + raw % (f.high - f.low + 1);
    if (field + 1 == table.fields.size()) return raw % 30; // one byte
    return field % 5 == 4 ? -1000 - raw : 1000 + raw;
}

std::string TextOf(STable const & table, std::size_t field, int row, unsigned int variant)
{
    if (field + 1 == table.fields.size()) return "";
    return std::string(table.fields[field].name) + "/" + std::to_string(row) + "/" + std::to_string(variant);
}

Wire::CBytes TableAnswer(STable const & table, unsigned int variant)
{
    Wire::CBytes bytes = Wire::Int(kRows);
    for (int row = 0; row < kRows; ++row)
        for (std::size_t i = 0; i < table.fields.size(); ++i)
            bytes += table.fields[i].kind == EKind::Text ? Wire::Text(TextOf(table, i, row, variant))
                                                         : Wire::Int(NumberOf(table, i, row, variant));
    return bytes;
}

std::size_t FieldNamed(STable const & table, std::string const & name)
{
    for (std::size_t i = 0; i < table.fields.size(); ++i)
        if (name == table.fields[i].name) return i;
    ADD_FAILURE() << "no field " << name;
    return 0;
}

std::vector<SShownObject> TableShown(STable const & table, unsigned int variant)
{
    std::vector<SShownObject> shown;
    for (SColumnOf const & column : table.columns)
        for (int row = 0; row < kRows; ++row) {
            std::string oid = std::string(table.oid) + "." + std::to_string(column.arc);
            for (char const * index : table.indexes)
                oid += "." + std::to_string(NumberOf(table, FieldNamed(table, index), row, variant));
            std::size_t const field = FieldNamed(table, column.field);
            bool const text = table.fields[field].kind == EKind::Text;
            shown.push_back(
                {oid, column.object, text ? 4u : 2u,
                 text ? TextOf(table, field, row, variant) : std::to_string(NumberOf(table, field, row, variant))});
        }
    return shown;
}

STable const * TableOf(unsigned int number)
{
    switch (number) {
    case 2:
        return &kTable2;
    case 4:
        return &kTable4;
    case 6:
        return &kTable6;
    case 8:
        return &kTable8;
    default:
        return nullptr;
    }
}

int StatusOf(int place, unsigned int variant)
{
    return 1 + place + static_cast<int>(variant) * 4;
}

int CountOf(unsigned int number, unsigned int variant)
{
    return static_cast<int>(number + variant * 7) % 31;
}

} // namespace

void PrintTo(SShownObject const & object, std::ostream * out)
{
    *out << object.oid << ' ' << object.name << " (" << object.type << ") = " << object.value;
}

Wire::CBytes AnswerOf(unsigned int number, unsigned int variant)
{
    if (STable const * const table = TableOf(number)) return TableAnswer(*table, variant);
    if (number == 1) {
        return Wire::Int(StatusOf(0, variant)) + Wire::Int(StatusOf(1, variant)) + Wire::Int(StatusOf(2, variant)) +
               Wire::Int(StatusOf(3, variant));
    }
    if (number == 9) {
        return Wire::Int(1) + EventBytes(10000 + static_cast<int>(variant), {"1", "2", "3", "4", "5", "6"}, "server");
    }
    return Wire::Int(CountOf(number, variant));
}

std::vector<SShownObject> ShownAfter(unsigned int number, unsigned int variant)
{
    if (STable const * const table = TableOf(number)) return TableShown(*table, variant);
    switch (number) {
    case 1:
        return {{"1.3.1.0", "kxrStatusLogicalDrives", 2, std::to_string(StatusOf(0, variant))},
                {"1.3.2.0", "kxrStatusPhysicalDevices", 2, std::to_string(StatusOf(1, variant))},
                {"1.3.3.0", "kxrStatusControllers", 2, std::to_string(StatusOf(2, variant))},
                {"1.3.4.0", "kxrStatusOverall", 2, std::to_string(StatusOf(3, variant))}};
    case 3:
        return {{"1.4.1.0", "kxrNumberRaidControllers", 2, std::to_string(CountOf(3, variant))}};
    case 5:
        return {{"1.6.1.0", "kxrNumberLogicalDrives", 2, std::to_string(CountOf(5, variant))}};
    case 7:
        return {{"1.5.1.0", "kxrNumberPhysicalDevices", 2, std::to_string(CountOf(7, variant))}};
    default:
        return {};
    }
}

bool Flag(CRawConnection & agent, std::uint64_t mask)
{
    return agent.Send(Wire::kEventsPending) && agent.Expect(Wire::kGetEvents) && agent.Send(Wire::Events(mask));
}

bool Serve(CRawConnection & agent, unsigned int number, Wire::CBytes const & answer)
{
    return agent.Expect(Wire::Request(number) + Wire::Int(1) + Wire::kWaitAck) &&
           agent.Send(Wire::Ack(0) + Wire::Int(1) + answer + Wire::kEndAck);
}

Wire::CBytes EventBytes(int trapId, std::vector<std::string> const & params, std::string const & server)
{
    Wire::CBytes bytes = Wire::Int(trapId);
    for (std::string const & param : params)
        bytes += Wire::Text(param);
    return bytes + Wire::Text(server) + Wire::Unsigned(5);
}

char const * RootOf(unsigned int number)
{
    static char const * const roots[] = {"",       "1.3.",   "1.4.2.", "1.4.1.", "1.6.2.",
                                         "1.6.1.", "1.5.2.", "1.5.1.", "1.6.3."};
    return roots[number];
}
