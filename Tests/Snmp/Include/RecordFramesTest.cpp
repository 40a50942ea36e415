// How each record lies on the stream: which frames, in which order, and what a record holds before it was read.

#include <gtest/gtest.h>

#include "Snmp/Include/Structure.h"
#include "Tests/Support/MemorySocket.h"

using namespace SNMP;

namespace {

template <class TRecord>
std::string Written(TRecord const & record)
{
    return WrittenBy([&](VLK::Sockets::CVlkSocket & sock) { record.writeData(sock); });
}

template <class TRecord>
void ReadInto(TRecord & record, std::string const & bytes)
{
    CAnsweredClient peer(bytes);
    record.ReadData(peer.client);
    EXPECT_TRUE(peer.Socket().AllRead());
}

/// Every field of the record has a value of its own.
ORBA_STATUS FilledStatus()
{
    ORBA_STATUS r;
    r.LogicalDrives = 1000;
    r.PhysicalDevices = 1001;
    r.Controllers = 1002;
    r.Overall = 1003;
    return r;
}

std::string WireOfStatus()
{
    using namespace Wire;
    return Int(1000) + Int(1001) + Int(1002) + Int(1003);
}

TEST(RecordFramesTest, StatusWritesItsFramesInTheOrderOfTheWire)
{
    EXPECT_EQ(Wire::Hex(WireOfStatus()), Wire::Hex(Written(FilledStatus())));
}

TEST(RecordFramesTest, StatusReadsItsFramesInTheOrderOfTheWire)
{
    ORBA_STATUS r;
    ReadInto(r, WireOfStatus());
    EXPECT_EQ(1000, r.LogicalDrives);
    EXPECT_EQ(1001, r.PhysicalDevices);
    EXPECT_EQ(1002, r.Controllers);
    EXPECT_EQ(1003, r.Overall);
}

TEST(RecordFramesTest, StatusHoldsItsDefaultsBeforeTheFirstRead)
{
    ORBA_STATUS const r;
    EXPECT_EQ(1, r.LogicalDrives);
    EXPECT_EQ(1, r.PhysicalDevices);
    EXPECT_EQ(1, r.Controllers);
    EXPECT_EQ(1, r.Overall);
}

/// Every field of the record has a value of its own.
ORBA_ADAPTERENTRY FilledAdapterEntry()
{
    ORBA_ADAPTERENTRY r;
    r.Nr = 1000;
    r.ModelName = "ModelName 1";
    r.ManufacturerName = "ManufacturerName 2";
    r.BusLocation = "BusLocation 3";
    r.BusLocationText = "BusLocationText 4";
    r.HardwareRevision = "HardwareRevision 5";
    r.FirmwareRevision = "FirmwareRevision 6";
    r.BiosRevision = "BiosRevision 7";
    r.NumberChannels = 1008;
    r.MaxChannelInUse = -1009;
    r.NumberPhysDisks = 1010;
    r.NumberLogicalDrives = 1011;
    r.CacheSize = 1012;
    r.BBUStatus = 1013;
    r.Status = -1014;
    r.Interface = 1015;
    r.BusLocationSegment = 1016;
    r.BusLocationBus = 1017;
    r.BusLocationDevice = 1018;
    r.BusLocationFunction = -1019;
    r.BusLocationSlot = 1020;
    r.SerialNo = "SerialNo 21";
    r.DriverName = "DriverName 22";
    r.DriverRevision = "DriverRevision 23";
    r.BBUStatusEx = -1024;
    r.DisplayName = "DisplayName 25";
    r.HostName = "HostName 26";
    r.UEFIDriverRevision = "UEFIDriverRevision 27";
    return r;
}

std::string WireOfAdapterEntry()
{
    using namespace Wire;
    return Int(1000) + Text("ModelName 1") + Text("ManufacturerName 2") + Text("BusLocation 3") +
           Text("BusLocationText 4") + Text("HardwareRevision 5") + Text("FirmwareRevision 6") +
           Text("BiosRevision 7") + Int(1008) + Int(-1009) + Int(1010) + Int(1011) + Int(1012) + Int(1013) +
           Int(-1014) + Int(1015) + Int(1016) + Int(1017) + Int(1018) + Int(-1019) + Int(1020) + Text("SerialNo 21") +
           Text("DriverName 22") + Text("DriverRevision 23") + Int(-1024) + Text("DisplayName 25") +
           Text("HostName 26") + Text("UEFIDriverRevision 27");
}

TEST(RecordFramesTest, AdapterEntryWritesItsFramesInTheOrderOfTheWire)
{
    EXPECT_EQ(Wire::Hex(WireOfAdapterEntry()), Wire::Hex(Written(FilledAdapterEntry())));
}

TEST(RecordFramesTest, AdapterEntryReadsItsFramesInTheOrderOfTheWire)
{
    ORBA_ADAPTERENTRY r;
    ReadInto(r, WireOfAdapterEntry());
    EXPECT_EQ(1000, r.Nr);
    EXPECT_EQ("ModelName 1", r.ModelName);
    EXPECT_EQ("ManufacturerName 2", r.ManufacturerName);
    EXPECT_EQ("BusLocation 3", r.BusLocation);
    EXPECT_EQ("BusLocationText 4", r.BusLocationText);
    EXPECT_EQ("HardwareRevision 5", r.HardwareRevision);
    EXPECT_EQ("FirmwareRevision 6", r.FirmwareRevision);
    EXPECT_EQ("BiosRevision 7", r.BiosRevision);
    EXPECT_EQ(1008, r.NumberChannels);
    EXPECT_EQ(-1009, r.MaxChannelInUse);
    EXPECT_EQ(1010, r.NumberPhysDisks);
    EXPECT_EQ(1011, r.NumberLogicalDrives);
    EXPECT_EQ(1012, r.CacheSize);
    EXPECT_EQ(1013, r.BBUStatus);
    EXPECT_EQ(-1014, r.Status);
    EXPECT_EQ(1015, r.Interface);
    EXPECT_EQ(1016, r.BusLocationSegment);
    EXPECT_EQ(1017, r.BusLocationBus);
    EXPECT_EQ(1018, r.BusLocationDevice);
    EXPECT_EQ(-1019, r.BusLocationFunction);
    EXPECT_EQ(1020, r.BusLocationSlot);
    EXPECT_EQ("SerialNo 21", r.SerialNo);
    EXPECT_EQ("DriverName 22", r.DriverName);
    EXPECT_EQ("DriverRevision 23", r.DriverRevision);
    EXPECT_EQ(-1024, r.BBUStatusEx);
    EXPECT_EQ("DisplayName 25", r.DisplayName);
    EXPECT_EQ("HostName 26", r.HostName);
    EXPECT_EQ("UEFIDriverRevision 27", r.UEFIDriverRevision);
}

TEST(RecordFramesTest, AdapterEntryHoldsItsDefaultsBeforeTheFirstRead)
{
    ORBA_ADAPTERENTRY const r;
    EXPECT_EQ(0, r.Nr);
    EXPECT_EQ("", r.ModelName);
    EXPECT_EQ("", r.ManufacturerName);
    EXPECT_EQ("", r.BusLocation);
    EXPECT_EQ("", r.BusLocationText);
    EXPECT_EQ("", r.HardwareRevision);
    EXPECT_EQ("", r.FirmwareRevision);
    EXPECT_EQ("", r.BiosRevision);
    EXPECT_EQ(0, r.NumberChannels);
    EXPECT_EQ(0, r.MaxChannelInUse);
    EXPECT_EQ(0, r.NumberPhysDisks);
    EXPECT_EQ(0, r.NumberLogicalDrives);
    EXPECT_EQ(0, r.CacheSize);
    EXPECT_EQ(1, r.BBUStatus);
    EXPECT_EQ(1, r.Status);
    EXPECT_EQ(1, r.Interface);
    EXPECT_EQ(-1, r.BusLocationSegment);
    EXPECT_EQ(-1, r.BusLocationBus);
    EXPECT_EQ(-1, r.BusLocationDevice);
    EXPECT_EQ(-1, r.BusLocationFunction);
    EXPECT_EQ(-1, r.BusLocationSlot);
    EXPECT_EQ("", r.SerialNo);
    EXPECT_EQ("", r.DriverName);
    EXPECT_EQ("", r.DriverRevision);
    EXPECT_EQ(2, r.BBUStatusEx);
    EXPECT_EQ("", r.DisplayName);
    EXPECT_EQ("", r.HostName);
    EXPECT_EQ("", r.UEFIDriverRevision);
}

/// Every field of the record has a value of its own.
ORBA_LOGICALDRIVEENTRY FilledLogicalDriveEntry()
{
    ORBA_LOGICALDRIVEENTRY r;
    r.CtrlNr = 1000;
    r.Nr = 1001;
    r.ArraySize = 1002;
    r.TotalSize = 1003;
    r.RaidLevel = -1004;
    r.RaidLevelStr = "RaidLevelStr 5";
    r.StripeSize = 1006;
    r.WriteMode = 1007;
    r.Status = 1008;
    r.Name = "Name 9";
    r.ArraySizeMB = 1010;
    r.TotalSizeMB = 1011;
    r.OSDeviceName = "OSDeviceName 12";
    r.ReadMode = 1013;
    r.CacheMode = -1014;
    r.DiskCacheMode = 1015;
    r.InitStatus = 1016;
    r.StatusEx = 1017;
    r.DisplayName = "DisplayName 18";
    return r;
}

std::string WireOfLogicalDriveEntry()
{
    using namespace Wire;
    return Int(1000) + Int(1001) + Int(1002) + Int(1003) + Int(-1004) + Text("RaidLevelStr 5") + Int(1006) + Int(1007) +
           Int(1008) + Text("Name 9") + Int(1010) + Int(1011) + Text("OSDeviceName 12") + Int(1013) + Int(-1014) +
           Int(1015) + Int(1016) + Int(1017) + Text("DisplayName 18");
}

TEST(RecordFramesTest, LogicalDriveEntryWritesItsFramesInTheOrderOfTheWire)
{
    EXPECT_EQ(Wire::Hex(WireOfLogicalDriveEntry()), Wire::Hex(Written(FilledLogicalDriveEntry())));
}

TEST(RecordFramesTest, LogicalDriveEntryReadsItsFramesInTheOrderOfTheWire)
{
    ORBA_LOGICALDRIVEENTRY r;
    ReadInto(r, WireOfLogicalDriveEntry());
    EXPECT_EQ(1000, r.CtrlNr);
    EXPECT_EQ(1001, r.Nr);
    EXPECT_EQ(1002, r.ArraySize);
    EXPECT_EQ(1003, r.TotalSize);
    EXPECT_EQ(-1004, r.RaidLevel);
    EXPECT_EQ("RaidLevelStr 5", r.RaidLevelStr);
    EXPECT_EQ(1006, r.StripeSize);
    EXPECT_EQ(1007, r.WriteMode);
    EXPECT_EQ(1008, r.Status);
    EXPECT_EQ("Name 9", r.Name);
    EXPECT_EQ(1010, r.ArraySizeMB);
    EXPECT_EQ(1011, r.TotalSizeMB);
    EXPECT_EQ("OSDeviceName 12", r.OSDeviceName);
    EXPECT_EQ(1013, r.ReadMode);
    EXPECT_EQ(-1014, r.CacheMode);
    EXPECT_EQ(1015, r.DiskCacheMode);
    EXPECT_EQ(1016, r.InitStatus);
    EXPECT_EQ(1017, r.StatusEx);
    EXPECT_EQ("DisplayName 18", r.DisplayName);
}

TEST(RecordFramesTest, LogicalDriveEntryHoldsItsDefaultsBeforeTheFirstRead)
{
    ORBA_LOGICALDRIVEENTRY const r;
    EXPECT_EQ(0, r.CtrlNr);
    EXPECT_EQ(0, r.Nr);
    EXPECT_EQ(0, r.ArraySize);
    EXPECT_EQ(0, r.TotalSize);
    EXPECT_EQ(1, r.RaidLevel);
    EXPECT_EQ("", r.RaidLevelStr);
    EXPECT_EQ(0, r.StripeSize);
    EXPECT_EQ(1, r.WriteMode);
    EXPECT_EQ(1, r.Status);
    EXPECT_EQ("", r.Name);
    EXPECT_EQ(0, r.ArraySizeMB);
    EXPECT_EQ(0, r.TotalSizeMB);
    EXPECT_EQ("", r.OSDeviceName);
    EXPECT_EQ(5, r.ReadMode);
    EXPECT_EQ(4, r.CacheMode);
    EXPECT_EQ(5, r.DiskCacheMode);
    EXPECT_EQ(1, r.InitStatus);
    EXPECT_EQ(1, r.StatusEx);
    EXPECT_EQ("", r.DisplayName);
    EXPECT_EQ(0, r.LocalFlag);
}

/// Every field of the record has a value of its own.
ORBA_LOGICALDRIVECONTENTSENTRY FilledContentsEntry()
{
    ORBA_LOGICALDRIVECONTENTSENTRY r;
    r.CtrlNr = 1000;
    r.LogicalDriveNr = 1001;
    r.Nr = 1002;
    r.Channel = 1003;
    r.Target = -1004;
    r.LUN = 1005;
    r.Idx = 1006;
    r.SpanNr = 1007;
    return r;
}

std::string WireOfContentsEntry()
{
    using namespace Wire;
    return Int(1000) + Int(1001) + Int(1002) + Int(1003) + Int(-1004) + Int(1005) + Int(1006) + Int(1007);
}

TEST(RecordFramesTest, ContentsEntryWritesItsFramesInTheOrderOfTheWire)
{
    EXPECT_EQ(Wire::Hex(WireOfContentsEntry()), Wire::Hex(Written(FilledContentsEntry())));
}

TEST(RecordFramesTest, ContentsEntryReadsItsFramesInTheOrderOfTheWire)
{
    ORBA_LOGICALDRIVECONTENTSENTRY r;
    ReadInto(r, WireOfContentsEntry());
    EXPECT_EQ(1000, r.CtrlNr);
    EXPECT_EQ(1001, r.LogicalDriveNr);
    EXPECT_EQ(1002, r.Nr);
    EXPECT_EQ(1003, r.Channel);
    EXPECT_EQ(-1004, r.Target);
    EXPECT_EQ(1005, r.LUN);
    EXPECT_EQ(1006, r.Idx);
    EXPECT_EQ(1007, r.SpanNr);
}

TEST(RecordFramesTest, ContentsEntryHoldsItsDefaultsBeforeTheFirstRead)
{
    ORBA_LOGICALDRIVECONTENTSENTRY const r;
    EXPECT_EQ(0, r.CtrlNr);
    EXPECT_EQ(0, r.LogicalDriveNr);
    EXPECT_EQ(0, r.Nr);
    EXPECT_EQ(0, r.Channel);
    EXPECT_EQ(0, r.Target);
    EXPECT_EQ(0, r.LUN);
    EXPECT_EQ(0, r.Idx);
    EXPECT_EQ(0, r.SpanNr);
}

/// Every field of the record has a value of its own.
ORBA_PHYSICALDEVICEENTRY FilledPhysicalDeviceEntry()
{
    ORBA_PHYSICALDEVICEENTRY r;
    r.CtrlNr = 1000;
    r.Channel = 1001;
    r.Target = 1002;
    r.LUN = 1003;
    r.ModelName = "ModelName 4";
    r.VendorName = "VendorName 5";
    r.FirmwareRevision = "FirmwareRevision 6";
    r.Capacity = 1007;
    r.MaxTransferRate = 1008;
    r.Type = -1009;
    r.ConfiguredDisk = 1010;
    r.ForeignConfig = 1011;
    r.Interface = 1012;
    r.Errors = 1013;
    r.NrBadBlocks = -1014;
    r.SmartStatus = 1015;
    r.Status = 1016;
    r.SerialNumber = "SerialNumber 17";
    r.Idx = 1018;
    r.StatusEx = -1019;
    r.CapacityMB = 1020;
    r.EnclosureNumber = 1021;
    r.Slot = 1022;
    r.DisplayName = "DisplayName 23";
    r.PowerStatus = -1024;
    r.MediaType = 1025;
    r.SSDPowerOnHours = 1026;
    r.SSDRatedWriteEndurance = 1027;
    r.SSDRemainingReservedSpace = 1028;
    r.SetSSDEstimatedLifetime("SSDEstimatedLifetime 29");
    r.SetSSDTotalDataWritten("SSDTotalDataWritten 30");
    return r;
}

std::string WireOfPhysicalDeviceEntry()
{
    using namespace Wire;
    return Int(1000) + Int(1001) + Int(1002) + Int(1003) + Text("ModelName 4") + Text("VendorName 5") +
           Text("FirmwareRevision 6") + Int(1007) + Int(1008) + Int(-1009) + Int(1010) + Int(1011) + Int(1012) +
           Int(1013) + Int(-1014) + Int(1015) + Int(1016) + Text("SerialNumber 17") + Int(1018) + Int(-1019) +
           Int(1020) + Int(1021) + Int(1022) + Text("DisplayName 23") + Int(-1024) + Int(1025) + Int(1026) + Int(1027) +
           Int(1028) + Text("SSDEstimatedLifetime 29") + Text("SSDTotalDataWritten 30");
}

TEST(RecordFramesTest, PhysicalDeviceEntryWritesItsFramesInTheOrderOfTheWire)
{
    EXPECT_EQ(Wire::Hex(WireOfPhysicalDeviceEntry()), Wire::Hex(Written(FilledPhysicalDeviceEntry())));
}

TEST(RecordFramesTest, PhysicalDeviceEntryReadsItsFramesInTheOrderOfTheWire)
{
    ORBA_PHYSICALDEVICEENTRY r;
    ReadInto(r, WireOfPhysicalDeviceEntry());
    EXPECT_EQ(1000, r.CtrlNr);
    EXPECT_EQ(1001, r.Channel);
    EXPECT_EQ(1002, r.Target);
    EXPECT_EQ(1003, r.LUN);
    EXPECT_EQ("ModelName 4", r.ModelName);
    EXPECT_EQ("VendorName 5", r.VendorName);
    EXPECT_EQ("FirmwareRevision 6", r.FirmwareRevision);
    EXPECT_EQ(1007, r.Capacity);
    EXPECT_EQ(1008, r.MaxTransferRate);
    EXPECT_EQ(-1009, r.Type);
    EXPECT_EQ(1010, r.ConfiguredDisk);
    EXPECT_EQ(1011, r.ForeignConfig);
    EXPECT_EQ(1012, r.Interface);
    EXPECT_EQ(1013, r.Errors);
    EXPECT_EQ(-1014, r.NrBadBlocks);
    EXPECT_EQ(1015, r.SmartStatus);
    EXPECT_EQ(1016, r.Status);
    EXPECT_EQ("SerialNumber 17", r.SerialNumber);
    EXPECT_EQ(1018, r.Idx);
    EXPECT_EQ(-1019, r.StatusEx);
    EXPECT_EQ(1020, r.CapacityMB);
    EXPECT_EQ(1021, r.EnclosureNumber);
    EXPECT_EQ(1022, r.Slot);
    EXPECT_EQ("DisplayName 23", r.DisplayName);
    EXPECT_EQ(-1024, r.PowerStatus);
    EXPECT_EQ(1025, r.MediaType);
    EXPECT_EQ(1026, r.SSDPowerOnHours);
    EXPECT_EQ(1027, r.SSDRatedWriteEndurance);
    EXPECT_EQ(1028, r.SSDRemainingReservedSpace);
    EXPECT_EQ("SSDEstimatedLifetime 29", r.GetSSDEstimatedLifetime());
    EXPECT_EQ("SSDTotalDataWritten 30", r.GetSSDTotalDataWritten());
}

TEST(RecordFramesTest, PhysicalDeviceEntryHoldsItsDefaultsBeforeTheFirstRead)
{
    ORBA_PHYSICALDEVICEENTRY const r;
    EXPECT_EQ(0, r.CtrlNr);
    EXPECT_EQ(-1, r.Channel);
    EXPECT_EQ(-1, r.Target);
    EXPECT_EQ(0, r.LUN);
    EXPECT_EQ("", r.ModelName);
    EXPECT_EQ("", r.VendorName);
    EXPECT_EQ("", r.FirmwareRevision);
    EXPECT_EQ(0, r.Capacity);
    EXPECT_EQ(0, r.MaxTransferRate);
    EXPECT_EQ(2, r.Type);
    EXPECT_EQ(1, r.ConfiguredDisk);
    EXPECT_EQ(1, r.ForeignConfig);
    EXPECT_EQ(1, r.Interface);
    EXPECT_EQ(0, r.Errors);
    EXPECT_EQ(0, r.NrBadBlocks);
    EXPECT_EQ(1, r.SmartStatus);
    EXPECT_EQ(1, r.Status);
    EXPECT_EQ("", r.SerialNumber);
    EXPECT_EQ(0, r.Idx);
    EXPECT_EQ(1, r.StatusEx);
    EXPECT_EQ(0, r.CapacityMB);
    EXPECT_EQ(-1, r.EnclosureNumber);
    EXPECT_EQ(-1, r.Slot);
    EXPECT_EQ("", r.DisplayName);
    EXPECT_EQ(1, r.PowerStatus);
    EXPECT_EQ(1, r.MediaType);
    EXPECT_EQ(-1, r.SSDPowerOnHours);
    EXPECT_EQ(-1, r.SSDRatedWriteEndurance);
    EXPECT_EQ(-1, r.SSDRemainingReservedSpace);
    EXPECT_EQ("", r.GetSSDEstimatedLifetime());
    EXPECT_EQ("", r.GetSSDTotalDataWritten());
}

/// Every field of the record has a value of its own.
ORBA_EVENTINFO FilledEventInfo()
{
    ORBA_EVENTINFO r;
    r.TrapId = 1000;
    r.Param1 = "Param1 1";
    r.Param2 = "Param2 2";
    r.Param3 = "Param3 3";
    r.Param4 = "Param4 4";
    r.Param5 = "Param5 5";
    r.Param6 = "Param6 6";
    r.ServerName = "ServerName 7";
    r.Opaque64 = 0xFEDCBA9876543210u;
    return r;
}

std::string WireOfEventInfo()
{
    using namespace Wire;
    return Int(1000) + Text("Param1 1") + Text("Param2 2") + Text("Param3 3") + Text("Param4 4") + Text("Param5 5") +
           Text("Param6 6") + Text("ServerName 7") + Unsigned(0xFEDCBA9876543210u);
}

TEST(RecordFramesTest, EventInfoWritesItsFramesInTheOrderOfTheWire)
{
    EXPECT_EQ(Wire::Hex(WireOfEventInfo()), Wire::Hex(Written(FilledEventInfo())));
}

TEST(RecordFramesTest, EventInfoReadsItsFramesInTheOrderOfTheWire)
{
    ORBA_EVENTINFO r;
    ReadInto(r, WireOfEventInfo());
    EXPECT_EQ(1000, r.TrapId);
    EXPECT_EQ("Param1 1", r.Param1);
    EXPECT_EQ("Param2 2", r.Param2);
    EXPECT_EQ("Param3 3", r.Param3);
    EXPECT_EQ("Param4 4", r.Param4);
    EXPECT_EQ("Param5 5", r.Param5);
    EXPECT_EQ("Param6 6", r.Param6);
    EXPECT_EQ("ServerName 7", r.ServerName);
    EXPECT_EQ(0xFEDCBA9876543210u, r.Opaque64);
}

TEST(RecordFramesTest, EventInfoHoldsItsDefaultsBeforeTheFirstRead)
{
    ORBA_EVENTINFO const r;
    EXPECT_EQ(0, r.TrapId);
    EXPECT_EQ("", r.Param1);
    EXPECT_EQ("", r.Param2);
    EXPECT_EQ("", r.Param3);
    EXPECT_EQ("", r.Param4);
    EXPECT_EQ("", r.Param5);
    EXPECT_EQ("", r.Param6);
    EXPECT_EQ("", r.ServerName);
    EXPECT_EQ(0u, r.Opaque64);
}

/// Every field of the record has a value of its own.
ORBA_AGENTINFO FilledAgentInfo()
{
    ORBA_AGENTINFO r;
    r.Id = "Id 0";
    r.Company = "Company 1";
    r.Version = "Version 2";
    r.Build = "Build 3";
    return r;
}

std::string WireOfAgentInfo()
{
    using namespace Wire;
    return Text("Id 0") + Text("Company 1") + Text("Version 2") + Text("Build 3");
}

TEST(RecordFramesTest, AgentInfoWritesItsFramesInTheOrderOfTheWire)
{
    EXPECT_EQ(Wire::Hex(WireOfAgentInfo()), Wire::Hex(Written(FilledAgentInfo())));
}

TEST(RecordFramesTest, AgentInfoReadsItsFramesInTheOrderOfTheWire)
{
    ORBA_AGENTINFO r;
    ReadInto(r, WireOfAgentInfo());
    EXPECT_EQ("Id 0", r.Id);
    EXPECT_EQ("Company 1", r.Company);
    EXPECT_EQ("Version 2", r.Version);
    EXPECT_EQ("Build 3", r.Build);
}

TEST(RecordFramesTest, AgentInfoHoldsItsDefaultsBeforeTheFirstRead)
{
    ORBA_AGENTINFO const r;
    EXPECT_EQ("", r.Id);
    EXPECT_EQ("", r.Company);
    EXPECT_EQ("", r.Version);
    EXPECT_EQ("", r.Build);
}

/// Every field of the record has a value of its own.
ORBA_CONTROLLERINFO FilledControllerInfo()
{
    ORBA_CONTROLLERINFO r;
    r.NumberRaidControllers = 1000;
    return r;
}

std::string WireOfControllerInfo()
{
    using namespace Wire;
    return Int(1000);
}

TEST(RecordFramesTest, ControllerInfoWritesItsFramesInTheOrderOfTheWire)
{
    EXPECT_EQ(Wire::Hex(WireOfControllerInfo()), Wire::Hex(Written(FilledControllerInfo())));
}

TEST(RecordFramesTest, ControllerInfoReadsItsFramesInTheOrderOfTheWire)
{
    ORBA_CONTROLLERINFO r;
    ReadInto(r, WireOfControllerInfo());
    EXPECT_EQ(1000, r.NumberRaidControllers);
}

TEST(RecordFramesTest, ControllerInfoHoldsItsDefaultsBeforeTheFirstRead)
{
    ORBA_CONTROLLERINFO const r;
    EXPECT_EQ(0, r.NumberRaidControllers);
}

/// Every field of the record has a value of its own.
ORBA_LOGICALDRIVEINFO FilledLogicalDriveInfo()
{
    ORBA_LOGICALDRIVEINFO r;
    r.NumberLogicalDrives = 1000;
    return r;
}

std::string WireOfLogicalDriveInfo()
{
    using namespace Wire;
    return Int(1000);
}

TEST(RecordFramesTest, LogicalDriveInfoWritesItsFramesInTheOrderOfTheWire)
{
    EXPECT_EQ(Wire::Hex(WireOfLogicalDriveInfo()), Wire::Hex(Written(FilledLogicalDriveInfo())));
}

TEST(RecordFramesTest, LogicalDriveInfoReadsItsFramesInTheOrderOfTheWire)
{
    ORBA_LOGICALDRIVEINFO r;
    ReadInto(r, WireOfLogicalDriveInfo());
    EXPECT_EQ(1000, r.NumberLogicalDrives);
}

TEST(RecordFramesTest, LogicalDriveInfoHoldsItsDefaultsBeforeTheFirstRead)
{
    ORBA_LOGICALDRIVEINFO const r;
    EXPECT_EQ(0, r.NumberLogicalDrives);
}

/// Every field of the record has a value of its own.
ORBA_PHYSICALDEVICEINFO FilledPhysicalDeviceInfo()
{
    ORBA_PHYSICALDEVICEINFO r;
    r.NumberPhysicalDevices = 1000;
    return r;
}

std::string WireOfPhysicalDeviceInfo()
{
    using namespace Wire;
    return Int(1000);
}

TEST(RecordFramesTest, PhysicalDeviceInfoWritesItsFramesInTheOrderOfTheWire)
{
    EXPECT_EQ(Wire::Hex(WireOfPhysicalDeviceInfo()), Wire::Hex(Written(FilledPhysicalDeviceInfo())));
}

TEST(RecordFramesTest, PhysicalDeviceInfoReadsItsFramesInTheOrderOfTheWire)
{
    ORBA_PHYSICALDEVICEINFO r;
    ReadInto(r, WireOfPhysicalDeviceInfo());
    EXPECT_EQ(1000, r.NumberPhysicalDevices);
}

TEST(RecordFramesTest, PhysicalDeviceInfoHoldsItsDefaultsBeforeTheFirstRead)
{
    ORBA_PHYSICALDEVICEINFO const r;
    EXPECT_EQ(0, r.NumberPhysicalDevices);
}

} // namespace
