#ifndef SERVICE_STANDBY_H
#define SERVICE_STANDBY_H

#include <atomic>
#include <cstdint>

#include "Platform/LoopEvents.h"

namespace Service {

/// Decides who owns the loop while a call into an extension lasts.
///
/// The owner marks the call; if it comes back within kPatienceMs it stays the owner, and no other thread has
/// heard of it. Otherwise the thread in Watch takes the loop over, and the caller learns that on return.
/// The watcher sleeps on an alarm that the owner sets only when it isn't set already; it finds out by itself
/// that nothing was late, so a stream of short calls costs one ring in kPatienceMs, and rest costs nothing.
///
/// Threads: BeginCall and EndCall by the owner, Watch by one other thread at a time, Stop by any.
/// Memory order: the pair m_call/m_armed is sequentially consistent, so either the watcher sees a call or its
/// owner sees the alarm unset. The exchange of m_call hands over everything the former owner wrote.
class CStandby {
public:
    /// How long a call may hold the loop.
    static constexpr std::uint32_t kPatienceMs = 8;

    bool IsValid() const noexcept { return m_alarm.IsValid(); }

    /// The owner is about to call. The result belongs to EndCall.
    std::uint64_t BeginCall(std::uint64_t nowMs) noexcept;
    /// The call is back. False: another thread owns the loop now.
    bool EndCall(std::uint64_t call) noexcept;
    /// Sleeps until a call is late. True: the calling thread owns the loop now. False after Stop.
    bool Watch() noexcept;
    void Stop() noexcept;

private:
    Platform::CAlarmClock m_alarm;
    std::atomic<std::uint64_t> m_call{0};        ///< number of the call that lasts, 0 for none
    std::atomic<std::uint64_t> m_callStartMs{0}; ///< of that call; ordered by m_call
    std::atomic<bool> m_armed{false};
    std::atomic<bool> m_stopped{false};
    std::uint64_t m_lastCall = 0; ///< the owner's
};

} // namespace Service

#endif
