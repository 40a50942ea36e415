#ifndef TESTS_VLK_FAILING_LOCK_H
#define TESTS_VLK_FAILING_LOCK_H

/// While it lives, the n-th lock of a mutex of the C++ library by the calling thread fails, once, counted from here.
/// One at a time for a thread.
class CFailingLock {
public:
    explicit CFailingLock(unsigned int n) noexcept;
    ~CFailingLock();
    CFailingLock(CFailingLock const &) = delete;
    CFailingLock & operator=(CFailingLock const &) = delete;

    /// Whether a lock has failed.
    bool Fired() const noexcept;
};

#endif
