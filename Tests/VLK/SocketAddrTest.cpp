#include "VLK/SocketAddr.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "SocketPair.h"

using namespace VLK;
using namespace VLK::Sockets;
using namespace VLK::Strings;

namespace {

class SocketAddrTest : public CFoundationTest {};

std::string TextOf(CSocketAddr const & address)
{
    std::string text;
    EXPECT_EQ(URET_OK, address.GetAddress(text));
    return text;
}

std::uint16_t PortOf(CSocketAddr const & address)
{
    sockaddr_storage storage{};
    std::uint16_t port = 0;
    unsigned char bytes[16];
    EXPECT_EQ(URET_OK, address.GetAddress(storage));
    Platform::ReadAddress(storage, port, bytes);
    return port;
}

TEST_F(SocketAddrTest, ANewOneHasNoAddress)
{
    const CSocketAddr address;
    EXPECT_EQ(0u, address.Count());
    EXPECT_EQ(0u, address[0].Count());
    sockaddr_storage storage{};
    std::string text;
    TString<32> foundationText;
    EXPECT_EQ(Errors::NoAddress, RaisedBy([&] { address.GetAddress(storage); }));
    EXPECT_EQ(Errors::NoAddress, RaisedBy([&] { address.GetAddress(text); }));
    EXPECT_EQ(Errors::NoAddress, RaisedBy([&] { address.GetAddress(foundationText); }));
}

TEST_F(SocketAddrTest, TakesTheOneAddressOfASystemsStructure)
{
    for (const bool ipv6 : {false, true}) {
        const CSocketAddr given = LoopbackAddress(3173, ipv6);
        sockaddr_storage storage{};
        ASSERT_EQ(URET_OK, given.GetAddress(storage));
        const CSocketAddr fromStorage(storage);
        const CSocketAddr fromPlain(reinterpret_cast<sockaddr const &>(storage));
        for (CSocketAddr const * address : {&fromStorage, &fromPlain}) {
            EXPECT_EQ(1u, address->Count());
            EXPECT_EQ(3173, PortOf(*address));
            EXPECT_EQ(ipv6 ? "0:0:0:0:0:0:0:1" : "127.0.0.1", TextOf(*address));
        }
    }
}

TEST_F(SocketAddrTest, AForeignFamilyLeavesItEmpty)
{
    sockaddr address{};
    address.sa_family = AF_UNIX;
    EXPECT_EQ(0u, CSocketAddr(address).Count());
}

TEST_F(SocketAddrTest, IPv6TextHasEightGroupsWithoutShortening)
{
    const unsigned char bytes[16] = {0x20, 0x01, 0x0D, 0xB8, 0, 0, 0, 0, 0, 0, 0xAB, 0xCD, 0, 0, 0, 0x0F};
    sockaddr_storage storage;
    Platform::FillAddress(storage, Platform::SocketFamily::IPv6, 1, bytes);
    const CSocketAddr address(storage);
    EXPECT_EQ("2001:db8:0:0:0:abcd:0:f", TextOf(address));
    TString<32> text;
    EXPECT_EQ(URET_OK, address.GetAddress(text));
    EXPECT_STREQ("2001:db8:0:0:0:abcd:0:f", text.C_Str());
}

TEST_F(SocketAddrTest, ComparesAddressesButNotPorts)
{
    EXPECT_TRUE(LoopbackAddress(1) == LoopbackAddress(2));
    EXPECT_FALSE(LoopbackAddress(1) != LoopbackAddress(2));
    EXPECT_FALSE(LoopbackAddress(1, false) == LoopbackAddress(1, true));
    CSocketAddr other;
    other.Resolve(std::string("127.0.0.2"), 1);
    EXPECT_FALSE(LoopbackAddress(1) == other);
}

TEST_F(SocketAddrTest, TwoWithoutAnyAddressAreUnequal)
{
    EXPECT_FALSE(CSocketAddr() == CSocketAddr());
    const CSocketAddr one;
    EXPECT_FALSE(one == one);
}

TEST_F(SocketAddrTest, ResolvesNumbersOfBothFamilies)
{
    CSocketAddr address;
    EXPECT_EQ(URET_OK, address.Resolve(std::string("127.0.0.1"), 3173));
    EXPECT_EQ(1u, address.Count());
    EXPECT_EQ("127.0.0.1", TextOf(address));
    EXPECT_EQ(3173, PortOf(address));
    EXPECT_EQ(URET_OK, address.Resolve(CSubStringRef("::1xyz", 3), 80));
    EXPECT_EQ(1u, address.Count());
    EXPECT_EQ("0:0:0:0:0:0:0:1", TextOf(address));
    EXPECT_EQ(80, PortOf(address));
}

TEST_F(SocketAddrTest, AnEmptyHostIsThisOneWithIPv6First)
{
    CSocketAddr address;
    EXPECT_EQ(URET_OK, address.Resolve(std::string(), 3173));
    ASSERT_GE(address.Count(), 1u);
    for (std::uint64_t i = 0; i < address.Count(); ++i)
        EXPECT_EQ(3173, PortOf(address[i]));
    if (address.Count() == 2u) {
        EXPECT_EQ("0:0:0:0:0:0:0:1", TextOf(address[0]));
        EXPECT_EQ("127.0.0.1", TextOf(address[1]));
    }
    EXPECT_EQ(0u, address[address.Count()].Count());
}

TEST_F(SocketAddrTest, AnUnknownHostIsThisOneByDecision)
{
    // No name service can know an empty label in the middle of a name.
    CSocketAddr address;
    CSocketAddr local;
    EXPECT_EQ(URET_OK, address.Resolve(std::string("no..such host"), 3173));
    EXPECT_EQ(URET_OK, local.Resolve(std::string(), 3173));
    EXPECT_TRUE(address == local);
    EXPECT_EQ(3173, PortOf(address));
}

TEST_F(SocketAddrTest, AFailureNamesHostAndServiceAndLeavesNoAddress)
{
    CSocketAddr address = LoopbackAddress(1);
    Exceptions::CErrorLog log;
    // The port's decimal text is made of a signed number, and no service has a negative one.
    EXPECT_EQ(Errors::ResolveHost, RaisedBy([&] { address.Resolve(std::string("127.0.0.1"), 0xFFFFFFFF); }, log));
    EXPECT_STREQ("SocketAddr::Resolve(127.0.0.1, -1\n", log.GetErrorMsg(0));
    Exceptions::NATIVE_ERROR native{};
    log.GetError(native);
    EXPECT_EQ(Exceptions::NativeOs, native.kind);
    EXPECT_NE(0u, native.value);
    EXPECT_EQ(0u, address.Count());
}

TEST_F(SocketAddrTest, CopiesAreIndependent)
{
    CSocketAddr local;
    local.Resolve(std::string(), 5);
    CSocketAddr copy(local);
    EXPECT_TRUE(copy == local);
    EXPECT_EQ(5, PortOf(copy));
    local = LoopbackAddress(6);
    EXPECT_EQ(5, PortOf(copy));
    copy = local;
    EXPECT_EQ(6, PortOf(copy));
    CSocketAddr & itself = copy;
    copy = itself;
    EXPECT_EQ(1u, copy.Count());
}

template <class TList>
class AddressListTest : public testing::Test {
};
using Lists = testing::Types<Internals::TAddressList<4>, Internals::TAddressList<16>>;
TYPED_TEST_SUITE(AddressListTest, Lists);

TYPED_TEST(AddressListTest, FourLieInsideAndTheFifthMovesAllToTheHeap)
{
    for (const std::uint64_t count : {0u, 1u, 4u, 5u, 100u}) {
        TypeParam list;
        ASSERT_TRUE(list.Resize(count));
        EXPECT_EQ(count, list.Count());
        for (std::uint64_t i = 0; i < count; ++i)
            list[i][0] = static_cast<unsigned char>(i + 1);
        if (count != 0) {
            auto const * const begin = reinterpret_cast<unsigned char const *>(&list);
            const bool inside = list[0] >= begin && list[0] < begin + sizeof list;
            EXPECT_EQ(count <= 4, inside) << count;
        }
        TypeParam copy;
        ASSERT_TRUE(copy.Resize(7));
        ASSERT_TRUE(copy.Assign(list));
        EXPECT_TRUE(copy.IsEqual(list));
        if (count != 0) {
            copy[count - 1][0] ^= 0xFF;
            EXPECT_FALSE(copy.IsEqual(list));
        }
        list.Clear();
        EXPECT_EQ(0u, list.Count());
    }
}

} // namespace
