#ifndef AGENT_MIB_TABLES_H
#define AGENT_MIB_TABLES_H

#include <cstdint>
#include <span>
#include <string>
#include <type_traits>

#include "Snmp/Include/Structure.h"

/// The tables of the MIB as data: what a row's indexes are and what stands in each column.
namespace SNMP {

enum class EColumnKind : std::uint8_t {
    Number,  ///< INTEGER, from the entry
    Text,    ///< OCTET STRING, from the entry
    Progress ///< INTEGER, asked of the core service at each read
};

/// One column: its arc, its object's name, and where its cells come from.
template <class TEntry>
struct SColumn {
    std::uint32_t arc;
    char const * name;
    EColumnKind kind;
    std::uint32_t (*number)(TEntry const & entry);
    std::string (*text)(TEntry const & entry);
};

/// One table. The columns stand in the order of their arcs, which is the order of insertion.
template <class TEntry>
struct STableLayout {
    char const * name;
    char const * oid;
    std::span<std::uint32_t (*const)(TEntry const &)> indexes; ///< one to four
    std::span<SColumn<TEntry> const> columns;
    bool insertLineFirst; ///< the trace tells of the insertion ahead of the lock, and of the deletion afterwards
};

extern STableLayout<ORBA_ADAPTERENTRY> const kCtrlTable;
extern STableLayout<ORBA_LOGICALDRIVEENTRY> const kLogicalDriveTable;
extern STableLayout<ORBA_PHYSICALDEVICEENTRY> const kPhysicalDeviceTable;
extern STableLayout<ORBA_LOGICALDRIVECONTENTSENTRY> const kLogicalDriveContentsTable;

} // namespace SNMP

#endif
