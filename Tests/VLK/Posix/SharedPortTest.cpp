#include <cerrno>

#include "SocketPair.h"

using namespace VLK;
using namespace VLK::Sockets;

namespace {

// Windows lets both listen, for the option of the address's reuse means that there.
using SharedPortTest = CFoundationTest;

TEST_F(SharedPortTest, APortHasOneListenerAtATime)
{
    CSocketListener first;
    ASSERT_EQ(URET_OK, first.StartListen(LoopbackAddress(0)));
    CSocketListener second;
    Exceptions::CErrorLog log;
    EXPECT_EQ(Errors::SocketFunction,
              RaisedBy([&] { second.StartListen(LoopbackAddress(LocalPort(first.GetSocket()))); }, log));
    Exceptions::NATIVE_ERROR native{};
    log.GetError(native);
    EXPECT_EQ(std::uint32_t{EADDRINUSE}, native.value);
    EXPECT_EQ(URET_OK, second.StartListen(LoopbackAddress(0)));
}

} // namespace
