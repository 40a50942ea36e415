#include "NetworkEvent.h"

#include <fcntl.h>
#include <sys/epoll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <bit>
#include <new>

#include "Waitable.h"

namespace Platform {

namespace {

/// An epoll instance with one edge-triggered socket in it. It is readable from a change until the report.
struct SNetworkEvent final : SWaitable {
    explicit SNetworkEvent(int descriptor) noexcept : SWaitable(WaitableKind::Network, descriptor) {}

    Taken Take(ErrorCode &) noexcept override
    {
        Observe();
        return Taken::Yes; // consumed by the report
    }

    void Bind(int socket, std::uint32_t mask) noexcept;
    void Unbind() noexcept;
    /// Hands the bound socket to the system, or makes it look again at one that it has.
    ErrorCode Arm() noexcept;
    ErrorCode Report(SNetworkEvents & out) noexcept;

    void Connects() noexcept { m_connecting = true; }
    void WantsWrite() noexcept { m_writeWanted = true; }
    void Listens() noexcept { m_listening = true; }
    bool IsCloseAwaited() const noexcept { return m_closeSeen && !m_closeReported; }
    int Socket() const noexcept { return m_socket; }

private:
    ~SNetworkEvent() override { Unbind(); }
    void ReportConnect(std::uint32_t seen, SNetworkEvents & out) noexcept;
    void ReportTransfer(std::uint32_t seen, SNetworkEvents & out) noexcept;

    int m_socket = -1;
    std::uint32_t m_mask = 0;
    bool m_armed = false;
    bool m_listening = false;
    bool m_connecting = false;  // connect's end not reported yet
    bool m_writeWanted = false; // writable is to be reported once
    bool m_closeSeen = false;   // the end of the peer's data is in the queue
    bool m_closeReported = false;
};

/// The events by their sockets' descriptors. Blocks of the table are made when first needed and stay.
class CBindings {
public:
    struct SBinding {
        // Atomic, since the system gives the number of a closed descriptor to any thread.
        std::atomic<SNetworkEvent *> event{nullptr};
        std::atomic<bool> fresh{false}; ///< made here, and neither connecting nor listening yet
    };
    ~CBindings()
    {
        for (auto & block : m_blocks)
            delete[] block.load(std::memory_order_relaxed);
    }
    /// Null for a descriptor beyond what the table holds, or without memory for it, or (make false) never used.
    SBinding * At(int descriptor, bool make) noexcept
    {
        if (descriptor < 0 || descriptor >= Blocks * PerBlock) return nullptr;
        auto & slot = m_blocks[descriptor / PerBlock];
        SBinding * block = slot.load(std::memory_order_acquire);
        if (block == nullptr && make) block = MakeBlock(slot);
        return block != nullptr ? block + descriptor % PerBlock : nullptr;
    }

private:
    static constexpr int PerBlock = 1024;
    static constexpr int Blocks = 1024; // 2^20 descriptors, as many as the system gives to a process

    static SBinding * MakeBlock(std::atomic<SBinding *> & slot) noexcept
    {
        auto * const made = new (std::nothrow) SBinding[PerBlock];
        SBinding * expected = nullptr;
        if (made == nullptr || slot.compare_exchange_strong(expected, made, std::memory_order_acq_rel)) return made;
        delete[] made;
        return expected;
    }
    std::atomic<SBinding *> m_blocks[Blocks] = {};
};

[[gnu::init_priority(102)]] CBindings g_bindings;

SNetworkEvent * EventOf(int socket) noexcept
{
    CBindings::SBinding const * const binding = g_bindings.At(socket, /*make=*/false);
    return binding != nullptr ? binding->event.load() : nullptr;
}

SNetworkEvent * NetworkEventOf(WaitHandle handle) noexcept
{
    return handle != nullptr && handle->Kind() == WaitableKind::Network ? static_cast<SNetworkEvent *>(handle)
                                                                        : nullptr;
}

bool IsListening(int socket) noexcept
{
    int value = 0;
    socklen_t length = sizeof value;
    return ::getsockopt(socket, SOL_SOCKET, SO_ACCEPTCONN, &value, &length) == 0 && value != 0;
}

bool HasUnreadData(int socket) noexcept
{
    int bytes = 0;
    return ::ioctl(socket, FIONREAD, &bytes) == 0 && bytes > 0;
}

/// A socket that came from elsewhere may still block.
ErrorCode MakeNonBlocking(int socket) noexcept
{
    const int flags = ::fcntl(socket, F_GETFL);
    if (flags < 0) return LastErrno();
    if ((flags & O_NONBLOCK) != 0) return Success;
    return ::fcntl(socket, F_SETFL, flags | O_NONBLOCK) == 0 ? Success : LastErrno();
}

ErrorCode TakeSocketError(int socket) noexcept
{
    int error = 0;
    socklen_t length = sizeof error;
    return ::getsockopt(socket, SOL_SOCKET, SO_ERROR, &error, &length) == 0 ? static_cast<ErrorCode>(error)
                                                                            : LastErrno();
}

void SNetworkEvent::Bind(int socket, std::uint32_t mask) noexcept
{
    m_socket = socket;
    m_mask = mask;
    m_listening = IsListening(socket);
    m_writeWanted = !m_listening;
}

void SNetworkEvent::Unbind() noexcept
{
    if (m_socket >= 0) {
        CBindings::SBinding * const binding = g_bindings.At(m_socket, /*make=*/false);
        if (binding != nullptr && binding->event == this) binding->event = nullptr;
        if (m_armed) ::epoll_ctl(Descriptor(), EPOLL_CTL_DEL, m_socket, nullptr);
    }
    m_socket = -1;
    m_mask = 0;
    m_armed = m_listening = m_connecting = m_writeWanted = m_closeSeen = m_closeReported = false;
}

ErrorCode SNetworkEvent::Arm() noexcept
{
    epoll_event wanted{};
    wanted.events = static_cast<std::uint32_t>(EPOLLET | EPOLLRDHUP);
    if ((m_mask & (NetRead | NetAccept)) != 0) wanted.events |= EPOLLIN;
    // A socket is nearly always writable: unasked, that would make every look again a change.
    const bool asked = m_writeWanted || m_connecting;
    if (asked && (m_mask & (NetWrite | NetConnect)) != 0) wanted.events |= EPOLLOUT;
    if (::epoll_ctl(Descriptor(), m_armed ? EPOLL_CTL_MOD : EPOLL_CTL_ADD, m_socket, &wanted) != 0) return LastErrno();
    m_armed = true;
    return Success;
}

ErrorCode SNetworkEvent::Report(SNetworkEvents & out) noexcept
{
    out = {};
    epoll_event seen{};
    int count = 0;
    do {
        count = ::epoll_wait(Descriptor(), &seen, 1, 0);
    } while (count < 0 && errno == EINTR);
    if (count < 0) return LastErrno();
    if (count == 0) return Success;
    if (m_listening) {
        if ((seen.events & EPOLLIN) != 0) out.events = NetAccept;
    } else if (m_connecting) {
        ReportConnect(seen.events, out);
    } else {
        ReportTransfer(seen.events, out);
    }
    out.events &= m_mask;
    return Success;
}

/// A socket that still connects shows nothing, so whatever was seen tells that the connect is over.
void SNetworkEvent::ReportConnect(std::uint32_t seen, SNetworkEvents & out) noexcept
{
    m_connecting = false;
    const ErrorCode error = TakeSocketError(m_socket);
    out.events = NetConnect;
    out.errors[std::countr_zero(std::uint32_t{NetConnect})] = error;
    if (error == Success)
        ReportTransfer(seen, out);
    else
        m_closeReported = true; // what never was open doesn't close
}

void SNetworkEvent::ReportTransfer(std::uint32_t seen, SNetworkEvents & out) noexcept
{
    if ((seen & EPOLLOUT) != 0 && m_writeWanted) {
        out.events |= NetWrite;
        m_writeWanted = false;
    }
    const bool closed = (seen & (EPOLLRDHUP | EPOLLHUP | EPOLLERR)) != 0;
    if (!closed) {
        if ((seen & EPOLLIN) != 0) out.events |= NetRead;
        return;
    }
    m_closeSeen = true;
    // The close comes behind the data, and data that is never read doesn't hide it from who didn't ask for it.
    if ((m_mask & NetRead) != 0 && HasUnreadData(m_socket)) {
        out.events |= NetRead;
    } else if (!m_closeReported) {
        out.events |= NetClose;
        // Only told here: the error itself is the next receive's.
        if ((seen & EPOLLERR) != 0) out.errors[std::countr_zero(std::uint32_t{NetClose})] = ECONNRESET;
        m_closeReported = true;
    }
}

} // namespace

void ForgetSocket(int descriptor) noexcept
{
    if (SNetworkEvent * const event = EventOf(descriptor); event != nullptr) event->Unbind();
    if (CBindings::SBinding * const binding = g_bindings.At(descriptor, /*make=*/false); binding != nullptr) {
        binding->event = nullptr;
        binding->fresh = false;
    }
}

void MarkFresh(int descriptor) noexcept
{
    if (CBindings::SBinding * const binding = g_bindings.At(descriptor, /*make=*/true); binding != nullptr)
        binding->fresh = true;
}

namespace {

/// The socket has left its first state.
ErrorCode Begin(int descriptor, void (SNetworkEvent::*note)() noexcept) noexcept
{
    CBindings::SBinding * const binding = g_bindings.At(descriptor, /*make=*/false);
    if (binding == nullptr) return Success;
    binding->fresh = false;
    if (binding->event == nullptr) return Success;
    (binding->event.load()->*note)();
    return binding->event.load()->Arm();
}

} // namespace

ErrorCode SocketConnects(int descriptor) noexcept
{
    return Begin(descriptor, &SNetworkEvent::Connects);
}

ErrorCode SocketListens(int descriptor) noexcept
{
    return Begin(descriptor, &SNetworkEvent::Listens);
}

void SocketAccepted(int descriptor) noexcept
{
    if (SNetworkEvent * const event = EventOf(descriptor); event != nullptr) event->Arm();
}

void SocketSendBlocked(int descriptor) noexcept
{
    SNetworkEvent * const event = EventOf(descriptor);
    if (event == nullptr) return;
    event->WantsWrite();
    event->Arm();
}

void SocketReceived(int descriptor, bool mayLeaveData) noexcept
{
    SNetworkEvent * const event = EventOf(descriptor);
    if (event != nullptr && (mayLeaveData || event->IsCloseAwaited())) event->Arm();
}

ErrorCode NewNetworkEvent(WaitHandle & out) noexcept
{
    CDescriptor descriptor(BeyondStandardStreams(::epoll_create1(EPOLL_CLOEXEC)));
    if (!descriptor) return LastErrno();
    auto * const event = new (std::nothrow) SNetworkEvent(descriptor.Get());
    if (event == nullptr) return ENOMEM;
    static_cast<void>(descriptor.Release());
    out = event;
    return Success;
}

ErrorCode ResetNetworkEvent(WaitHandle event) noexcept
{
    SNetworkEvent * const object = NetworkEventOf(event);
    if (object == nullptr) return EINVAL;
    object->Unbind();
    return Success;
}

ErrorCode SelectNetworkEvents(SocketHandle socket, WaitHandle event, std::uint32_t mask) noexcept
{
    SNetworkEvent * const object = NetworkEventOf(event);
    if (object == nullptr) return EINVAL;
    const int descriptor = socket <= INT32_MAX ? static_cast<int>(socket) : -1;
    if (const ErrorCode error = MakeNonBlocking(descriptor); error != Success) return error;
    CBindings::SBinding * const binding = g_bindings.At(descriptor, /*make=*/true);
    if (binding == nullptr) return ENOMEM;
    if (binding->event != nullptr) binding->event.load()->Unbind();
    object->Unbind();
    object->Bind(descriptor, mask);
    binding->event = object;
    return binding->fresh ? Success : object->Arm();
}

ErrorCode ReportNetworkEvents(SocketHandle socket, WaitHandle event, SNetworkEvents & out) noexcept
{
    out = {};
    SNetworkEvent * const object = NetworkEventOf(event);
    if (object == nullptr) return EINVAL;
    if (object->Socket() < 0 || static_cast<SocketHandle>(object->Socket()) != socket) return ENOTSOCK;
    return object->Report(out);
}

} // namespace Platform
