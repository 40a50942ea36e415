#ifndef SERVICE_BINDINGS_H
#define SERVICE_BINDINGS_H

#include <cstdint>

#include "Arcs.h"
#include "Platform/SnmpExtension.h"

namespace Service {

/// A value that came from an extension. Owns its memory.
class CValue {
public:
    CValue() noexcept { m_any.asnType = ASN_NULL; }
    /// Takes over what `any` owns.
    explicit CValue(AsnAny const & any) noexcept : m_any(any) {}
    CValue(CValue && other) noexcept : m_any(other.m_any) { other.m_any.asnType = ASN_NULL; }
    CValue & operator=(CValue && other) noexcept;
    CValue(CValue const &) = delete;
    CValue & operator=(CValue const &) = delete;
    ~CValue()
    {
        if (OwnsMemory()) Free();
    }

    AsnAny const & Any() const noexcept { return m_any; }
    /// Gives the value away; the caller frees it.
    AsnAny Release() noexcept
    {
        const AsnAny any = m_any;
        m_any.asnType = ASN_NULL;
        return any;
    }
    bool IsNull() const noexcept { return m_any.asnType == ASN_NULL; }
    /// Whether it is of a type with contents that a manager can be told. What isn't came from a faulty
    /// extension.
    bool IsUsable() const noexcept;

private:
    /// Numbers own nothing, and most values are numbers.
    bool OwnsMemory() const noexcept
    {
        const std::uint8_t type = m_any.asnType;
        return (type >= ASN_BITS && type <= ASN_OBJECTIDENTIFIER && type != ASN_NULL) || type == ASN_IPADDRESS ||
               type == ASN_OPAQUE;
    }
    void Free() noexcept;

    AsnAny m_any{};
};

/// The list of bindings of one call to an extension. Owns all of it. The extension works in it as it pleases,
/// so nothing that comes back is taken for granted.
class CBindings {
public:
    CBindings() = default;
    ~CBindings() { Clear(); }
    CBindings(CBindings && other) noexcept;
    CBindings(CBindings const &) = delete;
    CBindings & operator=(CBindings const &) = delete;

    /// Frees the bindings and makes room for `count` new ones, in the array of before if it is large enough.
    /// False: no memory.
    bool Prepare(std::uint32_t count) noexcept;
    /// Appends a binding with a Null value, up to the prepared count. False: no memory.
    bool Add(ArcView name) noexcept;
    /// The value of the binding added last, to be filled in.
    void SetLastValue(AsnAny const & value) noexcept { m_list.list[m_count - 1].value = value; }
    void Clear() noexcept;

    RFC1157VarBindList & List() noexcept { return m_list; }
    /// Whether the list still has as many bindings as were added.
    bool IsIntact() const noexcept { return m_list.len == m_count && (m_count == 0 || m_list.list != nullptr); }
    std::uint32_t Count() const noexcept { return m_list.list == nullptr ? 0 : m_list.len; }
    /// Name of a binding. Empty when it is none or has more arcs than a name may have.
    ArcView Name(std::uint32_t index) const noexcept
    {
        AsnObjectIdentifier const & name = m_list.list[index].name;
        Arc const * const ids = name.ids;
        return ids != nullptr && name.idLength <= kMaxArcs ? ArcView(ids, name.idLength) : ArcView();
    }
    /// Takes the value out of a binding.
    CValue TakeValue(std::uint32_t index) noexcept
    {
        AsnAny & any = m_list.list[index].value;
        CValue value(any);
        any.asnType = ASN_NULL;
        return value;
    }

private:
    void FreeBindings() noexcept;

    RFC1157VarBindList m_list{};
    RFC1157VarBind * m_array = nullptr; ///< ours, of m_capacity; null for a list that the extension made
    std::uint32_t m_count = 0;
    std::uint32_t m_capacity = 0;
};

} // namespace Service

#endif
