#include "Platform/LoopEvents.h"

#include <poll.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include "Descriptor.h"

namespace Platform {

namespace {
/// Waits when the descriptor blocks.
void ReadEightBytes(int descriptor) noexcept
{
    ErrorCode error = Success;
    ConsumeDescriptor(descriptor, error);
}
} // namespace

CWakeUp::CWakeUp() noexcept : m_descriptor(NewEventDescriptor(0, /*countDown=*/false)) {}

CWakeUp::~CWakeUp()
{
    if (m_descriptor >= 0) ::close(m_descriptor);
}

void CWakeUp::Signal() const noexcept
{
    const CLastErrorKeeper keeper; // also runs in signal handlers
    SignalDescriptor(m_descriptor);
}

void CWakeUp::Clear() const noexcept
{
    ReadEightBytes(m_descriptor);
}

CAlarmClock::CAlarmClock() noexcept
    : m_descriptor(BeyondStandardStreams(::timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC)))
{
}

CAlarmClock::~CAlarmClock()
{
    if (m_descriptor >= 0) ::close(m_descriptor);
}

void CAlarmClock::Arm(std::uint32_t ms) const noexcept
{
    itimerspec when{};
    when.it_value.tv_sec = static_cast<time_t>(ms / 1000);
    // A value of 0 would stop the timer.
    when.it_value.tv_nsec = ms == 0 ? 1 : static_cast<long>(ms % 1000) * 1000000;
    ::timerfd_settime(m_descriptor, 0, &when, nullptr);
}

void CAlarmClock::Wait() const noexcept
{
    ReadEightBytes(m_descriptor);
}

void TakeEventSignal(int descriptor) noexcept
{
    ReadEightBytes(descriptor);
}

unsigned ReadableNow(int first, int second) noexcept
{
    pollfd both[] = {{first, POLLIN, 0}, {second, POLLIN, 0}};
    if (::poll(both, 2, 0) <= 0) return 0;
    return ((both[0].revents & POLLIN) != 0 ? 1U : 0U) | ((both[1].revents & POLLIN) != 0 ? 2U : 0U);
}

int EventDescriptor(void * event) noexcept
{
    return event == nullptr ? -1 : static_cast<int>(reinterpret_cast<std::intptr_t>(event));
}

} // namespace Platform
