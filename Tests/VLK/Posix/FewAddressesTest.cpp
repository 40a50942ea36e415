#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <string>

#include "StreamPeer.h"

using namespace VLK;
using namespace VLK::Sockets;

// A sanitizer needs more addresses for itself than the limit leaves.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)

namespace {

/// Whether a claimed length ends in one of the two ways that are allowed, in a process with 3 GiB of addresses.
int RunWithFewAddresses(Bytes const & head)
{
    SClientWithPeer forText(head);
    SClientWithPeer forFoundationText(head);
    forText.Peer().Close();
    forFoundationText.Peer().Close();
    const rlimit limit{3ull << 30, 3ull << 30};
    if (::setrlimit(RLIMIT_AS, &limit) != 0) return 2;
    const auto isAllowed = [](std::uint32_t error) {
        return error == Errors::OutOfMemory || error == Errors::SocketClosedByPeer;
    };
    std::string text;
    Strings::TString<8> foundationText;
    const bool first = isAllowed(RaisedBy([&] { forText.client >> text; }));
    const bool second = isAllowed(RaisedBy([&] { forFoundationText.client >> foundationText; }));
    return first && second ? 0 : 1;
}

TEST(ClaimedLengthDeathTest, OfGigabytesIsHarmlessWithFewAddresses)
{
    for (const Bytes & head : {Bytes{0x9B, 0x80, 0, 0, 0}, Bytes{0x9C, 1, 0, 0, 0, 0}, Bytes{0x9C, 0xFF, 0, 0, 0, 0},
                               Bytes{0x9D, 1, 0, 0, 0, 0, 0}, Bytes{0x9F, 0x80, 0, 0, 0, 0, 0, 0, 0}})
        EXPECT_EXIT(
            {
                Threading::CCallBackGuard guard;
                ::_exit(RunWithFewAddresses(head));
            },
            testing::ExitedWithCode(0), "");
}

} // namespace

#endif
