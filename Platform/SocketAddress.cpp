#include "Platform/Socket.h"

#include <cstring>

// The structures of addresses bear the same names on every system; Native/SockAddr.h brings the system's own.
namespace Platform {

SocketFamily FamilyOf(sockaddr const & address) noexcept
{
    return address.sa_family == AF_INET    ? SocketFamily::IPv4
           : address.sa_family == AF_INET6 ? SocketFamily::IPv6
                                           : SocketFamily::Other;
}

void FillAddress(sockaddr_storage & out, SocketFamily family, std::uint16_t portHostOrder,
                 void const * address) noexcept
{
    out = {};
    if (family == SocketFamily::IPv6) {
        sockaddr_in6 filled{};
        filled.sin6_family = AF_INET6;
        filled.sin6_port = htons(portHostOrder);
        std::memcpy(&filled.sin6_addr, address, sizeof filled.sin6_addr);
        std::memcpy(&out, &filled, sizeof filled);
    } else if (family == SocketFamily::IPv4) {
        sockaddr_in filled{};
        filled.sin_family = AF_INET;
        filled.sin_port = htons(portHostOrder);
        std::memcpy(&filled.sin_addr, address, sizeof filled.sin_addr);
        std::memcpy(&out, &filled, sizeof filled);
    }
}

void ReadAddress(sockaddr_storage const & in, std::uint16_t & portHostOrder, void * address) noexcept
{
    if (in.ss_family == AF_INET6) {
        sockaddr_in6 filled{};
        std::memcpy(&filled, &in, sizeof filled);
        portHostOrder = ntohs(filled.sin6_port);
        std::memcpy(address, &filled.sin6_addr, sizeof filled.sin6_addr);
    } else if (in.ss_family == AF_INET) {
        sockaddr_in filled{};
        std::memcpy(&filled, &in, sizeof filled);
        portHostOrder = ntohs(filled.sin_port);
        std::memcpy(address, &filled.sin_addr, sizeof filled.sin_addr);
    }
}

void CopyAddress(sockaddr_storage & out, sockaddr const & address) noexcept
{
    out = {};
    const SocketFamily family = FamilyOf(address);
    const std::size_t size = family == SocketFamily::IPv4   ? sizeof(sockaddr_in)
                             : family == SocketFamily::IPv6 ? sizeof(sockaddr_in6)
                                                            : sizeof address.sa_family;
    std::memcpy(&out, static_cast<void const *>(&address), size);
}

} // namespace Platform
