#include "Snmp/Include/Controller.h"

#include "Snmp/Include/RecordFrames.h"

namespace SNMP {

namespace {

using CInfoFrames = TFrames<&ORBA_CONTROLLERINFO::NumberRaidControllers>;

using CEntryFrames =
    TFrames<&ORBA_ADAPTERENTRY::Nr, &ORBA_ADAPTERENTRY::ModelName, &ORBA_ADAPTERENTRY::ManufacturerName,
            &ORBA_ADAPTERENTRY::BusLocation, &ORBA_ADAPTERENTRY::BusLocationText, &ORBA_ADAPTERENTRY::HardwareRevision,
            &ORBA_ADAPTERENTRY::FirmwareRevision, &ORBA_ADAPTERENTRY::BiosRevision, &ORBA_ADAPTERENTRY::NumberChannels,
            &ORBA_ADAPTERENTRY::MaxChannelInUse, &ORBA_ADAPTERENTRY::NumberPhysDisks,
            &ORBA_ADAPTERENTRY::NumberLogicalDrives, &ORBA_ADAPTERENTRY::CacheSize, &ORBA_ADAPTERENTRY::BBUStatus,
            &ORBA_ADAPTERENTRY::Status, &ORBA_ADAPTERENTRY::Interface, &ORBA_ADAPTERENTRY::BusLocationSegment,
            &ORBA_ADAPTERENTRY::BusLocationBus, &ORBA_ADAPTERENTRY::BusLocationDevice,
            &ORBA_ADAPTERENTRY::BusLocationFunction, &ORBA_ADAPTERENTRY::BusLocationSlot, &ORBA_ADAPTERENTRY::SerialNo,
            &ORBA_ADAPTERENTRY::DriverName, &ORBA_ADAPTERENTRY::DriverRevision, &ORBA_ADAPTERENTRY::BBUStatusEx,
            &ORBA_ADAPTERENTRY::DisplayName, &ORBA_ADAPTERENTRY::HostName, &ORBA_ADAPTERENTRY::UEFIDriverRevision>;

} // namespace

void ORBA_CONTROLLERINFO::ReadData(CVlkSocket & sock)
{
    ReadRecord<CInfoFrames>(*this, sock, ERecord::ControllerInfo);
}

void ORBA_CONTROLLERINFO::writeData(CVlkSocket & sock) const
{
    WriteRecord<CInfoFrames>(*this, sock, ERecord::ControllerInfo);
}

void ORBA_ADAPTERENTRY::ReadData(CVlkSocket & sock)
{
    ReadRecord<CEntryFrames>(*this, sock, ERecord::AdapterEntry);
}

void ORBA_ADAPTERENTRY::writeData(CVlkSocket & sock) const
{
    WriteRecord<CEntryFrames>(*this, sock, ERecord::AdapterEntry);
}

void ORBA_ADAPTERTABLE::ReadData(CVlkSocket & sock)
{
    ReadTable<CEntryFrames>(*this, sock, ERecord::AdapterTable);
}

void ORBA_ADAPTERTABLE::writeData(CVlkSocket & sock) const
{
    WriteTable(*this, sock, ERecord::AdapterTable);
}

} // namespace SNMP
