#include "Snmp/Mib/MibTree.h"

#include <array>
#include <cstring>
#include <new>
#include <utility>

#include "Platform/SnmpUtil.h"
#include "Snmp/Host/Debug.h"
#include "Snmp/Mib/MibTreeLock.h"
#include "Snmp/Mib/OidText.h"

namespace {

bool IsReadWrite(std::uint32_t access) noexcept
{
    return (access & 0xFFu) == static_cast<std::uint32_t>(MibAccess::ReadWrite);
}

char const * Printable(char const * text) noexcept
{
    return text != nullptr ? text : "";
}

bool IsNumber(std::uint32_t type) noexcept
{
    return type == ASN_INTEGER || type == ASN_COUNTER32 || type == ASN_GAUGE32 || type == ASN_TIMETICKS ||
           type == ASN_UINTEGER32;
}

AsnAny NullValue() noexcept
{
    AsnAny value{};
    value.asnType = ASN_NULL;
    return value;
}

void TraceConstant(bool isScalar, char const * name, RFC1157VarBind const & binding, std::uint32_t access)
{
    std::string text;
    VarBindToText(text, &binding);
    if (isScalar) {
        CDebug::Trace(1, "\n## Const MIB entry  : %-30s%s %s", Printable(name), IsReadWrite(access) ? " (RW) -" : " -",
                      text.c_str());
    } else {
        CDebug::Trace(1, "\n## Const table entry: %-30s - %s", Printable(name), text.c_str());
    }
}

void TraceDelete(AsnObjectIdentifier const & oid) noexcept
try {
    std::string text;
    CDebug::Trace(5, "\nCSnmpMibTree        :   delete object with OID %s...", OidToStr(text, &oid));
} catch (...) {
    // Out of memory: the line is lost.
}

} // namespace

struct CMibTree::SCallbacks {
    MibCallback getFunc;
    MibCallback setFunc;
    MibCallback getSetFunc;
    MibCallback checkGetFunc;

    bool AnySet() const noexcept
    {
        return getFunc.IsSet() || setFunc.IsSet() || getSetFunc.IsSet() || checkGetFunc.IsSet();
    }
    void StoreIn(MibEntry & entry) const noexcept
    {
        entry.GetFunc = getFunc;
        entry.SetFunc = setFunc;
        entry.GetSetFunc = getSetFunc;
        entry.CheckGetFunc = checkGetFunc;
    }
};

/// What the callbacks of an object get.
struct CMibTree::SContext {
    void const * data = nullptr;
    std::size_t bytes = 0; ///< 0: borrowed; else to be copied
};

/// The rows' indexes, as an insert gets them.
struct CMibTree::SIndexes {
    std::uint32_t index1;
    std::uint32_t index2;
    std::uint32_t index3;
    std::uint32_t index4;
    std::uint32_t index5;
};

/// What an insert makes, by its line in the trace.
enum class CMibTree::EKind : std::uint8_t { Scalar, Cell };

/// The OID of an insert.
class CMibTree::CColumn {
public:
    explicit CColumn(char const * text) : m_parsed(m_buffer.Parse(text)) {}
    CColumn(CMibTree & tree, char const * text, SIndexes const & indexes) : CColumn(text)
    {
        if (!m_parsed) return;
        if (tree.m_access.appendsIndexes(tree)) {
            Append(indexes);
        } else {
            m_buffer.OverwriteTail({indexes.index5, indexes.index4, indexes.index3, indexes.index2, indexes.index1});
        }
    }
    CColumn(char const * text, char const * index, std::uint32_t extraIndex) : CColumn(text)
    {
        if (!m_parsed) return;
        m_buffer.AppendString(index);
        if (extraIndex != kNoOidIndex) m_buffer.Append(extraIndex);
    }

    SOidView Key() const noexcept { return m_buffer.View(); }

private:
    void Append(SIndexes const & indexes)
    {
        for (const std::uint32_t index :
             {indexes.index1, indexes.index2, indexes.index3, indexes.index4, indexes.index5}) {
            if (index == kNoOidIndex) return;
            m_buffer.Append(index);
        }
    }

    COidBuffer m_buffer;
    bool m_parsed;
};

CMibTree::CMibTree(SAgentAccess const & access) noexcept : m_access(access) {}

CMibTree::~CMibTree()
{
    MibClear();
    if (m_treeLock.IsHeld()) m_treeLock.Leave();
}

// Constants

/// oid, value: read only, and nothing in them is owned.
void CMibTree::InsertConstant(EKind kind, char const * name, SOidView key, AsnAny const & value, std::uint32_t access)
{
    if (CDebug::Enabled()) TraceConstant(kind == EKind::Scalar, name, {key.Oid(), value}, access);
    if (IsReadWrite(access) || !CMibStore::IsCompact(value)) {
        const RFC1157VarBind binding{key.Oid(), value};
        MibInsertEntry(&binding, name, access, {}, {}, {}, {}, nullptr);
        return;
    }
    const CLock lock(m_treeLock);
    StoreConstant(name, key, value, access);
}

/// Under the lock: a constant whose value has a compact form.
void CMibTree::StoreConstant(char const * name, SOidView key, AsnAny const & value, std::uint32_t access)
{
    if (m_objects.PutConstant(key, name, value)) return;
    MibEntry & entry = StoreVariable(key, name, {}, access, {});
    entry.SetValue(value);
}

void CMibTree::InsertText(EKind kind, char const * name, SOidView key, char const * value, std::uint32_t type,
                          std::uint32_t access)
{
    if (key.length == 0) {
        InsertConstant(kind, name, key, NullValue(), access);
    } else if (type == ASN_OCTETSTRING && value != nullptr && *value != '\0') {
        // The store copies the bytes itself; so there is no need for a copy of them on the way.
        AsnAny octets{};
        octets.asnType = ASN_OCTETSTRING;
        octets.asnValue.string.stream = reinterpret_cast<std::uint8_t *>(const_cast<char *>(value));
        octets.asnValue.string.length = static_cast<std::uint32_t>(std::strlen(value));
        InsertConstant(kind, name, key, octets, access);
    } else {
        CVarBind binding;
        SetVarBindFromText(binding.Get(), value, type);
        InsertConstant(kind, name, key, binding->value, access);
    }
}

void CMibTree::InsertNumber(EKind kind, char const * name, SOidView key, std::uint32_t value, std::uint32_t type,
                            std::uint32_t access)
{
    if (key.length == 0) {
        InsertConstant(kind, name, key, NullValue(), access);
    } else if (IsNumber(type)) {
        AsnAny number{};
        number.asnType = static_cast<std::uint8_t>(type);
        number.asnValue.unsigned32 = value;
        InsertConstant(kind, name, key, number, access);
    } else {
        CVarBind binding;
        SetVarBindNumber(binding.Get(), value, type);
        InsertConstant(kind, name, key, binding->value, access);
    }
}

void CMibTree::MibInsertConstOid(char const * oid, char const * name, char const * value, std::uint32_t type,
                                 std::uint32_t access)
{
    InsertText(EKind::Scalar, name, CColumn(oid).Key(), value, type, access);
}

void CMibTree::MibInsertConstOid(char const * oid, char const * name, std::uint32_t value, std::uint32_t type,
                                 std::uint32_t access)
{
    InsertNumber(EKind::Scalar, name, CColumn(oid).Key(), value, type, access);
}

void CMibTree::MibInsertConstStringIndexOid(char const * oid, char const * name, char const * value, std::uint32_t type,
                                            char const * index, std::uint32_t extraIndex)
{
    InsertText(EKind::Cell, name, CColumn(oid, index, extraIndex).Key(), value, type, 0);
}

void CMibTree::MibInsertConstStringIndexOid(char const * oid, char const * name, std::uint32_t value,
                                            std::uint32_t type, char const * index, std::uint32_t extraIndex)
{
    InsertNumber(EKind::Cell, name, CColumn(oid, index, extraIndex).Key(), value, type, 0);
}

void CMibTree::MibInsertConstTableOid(char const * oid, char const * name, char const * value, std::uint32_t type,
                                      std::uint32_t index1, std::uint32_t index2, std::uint32_t index3,
                                      std::uint32_t index4, std::uint32_t index5)
{
    CColumn column(*this, oid, {index1, index2, index3, index4, index5});
    InsertText(EKind::Cell, name, column.Key(), value, type, 0);
}

void CMibTree::MibInsertConstTableOid(char const * oid, char const * name, std::uint32_t value, std::uint32_t type,
                                      std::uint32_t index1, std::uint32_t index2, std::uint32_t index3,
                                      std::uint32_t index4, std::uint32_t index5)
{
    CColumn column(*this, oid, {index1, index2, index3, index4, index5});
    InsertNumber(EKind::Cell, name, column.Key(), value, type, 0);
}

void CMibTree::MibInsertConstTableOid(char const * oid, char const * name, std::uint8_t const * bytes,
                                      std::uint32_t count, std::uint32_t type, std::uint32_t index1,
                                      std::uint32_t index2, std::uint32_t index3, std::uint32_t index4,
                                      std::uint32_t index5)
{
    CColumn column(*this, oid, {index1, index2, index3, index4, index5});
    CVarBind binding;
    if (column.Key().length != 0) SetVarBindOctets(binding.Get(), bytes, count, type);
    InsertConstant(EKind::Cell, name, column.Key(), binding->value, 0);
}

// Variables

void CMibTree::MibInsertVarOid(char const * oid, char const * name, std::uint32_t type, MibCallback getFunc,
                               MibCallback setFunc, MibCallback getSetFunc, MibCallback checkGetFunc,
                               std::uint32_t access, void * context)
{
    CColumn column(oid);
    RFC1157VarBind binding{};
    binding.name = column.Key().Oid();
    binding.value.asnType = static_cast<std::uint8_t>(type);
    if (CDebug::Enabled()) {
        std::string text;
        CDebug::Trace(1, "\n## Var MIB entry    : %-30s - %s", Printable(name), VarBindToText(text, &binding));
    }
    MibInsertEntry(&binding, name, access, getFunc, setFunc, getSetFunc, checkGetFunc, context);
}

void CMibTree::MibInsertVarOidEx(char const * oid, char const * name, std::uint32_t type,
                                 MibCallback getSetChecksetFuncEx, void * context)
{
    CColumn column(oid);
    const AsnObjectIdentifier key = column.Key().Oid();
    if (CDebug::Enabled()) {
        std::string text;
        CDebug::Trace(1, "\n## Var MIB entry    : %-30s - Oid=%s", Printable(name), OidToStr(text, &key));
    }
    MibInsertEntryEx(&key, name, getSetChecksetFuncEx, type, context, 0);
}

namespace {

/// A writable cell is marked as a writable scalar is.
void TraceCell(char const * name, AsnObjectIdentifier const & oid, std::uint32_t access)
{
    if (!CDebug::Enabled()) return;
    std::string text;
    CDebug::Trace(1, "\n## Var table entry  : %-30s%s Oid=%s", Printable(name), IsReadWrite(access) ? " (RW) -" : " -",
                  OidToStr(text, &oid));
}

} // namespace

void CMibTree::MibInsertVarStringIndexOid(char const * oid, char const * name, std::uint32_t /*type*/,
                                          MibCallback getFunc, MibCallback setFunc, MibCallback getSetFunc,
                                          MibCallback checkGetFunc, std::uint32_t access, char const * index)
{
    CColumn column(oid, index, kNoOidIndex);
    const AsnObjectIdentifier key = column.Key().Oid();
    if (CDebug::Enabled()) {
        std::string text;
        CDebug::Trace(1, "\n## Var table entry:   %-30s - Oid=%s", Printable(name), OidToStr(text, &key));
    }
    const CLock lock(m_treeLock);
    StoreVariable(column.Key(), name, {getFunc, setFunc, getSetFunc, checkGetFunc}, access, {});
}

void CMibTree::MibInsertVarTableOid(char const * oid, char const * name, std::uint32_t type, MibCallback getFunc,
                                    MibCallback setFunc, MibCallback getSetFunc, MibCallback checkGetFunc,
                                    std::uint32_t access, std::uint32_t index1, std::uint32_t index2,
                                    std::uint32_t index3, std::uint32_t index4, std::uint32_t index5)
{
    MibInsertVarTableOid(oid, name, type, getFunc, setFunc, getSetFunc, checkGetFunc, access, nullptr, index1, index2,
                         index3, index4, index5);
}

void CMibTree::MibInsertVarTableOid(char const * oid, char const * name, std::uint32_t /*type*/, MibCallback getFunc,
                                    MibCallback setFunc, MibCallback getSetFunc, MibCallback checkGetFunc,
                                    std::uint32_t access, void * context, std::uint32_t index1, std::uint32_t index2,
                                    std::uint32_t index3, std::uint32_t index4, std::uint32_t index5)
{
    CColumn column(*this, oid, {index1, index2, index3, index4, index5});
    TraceCell(name, column.Key().Oid(), access);
    const CLock lock(m_treeLock);
    StoreVariable(column.Key(), name, {getFunc, setFunc, getSetFunc, checkGetFunc}, access, {context});
}

void CMibTree::MibInsertOidWithStringContext(char const * oid, char const * name, std::uint32_t /*type*/,
                                             MibCallback getFunc, MibCallback setFunc, MibCallback getSetFunc,
                                             MibCallback checkGetFunc, std::uint32_t access, char const * context,
                                             std::uint32_t index1, std::uint32_t index2, std::uint32_t index3,
                                             std::uint32_t index4, std::uint32_t index5)
{
    CColumn column(*this, oid, {index1, index2, index3, index4, index5});
    TraceCell(name, column.Key().Oid(), access);
    if (CDebug::Enabled()) {
        CDebug::Trace(4, "\nCSnmpMibTree        : MibInsertOidWithStringContext: Context string: \"%s\"",
                      Printable(context));
    }
    const CLock lock(m_treeLock);
    StoreVariable(column.Key(), name, {getFunc, setFunc, getSetFunc, checkGetFunc}, access,
                  {context, context != nullptr ? std::strlen(context) + 1 : 0});
}

void CMibTree::MibInsertVarTableOidEx(char const * oid, char const * name, std::uint32_t type,
                                      MibCallback getSetChecksetFuncEx, std::uint32_t index1, std::uint32_t index2,
                                      std::uint32_t index3, std::uint32_t index4, std::uint32_t index5)
{
    MibInsertVarTableOidEx(oid, name, type, getSetChecksetFuncEx, nullptr, index1, index2, index3, index4, index5);
}

void CMibTree::MibInsertVarTableOidEx(char const * oid, char const * name, std::uint32_t type,
                                      MibCallback getSetChecksetFuncEx, void * context, std::uint32_t index1,
                                      std::uint32_t index2, std::uint32_t index3, std::uint32_t index4,
                                      std::uint32_t index5)
{
    CColumn column(*this, oid, {index1, index2, index3, index4, index5});
    const AsnObjectIdentifier key = column.Key().Oid();
    TraceCell(name, key, 0);
    MibInsertEntryEx(&key, name, getSetChecksetFuncEx, type, context, 0);
}

// The store

void CMibTree::MibInsertEntry(RFC1157VarBind const * varbind, char const * name, std::uint32_t access,
                              MibCallback getFunc, MibCallback setFunc, MibCallback getSetFunc,
                              MibCallback checkGetFunc, void * context)
{
    if (varbind == nullptr) return;
    const SCallbacks callbacks{getFunc, setFunc, getSetFunc, checkGetFunc};
    const bool compact =
        !callbacks.AnySet() && context == nullptr && !IsReadWrite(access) && CMibStore::IsCompact(varbind->value);
    const CLock lock(m_treeLock);
    if (compact) {
        StoreConstant(name, SOidView(varbind->name), varbind->value, access);
        return;
    }
    StoreVariable(SOidView(varbind->name), name, callbacks, access, {context}).SetValue(varbind->value);
}

void CMibTree::MibInsertEntryEx(AsnObjectIdentifier const * oid, char const * name, MibCallback callback,
                                std::uint32_t type, void * context, std::uint32_t access)
{
    if (oid == nullptr) return;
    const CLock lock(m_treeLock);
    MibEntry & entry = PutEntry(SOidView(*oid), name, {context});
    entry.access = access & 0xFFu;
    entry.type = type;
    entry.GetSetChecksetFuncEx = callback;
}

/// Under the lock: the object of this key, with its OID, a name unless that is null, and its context. All that may
/// find no memory comes before the first change.
MibEntry & CMibTree::PutEntry(SOidView key, char const * name, SContext const & context)
{
    MibEntry made;
    const AsnObjectIdentifier oid = key.Oid();
    SnmpUtilOidCpy(&made.varbind.name, &oid);
    if (made.varbind.name.idLength != key.length) throw std::bad_alloc();
    if (name != nullptr) made.name = name;
    made.BorrowContext(const_cast<void *>(context.data));
    if (context.bytes != 0 && !made.OwnContext(context.data, context.bytes)) throw std::bad_alloc();

    MibEntry & entry = m_objects.PutObject(key);
    m_objects.ExchangeContext(entry, made); // raises for an object that was there alone: a new one has nothing to keep
    std::swap(entry.varbind.name, made.varbind.name);
    if (name != nullptr) entry.name.swap(made.name);
    return entry;
}

/// Under the lock.
MibEntry & CMibTree::StoreVariable(SOidView key, char const * name, SCallbacks const & callbacks, std::uint32_t access,
                                   SContext const & context)
{
    MibEntry & entry = PutEntry(key, name, context);
    entry.access = access & 0xFFu;
    callbacks.StoreIn(entry);
    return entry;
}

void CMibTree::MibClear()
{
    const CLock lock(m_treeLock);
    m_objects.Clear();
}

std::uint64_t CMibTree::MibSize()
{
    const CLock lock(m_treeLock);
    return m_objects.Size();
}

void CMibTree::ApplyOidIndexes(AsnObjectIdentifier * oid, std::uint32_t index1, std::uint32_t index2,
                               std::uint32_t index3, std::uint32_t index4, std::uint32_t index5)
{
    const auto apply = m_access.appendsIndexes(*this) ? &AppendOidIndexes : &OverwriteOidIndexes;
    apply(oid, index1, index2, index3, index4, index5);
}

namespace {

/// The indexes that a delete asks for, the one of the last arc first.
class CTailFilter {
public:
    explicit CTailFilter(std::array<std::uint32_t, 5> const & indexes) noexcept : m_indexes(indexes) {}

    bool IsActive() const noexcept
    {
        return std::any_of(m_indexes.begin(), m_indexes.end(),
                           [](std::uint32_t index) { return index != kNoOidIndex; });
    }
    bool Fits(SOidView oid) const noexcept
    {
        for (std::uint32_t i = 0; i < m_indexes.size(); ++i) {
            const std::uint32_t arc = i < oid.length ? oid.arcs[oid.length - 1 - i] : 0;
            if (m_indexes[i] != kNoOidIndex && m_indexes[i] != arc) return false;
        }
        return true;
    }

private:
    std::array<std::uint32_t, 5> m_indexes;
};

} // namespace

std::uint32_t CMibTree::MibDeleteOids(AsnObjectIdentifier const * rootOid, std::uint32_t index1, std::uint32_t index2,
                                      std::uint32_t index3, std::uint32_t index4, std::uint32_t index5)
{
    if (rootOid == nullptr) return 0;
    const SOidView root(*rootOid);
    const CTailFilter filter({index1, index2, index3, index4, index5});
    const bool filters = filter.IsActive();
    if (CDebug::Enabled()) {
        std::string text;
        CDebug::Trace(3, "\nCSnmpMibTree        : Delete all objects under root OID %s", OidToStr(text, rootOid));
        if (filters) {
            CDebug::Trace(5,
                          "\nCSnmpMibTree        :   filters active: index1=%d, index2=%d, index3=%d, index4=%d, "
                          "index5=%d",
                          static_cast<int>(index1), static_cast<int>(index2), static_cast<int>(index3),
                          static_cast<int>(index4), static_cast<int>(index5));
        }
    }

    // An object goes by the OID in its binding, which a commit may have changed.
    const auto decide = [&](SMibCell const & cell) noexcept {
        const SOidView oid = cell.IsObject() ? SOidView(cell.object->entry.varbind.name) : cell.Key();
        if (!IsBelow(oid, root)) return CMibStore::EVerdict::Stop;
        if (CDebug::Enabled()) TraceDelete(oid.Oid());
        if (!filters || filter.Fits(oid)) return CMibStore::EVerdict::Erase;
        if (CDebug::Enabled()) {
            CDebug::Trace(5, "\nCSnmpMibTree        :   -> object not deleted (one of the indexes not matching)");
        }
        return CMibStore::EVerdict::Keep;
    };
    std::uint32_t deleted = 0;
    {
        const CLock lock(m_treeLock);
        deleted = m_objects.EraseFrom(root, decide);
    }
    if (CDebug::Enabled()) {
        CDebug::Trace(3, "\nCSnmpMibTree        : %d object(s) deleted", static_cast<int>(deleted));
    }
    return deleted;
}
