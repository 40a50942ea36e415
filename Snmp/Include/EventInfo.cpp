#include "Snmp/Include/EventInfo.h"

#include "Snmp/Include/RecordFrames.h"

namespace SNMP {

namespace {

constexpr std::tuple kFrames{&ORBA_EVENTINFO::TrapId, &ORBA_EVENTINFO::Param1,     &ORBA_EVENTINFO::Param2,
                             &ORBA_EVENTINFO::Param3, &ORBA_EVENTINFO::Param4,     &ORBA_EVENTINFO::Param5,
                             &ORBA_EVENTINFO::Param6, &ORBA_EVENTINFO::ServerName, &ORBA_EVENTINFO::Opaque64};

} // namespace

void ORBA_EVENTINFO::ReadData(CVlkSocket & sock)
{
    ReadRecord(*this, kFrames, sock, ERecord::EventInfo);
}

void ORBA_EVENTINFO::writeData(CVlkSocket & sock) const
{
    WriteRecord(*this, kFrames, sock, ERecord::EventInfo);
}

} // namespace SNMP
