#include "Snmp/Include/RecordTrace.h"

#include <cstddef>

#include "Snmp/Include/Module.h"
#include "VLK/Trace.h"

namespace SNMP {

namespace {

constexpr unsigned int kTraceBit = 0x00000001;

struct SRecordNames {
    char const * readFunction;
    char const * writeFunction;
    char const * label;
    char const * writeEndLabel; ///< label of the line that closes writeData
};

constexpr SRecordNames kNames[] = {
    {"SNMP::ORBA_STATUS::ReadData", "SNMP::ORBA_STATUS::writeData", "OrbaStatus", "OrbaStatus"},
    {"SNMP::ORBA_AGENTINFO::ReadData", "SNMP::ORBA_AGENTINFO::writeData", "AgentInfo", "AgentInfo"},
    {"SNMP::ORBA_CONTROLLERINFO::ReadData", "SNMP::ORBA_CONTROLLERINFO::writeData", "ControllerInfo", "ControllerInfo"},
    {"SNMP::ORBA_ADAPTERENTRY::ReadData", "SNMP::ORBA_ADAPTERENTRY::writeData", "AdapterEntry", "AdapterEntry"},
    {"SNMP::ORBA_ADAPTERTABLE::ReadData", "SNMP::ORBA_ADAPTERTABLE::writeData", "AdapterTable", "AdapterTable"},
    {"SNMP::ORBA_LOGICALDRIVEINFO::ReadData", "SNMP::ORBA_LOGICALDRIVEINFO::writeData", "LogicalDriveInfo",
     "LogicalDriveInfo"},
    {"SNMP::ORBA_LOGICALDRIVEENTRY::ReadData", "SNMP::ORBA_LOGICALDRIVEENTRY::writeData", "LogicalDriveEntry",
     "LogicalDriveEntry"},
    {"SNMP::ORBA_LOGICALDRIVETABLE::ReadData", "SNMP::ORBA_LOGICALDRIVETABLE::writeData", "LogicalDriveTable",
     "LogicalDriveTable"},
    {"SNMP::ORBA_LOGICALDRIVECONTENTSENTRY::ReadData", "SNMP::ORBA_LOGICALDRIVECONTENTSENTRY::writeData",
     "LogicalDriveContentsEntry", "LogicalDriveContentsEntry"},
    {"SNMP::ORBA_LOGICALDRIVECONTENTSTABLE::ReadData", "SNMP::ORBA_LOGICALDRIVECONTENTSTABLE::writeData",
     "LogicalDriveContentsTable", "LogicalDriveContentsTable"},
    {"SNMP::ORBA_PHYSICALDEVICEINFO::ReadData", "SNMP::ORBA_PHYSICALDEVICEINFO::writeData", "PhysicalDeviceInfo",
     "PhysicalDeviceInfo"},
    // The leading A is settled spelling.
    {"SNMP::ORBA_PHYSICALDEVICEENTRY::ReadData", "SNMP::ORBA_PHYSICALDEVICEENTRY::writeData", "PhysicalDeviceEntry",
     "APhysicalDeviceEntry"},
    {"SNMP::ORBA_PHYSICALDEVICETABLE::ReadData", "SNMP::ORBA_PHYSICALDEVICETABLE::writeData", "PhysicalDeviceTable",
     "PhysicalDeviceTable"},
    {"SNMP::ORBA_EVENTINFO::ReadData", "SNMP::ORBA_EVENTINFO::writeData", "ORBA_EVENTINFO", "ORBA_EVENTINFO"},
};
static_assert(sizeof(kNames) / sizeof(kNames[0]) == static_cast<std::size_t>(ERecord::EventInfo) + 1);

void TraceLine(ERecord record, EOperation operation, bool end, std::source_location const & where)
{
    SRecordNames const & names = kNames[static_cast<std::size_t>(record)];
    bool const write = operation == EOperation::Write;
    VLK::Internals::CTraceStreamBuffer buffer(kTraceBit, g_moduleInfo, where.file_name(),
                                              write ? names.writeFunction : names.readFunction, where.line());
    buffer.Format("%s:%s %s") << (write && end ? names.writeEndLabel : names.label)
                              << (write ? "writeData" : "ReadData") << (end ? "end" : "begin");
}

} // namespace

bool RecordTraceEnabled() noexcept
{
    return (g_moduleInfo.GetTrcPoints() & kTraceBit) != 0;
}

void TraceRecordBegin(ERecord record, EOperation operation, std::source_location const & where)
{
    TraceLine(record, operation, false, where);
}

void TraceRecordEnd(ERecord record, EOperation operation, std::source_location const & where)
{
    TraceLine(record, operation, true, where);
}

} // namespace SNMP
