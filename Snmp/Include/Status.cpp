#include "Snmp/Include/Status.h"

#include "Snmp/Include/RecordFrames.h"

namespace SNMP {

namespace {

using CFrames = TFrames<&ORBA_STATUS::LogicalDrives, &ORBA_STATUS::PhysicalDevices, &ORBA_STATUS::Controllers,
                        &ORBA_STATUS::Overall>;

} // namespace

void ORBA_STATUS::ReadData(CVlkSocket & sock)
{
    // All or nothing: the fields are stored behind the fourth frame.
    ORBA_STATUS read = *this;
    ReadRecord<CFrames>(read, sock, ERecord::Status);
    if (!sock.HasFailed()) *this = read;
}

void ORBA_STATUS::writeData(CVlkSocket & sock) const
{
    WriteRecord<CFrames>(*this, sock, ERecord::Status);
}

} // namespace SNMP
