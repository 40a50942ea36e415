#include "VLK/SocketAddr.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "Memory.h"
#include "Platform/Socket.h"
#include "VLK/Exceptions.h"

namespace VLK::Internals {

template <std::size_t Size>
void TAddressList<Size>::Clear() noexcept
{
    if (m_pList != m_Inline) std::free(m_pList);
    m_pList = m_Inline;
    m_uCount = 0;
}

template <std::size_t Size>
bool TAddressList<Size>::Resize(std::uint64_t count) noexcept
{
    Clear();
    if (count > InlineCount) {
        auto * const block = static_cast<unsigned char(*)[Size]>(TryAllocate(count * Size));
        if (block == nullptr) return false;
        m_pList = block;
    }
    std::memset(m_pList, 0, count * Size);
    m_uCount = count;
    return true;
}

template <std::size_t Size>
bool TAddressList<Size>::Assign(TAddressList const & other) noexcept
{
    if (!Resize(other.m_uCount)) return false;
    std::memcpy(m_pList, other.m_pList, m_uCount * Size);
    return true;
}

template <std::size_t Size>
bool TAddressList<Size>::IsEqual(TAddressList const & other) const noexcept
{
    return m_uCount == other.m_uCount && std::memcmp(m_pList, other.m_pList, m_uCount * Size) == 0;
}

template class TAddressList<4>;
template class TAddressList<16>;

} // namespace VLK::Internals

namespace VLK::Sockets {

using Exceptions::CThrowState;
using Platform::SocketFamily;
using Strings::CStringVar;
using Strings::CSubStringRef;

namespace {

constexpr std::size_t AddressTextRoom = 48;

SocketFamily FamilyOf(sockaddr_storage const & address) noexcept
{
    return Platform::FamilyOf(reinterpret_cast<sockaddr const &>(address));
}

} // namespace

CSocketAddr::CSocketAddr() noexcept : m_PortNumber(0) {}

CSocketAddr::~CSocketAddr() = default;

std::uint64_t CSocketAddr::Count() const noexcept
{
    return m_IPv6.Count() + m_IPv4.Count();
}

CSocketAddr::CSocketAddr(sockaddr const & address) noexcept : m_PortNumber(0)
{
    sockaddr_storage storage;
    Platform::CopyAddress(storage, address);
    SetSingle(storage);
}

CSocketAddr::CSocketAddr(sockaddr_storage const & address) noexcept : m_PortNumber(0)
{
    SetSingle(address);
}

CSocketAddr::CSocketAddr(CSocketAddr const & other) : m_PortNumber(0)
{
    *this = other;
}

CSocketAddr & CSocketAddr::operator=(CSocketAddr const & other)
{
    if (this == &other) return *this;
    CThrowState state;
    try {
        if (!Assign(other)) VLK_RAISE(state, Errors::OutOfMemory);
        return *this;
    }
    VLK_THROW_NEXT_AS(state, *this)
}

void CSocketAddr::SetSingle(sockaddr_storage const & address) noexcept
{
    const SocketFamily family = FamilyOf(address);
    if (family == SocketFamily::Other) return;
    unsigned char bytes[16];
    std::uint16_t port = 0;
    Platform::ReadAddress(address, port, bytes);
    m_PortNumber = port;
    // One address always finds room.
    if (family == SocketFamily::IPv6) {
        m_IPv6.Resize(1);
        std::memcpy(m_IPv6[0], bytes, 16);
    } else {
        m_IPv4.Resize(1);
        std::memcpy(m_IPv4[0], bytes, 4);
    }
}

bool CSocketAddr::Assign(CSocketAddr const & other) noexcept
{
    m_PortNumber = other.m_PortNumber;
    if (m_IPv4.Assign(other.m_IPv4) && m_IPv6.Assign(other.m_IPv6)) return true;
    m_IPv4.Clear();
    m_IPv6.Clear();
    return false;
}

unsigned int CSocketAddr::Resolve(CSubStringRef const & host, unsigned int port)
{
    CThrowState state;
    try {
        return Resolve(std::string(host.View()), port);
    }
    VLK_THROW_NEXT(state)
}

unsigned int CSocketAddr::Resolve(std::string const & host, unsigned int port)
{
    CThrowState state;
    try {
        m_IPv4.Clear();
        m_IPv6.Clear();
        m_PortNumber = port;
        const std::string service = std::to_string(static_cast<int>(port));
        std::vector<sockaddr_storage> found;
        Platform::SResolveResult result =
            Platform::ResolveHost(host.empty() ? nullptr : host.c_str(), service.c_str(), found);
        // By decision an unknown host means this one.
        if (result.hostNotFound) result = Platform::ResolveHost(nullptr, service.c_str(), found);
        if (result.error != Platform::Success)
            VLK_RAISE_NATIVE_TEXT(state, Errors::ResolveHost, Exceptions::OsError(result.error),
                                  "CSocketAddr::Resolve(%s, %s)", host, service);

        std::uint64_t count6 = 0;
        for (sockaddr_storage const & address : found)
            count6 += FamilyOf(address) == SocketFamily::IPv6 ? 1u : 0u;
        if (!m_IPv6.Resize(count6) || !m_IPv4.Resize(found.size() - count6)) {
            m_IPv6.Clear();
            VLK_RAISE(state, Errors::OutOfMemory);
        }
        std::uint64_t next4 = 0;
        std::uint64_t next6 = 0;
        for (sockaddr_storage const & address : found) {
            std::uint16_t ignoredPort = 0;
            Platform::ReadAddress(address, ignoredPort,
                                  FamilyOf(address) == SocketFamily::IPv6 ? m_IPv6[next6++] : m_IPv4[next4++]);
        }
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

unsigned int CSocketAddr::GetAddress(sockaddr_storage & address) const
{
    CThrowState state;
    try {
        if (Count() == 0) VLK_RAISE(state, Errors::NoAddress);
        const bool is6 = m_IPv6.Count() != 0;
        Platform::FillAddress(address, is6 ? SocketFamily::IPv6 : SocketFamily::IPv4,
                              static_cast<std::uint16_t>(m_PortNumber), is6 ? m_IPv6[0] : m_IPv4[0]);
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

void CSocketAddr::FormatAddress(char * text, std::size_t size) const noexcept
{
    if (m_IPv6.Count() == 0) {
        unsigned char const * const a = m_IPv4[0];
        std::snprintf(text, size, "%d.%d.%d.%d", a[0], a[1], a[2], a[3]);
        return;
    }
    unsigned int group[8];
    for (std::size_t i = 0; i < 8; ++i)
        group[i] = static_cast<unsigned int>(m_IPv6[0][2 * i] << 8 | m_IPv6[0][2 * i + 1]);
    std::snprintf(text, size, "%x:%x:%x:%x:%x:%x:%x:%x", group[0], group[1], group[2], group[3], group[4], group[5],
                  group[6], group[7]);
}

unsigned int CSocketAddr::GetAddress(std::string & text) const
{
    CThrowState state;
    try {
        if (Count() == 0) VLK_RAISE(state, Errors::NoAddress);
        char room[AddressTextRoom];
        FormatAddress(room, sizeof room);
        text = room;
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

unsigned int CSocketAddr::GetAddress(CStringVar & text) const
{
    CThrowState state;
    try {
        if (Count() == 0) VLK_RAISE(state, Errors::NoAddress);
        char room[AddressTextRoom];
        FormatAddress(room, sizeof room);
        text = room;
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

CSocketAddr CSocketAddr::operator[](std::uint64_t index) const noexcept
{
    CSocketAddr single;
    single.m_PortNumber = m_PortNumber;
    if (index < m_IPv6.Count()) {
        single.m_IPv6.Resize(1);
        std::memcpy(single.m_IPv6[0], m_IPv6[index], 16);
    } else if (index < Count()) {
        single.m_IPv4.Resize(1);
        std::memcpy(single.m_IPv4[0], m_IPv4[index - m_IPv6.Count()], 4);
    }
    return single;
}

bool CSocketAddr::operator==(CSocketAddr const & other) const noexcept
{
    return Count() != 0 && m_IPv4.IsEqual(other.m_IPv4) && m_IPv6.IsEqual(other.m_IPv6);
}

} // namespace VLK::Sockets
