#include <cstdlib>

#include "Platform/SnmpUtil.h"

extern "C" void * SnmpUtilMemAlloc(std::uint32_t bytes) noexcept
{
    return std::malloc(bytes != 0 ? bytes : 1);
}

extern "C" void * SnmpUtilMemReAlloc(void * block, std::uint32_t bytes) noexcept
{
    // A realloc to 0 bytes would free the block and answer null, which callers take for a failure.
    return std::realloc(block, bytes != 0 ? bytes : 1);
}

extern "C" void SnmpUtilMemFree(void * block) noexcept
{
    std::free(block);
}
