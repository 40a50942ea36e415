#include "Standby.h"

#include "Platform/Clock.h"

namespace Service {

std::uint64_t CStandby::BeginCall(std::uint64_t nowMs) noexcept
{
    const std::uint64_t call = ++m_lastCall;
    m_callStartMs.store(nowMs, std::memory_order_relaxed);
    m_call.store(call);
    if (!m_armed.load()) {
        m_armed.store(true);
        m_alarm.Arm(kPatienceMs);
    }
    return call;
}

bool CStandby::EndCall(std::uint64_t call) noexcept
{
    return m_call.compare_exchange_strong(call, 0);
}

bool CStandby::Watch() noexcept
{
    for (;;) {
        m_alarm.Wait();
        if (m_stopped.load()) return false;
        m_armed.store(false);
        std::uint64_t call = m_call.load();
        if (call == 0) continue;
        const std::uint64_t age = Platform::MonotonicMs() - m_callStartMs.load(std::memory_order_relaxed);
        if (age >= kPatienceMs && age < UINT64_MAX / 2) {
            if (m_call.compare_exchange_strong(call, 0)) return true;
            continue;
        }
        m_armed.store(true);
        m_alarm.Arm(age < kPatienceMs ? kPatienceMs - static_cast<std::uint32_t>(age) : kPatienceMs);
    }
}

void CStandby::Stop() noexcept
{
    m_stopped.store(true);
    m_alarm.Arm(0);
}

} // namespace Service
