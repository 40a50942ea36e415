#ifndef PLATFORM_HANDLE_H
#define PLATFORM_HANDLE_H

#include <utility>

namespace Platform {

/// Owns one system handle and closes it exactly once.
/// TTraits gives Type, None() and Close(Type). One thread at a time.
template <class TTraits>
class THandle {
public:
    using Type = typename TTraits::Type;
    THandle() = default;
    explicit THandle(Type handle) noexcept : m_handle(handle) {}
    THandle(THandle && other) noexcept : m_handle(other.Release()) {}
    THandle & operator=(THandle && other) noexcept
    {
        Reset(other.Release());
        return *this;
    }
    THandle(THandle const &) = delete;
    THandle & operator=(THandle const &) = delete;
    ~THandle() { Reset(); }
    explicit operator bool() const noexcept { return m_handle != TTraits::None(); }
    Type Get() const noexcept { return m_handle; }
    /// Gives the handle away; the caller closes it.
    [[nodiscard]] Type Release() noexcept { return std::exchange(m_handle, TTraits::None()); }
    /// Takes over `handle`, then closes the one held before.
    void Reset(Type handle = TTraits::None()) noexcept
    {
        const Type old = std::exchange(m_handle, handle);
        if (old != TTraits::None()) TTraits::Close(old);
    }

private:
    Type m_handle = TTraits::None();
};

} // namespace Platform

#endif
