#ifndef SERVICE_ARCS_H
#define SERVICE_ARCS_H

#include <cstddef>
#include <cstdint>
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
std::size_t CommonArcs(ArcView left, ArcView right) noexcept;
/// Below 0, 0, above 0; the shorter one comes first on a tie.
int CompareArcs(ArcView left, ArcView right) noexcept;
/// Whether `name` lies in the subtree of `root`, the root included.
bool IsInside(ArcView name, ArcView root) noexcept;

} // namespace Service

#endif
