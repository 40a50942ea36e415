#include "FailingMemory.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>

#include "Platform/Thread.h"

namespace {

using CNumber = std::uintptr_t;

using CNumber = std::uintptr_t;

constexpr std::uint32_t kNoSlot = ~std::uint32_t{0};

/// Holds what the calling thread's allocations meet: twice the number of allocations until one fails (0: none does),
/// and 1 when all behind it do. A slot of the system's, since a thread_local may have to be allocated itself.
/// Allocations before it is there succeed.
constinit std::uint32_t g_slot = kNoSlot;
const Platform::ErrorCode g_noSlot = Platform::NewThreadSlot(g_slot);
std::atomic<bool> g_bFired{false};

CNumber State() noexcept
{
    return g_slot == kNoSlot ? 0 : reinterpret_cast<CNumber>(Platform::ThreadSlotValue(g_slot));
}

void SetState(CNumber value) noexcept
{
    if (g_noSlot != Platform::Success || Platform::SetThreadSlotValue(g_slot, reinterpret_cast<void *>(value)) != 0)
        std::abort(); // without a slot nothing would fail, and the tests would prove nothing
}

bool Fails() noexcept
{
    CNumber const state = State();
    if (state >> 1 == 0) return false;
    if (state >> 1 > 1) {
        SetState(state - 2);
        return false;
    }
    g_bFired = true;
    if ((state & 1) == 0) SetState(0);
    return true;
}

} // namespace

CFailingMemory::CFailingMemory(unsigned int first, EFailures failures) noexcept
{
    g_bFired = false;
    SetState(CNumber{first} << 1 | (failures == FailAll ? 1 : 0));
}

CFailingMemory::~CFailingMemory()
{
    SetState(0);
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
