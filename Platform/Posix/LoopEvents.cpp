#include "Platform/LoopEvents.h"

#include <cerrno>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/timerfd.h>
#include <unistd.h>

namespace Platform {

namespace {
void ReadEightBytes(int descriptor) noexcept
{
    std::uint64_t count = 0;
    while (::read(descriptor, &count, sizeof count) < 0 && errno == EINTR) {
    }
}
} // namespace

CWakeUp::CWakeUp() noexcept : m_descriptor(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

CWakeUp::~CWakeUp()
{
    if (m_descriptor >= 0) ::close(m_descriptor);
}

void CWakeUp::Signal() const noexcept
{
    const int error = errno; // also runs in signal handlers
    const std::uint64_t one = 1;
    while (::write(m_descriptor, &one, sizeof one) < 0 && errno == EINTR) {
    }
    errno = error;
}

void CWakeUp::Clear() const noexcept
{
    ReadEightBytes(m_descriptor);
}

CAlarmClock::CAlarmClock() noexcept : m_descriptor(::timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC)) {}

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
