#include "Snmp/Include/LogicalDrive.h"

#include "Snmp/Include/RecordFrames.h"

namespace SNMP {

namespace {

using CInfoFrames = TFrames<&ORBA_LOGICALDRIVEINFO::NumberLogicalDrives>;

using CEntryFrames = TFrames<
    &ORBA_LOGICALDRIVEENTRY::CtrlNr, &ORBA_LOGICALDRIVEENTRY::Nr, &ORBA_LOGICALDRIVEENTRY::ArraySize,
    &ORBA_LOGICALDRIVEENTRY::TotalSize, &ORBA_LOGICALDRIVEENTRY::RaidLevel, &ORBA_LOGICALDRIVEENTRY::RaidLevelStr,
    &ORBA_LOGICALDRIVEENTRY::StripeSize, &ORBA_LOGICALDRIVEENTRY::WriteMode, &ORBA_LOGICALDRIVEENTRY::Status,
    &ORBA_LOGICALDRIVEENTRY::Name, &ORBA_LOGICALDRIVEENTRY::ArraySizeMB, &ORBA_LOGICALDRIVEENTRY::TotalSizeMB,
    &ORBA_LOGICALDRIVEENTRY::OSDeviceName, &ORBA_LOGICALDRIVEENTRY::ReadMode, &ORBA_LOGICALDRIVEENTRY::CacheMode,
    &ORBA_LOGICALDRIVEENTRY::DiskCacheMode, &ORBA_LOGICALDRIVEENTRY::InitStatus, &ORBA_LOGICALDRIVEENTRY::StatusEx,
    &ORBA_LOGICALDRIVEENTRY::DisplayName>;

using CContentsFrames =
    TFrames<&ORBA_LOGICALDRIVECONTENTSENTRY::CtrlNr, &ORBA_LOGICALDRIVECONTENTSENTRY::LogicalDriveNr,
            &ORBA_LOGICALDRIVECONTENTSENTRY::Nr, &ORBA_LOGICALDRIVECONTENTSENTRY::Channel,
            &ORBA_LOGICALDRIVECONTENTSENTRY::Target, &ORBA_LOGICALDRIVECONTENTSENTRY::LUN,
            &ORBA_LOGICALDRIVECONTENTSENTRY::Idx, &ORBA_LOGICALDRIVECONTENTSENTRY::SpanNr>;

} // namespace

void ORBA_LOGICALDRIVEINFO::ReadData(CVlkSocket & sock)
{
    ReadRecord<CInfoFrames>(*this, sock, ERecord::LogicalDriveInfo);
}

void ORBA_LOGICALDRIVEINFO::writeData(CVlkSocket & sock) const
{
    WriteRecord<CInfoFrames>(*this, sock, ERecord::LogicalDriveInfo);
}

void ORBA_LOGICALDRIVEENTRY::ReadData(CVlkSocket & sock)
{
    ReadRecord<CEntryFrames>(*this, sock, ERecord::LogicalDriveEntry);
}

void ORBA_LOGICALDRIVEENTRY::writeData(CVlkSocket & sock) const
{
    WriteRecord<CEntryFrames>(*this, sock, ERecord::LogicalDriveEntry);
}

void ORBA_LOGICALDRIVETABLE::ReadData(CVlkSocket & sock)
{
    ReadTable<CEntryFrames>(*this, sock, ERecord::LogicalDriveTable);
}

void ORBA_LOGICALDRIVETABLE::writeData(CVlkSocket & sock) const
{
    WriteTable(*this, sock, ERecord::LogicalDriveTable);
}

void ORBA_LOGICALDRIVECONTENTSENTRY::ReadData(CVlkSocket & sock)
{
    ReadRecord<CContentsFrames>(*this, sock, ERecord::LogicalDriveContentsEntry);
}

void ORBA_LOGICALDRIVECONTENTSENTRY::writeData(CVlkSocket & sock) const
{
    WriteRecord<CContentsFrames>(*this, sock, ERecord::LogicalDriveContentsEntry);
}

void ORBA_LOGICALDRIVECONTENTSTABLE::ReadData(CVlkSocket & sock)
{
    ReadTable<CContentsFrames>(*this, sock, ERecord::LogicalDriveContentsTable);
}

void ORBA_LOGICALDRIVECONTENTSTABLE::writeData(CVlkSocket & sock) const
{
    WriteTable(*this, sock, ERecord::LogicalDriveContentsTable);
}

} // namespace SNMP
