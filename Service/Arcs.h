#ifndef SERVICE_ARCS_H
#define SERVICE_ARCS_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <vector>

namespace Service {

/// One arc of an object identifier as extensions have it; Net-SNMP's are wider.
using Arc = std::uint32_t;
using CArcs = std::vector<Arc>;
using ArcView = std::span<Arc const>;

/// Arcs that an object identifier may have (RFC 3416, section 4.1).
inline constexpr std::size_t kMaxArcs = 128;

/// Number of arcs with which both begin.
inline std::size_t CommonArcs(ArcView left, ArcView right) noexcept
{
    // Four at a time: neighbours in a walk have nearly all arcs in common, and each object is compared with the last.
    Arc const * const a = left.data();
    Arc const * const b = right.data();
    const std::size_t most = std::min(left.size(), right.size());
    std::size_t i = 0;
    while (i + 4 <= most && std::memcmp(a + i, b + i, 4 * sizeof(Arc)) == 0)
        i += 4;
    while (i < most && a[i] == b[i])
        ++i;
    return i;
}
/// Below 0, 0, above 0; the shorter one comes first on a tie.
int CompareArcs(ArcView left, ArcView right) noexcept;
/// Whether `name` lies in the subtree of `root`, the root included.
bool IsInside(ArcView name, ArcView root) noexcept;

} // namespace Service

#endif
