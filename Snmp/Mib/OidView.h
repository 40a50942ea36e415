#ifndef SNMP_MIB_OID_VIEW_H
#define SNMP_MIB_OID_VIEW_H

#include <algorithm>
#include <cstdint>

#include "Platform/SnmpExtension.h"

/// Arcs that somebody else owns.
struct SOidView {
    std::uint32_t const * arcs = nullptr;
    std::uint32_t length = 0;

    SOidView() noexcept = default;
    SOidView(std::uint32_t const * first, std::uint32_t count) noexcept : arcs(first), length(count) {}
    explicit SOidView(AsnObjectIdentifier const & oid) noexcept
        : arcs(oid.ids), length(oid.ids != nullptr ? oid.idLength : 0)
    {
    }

    /// The same arcs as a structure of the platform; for reading only.
    AsnObjectIdentifier Oid() const noexcept { return {length, const_cast<std::uint32_t *>(arcs)}; }
};

/// Number of arcs that both begin with.
inline std::uint32_t CommonArcs(SOidView left, SOidView right) noexcept
{
    const std::uint32_t most = std::min(left.length, right.length);
    std::uint32_t i = 0;
    while (i < most && left.arcs[i] == right.arcs[i])
        ++i;
    return i;
}

/// Order of SnmpUtilOidCmp, for two OIDs whose first `from` arcs are known to be equal. Below 0, 0, above 0.
inline int CompareOids(SOidView left, SOidView right, std::uint32_t from = 0) noexcept
{
    const std::uint32_t most = std::min(left.length, right.length);
    for (std::uint32_t i = from; i < most; ++i) {
        if (left.arcs[i] != right.arcs[i]) return left.arcs[i] < right.arcs[i] ? -1 : 1;
    }
    return left.length == right.length ? 0 : (left.length < right.length ? -1 : 1);
}

/// Whether `oid` begins with all arcs of `root`.
inline bool IsBelow(SOidView oid, SOidView root) noexcept
{
    return oid.length >= root.length && std::equal(root.arcs, root.arcs + root.length, oid.arcs);
}

#endif
