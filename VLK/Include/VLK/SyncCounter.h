#ifndef VLK_SYNC_COUNTER_H
#define VLK_SYNC_COUNTER_H

#include <atomic>

#include "VLK/Export.h"

namespace VLK::Threading {

/// Signed 32-bit counter that any thread may change at any time; the reference count of the foundation's
/// control blocks. Whoever gets 1 from Decr() deletes what the counter counts.
class VLK_API CSyncCounter {
public:
    constexpr explicit CSyncCounter(int count = 0) noexcept : m_Count(count) {}
    CSyncCounter(CSyncCounter const &) = delete;
    CSyncCounter & operator=(CSyncCounter const &) = delete;

    /// The count of this moment. Orders nothing: relaxed, since a count read is never the ground for an access.
    int Count() const noexcept { return m_Count.load(std::memory_order_relaxed); }
    void Set(int count) noexcept { m_Count.store(count, std::memory_order_relaxed); }

    /// Adds 1. Returns 1 when the result is 0 (the count came from -1), else 0.
    unsigned int Incr() noexcept { return m_Count.fetch_add(1, std::memory_order_relaxed) == -1 ? 1u : 0u; }
    /// Takes 1 away. Returns 1 when the result is 0, else 0. Everything that was done under a reference
    /// happens before the deletion by whoever gets the 1.
    unsigned int Decr() noexcept { return m_Count.fetch_sub(1, std::memory_order_acq_rel) == 1 ? 1u : 0u; }

private:
    std::atomic<int> m_Count;
};

} // namespace VLK::Threading

#endif
