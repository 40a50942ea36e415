#include "Arcs.h"

#include <algorithm>
#include <cstring>

namespace Service {

namespace {

/// Two arcs as one number, for telling whether both are the same.
std::uint64_t PairAt(ArcView arcs, std::size_t at) noexcept
{
    std::uint64_t pair;
    std::memcpy(&pair, arcs.data() + at, sizeof pair);
    return pair;
}

} // namespace

std::size_t CommonArcs(ArcView left, ArcView right) noexcept
{
    // Neighbours in a walk have nearly all arcs in common, and every object is compared with its neighbour.
    const std::size_t most = std::min(left.size(), right.size());
    std::size_t i = 0;
    while (i + 2 <= most && PairAt(left, i) == PairAt(right, i))
        i += 2;
    while (i < most && left[i] == right[i])
        ++i;
    return i;
}

int CompareArcs(ArcView left, ArcView right) noexcept
{
    const std::size_t common = CommonArcs(left, right);
    if (common < left.size() && common < right.size()) return left[common] < right[common] ? -1 : 1;
    if (left.size() == right.size()) return 0;
    return left.size() < right.size() ? -1 : 1;
}

bool IsInside(ArcView name, ArcView root) noexcept
{
    return CommonArcs(name, root) == root.size();
}

} // namespace Service
