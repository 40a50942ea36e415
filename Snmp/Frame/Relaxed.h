#ifndef SNMP_FRAME_RELAXED_H
#define SNMP_FRAME_RELAXED_H

#include <atomic>

/// A word that is read and written without a lock. Relaxed order is enough wherever it is used: a late reader
/// sees the change at its next read, and nothing else is published through the word.
/// Any thread. Constant initialisation, no destructor.
template <class TValue>
class TRelaxed {
public:
    constexpr TRelaxed(TValue value = TValue{}) noexcept : m_value(value) {}
    TRelaxed(TRelaxed const &) = delete;
    TRelaxed & operator=(TRelaxed const &) = delete;

    operator TValue() const noexcept { return m_value.load(std::memory_order_relaxed); }
    TValue operator=(TValue value) noexcept
    {
        m_value.store(value, std::memory_order_relaxed);
        return value;
    }
    /// Stores `value` and returns what stood there; of several callers each sees another one's value.
    TValue Exchange(TValue value) noexcept { return m_value.exchange(value, std::memory_order_relaxed); }

    /// Adds without losing another thread's addition.
    void Add(TValue value) noexcept { m_value.fetch_add(value, std::memory_order_relaxed); }

private:
    std::atomic<TValue> m_value;
};

#endif
