#ifndef VLK_SRC_MEMORY_H
#define VLK_SRC_MEMORY_H

#include <cstddef>
#include <cstdlib>

/// Memory that may be handed to others, who free it with free().
namespace VLK::Internals {

/// No object is larger; a size above it comes from a sum that overflowed, or from a liar.
inline constexpr std::size_t MaxBlock = ~std::size_t{0} >> 1;

/// Null when memory can't be had.
inline void * TryAllocate(std::size_t size) noexcept
{
    return size <= MaxBlock ? std::malloc(size) : nullptr;
}
/// Null when memory can't be had; the block is unchanged then.
inline void * TryReallocate(void * block, std::size_t size) noexcept
{
    return size <= MaxBlock ? std::realloc(block, size) : nullptr;
}

constexpr std::size_t RoundUp(std::size_t size, std::size_t step) noexcept
{
    return (size + step - 1) / step * step;
}

/// Sum that stays at the largest value where it would overflow.
constexpr std::size_t SaturatedSum(std::size_t a, std::size_t b) noexcept
{
    return a <= ~b ? a + b : ~std::size_t{0};
}

/// Raises "Out of memory"; returns URET_Error on a thread with throwing disabled.
unsigned int RaiseOutOfMemory();

} // namespace VLK::Internals

#endif
