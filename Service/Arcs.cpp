#include "Arcs.h"

#include <algorithm>

namespace Service {

int CompareArcs(ArcView left, ArcView right) noexcept
{
    const std::size_t common = std::min(left.size(), right.size());
    for (std::size_t i = 0; i < common; ++i)
        if (left[i] != right[i]) return left[i] < right[i] ? -1 : 1;
    if (left.size() == right.size()) return 0;
    return left.size() < right.size() ? -1 : 1;
}

bool IsInside(ArcView name, ArcView root) noexcept
{
    return name.size() >= root.size() && std::equal(root.begin(), root.end(), name.begin());
}

} // namespace Service
