#ifndef TOOLS_FIELDS_H
#define TOOLS_FIELDS_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "Snmp/Include/Structure.h"

/// Setting the fields of records by their names.
namespace Coresim {

/// How many of each there are, as the core service reports it apart from the tables; -1: as many as the table has.
struct SNumbers {
    int NumberRaidControllers = -1;
    int NumberLogicalDrives = -1;
    int NumberPhysicalDevices = -1;
};

/// A decimal number in the range of the type. Raises CBadInput.
std::int32_t ParseInt32(std::string_view text);
std::uint64_t ParseUnsigned64(std::string_view text); ///< decimal, or hexadecimal with 0x
double ParseSeconds(std::string_view text);           ///< 0 to a million, with or without decimals

/// Gives the field of that name the value that the text says. Raises CBadInput for a name that the record doesn't
/// have and for a text that is no value of the field; the record keeps its value then.
void SetField(SNumbers & record, std::string_view field, std::string const & text);
void SetField(SNMP::ORBA_STATUS & record, std::string_view field, std::string const & text);
void SetField(SNMP::ORBA_ADAPTERENTRY & record, std::string_view field, std::string const & text);
void SetField(SNMP::ORBA_LOGICALDRIVEENTRY & record, std::string_view field, std::string const & text);
void SetField(SNMP::ORBA_LOGICALDRIVECONTENTSENTRY & record, std::string_view field, std::string const & text);
void SetField(SNMP::ORBA_PHYSICALDEVICEENTRY & record, std::string_view field, std::string const & text);

} // namespace Coresim

#endif
