#ifndef PLATFORM_CRITICAL_SECTION_H
#define PLATFORM_CRITICAL_SECTION_H

#include <cstddef>
#include <cstdint>

namespace Platform {

/// Lock within one process, recursive for its owner. Not waitable together with other objects. Neither
/// constructor nor destructor fails or blocks; destroying a held section is allowed for its owner, and for anyone when
/// its owner was ended by force.
class CCriticalSection {
public:
    explicit CCriticalSection(std::uint32_t spinCount = 0) noexcept;
    ~CCriticalSection();
    CCriticalSection(CCriticalSection const &) = delete;
    CCriticalSection & operator=(CCriticalSection const &) = delete;

    void Enter() noexcept;
    bool TryEnter() noexcept;
    /// By the owner only; a call by anyone else is ignored.
    void Leave() noexcept;
    /// Whether any thread holds it at this moment.
    bool IsHeld() const noexcept;
    bool IsHeldByMe() const noexcept;
    /// Returns the old spin count. A hint: systems that adapt by themselves only remember it.
    std::uint32_t SetSpinCount(std::uint32_t spinCount) noexcept;

private:
    struct SImpl;
    SImpl * Impl() noexcept;
    SImpl const * Impl() const noexcept;
    static constexpr std::size_t Room = 80; ///< bytes for the system's object, checked where it is built
    alignas(8) unsigned char m_room[Room];
};

/// Holds a section for a scope.
class CCriticalLock {
public:
    explicit CCriticalLock(CCriticalSection & section) noexcept : m_section(section) { m_section.Enter(); }
    ~CCriticalLock() { m_section.Leave(); }
    CCriticalLock(CCriticalLock const &) = delete;
    CCriticalLock & operator=(CCriticalLock const &) = delete;

private:
    CCriticalSection & m_section;
};

} // namespace Platform

#endif
