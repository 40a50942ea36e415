#include "Arcs.h"

namespace Service {

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
