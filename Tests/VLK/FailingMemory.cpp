#include "FailingMemory.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <new>

#include "Support/ThreadNumber.h"

namespace {

/// What the calling thread's allocations meet: twice the number of allocations until one fails (0: none does), and 1
/// when all behind it do.
constinit CThreadNumber g_state;
const bool g_made = g_state.Make();
std::atomic<bool> g_bFired{false};

/// The C++ runtime takes memory at a thread's first exception and at the first one that finds none, and can't go on
/// without. Where it is a part of the program, that memory is taken before it is needed.
void PrepareExceptions()
{
    for (std::uintptr_t const failOne : {0, 2}) {
        g_state.Set(failOne);
        try {
            throw 0;
        } catch (int) {
        }
    }
}

bool Fails() noexcept
{
    const std::uintptr_t state = g_state.Get();
    if (state >> 1 == 0) return false;
    if (state >> 1 > 1) {
        g_state.Set(state - 2);
        return false;
    }
    g_bFired = true;
    if ((state & 1) == 0) g_state.Set(0);
    return true;
}

} // namespace

CFailingMemory::CFailingMemory(unsigned int first, EFailures failures) noexcept
{
    PrepareExceptions();
    g_bFired = false;
    g_state.Set(std::uintptr_t{first} << 1 | (failures == FailAll ? 1 : 0));
}

CFailingMemory::~CFailingMemory()
{
    g_state.Set(0);
}

bool CFailingMemory::Fired() const noexcept
{
    return g_bFired;
}

// The linker puts these in the place of the functions behind the underscores (--wrap, see CMakeLists.txt). Operator new
// bears the code of its argument's type, which is another one on each system.
#define JOIN_CODE(before, code, behind) before##code##behind
#define JOIN(before, code, behind) JOIN_CODE(before, code, behind)
#define REAL_NEW JOIN(__real__Znw, TEST_SIZE_CODE, )
#define REAL_NEW_QUIET JOIN(__real__Znw, TEST_SIZE_CODE, RKSt9nothrow_t)
#define WRAP_NEW JOIN(__wrap__Znw, TEST_SIZE_CODE, )
#define WRAP_NEW_QUIET JOIN(__wrap__Znw, TEST_SIZE_CODE, RKSt9nothrow_t)

extern "C" {

void * __real_malloc(std::size_t size);
void * __real_calloc(std::size_t count, std::size_t size);
void * __real_realloc(void * block, std::size_t size);
void * REAL_NEW(std::size_t size);
void * REAL_NEW_QUIET(std::size_t size, std::nothrow_t const & tag) noexcept;

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

void * WRAP_NEW(std::size_t size)
{
    if (Fails()) throw std::bad_alloc();
    return REAL_NEW(size);
}

void * WRAP_NEW_QUIET(std::size_t size, std::nothrow_t const & tag) noexcept
{
    return Fails() ? nullptr : REAL_NEW_QUIET(size, tag);
}
}
