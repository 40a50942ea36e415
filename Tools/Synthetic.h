#ifndef TOOLS_SYNTHETIC_H
#define TOOLS_SYNTHETIC_H

#include "Tools/Estate.h"

namespace Coresim {

/// How large an estate without a scenario is. Drives and devices are counted for each controller.
struct SSize {
    int controllers = 1;
    int drives = 1;
    int devices = 2;
};

/// Rows that all controllers, drives and devices make together, and how many a simulation still has the memory for.
constexpr long long RowsOf(SSize const & size) noexcept
{
    return size.controllers * (1LL + size.drives + size.devices);
}
inline constexpr long long kMostRows = 1000000;

/// An estate of that size in good health. Its devices fill targets 0 to 255 of each channel; a drive has two of them
/// where there are enough.
SEstate MakeSyntheticEstate(SSize const & size);

} // namespace Coresim

#endif
