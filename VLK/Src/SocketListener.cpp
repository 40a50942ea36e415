#include "VLK/SocketListener.h"

#include "SocketEvent.h"
#include "VLK/Socket.h"
#include "VLK/ThreadCB.h"

namespace VLK::Sockets {

using Exceptions::CThrowState;
using Exceptions::OsError;

namespace {

constexpr std::uint32_t ListenMask = Platform::NetAccept | Platform::NetClose;
constexpr unsigned int EventBits = 6;

} // namespace

CSocketListener::CSocketListener() noexcept : m_uFlags(0), m_LastError(OsError(Platform::Success)) {}

CSocketListener::~CSocketListener() = default;

/// Readies the event and forgets what was reported before.
void CSocketListener::PrepareForUse(CThrowState & state)
{
    if (m_Socket) VLK_RAISE(state, Errors::SocketAlreadyConnected);
    const Platform::ErrorCode error = Internals::ReadySocketEvent(m_Handle);
    if (error != Platform::Success) VLK_RAISE_OS(state, Errors::OperatingSystem, error);
    m_uFlags = 0;
    m_LastError = OsError(Platform::Success);
}

unsigned int CSocketListener::StartListen(CSocketAddr const & address)
{
    CThrowState state;
    try {
        PrepareForUse(state);
        sockaddr_storage target;
        address.GetAddress(target);
        Listen(state, target);
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

unsigned int CSocketListener::StartListen(unsigned int port, unsigned int ipv6)
{
    CThrowState state;
    try {
        PrepareForUse(state);
        static constexpr unsigned char wildcard[16] = {};
        sockaddr_storage target;
        Platform::FillAddress(target, ipv6 == 0 ? Platform::SocketFamily::IPv4 : Platform::SocketFamily::IPv6,
                              static_cast<std::uint16_t>(port), wildcard);
        Listen(state, target);
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

void CSocketListener::Listen(CThrowState & state, sockaddr_storage const & address)
{
    const Platform::SocketFamily family = Platform::FamilyOf(reinterpret_cast<sockaddr const &>(address));
    Platform::SocketHandle handle = Platform::NoSocket;
    Platform::ErrorCode error = Platform::OpenTcpSocket(handle, family);
    if (error != Platform::Success) VLK_RAISE_OS(state, Errors::SocketFunction, error);
    Platform::CSocketHandle opened(handle); // becomes the listener's when it listens
    error = Platform::SetSocketOption(handle, Platform::SocketOption::NoDelay, true);
    if (error == Platform::Success)
        error = Platform::SetSocketOption(handle, Platform::SocketOption::ReuseAddress, true);
    if (error == Platform::Success && family == Platform::SocketFamily::IPv6)
        error = Platform::SetSocketOption(handle, Platform::SocketOption::IPv6Only, true);
    if (error == Platform::Success) error = Platform::BindSocket(handle, address);
    if (error == Platform::Success) error = Platform::ListenSocket(handle, Backlog);
    if (error == Platform::Success) error = Platform::SelectNetworkEvents(handle, m_Handle.Get(), ListenMask);
    if (error != Platform::Success) VLK_RAISE_OS(state, Errors::SocketFunction, error);
    m_Socket = std::move(opened);
}

unsigned int CSocketListener::StopListen()
{
    return Abort();
}

unsigned int CSocketListener::Abort() noexcept
{
    m_Socket.Reset();
    return URET_OK;
}

Platform::CSocketHandle CSocketListener::Take(CThrowState & state)
{
    if (!m_Socket) VLK_RAISE(state, Errors::SocketNotListening);
    if (m_LastError.value != 0) VLK_RAISE_NATIVE(state, Errors::SocketFunction, m_LastError);
    Platform::SocketHandle accepted = Platform::NoSocket;
    const Platform::ErrorCode error = Platform::AcceptSocket(m_Socket.Get(), accepted);
    if (error != Platform::Success) VLK_RAISE_OS(state, Errors::SocketFunction, error);
    m_uFlags &= ~FlagAcceptable;
    return Platform::CSocketHandle(accepted);
}

unsigned int CSocketListener::Accept(CSocket & socket)
{
    CThrowState state;
    try {
        Platform::CSocketHandle accepted = Take(state);
        const unsigned long long handle = accepted.Get();
        try {
            return socket.Attach(accepted.Release());
        } catch (...) {
            if (socket.GetSocket() != handle) accepted.Reset(handle);
            throw;
        }
    }
    VLK_THROW_NEXT(state)
}

unsigned int CSocketListener::Accept(unsigned long long & handle)
{
    CThrowState state;
    try {
        handle = Take(state).Release();
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

unsigned int CSocketListener::Wait(unsigned int timeout)
{
    CThrowState state;
    try {
        if (!m_Socket) VLK_RAISE(state, Errors::SocketNotListening);
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

unsigned int CSocketListener::SignaledAfterWait(unsigned int)
{
    CThrowState state;
    try {
        Platform::SNetworkEvents events{};
        const Platform::ErrorCode error = Platform::ReportNetworkEvents(m_Socket.Get(), m_Handle.Get(), events);
        if (error != Platform::Success) {
            m_LastError = OsError(error);
            VLK_RAISE_NATIVE(state, Errors::SocketFunction, m_LastError);
        }
        m_uFlags |= events.events;
        if ((m_uFlags & Platform::NetClose) != 0) m_uFlags &= ~static_cast<unsigned int>(Platform::NetConnect);
        for (unsigned int bit = 0; bit < EventBits; ++bit) {
            if ((events.events & (1u << bit)) == 0 || events.errors[bit] == Platform::Success) continue;
            m_LastError = OsError(events.errors[bit]);
            m_uFlags = 0xFFFFFFFF; // CanAccept, so that the next Accept raises the error
            break;
        }
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

} // namespace VLK::Sockets
