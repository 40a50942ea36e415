#ifndef VLK_SOCKET_LISTENER_H
#define VLK_SOCKET_LISTENER_H

#include "Platform/Socket.h"
#include "VLK/Exceptions.h"
#include "VLK/Export.h"
#include "VLK/WaitObjects.h"

namespace VLK::Sockets {

class CSocket;
class CSocketAddr;

/// Waits for connections on one port. Threads, results and errors as those of CSocket.
class VLK_API CSocketListener : public Internals::Windows::CWaitCB {
public:
    CSocketListener() noexcept;
    ~CSocketListener() override;
    CSocketListener(CSocketListener const &) = delete;
    CSocketListener & operator=(CSocketListener const &) = delete;

    /// On the first address. Raises SocketAlreadyConnected while listening, NoAddress, OperatingSystem, SocketFunction.
    unsigned int StartListen(CSocketAddr const & address);
    /// On all addresses of IPv4, or (ipv6 not 0) of IPv6.
    unsigned int StartListen(unsigned int port, unsigned int ipv6);
    /// Nothing when it isn't listening.
    unsigned int StopListen();
    unsigned int Abort() noexcept;

    /// Hands a waiting connection to the socket, which must have none. Raises SocketNotListening, and SocketFunction
    /// also when no connection waits. What the socket doesn't take is closed.
    unsigned int Accept(CSocket & socket);
    /// The same; the caller closes the handle, or gives it to CSocket::Attach.
    unsigned int Accept(unsigned long long & handle);
    /// Whether a connection, or an error, was reported and not taken yet.
    bool CanAccept() const noexcept { return (m_uFlags & FlagAcceptable) != 0; }

    /// URET_OK or URET_Timeout. Raises SocketNotListening.
    unsigned int Wait(unsigned int timeout) override;
    unsigned int SignaledAfterWait(unsigned int mask) override;

    /// The system's handle; all bits set: not listening.
    unsigned long long GetSocket() const noexcept { return m_Socket.Get(); }
    /// For a CWaiter, with mask 1.
    operator Threading::CWaitHandle() noexcept { return Threading::CWaitHandle(this, 1); }

private:
    static constexpr unsigned int FlagAcceptable = Platform::NetAccept;
    static constexpr int Backlog = 200;

    void PrepareForUse(Exceptions::CThrowState & state);
    void Listen(Exceptions::CThrowState & state, sockaddr_storage const & address);
    Platform::CSocketHandle Take(Exceptions::CThrowState & state);

    Platform::CSocketHandle m_Socket;
    unsigned int m_uFlags;
    Exceptions::NATIVE_ERROR m_LastError; ///< a value other than 0: the next Accept raises it
};

} // namespace VLK::Sockets

#endif
