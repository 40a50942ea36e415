#ifndef CONSUMER_SYSTEM_SOCKETS_H
#define CONSUMER_SYSTEM_SOCKETS_H

// The system's socket library, which the foundation leaves to the program to start.

#ifdef _WIN32

#include <winsock2.h>
#include <ws2tcpip.h>

/// Keeps the library started.
class CSystemSockets {
public:
    CSystemSockets() { m_isStarted = ::WSAStartup(MAKEWORD(2, 2), &m_data) == 0; }
    ~CSystemSockets()
    {
        if (m_isStarted) ::WSACleanup();
    }
    CSystemSockets(CSystemSockets const &) = delete;
    CSystemSockets & operator=(CSystemSockets const &) = delete;

private:
    WSADATA m_data{};
    bool m_isStarted;
};

#else

#include <netinet/in.h>
#include <sys/socket.h>

/// Always there.
class CSystemSockets {
public:
    CSystemSockets() {} // a name for a scope, as on the other system
};

#endif

using CSystemSocket = decltype(::socket(0, 0, 0));

#endif
