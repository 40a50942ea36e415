#include "Snmp/Include/EventInfo.h"

#include "Snmp/Include/RecordFrames.h"

namespace SNMP {

namespace {

using CFrames = TFrames<&ORBA_EVENTINFO::TrapId, &ORBA_EVENTINFO::Param1, &ORBA_EVENTINFO::Param2,
                        &ORBA_EVENTINFO::Param3, &ORBA_EVENTINFO::Param4, &ORBA_EVENTINFO::Param5,
                        &ORBA_EVENTINFO::Param6, &ORBA_EVENTINFO::ServerName, &ORBA_EVENTINFO::Opaque64>;

} // namespace

void ORBA_EVENTINFO::ReadData(CVlkSocket & sock)
{
    ReadRecord<CFrames>(*this, sock, ERecord::EventInfo);
}

void ORBA_EVENTINFO::writeData(CVlkSocket & sock) const
{
    WriteRecord<CFrames>(*this, sock, ERecord::EventInfo);
}

} // namespace SNMP
