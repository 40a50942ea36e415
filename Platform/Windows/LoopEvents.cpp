#include "Platform/LoopEvents.h"

#include "Platform/Socket.h"
#include "System.h"

namespace Platform {

namespace {

constexpr LONGLONG StepsPerMs = 10000; ///< of 100 ns

/// Handles have no more than 32 bits that mean something, so an int carries one.
int DescriptorOf(std::uint64_t handle) noexcept
{
    return handle == NoSocket ? -1 : static_cast<int>(handle);
}

SOCKET SocketOf(int descriptor) noexcept
{
    return static_cast<SOCKET>(static_cast<std::intptr_t>(descriptor));
}

HANDLE HandleOf(int descriptor) noexcept
{
    return ::LongToHandle(descriptor);
}

/// A datagram socket that talks to itself alone, and never waits.
bool ConnectToItself(SOCKET socket) noexcept
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    auto * const generic = reinterpret_cast<sockaddr *>(&address);
    int length = sizeof address;
    u_long nonBlocking = 1;
    return ::bind(socket, generic, length) == 0 && ::getsockname(socket, generic, &length) == 0 &&
           ::connect(socket, generic, length) == 0 &&
           ::ioctlsocket(socket, static_cast<long>(FIONBIO), &nonBlocking) == 0;
}

SOCKET NewSelfSocket() noexcept
{
    constexpr DWORD flags = WSA_FLAG_OVERLAPPED | WSA_FLAG_NO_HANDLE_INHERIT;
    CSocketHandle socket(::WSASocketW(AF_INET, SOCK_DGRAM, IPPROTO_UDP, nullptr, 0, flags));
    return socket && ConnectToItself(socket.Get()) ? socket.Release() : INVALID_SOCKET;
}

bool IsSocket(int descriptor) noexcept
{
    int type = 0;
    int length = sizeof type;
    return ::getsockopt(SocketOf(descriptor), SOL_SOCKET, SO_TYPE, reinterpret_cast<char *>(&type), &length) == 0;
}

bool IsSocketReadable(int descriptor) noexcept
{
    WSAPOLLFD polled{SocketOf(descriptor), POLLRDNORM, 0};
    return ::WSAPoll(&polled, 1, 0) > 0 && (polled.revents & (POLLRDNORM | POLLHUP)) != 0;
}

/// The system can't look at an auto-reset event without taking its signal, so it is given back.
bool IsEventSet(int descriptor) noexcept
{
    const HANDLE event = HandleOf(descriptor);
    return ::WaitForSingleObject(event, 0) == WAIT_OBJECT_0 && ::SetEvent(event) != 0;
}

bool IsReadable(int descriptor) noexcept
{
    if (descriptor < 0) return false;
    return IsSocket(descriptor) ? IsSocketReadable(descriptor) : IsEventSet(descriptor);
}

} // namespace

CWakeUp::CWakeUp() noexcept : m_descriptor(-1)
{
    if (StartSockets() != Success) return;
    m_descriptor = DescriptorOf(NewSelfSocket());
    if (m_descriptor < 0) StopSockets();
}

CWakeUp::~CWakeUp()
{
    if (m_descriptor < 0) return;
    ::closesocket(SocketOf(m_descriptor));
    StopSockets();
}

void CWakeUp::Signal() const noexcept
{
    const CLastErrorKeeper keeper;
    // A full queue is readable as it is.
    ::send(SocketOf(m_descriptor), "", 1, 0);
}

void CWakeUp::Clear() const noexcept
{
    char byte = 0;
    while (::recv(SocketOf(m_descriptor), &byte, 1, 0) != SOCKET_ERROR) {
    }
}

CAlarmClock::CAlarmClock() noexcept : m_descriptor(-1)
{
    const HANDLE timer = ::CreateWaitableTimerA(nullptr, /*bManualReset=*/FALSE, nullptr);
    if (timer != nullptr) m_descriptor = ::HandleToLong(timer);
}

CAlarmClock::~CAlarmClock()
{
    if (m_descriptor >= 0) ::CloseHandle(HandleOf(m_descriptor));
}

void CAlarmClock::Arm(std::uint32_t ms) const noexcept
{
    LARGE_INTEGER due{};
    due.QuadPart = ms == 0 ? -1 : -StepsPerMs * ms; // negative: from now on
    ::SetWaitableTimer(HandleOf(m_descriptor), &due, 0, nullptr, nullptr, /*fResume=*/FALSE);
}

void CAlarmClock::Wait() const noexcept
{
    ::WaitForSingleObject(HandleOf(m_descriptor), INFINITE);
}

void TakeEventSignal(int descriptor) noexcept
{
    ::ResetEvent(HandleOf(descriptor));
}

unsigned ReadableNow(int first, int second) noexcept
{
    return (IsReadable(first) ? 1U : 0U) | (IsReadable(second) ? 2U : 0U);
}

int EventDescriptor(void * event) noexcept
{
    return event == nullptr ? -1 : ::HandleToLong(event);
}

} // namespace Platform
