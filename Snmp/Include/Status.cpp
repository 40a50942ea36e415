#include "Snmp/Include/Status.h"

#include "Snmp/Include/RecordFrames.h"

namespace SNMP {

namespace {

constexpr std::tuple kFrames{&ORBA_STATUS::LogicalDrives, &ORBA_STATUS::PhysicalDevices, &ORBA_STATUS::Controllers,
                             &ORBA_STATUS::Overall};

} // namespace

void ORBA_STATUS::ReadData(CVlkSocket & sock)
{
    // All or nothing: the fields are stored behind the fourth frame.
    ORBA_STATUS read = *this;
    ReadRecord(read, kFrames, sock, ERecord::Status);
    *this = read;
}

void ORBA_STATUS::writeData(CVlkSocket & sock) const
{
    WriteRecord(*this, kFrames, sock, ERecord::Status);
}

} // namespace SNMP
