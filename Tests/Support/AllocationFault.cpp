#include "AllocationFault.h"

#include <cstdlib>
#include <new>

namespace {

/// Allocations of this thread until one fails; 0: none will.
thread_local unsigned g_allocationsUntilFailure = 0;

void * Allocate(std::size_t size) noexcept
{
    if (g_allocationsUntilFailure != 0 && --g_allocationsUntilFailure == 0) return nullptr;
    return std::malloc(size != 0 ? size : 1);
}

} // namespace

CAllocationFault::CAllocationFault(unsigned n) noexcept
{
    g_allocationsUntilFailure = n;
}

CAllocationFault::~CAllocationFault()
{
    g_allocationsUntilFailure = 0;
}

bool CAllocationFault::Fired() const noexcept
{
    return g_allocationsUntilFailure == 0;
}

// In place of the library's own, for the whole program.

void * operator new(std::size_t size)
{
    if (void * const block = Allocate(size); block != nullptr) return block;
    throw std::bad_alloc();
}

void * operator new[](std::size_t size)
{
    if (void * const block = Allocate(size); block != nullptr) return block;
    throw std::bad_alloc();
}

void * operator new(std::size_t size, std::nothrow_t const &) noexcept
{
    return Allocate(size);
}

void * operator new[](std::size_t size, std::nothrow_t const &) noexcept
{
    return Allocate(size);
}

void operator delete(void * block) noexcept
{
    std::free(block);
}

void operator delete[](void * block) noexcept
{
    std::free(block);
}

void operator delete(void * block, std::size_t) noexcept
{
    std::free(block);
}

void operator delete[](void * block, std::size_t) noexcept
{
    std::free(block);
}

void operator delete(void * block, std::nothrow_t const &) noexcept
{
    std::free(block);
}

void operator delete[](void * block, std::nothrow_t const &) noexcept
{
    std::free(block);
}
