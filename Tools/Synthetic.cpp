#include "Tools/Synthetic.h"

#include <string>

namespace Coresim {

namespace {

constexpr int kTargetsPerChannel = 256;
constexpr int kMembersPerDrive = 2;

SNMP::ORBA_ADAPTERENTRY MakeController(int nr, SSize const & size)
{
    SNMP::ORBA_ADAPTERENTRY controller;
    controller.Nr = nr;
    controller.ModelName = "Simulated controller";
    controller.ManufacturerName = "Norvane";
    controller.NumberChannels = 1 + (size.devices > 0 ? (size.devices - 1) / kTargetsPerChannel : 0);
    controller.MaxChannelInUse = controller.NumberChannels - 1;
    controller.NumberPhysDisks = size.devices;
    controller.NumberLogicalDrives = size.drives;
    controller.CacheSize = 1024;
    controller.BBUStatus = 3;
    controller.Status = 2;
    controller.Interface = 5;
    controller.SerialNo = "SIM" + std::to_string(nr);
    controller.DisplayName = "Simulated controller (" + std::to_string(nr) + ")";
    return controller;
}

SNMP::ORBA_LOGICALDRIVEENTRY MakeDrive(int controller, int nr)
{
    SNMP::ORBA_LOGICALDRIVEENTRY drive;
    drive.CtrlNr = controller;
    drive.Nr = nr;
    drive.ArraySize = 2000;
    drive.TotalSize = 1000;
    drive.RaidLevel = 2;
    drive.RaidLevelStr = "RAID-1";
    drive.StripeSize = 64;
    drive.WriteMode = 2;
    drive.Status = 2;
    drive.Name = "drive" + std::to_string(nr);
    drive.ArraySizeMB = 2000000;
    drive.TotalSizeMB = 1000000;
    drive.StatusEx = 2;
    drive.DisplayName = "LogicalDrive_" + std::to_string(nr);
    return drive;
}

SNMP::ORBA_PHYSICALDEVICEENTRY MakeDevice(int controller, int nr)
{
    SNMP::ORBA_PHYSICALDEVICEENTRY device;
    device.CtrlNr = controller;
    device.Channel = nr / kTargetsPerChannel;
    device.Target = nr % kTargetsPerChannel;
    device.Idx = nr;
    device.ModelName = "Simulated disk";
    device.VendorName = "Norvane";
    device.Capacity = 1000;
    device.CapacityMB = 1000000;
    device.MaxTransferRate = 1200;
    device.ConfiguredDisk = 2;
    device.Interface = 4;
    device.SmartStatus = 2;
    device.Status = 3;
    device.StatusEx = 3;
    device.FirmwareRevision = "1.0";
    device.SerialNumber = "SIM" + std::to_string(controller) + "-" + std::to_string(nr);
    device.Slot = nr;
    device.DisplayName = "Disk (" + std::to_string(nr) + ")";
    return device;
}

SNMP::ORBA_LOGICALDRIVECONTENTSENTRY MakeMember(SNMP::ORBA_PHYSICALDEVICEENTRY const & device, int drive, int nr)
{
    SNMP::ORBA_LOGICALDRIVECONTENTSENTRY member;
    member.CtrlNr = device.CtrlNr;
    member.LogicalDriveNr = drive;
    member.Nr = nr;
    member.Channel = device.Channel;
    member.Target = device.Target;
    member.LUN = device.LUN;
    member.Idx = device.Idx;
    return member;
}

} // namespace

SEstate MakeSyntheticEstate(SSize const & size)
{
    SEstate estate;
    estate.status = SNMP::ORBA_STATUS{2, 2, 2, 2};
    for (int c = 0; c < size.controllers; ++c) {
        estate.controllers.push_back(MakeController(c, size));
        for (int d = 0; d < size.drives; ++d) {
            estate.drives.push_back(MakeDrive(c, d));
            estate.progress[{c, d}].perSecond = 1;
        }
        for (int p = 0; p < size.devices; ++p) {
            estate.devices.push_back(MakeDevice(c, p));
            int const drive = p / kMembersPerDrive;
            if (drive < size.drives)
                estate.contents.push_back(MakeMember(estate.devices.back(), drive, p % kMembersPerDrive));
        }
    }
    return estate;
}

} // namespace Coresim
