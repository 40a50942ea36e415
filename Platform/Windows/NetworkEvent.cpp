#include "NetworkEvent.h"

#include <atomic>
#include <mutex>
#include <new>

#include "Platform/StaticLock.h"
#include "Waitable.h"

namespace Platform {

namespace {

static_assert(NetRead == FD_READ && NetWrite == FD_WRITE && NetAccept == FD_ACCEPT && NetConnect == FD_CONNECT &&
              NetClose == FD_CLOSE);

bool HasUnreadData(SocketHandle socket) noexcept
{
    u_long bytes = 0;
    return ::ioctlsocket(socket, FIONREAD, &bytes) == 0 && bytes > 0;
}

/// The system's event object of one socket. The socket belongs to one thread at a time, and so does all here; other
/// threads only wait for the handle.
struct SNetworkEvent final : SWaitable {
    explicit SNetworkEvent(HANDLE handle) noexcept : SWaitable(WaitableKind::Network, handle) {}
    ~SNetworkEvent() override { Unbind(); }

    ErrorCode Bind(SocketHandle socket, std::uint32_t mask) noexcept;
    /// The system stops setting the handle.
    void Unbind() noexcept;
    /// The socket is closed, or the system has bound it anew.
    void Forget() noexcept;
    ErrorCode Report(SNetworkEvents & out) noexcept;
    /// Lets a wait look again at a close that is held back.
    void Received() noexcept
    {
        if (m_closeHeld) ::SetEvent(Handle());
    }
    SocketHandle Socket() const noexcept { return m_socket.load(std::memory_order_relaxed); }

private:
    friend class CBindings;
    void ReportConnect(SNetworkEvents & out) noexcept;
    void ReportClose(SNetworkEvents & out) noexcept;

    std::atomic<SocketHandle> m_socket{NoSocket}; // atomic, since others look for the event of another socket
    std::uint32_t m_mask = 0;
    bool m_connectFailed = false;
    bool m_closeHeld = false; // seen, but data stands in front of it
    ErrorCode m_closeError = Success;
    SNetworkEvent * m_previous = nullptr; // guarded by the lock of the bindings
    SNetworkEvent * m_next = nullptr;
};

/// All events that are bound, to find a socket's.
class CBindings {
public:
    void Add(SNetworkEvent & event) noexcept;
    void Remove(SNetworkEvent & event) noexcept;
    SNetworkEvent * Find(SocketHandle socket) noexcept;

private:
    CStaticLock m_lock; // guards the list
    SNetworkEvent * m_first = nullptr;
};

constinit CBindings g_bindings;

void CBindings::Add(SNetworkEvent & event) noexcept
{
    const std::lock_guard lock(m_lock);
    event.m_previous = nullptr;
    event.m_next = m_first;
    if (m_first != nullptr) m_first->m_previous = &event;
    m_first = &event;
}

void CBindings::Remove(SNetworkEvent & event) noexcept
{
    const std::lock_guard lock(m_lock);
    (event.m_previous != nullptr ? event.m_previous->m_next : m_first) = event.m_next;
    if (event.m_next != nullptr) event.m_next->m_previous = event.m_previous;
    event.m_previous = event.m_next = nullptr;
}

SNetworkEvent * CBindings::Find(SocketHandle socket) noexcept
{
    const std::lock_guard lock(m_lock);
    SNetworkEvent * event = m_first;
    while (event != nullptr && event->Socket() != socket)
        event = event->m_next;
    return event;
}

SNetworkEvent * NetworkEventOf(WaitHandle handle) noexcept
{
    return IsOfKind(handle, WaitableKind::Network) ? static_cast<SNetworkEvent *>(handle) : nullptr;
}

void SNetworkEvent::Unbind() noexcept
{
    if (Socket() != NoSocket) ::WSAEventSelect(Socket(), nullptr, 0);
    Forget();
}

ErrorCode SNetworkEvent::Bind(SocketHandle socket, std::uint32_t mask) noexcept
{
    if (::WSAEventSelect(socket, Handle(), static_cast<long>(mask)) != 0) return LastError();
    m_mask = mask;
    m_socket.store(socket, std::memory_order_relaxed);
    g_bindings.Add(*this);
    return Success;
}

void SNetworkEvent::Forget() noexcept
{
    if (Socket() == NoSocket) return;
    g_bindings.Remove(*this);
    m_socket.store(NoSocket, std::memory_order_relaxed);
    m_mask = 0;
    m_connectFailed = m_closeHeld = false;
    m_closeError = Success;
}

ErrorCode SNetworkEvent::Report(SNetworkEvents & out) noexcept
{
    WSANETWORKEVENTS seen{};
    if (::WSAEnumNetworkEvents(Socket(), Handle(), &seen) != 0) return LastError();
    if (m_connectFailed) return Success;
    out.events = static_cast<std::uint32_t>(seen.lNetworkEvents) & m_mask;
    for (const int bit : {FD_READ_BIT, FD_WRITE_BIT, FD_ACCEPT_BIT, FD_CONNECT_BIT, FD_CLOSE_BIT})
        if ((out.events >> bit & 1U) != 0) out.errors[bit] = static_cast<ErrorCode>(seen.iErrorCode[bit]);
    ReportConnect(out);
    ReportClose(out);
    return Success;
}

/// What never was open isn't writable and doesn't close.
void SNetworkEvent::ReportConnect(SNetworkEvents & out) noexcept
{
    const ErrorCode error = out.errors[FD_CONNECT_BIT];
    if (error == Success) return;
    m_connectFailed = true;
    out = {};
    out.events = NetConnect;
    out.errors[FD_CONNECT_BIT] = error;
}

/// The close comes behind the data, which the system doesn't promise; and data that is never read doesn't hide it from
/// who didn't ask for it.
void SNetworkEvent::ReportClose(SNetworkEvents & out) noexcept
{
    if ((out.events & NetClose) != 0) {
        m_closeHeld = true;
        m_closeError = out.errors[FD_CLOSE_BIT];
    }
    if (!m_closeHeld) return;
    if ((m_mask & NetRead) != 0 && HasUnreadData(Socket())) {
        out.events = (out.events & ~std::uint32_t{NetClose}) | NetRead;
        out.errors[FD_CLOSE_BIT] = Success;
        return;
    }
    m_closeHeld = false;
    out.events = (out.events & ~std::uint32_t{NetRead}) | NetClose;
    out.errors[FD_CLOSE_BIT] = m_closeError;
}

} // namespace

void ForgetSocket(SocketHandle socket) noexcept
{
    if (SNetworkEvent * const event = g_bindings.Find(socket); event != nullptr) event->Forget();
}

void SocketReceived(SocketHandle socket) noexcept
{
    if (SNetworkEvent * const event = g_bindings.Find(socket); event != nullptr) event->Received();
}

ErrorCode NewNetworkEvent(WaitHandle & out) noexcept
{
    CSystemHandle handle(::CreateEventA(nullptr, /*bManualReset=*/FALSE, /*bInitialState=*/FALSE, nullptr));
    if (!handle) return LastError();
    auto * const event = new (std::nothrow) SNetworkEvent(handle.Get());
    if (event == nullptr) return ERROR_NOT_ENOUGH_MEMORY;
    static_cast<void>(handle.Release());
    out = event;
    return Success;
}

ErrorCode ResetNetworkEvent(WaitHandle event) noexcept
{
    SNetworkEvent * const object = NetworkEventOf(event);
    if (object == nullptr) return ERROR_INVALID_HANDLE;
    object->Unbind();
    return ResultOf(::ResetEvent(object->Handle()));
}

ErrorCode SelectNetworkEvents(SocketHandle socket, WaitHandle event, std::uint32_t mask) noexcept
{
    SNetworkEvent * const object = NetworkEventOf(event);
    if (object == nullptr) return ERROR_INVALID_HANDLE;
    ForgetSocket(socket);
    object->Unbind();
    return object->Bind(socket, mask);
}

ErrorCode ReportNetworkEvents(SocketHandle socket, WaitHandle event, SNetworkEvents & out) noexcept
{
    out = {};
    SNetworkEvent * const object = NetworkEventOf(event);
    if (object == nullptr) return ERROR_INVALID_HANDLE;
    if (object->Socket() == NoSocket || object->Socket() != socket) return WSAENOTSOCK;
    return object->Report(out);
}

} // namespace Platform
