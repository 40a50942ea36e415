#ifndef PLATFORM_NATIVE_STATIC_LOCK_H
#define PLATFORM_NATIVE_STATIC_LOCK_H

namespace Platform {

/// The system's slim lock, one pointer that begins as null. (The C++ library's mutex has a constructor to run.)
class CStaticLock {
public:
    constexpr CStaticLock() noexcept = default;
    CStaticLock(CStaticLock const &) = delete;
    CStaticLock & operator=(CStaticLock const &) = delete;

    void lock() noexcept;
    bool try_lock() noexcept;
    void unlock() noexcept;

private:
    void * m_word = nullptr;
};

} // namespace Platform

#endif
