#include "Snmp/Include/AgentInfo.h"

#include "Snmp/Include/RecordFrames.h"

namespace SNMP {

namespace {

using CFrames =
    TFrames<&ORBA_AGENTINFO::Id, &ORBA_AGENTINFO::Company, &ORBA_AGENTINFO::Version, &ORBA_AGENTINFO::Build>;

} // namespace

void ORBA_AGENTINFO::ReadData(CVlkSocket & sock)
{
    ReadRecord<CFrames>(*this, sock, ERecord::AgentInfo);
}

void ORBA_AGENTINFO::writeData(CVlkSocket & sock) const
{
    WriteRecord<CFrames>(*this, sock, ERecord::AgentInfo);
}

} // namespace SNMP
