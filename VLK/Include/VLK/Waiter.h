#ifndef VLK_WAITER_H
#define VLK_WAITER_H

#include <cstddef>
#include <cstdint>

#include "VLK/Export.h"
#include "VLK/WaitObjects.h"

namespace VLK::Internals {

/// The entries of a CWaiter: the first 16 inside the object, from the 17th on in one heap array of 64.
class VLK_API CWaitList {
public:
    static constexpr std::size_t InlineEntries = 16;
    static constexpr std::size_t MaxEntries = 64;

    CWaitList() noexcept : m_pEntries(m_Inline), m_uCount(0) {}
    ~CWaitList();
    CWaitList(CWaitList const &) = delete;
    CWaitList & operator=(CWaitList const &) = delete;

    std::size_t Count() const noexcept { return m_uCount; }
    Threading::CWaitHandle const & operator[](std::size_t index) const noexcept { return m_pEntries[index]; }

    /// False without memory for the heap array. Count() must be below MaxEntries.
    bool Append(Threading::CWaitHandle const & handle) noexcept;
    /// Drops the references and keeps the array.
    void Clear() noexcept;

private:
    Threading::CWaitHandle * m_pEntries;
    Threading::CWaitHandle m_Inline[InlineEntries];
    std::size_t m_uCount;
};

} // namespace VLK::Internals

namespace VLK::Threading {

/// Waits for the first of several objects, or for all of them.
///
/// Owns     a counted reference to every object until Clear() or its own end.
/// Threads  a waiter belongs to one thread; CThread::Cancel breaks its wait from any other.
/// Memory   none up to 16 objects.
class VLK_API CWaiter {
public:
    CWaiter() noexcept : m_uError(0) {}

    /// Adds an object; the order of adding is the priority. Raises ObjectInErrorState after an earlier failure until
    /// Clear(), SyncNotInitialized ("current count=%d") for an object without a block, MaxCount from the 65th on.
    CWaiter & operator<<(CWaitHandle const & handle);

    /// Waits until one object of the list fires, or all of them.
    ///
    /// timeout  milliseconds from now, on the monotonic clock; 0 only looks, 0xFFFFFFFF waits for ever
    /// all      false: return at the first that fires; true: when every one has fired
    /// returns  URET_WaitObject0 + i, i being the object's place in the order of operator<<. If several are ready
    ///          the lowest place wins. URET_Timeout if none fired. A mutex whose owner ended counts as fired and
    ///          is now the caller's.
    /// Errors   MaxCount from 64 objects on (the 64th can be added, but not waited for), InvalidHandle for an
    ///          object without a handle, OperatingSystem when the system fails or the list is empty, and the
    ///          interrupts of the thread at entry as well as during the wait.
    unsigned int Wait(unsigned int timeout, bool all);

    /// Empties the list and forgets a failure.
    void Clear() noexcept;
    std::size_t Count() const noexcept { return m_List.Count(); }

private:
    unsigned int m_uError; ///< 1 after a failed operator<<
    Internals::CWaitList m_List;
};

/// One deadline for several waits: gives the milliseconds that are left. One thread.
class VLK_API CWaitInterval {
public:
    /// Starts now. 0xFFFFFFFF is an interval like any other.
    explicit CWaitInterval(unsigned int interval) noexcept;
    void Restart() noexcept;
    void Restart(unsigned int interval) noexcept;
    /// Milliseconds left, 0 when the interval is over.
    operator unsigned int() const noexcept;

private:
    unsigned int m_uInterval; ///< milliseconds
    std::uint64_t m_uStart;   ///< milliseconds on the foundation's tick clock
};

} // namespace VLK::Threading

#endif
