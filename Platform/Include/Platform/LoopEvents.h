#ifndef PLATFORM_LOOP_EVENTS_H
#define PLATFORM_LOOP_EVENTS_H

#include <cstdint>

/// Objects of the system that a loop over descriptors can wait for. Windows: descriptors of CWakeUp are sockets, those
/// of events and alarm clocks carry a handle.
namespace Platform {

/// Something that any thread or a signal handler sets and a loop over descriptors sees.
/// Threads: Signal from any thread and from signal handlers; Clear from the loop.
class CWakeUp {
public:
    CWakeUp() noexcept;
    ~CWakeUp();
    CWakeUp(CWakeUp const &) = delete;
    CWakeUp & operator=(CWakeUp const &) = delete;

    /// Whether the system had a descriptor for it.
    bool IsValid() const noexcept { return m_descriptor >= 0; }
    /// Readable while signalled. Stays owned by this object.
    int Descriptor() const noexcept { return m_descriptor; }
    void Signal() const noexcept;
    void Clear() const noexcept;

private:
    int m_descriptor;
};

/// A timer that one thread sleeps on and any thread sets.
/// Threads: Arm from any thread; Wait from one at a time.
class CAlarmClock {
public:
    CAlarmClock() noexcept;
    ~CAlarmClock();
    CAlarmClock(CAlarmClock const &) = delete;
    CAlarmClock & operator=(CAlarmClock const &) = delete;

    bool IsValid() const noexcept { return m_descriptor >= 0; }
    /// Rings once in `ms` milliseconds (0: at once); an earlier setting is forgotten.
    void Arm(std::uint32_t ms) const noexcept;
    /// Sleeps until it rings; a ring that nobody waited for is kept. Costs nothing while it isn't armed.
    void Wait() const noexcept;

private:
    int m_descriptor;
};

/// Takes the signal of an event that came with EventForHost out of an extension: on POSIX the eight bytes of its
/// descriptor. Call it only for a descriptor that was reported readable.
void TakeEventSignal(int descriptor) noexcept;
/// Which of two descriptors are readable now; bit 0 for the first, bit 1 for the second. Doesn't wait.
unsigned ReadableNow(int first, int second) noexcept;
/// The descriptor in an extension's event handle, or -1 for none.
int EventDescriptor(void * event) noexcept;

} // namespace Platform

#endif
