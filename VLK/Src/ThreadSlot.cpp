#include <atomic>

#include "Platform/Thread.h"
#include "VLK/Exceptions.h"
#include "VLK/ThreadCB.h"
#include "VLK/Threads.h"

namespace VLK::Internals {

namespace {

constexpr std::uint32_t NoSlot = 0xFFFFFFFF;
constexpr std::uint32_t SlotGone = 0xFFFFFFFE;

/// The slot of all threads. Static objects of any order use it, so it is allocated at its first use.
constinit std::atomic<std::uint32_t> g_uSlot{NoSlot};

/// Gives the slot back when the module is unloaded; what runs later finds none and makes blocks for itself alone.
struct SSlotOwner {
    ~SSlotOwner()
    {
        const std::uint32_t slot = g_uSlot.exchange(SlotGone);
        if (slot != NoSlot && slot != SlotGone) Platform::FreeThreadSlot(slot);
    }
} g_SlotOwner;

bool HasSlot(std::uint32_t slot) noexcept
{
    return slot < SlotGone;
}

std::uint32_t NeedSlot() noexcept
{
    std::uint32_t slot = g_uSlot.load(std::memory_order_acquire);
    if (slot != NoSlot) return slot;
    std::uint32_t made = NoSlot;
    if (Platform::NewThreadSlot(made) != Platform::Success) return NoSlot;
    if (g_uSlot.compare_exchange_strong(slot, made)) return made;
    Platform::FreeThreadSlot(made); // another thread was faster
    return slot;
}

} // namespace

CThreadCB * CThreadCBSlot::Look() noexcept
{
    const std::uint32_t slot = g_uSlot.load(std::memory_order_acquire);
    return HasSlot(slot) ? static_cast<CThreadCB *>(Platform::ThreadSlotValue(slot)) : nullptr;
}

bool CThreadCBSlot::Store(CThreadCB * block) noexcept
{
    const std::uint32_t slot = NeedSlot();
    return HasSlot(slot) && Platform::SetThreadSlotValue(slot, block) == Platform::Success;
}

void CThreadCBSlot::Forget() noexcept
{
    if (Look() == this) Store(nullptr);
}

} // namespace VLK::Internals

namespace VLK::Threading {

CTls::CTls() : m_uSlot(0)
{
    Exceptions::CThrowState state;
    try {
        const Platform::ErrorCode error = Platform::NewThreadSlot(m_uSlot);
        if (error != Platform::Success) VLK_RAISE_OS(state, Errors::ThreadLocalStorage, error);
        m_bAllocated = true;
    }
    VLK_THROW_NEXT_VOID(state)
}

CTls::~CTls()
{
    if (m_bAllocated) Platform::FreeThreadSlot(m_uSlot);
}

void * CTls::Get() const noexcept
{
    return m_bAllocated ? Platform::ThreadSlotValue(m_uSlot) : nullptr;
}

unsigned int CTls::Set(void * value)
{
    Exceptions::CThrowState state;
    try {
        if (!m_bAllocated) VLK_RAISE(state, Errors::ThreadLocalStorage);
        const Platform::ErrorCode error = Platform::SetThreadSlotValue(m_uSlot, value);
        if (error != Platform::Success) VLK_RAISE_OS(state, Errors::ThreadLocalStorage, error);
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

} // namespace VLK::Threading
