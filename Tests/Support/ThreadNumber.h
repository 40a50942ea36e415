#ifndef TESTS_SUPPORT_THREAD_NUMBER_H
#define TESTS_SUPPORT_THREAD_NUMBER_H

#include <cstdint>
#include <cstdlib>

#include "Platform/Thread.h"

/// A number of each thread's own, at first 0. In a slot of the system's: a thread_local may have to be allocated and
/// locked itself, by the very functions that the number decides about.
/// For objects of static storage (constinit); Make gives it the slot, until then it is 0 everywhere.
class CThreadNumber {
public:
    constexpr CThreadNumber() noexcept = default;

    /// True, so that a static initialiser can call it.
    bool Make() noexcept
    {
        if (Platform::NewThreadSlot(m_slot) != Platform::Success) std::abort();
        return true;
    }
    std::uintptr_t Get() const noexcept
    {
        return m_slot == kNone ? 0 : reinterpret_cast<std::uintptr_t>(Platform::ThreadSlotValue(m_slot));
    }
    /// Without its slot a test would prove nothing, so it ends.
    void Set(std::uintptr_t value) noexcept
    {
        if (Platform::SetThreadSlotValue(m_slot, reinterpret_cast<void *>(value)) != Platform::Success) std::abort();
    }

private:
    static constexpr std::uint32_t kNone = ~std::uint32_t{0};
    std::uint32_t m_slot = kNone;
};

#endif
