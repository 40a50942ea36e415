#include "Snmp/Include/PhysicalDevice.h"

#include "Snmp/Include/RecordFrames.h"

namespace SNMP {

struct ORBA_PHYSICALDEVICEENTRY::SWire {
    using CFrames = TFrames<
        &ORBA_PHYSICALDEVICEENTRY::CtrlNr, &ORBA_PHYSICALDEVICEENTRY::Channel, &ORBA_PHYSICALDEVICEENTRY::Target,
        &ORBA_PHYSICALDEVICEENTRY::LUN, &ORBA_PHYSICALDEVICEENTRY::ModelName, &ORBA_PHYSICALDEVICEENTRY::VendorName,
        &ORBA_PHYSICALDEVICEENTRY::FirmwareRevision, &ORBA_PHYSICALDEVICEENTRY::Capacity,
        &ORBA_PHYSICALDEVICEENTRY::MaxTransferRate, &ORBA_PHYSICALDEVICEENTRY::Type,
        &ORBA_PHYSICALDEVICEENTRY::ConfiguredDisk, &ORBA_PHYSICALDEVICEENTRY::ForeignConfig,
        &ORBA_PHYSICALDEVICEENTRY::Interface, &ORBA_PHYSICALDEVICEENTRY::Errors, &ORBA_PHYSICALDEVICEENTRY::NrBadBlocks,
        &ORBA_PHYSICALDEVICEENTRY::SmartStatus, &ORBA_PHYSICALDEVICEENTRY::Status,
        &ORBA_PHYSICALDEVICEENTRY::SerialNumber, &ORBA_PHYSICALDEVICEENTRY::Idx, &ORBA_PHYSICALDEVICEENTRY::StatusEx,
        &ORBA_PHYSICALDEVICEENTRY::CapacityMB, &ORBA_PHYSICALDEVICEENTRY::EnclosureNumber,
        &ORBA_PHYSICALDEVICEENTRY::Slot, &ORBA_PHYSICALDEVICEENTRY::DisplayName, &ORBA_PHYSICALDEVICEENTRY::PowerStatus,
        &ORBA_PHYSICALDEVICEENTRY::MediaType, &ORBA_PHYSICALDEVICEENTRY::SSDPowerOnHours,
        &ORBA_PHYSICALDEVICEENTRY::SSDRatedWriteEndurance, &ORBA_PHYSICALDEVICEENTRY::SSDRemainingReservedSpace,
        &ORBA_PHYSICALDEVICEENTRY::SSDEstimatedLifetime, &ORBA_PHYSICALDEVICEENTRY::SSDTotalDataWritten>;
};

namespace {

using CInfoFrames = TFrames<&ORBA_PHYSICALDEVICEINFO::NumberPhysicalDevices>;

} // namespace

void ORBA_PHYSICALDEVICEINFO::ReadData(CVlkSocket & sock)
{
    ReadRecord<CInfoFrames>(*this, sock, ERecord::PhysicalDeviceInfo);
}

void ORBA_PHYSICALDEVICEINFO::writeData(CVlkSocket & sock) const
{
    WriteRecord<CInfoFrames>(*this, sock, ERecord::PhysicalDeviceInfo);
}

void ORBA_PHYSICALDEVICEENTRY::ReadData(CVlkSocket & sock)
{
    ReadRecord<SWire::CFrames>(*this, sock, ERecord::PhysicalDeviceEntry);
}

void ORBA_PHYSICALDEVICEENTRY::writeData(CVlkSocket & sock) const
{
    WriteRecord<SWire::CFrames>(*this, sock, ERecord::PhysicalDeviceEntry);
}

void ORBA_PHYSICALDEVICETABLE::ReadData(CVlkSocket & sock)
{
    ReadTable<ORBA_PHYSICALDEVICEENTRY::SWire::CFrames>(*this, sock, ERecord::PhysicalDeviceTable);
}

void ORBA_PHYSICALDEVICETABLE::writeData(CVlkSocket & sock) const
{
    WriteTable(*this, sock, ERecord::PhysicalDeviceTable);
}

} // namespace SNMP
