// The groups and tables of the MIB, from the records into the tree.

#include <array>
#include <string>

#include "Agent/Src/MibRoot.h"
#include "Agent/Src/MibTables.h"
#include "Agent/Src/ORBA_MIB.h"
#include "Platform/SnmpUtil.h"
#include "Snmp/Frame/Build.h"
#include "Snmp/Host/Debug.h"

namespace SNMP {

/// One scalar of a group that is rebuilt: INTEGER, from a record.
struct SScalar {
    char const * oid;
    char const * name;
    int value;
};

namespace {

/// OID text of a column, whose trailing zeros stand for the indexes.
std::string ColumnOid(char const * table, std::uint32_t arc, std::size_t indexes)
{
    std::string oid = table;
    oid += ".1.";
    oid += std::to_string(arc);
    for (std::size_t i = 0; i < indexes; ++i)
        oid += ".0";
    return oid;
}

/// The five index positions of a cell, the unused ones absent.
template <class TEntry>
std::array<std::uint32_t, 5> RowIndexes(STableLayout<TEntry> const & layout, TEntry const & entry)
{
    std::array<std::uint32_t, 5> indexes;
    indexes.fill(kNoOidIndex);
    for (std::size_t i = 0; i < layout.indexes.size(); ++i)
        indexes[i] = layout.indexes[i](entry);
    return indexes;
}

/// When the library was built, in the form "Build: Mar 31 2022, 14:51:22".
std::string BuildStamp()
{
    return std::string("Build: ") + g_buildDate + ", " + g_buildTime;
}

void TraceTable(char const * what, char const * table)
{
    if (CDebug::Enabled()) CDebug::Trace(2, "\n-- %s \"%s\" table --", what, table);
}

} // namespace

void CKestrixRAIDAgent::DeleteRows(char const * tableOid)
{
    AsnObjectIdentifier oid{};
    if (StrToOid(tableOid, &oid) == 0) return;
    MibDeleteOids(&oid);
    SnmpUtilOidFree(&oid);
}

template <class TEntry>
void CKestrixRAIDAgent::InsertRows(std::vector<TEntry> const & entries, STableLayout<TEntry> const & layout)
{
    std::vector<std::string> oids;
    oids.reserve(layout.columns.size());
    for (SColumn<TEntry> const & column : layout.columns)
        oids.push_back(ColumnOid(layout.oid, column.arc, layout.indexes.size()));

    for (TEntry const & entry : entries) {
        auto const [i1, i2, i3, i4, i5] = RowIndexes(layout, entry);
        auto oid = oids.begin();
        for (SColumn<TEntry> const & column : layout.columns) {
            char const * const text = (oid++)->c_str();
            switch (column.kind) {
            case EColumnKind::Number:
                MibInsertConstTableOid(text, column.name, column.number(entry), ASN_INTEGER, i1, i2, i3, i4, i5);
                break;
            case EColumnKind::Text:
                MibInsertConstTableOid(text, column.name, column.text(entry).c_str(), ASN_OCTETSTRING, i1, i2, i3, i4,
                                       i5);
                break;
            case EColumnKind::Progress:
                MibInsertVarTableOid(text, column.name, ASN_INTEGER, Callback<&CKestrixRAIDAgent::fGetProgress>(),
                                     Callback<&CKestrixRAIDAgent::fSetReadOnly>(),
                                     Callback<&CKestrixRAIDAgent::fCheckSetReadOnly>(), {},
                                     static_cast<std::uint32_t>(MibAccess::ReadWrite), i1, i2, i3, i4, i5);
                break;
            }
        }
    }
}

template <class TEntry>
void CKestrixRAIDAgent::RebuildTable(std::vector<TEntry> const & entries, STableLayout<TEntry> const & layout)
{
    TraceTable(layout.insertLineFirst ? "Insert" : "Delete", layout.name);
    Platform::CCriticalLock const lock(m_requestLock);
    DeleteRows(layout.oid);
    TraceTable(layout.insertLineFirst ? "Delete" : "Insert", layout.name);
    InsertRows(entries, layout);
}

void CKestrixRAIDAgent::RebuildScalarGroup(char const * group, SScalar const * scalars, std::size_t count)
{
    // Nothing is deleted: inserting a scalar replaces it in place. The line is written all the same.
    if (CDebug::Enabled()) CDebug::Trace(2, "\n-- Delete \"%s\" group --", group);
    Platform::CCriticalLock const lock(m_requestLock);
    if (CDebug::Enabled()) CDebug::Trace(2, "\n-- Insert \"%s\" group --", group);
    for (SScalar const * scalar = scalars; scalar != scalars + count; ++scalar)
        MibInsertConstOid(scalar->oid, scalar->name, static_cast<std::uint32_t>(scalar->value), ASN_INTEGER, 0);
}

bool CKestrixRAIDAgent::InsertAgentInfoGroup()
{
    struct SVersionObject {
        char const * oid;
        char const * name;
        char const * key; ///< entry of the version block
    };
    static constexpr SVersionObject kObjects[] = {
        {KXRA_MIB_ROOT ".1.1.1.0", "kxrAgentId", "FileDescription"},
        {KXRA_MIB_ROOT ".1.1.2.0", "kxrAgentCompany", "CompanyName"},
        {KXRA_MIB_ROOT ".1.1.3.0", "kxrAgentVersion", "ProductVersion"},
    };

    if (CDebug::Enabled()) CDebug::Trace(2, "\n-- Insert \"kxrAgentInfo\" group --");
    Platform::CCriticalLock const lock(m_requestLock);
    for (SVersionObject const & object : kObjects) {
        // An object whose entry the block lacks doesn't exist.
        std::string text;
        if (m_version.GetString(text, object.key, 0, 0) == 0) continue;
        MibInsertConstOid(object.oid, object.name, text.c_str(), ASN_OCTETSTRING, 0);
    }
    MibInsertConstOid(KXRA_MIB_ROOT ".1.1.4.0", "kxrAgentBuild", BuildStamp().c_str(), ASN_OCTETSTRING, 0);
    return true;
}

bool CKestrixRAIDAgent::RebuildStatusGroup()
{
    SScalar const scalars[] = {
        {KXRA_MIB_ROOT ".1.3.1.0", "kxrStatusLogicalDrives", m_Status.LogicalDrives},
        {KXRA_MIB_ROOT ".1.3.2.0", "kxrStatusPhysicalDevices", m_Status.PhysicalDevices},
        {KXRA_MIB_ROOT ".1.3.3.0", "kxrStatusControllers", m_Status.Controllers},
        {KXRA_MIB_ROOT ".1.3.4.0", "kxrStatusOverall", m_Status.Overall},
    };
    RebuildScalarGroup("kxrStatus", scalars, std::size(scalars));
    return true;
}

bool CKestrixRAIDAgent::RebuildControllerInfoGroup()
{
    SScalar const scalar{KXRA_MIB_ROOT ".1.4.1.0", "kxrNumberRaidControllers", m_ControllerInfo.NumberRaidControllers};
    RebuildScalarGroup("kxrControllerInfo", &scalar, 1);
    return true;
}

bool CKestrixRAIDAgent::RebuildPhysicalDeviceInfoGroup()
{
    SScalar const scalar{KXRA_MIB_ROOT ".1.5.1.0", "kxrNumberPhysicalDevices",
                         m_PhysicalDeviceInfo.NumberPhysicalDevices};
    RebuildScalarGroup("kxrPhysicalDeviceInfo", &scalar, 1);
    return true;
}

bool CKestrixRAIDAgent::RebuildLogicalDriveInfoGroup()
{
    SScalar const scalar{KXRA_MIB_ROOT ".1.6.1.0", "kxrNumberLogicalDrives", m_LogicalDriveInfo.NumberLogicalDrives};
    RebuildScalarGroup("kxrLogicalDriveInfo", &scalar, 1);
    return true;
}

bool CKestrixRAIDAgent::RebuildCtrlTable()
{
    RebuildTable(m_AdapterTable, kCtrlTable);
    return true;
}

bool CKestrixRAIDAgent::RebuildLogicalDriveTable()
{
    RebuildTable(m_LogicalDriveTable, kLogicalDriveTable);
    return true;
}

bool CKestrixRAIDAgent::RebuildLogicalDriveContentsTable()
{
    RebuildTable(m_ContentsTable, kLogicalDriveContentsTable);
    return true;
}

void CKestrixRAIDAgent::RebuildPhysicalDeviceTable()
{
    RebuildTable(m_PhysicalDeviceTable, kPhysicalDeviceTable);
}

} // namespace SNMP
