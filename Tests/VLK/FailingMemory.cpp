#include "FailingMemory.h"

#include <cstddef>
#include <new>

namespace {

thread_local unsigned int g_uUntilFailure = 0; ///< 0: nothing fails
thread_local bool g_bFailAll = false;
thread_local bool g_bFired = false;

bool Fails() noexcept
{
    if (g_uUntilFailure == 0) return false;
    if (g_uUntilFailure > 1) {
        --g_uUntilFailure;
        return false;
    }
    g_bFired = true;
    if (!g_bFailAll) g_uUntilFailure = 0;
    return true;
}

} // namespace

CFailingMemory::CFailingMemory(unsigned int first, EFailures failures) noexcept
{
    g_bFired = false;
    g_bFailAll = failures == FailAll;
    g_uUntilFailure = first;
}

CFailingMemory::~CFailingMemory()
{
    g_uUntilFailure = 0;
}

bool CFailingMemory::Fired() const noexcept
{
    return g_bFired;
}

// The linker puts these in the place of the functions behind the underscores (--wrap, see CMakeLists.txt).
extern "C" {

void * __real_malloc(std::size_t size);
void * __real_calloc(std::size_t count, std::size_t size);
void * __real_realloc(void * block, std::size_t size);
void * __real__Znwm(std::size_t size);
void * __real__ZnwmRKSt9nothrow_t(std::size_t size, std::nothrow_t const & tag) noexcept;

void * __wrap_malloc(std::size_t size)
{
    return Fails() ? nullptr : __real_malloc(size);
}

void * __wrap_calloc(std::size_t count, std::size_t size)
{
    return Fails() ? nullptr : __real_calloc(count, size);
}

void * __wrap_realloc(void * block, std::size_t size)
{
    return Fails() ? nullptr : __real_realloc(block, size);
}

void * __wrap__Znwm(std::size_t size)
{
    if (Fails()) throw std::bad_alloc();
    return __real__Znwm(size);
}

void * __wrap__ZnwmRKSt9nothrow_t(std::size_t size, std::nothrow_t const & tag) noexcept
{
    return Fails() ? nullptr : __real__ZnwmRKSt9nothrow_t(size, tag);
}
}
