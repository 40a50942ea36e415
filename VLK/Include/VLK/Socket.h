#ifndef VLK_SOCKET_H
#define VLK_SOCKET_H

#include <cstdint>
#include <string>

#include "Platform/Socket.h"
#include "VLK/Exceptions.h"
#include "VLK/Export.h"
#include "VLK/SocketAddr.h"
#include "VLK/Strings.h"
#include "VLK/WaitObjects.h"

/// TCP sockets that are wait objects.
///
/// A socket never blocks by itself: what waits, waits on the socket's event through the calling thread, so every wait
/// can be broken by an interrupt of the thread and can stand beside other objects in a CWaiter.
///
/// The program prepares the system's socket library once before it uses any (WSAStartup on Windows, for which there is
/// Platform::StartSockets; the agent does so for itself).
///
/// Threads  no lock: one thread at a time. Only its wait handle may meanwhile lie in another thread's waiter.
/// Results  URET_OK, URET_Timeout, URET_WouldBlock, URET_Closed as stated; URET_Error for a swallowed exception.
/// Errors   failures of the system are SocketFunction with the system's error; interrupts of the thread come through
///          every operation that waits.
namespace VLK::Sockets {

enum READ_MODE : unsigned int {
    RM_Normal = 0,
    RM_Peek = 1 ///< the data stays in the queue
};

enum SHUTDOWN_MODE : unsigned int { SM_Receive = 0, SM_Send = 1, SM_Both = 2 };

/// One connection. Reusable: Close() leaves it able to connect again.
class VLK_API CSocket : public Internals::Windows::CWaitCB {
public:
    static constexpr unsigned int InfiniteTimeout = 0xFFFFFFFF;

    CSocket() noexcept;
    ~CSocket() override;

    /// Waits until a network event was reported and notes it. timeout: milliseconds, 0xFFFFFFFF for ever. URET_OK or
    /// URET_Timeout. Raises UnexpectedReturnCode for anything else that ends the wait.
    unsigned int Wait(unsigned int timeout) override;
    /// Notes the reported events. A failed connect becomes the socket's last error.
    unsigned int SignaledAfterWait(unsigned int mask) override;

    /// Both close the connection at once; nothing without one.
    virtual unsigned int Close();
    virtual unsigned int Abort();
    /// how: SHUTDOWN_MODE. What the system says to it is ignored.
    virtual unsigned int Shutdown(unsigned int how);
    /// Tries the addresses one after the other, all within the socket's timeout. What the last raises is handed on.
    /// Without any address the result is URET_Error, and nothing is raised.
    virtual unsigned int Connect(CSocketAddr & address);
    virtual unsigned int Connect(Strings::CSubStringRef const & host, unsigned int port);
    virtual unsigned int Connect(std::string const & host, unsigned int port);
    /// To a service of this host, whichever family it listens on.
    virtual unsigned int ConnectLocal(unsigned int port);
    /// Begins to connect to the first address; the end is a network event. On failure the socket may keep a handle,
    /// which Close() gives back. Raises SocketAlreadyConnected with one.
    virtual unsigned int StartConnect(CSocketAddr & address);
    /// Takes over a connected socket of the system. It stays the caller's only if the failure is
    /// SocketAlreadyConnected.
    virtual unsigned int Attach(unsigned long long socket);

    /// Reads into data.
    /// read given: at most one look. URET_OK with what was there, URET_WouldBlock with nothing, URET_Closed when the
    /// peer has closed. read null: waits until all `size` bytes are there; a close raises SocketClosedByPeer, the end
    /// of the timeout SocketTimeout. After a close every further call raises SocketClosedByPeer.
    virtual unsigned int Read(void * data, unsigned long long size, unsigned long long * read, READ_MODE mode);
    /// Sends all of data. written given: returns early, with URET_OK, when at some attempt nothing at all could be
    /// sent. Raises SocketTimeout.
    virtual unsigned int Write(void const * data, unsigned long long size, unsigned long long * written);
    /// For sockets that negotiate; nothing here.
    virtual unsigned int CheckNegotiation();
    /// Raise SocketNotConnected.
    virtual CSocketAddr GetPeerAddr();
    virtual CSocketAddr GetLocalAddr();

    /// Waits for the socket's timeout; its end raises SocketTimeout.
    unsigned int Wait();
    unsigned int Shutdown(SHUTDOWN_MODE mode) { return Shutdown(static_cast<unsigned int>(mode)); }
    /// on: small writes are sent at once, as they are on every outgoing connection anyway.
    unsigned int TCP_NoSendDelay(bool on);

    bool CanRead() const noexcept { return (m_uFlags & FlagReadable) != 0; }
    bool CanWrite() const noexcept { return (m_uFlags & FlagWritable) != 0; }
    bool IsConnected() const noexcept { return (m_uFlags & FlagConnected) != 0; }
    bool IsClosed() const noexcept { return !IsConnected(); }
    bool IsSecure() const noexcept { return (m_uFlags & FlagSecure) != 0; }
    /// The system's handle; all bits set: none.
    unsigned long long GetSocket() const noexcept { return m_Socket.Get(); }

    /// Milliseconds for one blocking operation as a whole; infinite at first.
    unsigned int GetTimeout() const noexcept { return m_uTimeout; }
    /// Returns the old one.
    unsigned int SetTimeout(unsigned int timeout) noexcept;

    /// For a CWaiter, with mask 1.
    operator Threading::CWaitHandle() noexcept { return Threading::CWaitHandle(this, 1); }

protected:
    // The low bits are those of the network events as the platform reports them.
    static constexpr unsigned int FlagReadable = Platform::NetRead;
    static constexpr unsigned int FlagWritable = Platform::NetWrite;
    static constexpr unsigned int FlagConnected = Platform::NetConnect;
    static constexpr unsigned int FlagPeerClosed = Platform::NetClose;
    static constexpr unsigned int FlagSecure = 0x40000000;
    static constexpr unsigned int FlagAttached = 0x80000000;

    /// Both give an unconnected object.
    CSocket(CSocket const &) noexcept : CSocket() {}
    CSocket & operator=(CSocket const &) noexcept { return *this; }

    /// Judges the result of a socket call, -1 being a failure with the thread's last error: URET_OK, URET_WouldBlock,
    /// or URET_Error.
    unsigned int CheckBlocking(int result) noexcept;
    /// One step of a blocking operation: waits for the rest of its time. Raises SocketTimeout, SocketFunction.
    unsigned int DoWait();

    unsigned int m_uFlags;
    unsigned int m_uShutdown; ///< the `how` values given; bit 0: sending is over
    unsigned char m_bClosedByPeer;
    Platform::CSocketHandle m_Socket;
    std::uint64_t m_uWaitStart; ///< milliseconds on the tick clock; 0: the operation hasn't waited yet
    unsigned int m_uTimeout;
    Exceptions::NATIVE_ERROR m_LastError; ///< a value other than 0 makes every further operation fail

private:
    void PrepareForUse(Exceptions::CThrowState & state);
    void CheckUsable(Exceptions::CThrowState & state) const;
    void Fail(Platform::ErrorCode error) noexcept;
    unsigned int CloseHandle() noexcept;
    CSocketAddr AskAddress(Platform::ErrorCode (*ask)(Platform::SocketHandle, sockaddr_storage &) noexcept);
};

} // namespace VLK::Sockets

#endif
