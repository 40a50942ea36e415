// Calls of the firewall that succeed and hand out nothing all the same.

#include <gtest/gtest.h>

#include <utility>

#include "Tests/Agent/Firewall/HostFakes.h"
#include "Tests/Agent/Firewall/Recorder.h"
#include "Tests/Agent/Firewall/SystemTest.h"

namespace {

class NoObjectTest : public CFirewallSystemTest {
protected:
    NoObjectTest() { g_hostFakes = {}; }

    /// The last line that an agent traces whose call at this place among all hands out nothing.
    static std::string TracedWithNothingFrom(std::size_t place)
    {
        Recorder::State() = {};
        Recorder::State().failAt = place;
        Recorder::State().failure = 0; // S_OK
        Fake::ClearTrace();
        SNMP::CKestrixRAIDAgent const agent;
        EXPECT_EQ(0, Recorder::State().entered) << "it was cleaned up";
        EXPECT_EQ(0, Recorder::State().texts);
        EXPECT_EQ(0, Recorder::State().policies);
        return Traced().back();
    }
};

TEST_F(NoObjectTest, CountAsAFailureOfTheCall)
{
    EXPECT_EQ("\nManageWSH: CoCreateInstance for INetFwPolicy2 failed: 0x80004003", TracedWithNothingFrom(1));
    EXPECT_EQ("\nManageWSH: get_ServiceRestriction failed: 0x80004003", TracedWithNothingFrom(2));
    EXPECT_EQ("\nManageWSH: get_Rules failed: 0x80004003", TracedWithNothingFrom(3));
    EXPECT_EQ("\nManageWSH: CoCreateInstance for Firewall Rule failed: 0x80004003", TracedWithNothingFrom(4));
}

} // namespace
