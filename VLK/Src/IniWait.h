#ifndef VLK_SRC_INI_WAIT_H
#define VLK_SRC_INI_WAIT_H

#include <cstdint>

#include "VLK/Functions.h"
#include "VLK/Threads.h"

namespace VLK::Internals {

/// How an INI file is waited for that another process has at the moment. One thread.
class CFileWait {
public:
    static constexpr unsigned int Infinite = 0xFFFFFFFF;

    explicit CFileWait(unsigned int timeoutMs) : m_uTimeout(timeoutMs), m_uStart(Functions::GetTickTime(1000)) {}
    /// Gives the other process a moment. False when the time is up. Raises what Sleep raises.
    bool Again() const
    {
        Threading::CCurrentThread().Sleep(Elapsed() < BusyMs ? 0 : 1);
        return m_uTimeout == Infinite || Elapsed() < m_uTimeout;
    }

private:
    static constexpr std::uint64_t BusyMs = 20; ///< so long a waiter only gives up the processor, then it sleeps

    std::uint64_t Elapsed() const noexcept { return Functions::GetTickTime(1000) - m_uStart; }

    unsigned int m_uTimeout;
    std::uint64_t m_uStart;
};

} // namespace VLK::Internals

#endif
