#ifndef VLK_SOCKET_ADDR_H
#define VLK_SOCKET_ADDR_H

#include <cstddef>
#include <cstdint>
#include <string>

#include "Platform/Native/SockAddr.h" // sockaddr and sockaddr_storage of the system
#include "VLK/Export.h"
#include "VLK/Strings.h"

namespace VLK::Internals {

/// Addresses of one family in network byte order: up to four inside the object, more in one block.
template <std::size_t Size>
class TAddressList {
public:
    TAddressList() noexcept : m_uCount(0), m_pList(m_Inline) {}
    TAddressList(TAddressList const &) = delete;
    TAddressList & operator=(TAddressList const &) = delete;
    ~TAddressList() { Clear(); }

    std::uint64_t Count() const noexcept { return m_uCount; }
    unsigned char * operator[](std::uint64_t index) noexcept { return m_pList[index]; }
    unsigned char const * operator[](std::uint64_t index) const noexcept { return m_pList[index]; }

    void Clear() noexcept;
    /// Empties it and makes room for that many, which are 0 then. False without memory.
    bool Resize(std::uint64_t count) noexcept;
    bool Assign(TAddressList const & other) noexcept;
    bool IsEqual(TAddressList const & other) const noexcept;

private:
    static constexpr std::uint64_t InlineCount = 4;

    std::uint64_t m_uCount;
    unsigned char m_Inline[InlineCount][Size];
    unsigned char (*m_pList)[Size]; ///< m_Inline, or a block from malloc
};

extern template class TAddressList<4>;
extern template class TAddressList<16>;

} // namespace VLK::Internals

namespace VLK::Sockets {

/// All addresses of one host and one port. The addresses have one order: those of IPv6 first, then those of IPv4.
/// One object, one thread. With throwing disabled a function that fails returns URET_Error.
class VLK_API CSocketAddr {
public:
    /// No address.
    CSocketAddr() noexcept;
    /// The one address of a system's structure, with its port. A family other than IPv4 and IPv6 leaves it empty.
    explicit CSocketAddr(sockaddr const & address) noexcept;
    explicit CSocketAddr(sockaddr_storage const & address) noexcept;
    /// Raise "Out of memory"; the target of an assignment is empty then.
    CSocketAddr(CSocketAddr const & other);
    CSocketAddr & operator=(CSocketAddr const & other);
    ~CSocketAddr();

    /// Replaces the content by what the name service gives for the host, in its order. An empty host means this one. A
    /// host that nobody knows means this one, too: that is intended. May take as long as the name service does.
    /// Raises "Can't resolve host address", "Out of memory"; the object is empty then.
    unsigned int Resolve(std::string const & host, unsigned int port);
    unsigned int Resolve(Strings::CSubStringRef const & host, unsigned int port);

    /// The first address, one of IPv6 if there is any. Raises "No address information available" without one.
    unsigned int GetAddress(sockaddr_storage & address) const;
    /// The same as text without the port: eight groups of hexadecimal digits, none left out, or four decimal numbers.
    unsigned int GetAddress(std::string & text) const;
    unsigned int GetAddress(Strings::CStringVar & text) const;

    std::uint64_t Count() const noexcept;
    /// The port with the one address of that place; without an address from Count() on.
    CSocketAddr operator[](std::uint64_t index) const noexcept;

    /// Whether all addresses are the same, whatever the ports are. Two objects without any are not.
    bool operator==(CSocketAddr const & other) const noexcept;
    bool operator!=(CSocketAddr const & other) const noexcept { return !(*this == other); }

private:
    void SetSingle(sockaddr_storage const & address) noexcept;
    bool Assign(CSocketAddr const & other) noexcept;
    void FormatAddress(char * text, std::size_t size) const noexcept;

    std::uint64_t m_PortNumber; ///< host byte order
    Internals::TAddressList<4> m_IPv4;
    Internals::TAddressList<16> m_IPv6;
};

} // namespace VLK::Sockets

#endif
