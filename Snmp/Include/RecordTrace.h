#ifndef SNMP_RECORD_TRACE_H
#define SNMP_RECORD_TRACE_H

#include <cstdint>
#include <source_location>

namespace SNMP {

/// The record types, in the order of the table of their trace names.
enum class ERecord : std::uint8_t {
    Status,
    AgentInfo,
    ControllerInfo,
    AdapterEntry,
    AdapterTable,
    LogicalDriveInfo,
    LogicalDriveEntry,
    LogicalDriveTable,
    LogicalDriveContentsEntry,
    LogicalDriveContentsTable,
    PhysicalDeviceInfo,
    PhysicalDeviceEntry,
    PhysicalDeviceTable,
    EventInfo
};

enum class EOperation : std::uint8_t { Read, Write };

/// Whether the foundation's trace takes lines of the records at this moment. Any thread.
bool RecordTraceEnabled() noexcept;
/// Writes the line that opens an operation of a record, and the one that closes it.
void TraceRecordBegin(ERecord record, EOperation operation, std::source_location const & where);
void TraceRecordEnd(ERecord record, EOperation operation, std::source_location const & where);

/// Runs an operation of a record between its two trace lines. An operation that raises leaves without the second.
template <class TBody>
void Traced(ERecord record, EOperation operation, std::source_location const & where, TBody && body)
{
    if (RecordTraceEnabled()) TraceRecordBegin(record, operation, where);
    body();
    if (RecordTraceEnabled()) TraceRecordEnd(record, operation, where);
}

} // namespace SNMP

#endif
