#include "VLK/Socket.h"

#include <bit>

#include "SocketEvent.h"
#include "VLK/Functions.h"
#include "VLK/ThreadCB.h"
#include "VLK/Trace.h"

namespace VLK::Sockets {

using Exceptions::CThrowState;
using Exceptions::OsError;
using Strings::CSubStringRef;

namespace {

constexpr unsigned int MillisecondsPerSecond = 1000;
constexpr std::uint32_t ConnectMask =
    Platform::NetRead | Platform::NetWrite | Platform::NetConnect | Platform::NetClose;
constexpr std::uint32_t AttachMask = Platform::NetRead | Platform::NetWrite | Platform::NetClose;

/// Names of this host, in the order in which they are tried.
constexpr char const * LocalNames[] = {"localhost", "::1", "127.0.0.1"};

template <class... TValues>
void TraceRead(unsigned int line, char const * format, TValues const &... values)
{
    if (VLK_TRACE_ON(TraceInformation))
        Internals::WriteTraceRecord(TraceInformation, VLK_THIS_MODULE, VLK_SOURCE_FILE, "VLK::Sockets::CSocket::Read",
                                    line, format, values...);
}

} // namespace

CSocket::CSocket() noexcept
    : m_uFlags(0),
      m_uShutdown(0),
      m_bClosedByPeer(0),
      m_uWaitStart(0),
      m_uTimeout(InfiniteTimeout),
      m_LastError(OsError(Platform::Success))
{
}

CSocket::~CSocket() = default;

void CSocket::Fail(Platform::ErrorCode error) noexcept
{
    m_LastError = OsError(error);
}

/// The checks of every operation on a connection.
void CSocket::CheckUsable(CThrowState & state) const
{
    if (!m_Socket) VLK_RAISE(state, Errors::SocketNotConnected);
    if (m_LastError.value != 0) VLK_RAISE_NATIVE(state, Errors::SocketFunction, m_LastError);
}

/// Readies the event and forgets the former connection.
void CSocket::PrepareForUse(CThrowState & state)
{
    const Platform::ErrorCode error = Internals::ReadySocketEvent(m_Handle);
    if (error != Platform::Success) VLK_RAISE_OS(state, Errors::OperatingSystem, error);
    Fail(Platform::Success);
    m_uShutdown = 0;
    m_bClosedByPeer = 0;
}

unsigned int CSocket::CheckBlocking(int result) noexcept
{
    if (result != -1) return URET_OK;
    const Platform::ErrorCode error = Platform::LastError();
    if (error == Platform::ErrorWouldBlock()) return URET_WouldBlock;
    if (error == Platform::Success) return URET_OK;
    VLK_TRACE(TraceInformation, "::GetLastError = %d", error);
    return URET_Error;
}

unsigned int CSocket::StartConnect(CSocketAddr & address)
{
    CThrowState state;
    try {
        if (m_Socket) VLK_RAISE(state, Errors::SocketAlreadyConnected);
        PrepareForUse(state);
        sockaddr_storage target;
        address.GetAddress(target);
        const Platform::SocketFamily family = Platform::FamilyOf(reinterpret_cast<sockaddr const &>(target));
        Platform::SocketHandle opened = Platform::NoSocket;
        Platform::ErrorCode error = Platform::OpenTcpSocket(opened, family);
        if (error != Platform::Success) VLK_RAISE_OS(state, Errors::SocketFunction, error);
        m_Socket.Reset(opened);
        m_uFlags = 0;
        error = Platform::SelectNetworkEvents(opened, m_Handle.Get(), ConnectMask);
        if (error != Platform::Success) {
            Fail(error);
            VLK_RAISE_NATIVE(state, Errors::SocketFunction, m_LastError);
        }
        Platform::SetSocketOption(opened, Platform::SocketOption::NoDelay, true);
        if (family == Platform::SocketFamily::IPv6)
            Platform::SetSocketOption(opened, Platform::SocketOption::IPv6Only, true);
        error = Platform::ConnectSocket(opened, target);
        Platform::SetLastError(error);
        if (CheckBlocking(error == Platform::Success ? 0 : -1) == URET_Error)
            VLK_RAISE_OS(state, Errors::SocketFunction, error);
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

unsigned int CSocket::Connect(CSocketAddr & address)
{
    CThrowState state;
    m_uWaitStart = 0;
    const std::uint64_t count = address.Count();
    for (std::uint64_t i = 0; i < count; ++i) {
        try {
            CSocketAddr single = address[i];
            StartConnect(single);
            return DoWait();
        } catch (...) {
            Exceptions::CThrowGuard guard;
            VLK_SOURCE(source);
            Exceptions::CExceptionLog log = state.ContinueException(guard, source);
            CloseHandle();
            if (i + 1 == count) return log.tryThrow();
            log.Clear();
        }
    }
    return URET_Error;
}

unsigned int CSocket::Connect(CSubStringRef const & host, unsigned int port)
{
    CThrowState state;
    try {
        CSocketAddr address;
        address.Resolve(host, port);
        return Connect(address);
    }
    VLK_THROW_NEXT(state)
}

unsigned int CSocket::Connect(std::string const & host, unsigned int port)
{
    CThrowState state;
    try {
        CSocketAddr address;
        address.Resolve(host, port);
        return Connect(address);
    }
    VLK_THROW_NEXT(state)
}

unsigned int CSocket::ConnectLocal(unsigned int port)
{
    CThrowState state;
    for (char const * const & name : LocalNames) {
        try {
            return Connect(std::string(name), port);
        } catch (...) {
            Exceptions::CThrowGuard guard;
            VLK_SOURCE(source);
            Exceptions::CExceptionLog log = state.ContinueException(guard, source);
            Close();
            if (&name == std::end(LocalNames) - 1) return log.tryThrow();
            log.Clear();
        }
    }
    return URET_Error;
}

unsigned int CSocket::Attach(unsigned long long socket)
{
    CThrowState state;
    try {
        if (m_Socket) VLK_RAISE(state, Errors::SocketAlreadyConnected);
        m_Socket.Reset(socket);
        PrepareForUse(state);
        const Platform::ErrorCode error = Platform::SelectNetworkEvents(socket, m_Handle.Get(), AttachMask);
        if (error != Platform::Success) {
            Fail(error);
            VLK_RAISE_NATIVE(state, Errors::SocketFunction, m_LastError);
        }
        m_uFlags = FlagAttached | FlagConnected;
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

unsigned int CSocket::DoWait()
{
    CThrowState state;
    try {
        unsigned int left = InfiniteTimeout;
        if (m_uTimeout != InfiniteTimeout) {
            const std::uint64_t now = Functions::GetTickTime(MillisecondsPerSecond);
            if (m_uWaitStart == 0) m_uWaitStart = now;
            if (m_uWaitStart + m_uTimeout < now) VLK_RAISE(state, Errors::SocketTimeout);
            left = static_cast<unsigned int>(m_uTimeout - now + m_uWaitStart);
        }
        if (Wait(left) == URET_Timeout) VLK_RAISE(state, Errors::SocketTimeout);
        if (m_LastError.value != 0) VLK_RAISE_NATIVE(state, Errors::SocketFunction, m_LastError);
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

unsigned int CSocket::Wait(unsigned int timeout)
{
    CThrowState state;
    try {
        const Internals::CThreadRef thread;
        const unsigned int result = thread->Wait(m_Handle.Get(), timeout);
        if (result == URET_WaitObject0) {
            SignaledAfterWait(0);
            return URET_OK;
        }
        if (result != URET_Timeout) VLK_RAISE_TEXT(state, Errors::UnexpectedReturnCode, "URET = x%08X", result);
        return result;
    }
    VLK_THROW_NEXT(state)
}

unsigned int CSocket::Wait()
{
    CThrowState state;
    try {
        const unsigned int result = Wait(m_uTimeout);
        if (result == URET_Timeout) VLK_RAISE(state, Errors::SocketTimeout);
        return result;
    }
    VLK_THROW_NEXT(state)
}

unsigned int CSocket::SignaledAfterWait(unsigned int)
{
    CThrowState state;
    try {
        Platform::SNetworkEvents events{};
        const Platform::ErrorCode error = Platform::ReportNetworkEvents(m_Socket.Get(), m_Handle.Get(), events);
        if (error != Platform::Success) {
            Fail(error);
            VLK_RAISE_NATIVE(state, Errors::SocketFunction, m_LastError);
        }
        m_uFlags |= events.events;
        if ((events.events & Platform::NetConnect) != 0)
            Fail(events.errors[std::countr_zero(std::uint32_t{Platform::NetConnect})]);
        else if ((events.events & Platform::NetClose) != 0)
            m_uFlags |= FlagReadable; // so that the next Read runs and finds the end
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

unsigned int CSocket::Read(void * data, unsigned long long size, unsigned long long * read, READ_MODE mode)
{
    CThrowState state;
    try {
        CheckUsable(state);
        if (m_bClosedByPeer != 0) VLK_RAISE(state, Errors::SocketClosedByPeer);
        unsigned long long local = 0;
        unsigned long long & counter = read != nullptr ? *read : local;
        counter = 0;
        m_uWaitStart = 0;
        auto * place = static_cast<unsigned char *>(data);
        for (unsigned int iteration = 1; size != 0;) {
            TraceRead(__LINE__, "Before recv() to read %d bytes, ReadMode %d", size, static_cast<unsigned int>(mode));
            Platform::ErrorCode error = Platform::Success;
            const std::int64_t n = Platform::ReceiveSocket(m_Socket.Get(), place, size, mode == RM_Peek, error);
            Platform::SetLastError(error);
            const unsigned int result = CheckBlocking(n < 0 ? -1 : 0);
            TraceRead(__LINE__, "After recv() we have read %d bytes, CheckBlocking() return %d",
                      static_cast<long long>(n), result);
            if (result == URET_Error) VLK_RAISE_OS(state, Errors::SocketFunction, error);
            if (result == URET_OK && mode == RM_Peek) {
                m_uFlags |= FlagReadable;
            } else {
                m_uFlags &= ~FlagReadable; // the event for further data sets it again
                if (result == URET_WouldBlock) TraceRead(__LINE__, "URET_WouldBlock iteration = %d", iteration++);
            }
            if (n > 0) {
                place += n;
                counter += static_cast<unsigned long long>(n);
                size -= static_cast<unsigned long long>(n);
                if (size == 0) {
                    TraceRead(__LINE__, "OK, we have read all (%d) bytes", counter);
                    return URET_OK;
                }
            } else if (n == 0) {
                m_bClosedByPeer = 1;
                if (read == nullptr) VLK_RAISE(state, Errors::SocketClosedByPeer);
                m_uFlags = (m_uFlags & ~FlagConnected) | FlagReadable;
                return URET_Closed;
            }
            if (read != nullptr) return result;
            DoWait();
        }
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

unsigned int CSocket::Write(void const * data, unsigned long long size, unsigned long long * written)
{
    CThrowState state;
    try {
        CheckUsable(state);
        if ((m_uShutdown & SM_Send) != 0) VLK_RAISE_NATIVE(state, Errors::SocketFunction, m_LastError);
        unsigned long long local = 0;
        unsigned long long & counter = written != nullptr ? *written : local;
        counter = 0;
        m_uWaitStart = 0;
        auto const * place = static_cast<unsigned char const *>(data);
        while (size != 0) {
            Platform::ErrorCode error = Platform::Success;
            const std::int64_t n = Platform::SendSocket(m_Socket.Get(), place, size, error);
            Platform::SetLastError(error);
            if (CheckBlocking(n < 0 ? -1 : 0) == URET_Error) VLK_RAISE_OS(state, Errors::SocketFunction, error);
            m_uFlags &= ~FlagWritable;
            if (n > 0) {
                place += n;
                counter += static_cast<unsigned long long>(n);
                size -= static_cast<unsigned long long>(n);
            } else if (written != nullptr) {
                return URET_OK;
            }
            if (size != 0) DoWait();
        }
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

unsigned int CSocket::Shutdown(unsigned int how)
{
    if (!m_Socket) return URET_OK;
    m_uShutdown |= how;
    Platform::ShutdownSocket(m_Socket.Get(), how);
    return URET_OK;
}

unsigned int CSocket::CloseHandle() noexcept
{
    if (m_Socket) {
        m_Socket.Reset();
        m_uFlags &= ~FlagConnected;
    }
    return URET_OK;
}

unsigned int CSocket::Close()
{
    return CloseHandle();
}

unsigned int CSocket::Abort()
{
    return CloseHandle();
}

unsigned int CSocket::CheckNegotiation()
{
    return URET_OK;
}

unsigned int CSocket::TCP_NoSendDelay(bool on)
{
    CThrowState state;
    try {
        CheckUsable(state);
        const Platform::ErrorCode error =
            Platform::SetSocketOption(m_Socket.Get(), Platform::SocketOption::NoDelay, on);
        if (error != Platform::Success) VLK_RAISE_OS(state, Errors::SocketFunction, error);
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

CSocketAddr CSocket::AskAddress(Platform::ErrorCode (*ask)(Platform::SocketHandle, sockaddr_storage &) noexcept)
{
    CThrowState state;
    try {
        CheckUsable(state);
        sockaddr_storage address{};
        const Platform::ErrorCode error = ask(m_Socket.Get(), address);
        if (error != Platform::Success) VLK_RAISE_OS(state, Errors::SocketFunction, error);
        return CSocketAddr(address);
    }
    VLK_THROW_NEXT_AS(state, CSocketAddr())
}

CSocketAddr CSocket::GetPeerAddr()
{
    return AskAddress(&Platform::PeerAddress);
}

CSocketAddr CSocket::GetLocalAddr()
{
    return AskAddress(&Platform::LocalAddress);
}

unsigned int CSocket::SetTimeout(unsigned int timeout) noexcept
{
    const unsigned int old = m_uTimeout;
    m_uTimeout = timeout;
    return old;
}

} // namespace VLK::Sockets
