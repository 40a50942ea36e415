// What Wine's own classes answer. They refuse the service restriction, so that no rule comes about; a real host would
// get two for good, and isn't touched.

#include <optional>

#include "Native/Wine.h"

#include <objbase.h>

#include "Platform/Firewall.h"
#include "Platform/Host.h"
#include "Tests/Agent/Firewall/SystemTest.h"

namespace {

using namespace Platform;

std::vector<std::string> const kRefused{"\nManageWSH: get_ServiceRestriction failed: 0x80004001"};

/// How the calling thread is prepared for component calls; nothing if it isn't.
std::optional<APTTYPE> Apartment()
{
    APTTYPE type{};
    APTTYPEQUALIFIER qualifier{};
    if (FAILED(::CoGetApartmentType(&type, &qualifier))) return std::nullopt;
    return type;
}

/// An agent that manages the hardening when it is told to. Its constructor may have done it before, which depends on
/// the version that Wine is set to.
class CManagingAgent : public SNMP::CKestrixRAIDAgent {
public:
    CManagingAgent() { Fake::ClearTrace(); }
    using CKestrixRAIDAgent::ManageWSH;
};

class WineFirewallTest : public CFirewallSystemTest {
protected:
    /// What an agent traces when it manages the hardening.
    static std::vector<std::string> TracedByAnAgent()
    {
        CManagingAgent().ManageWSH();
        return Traced();
    }
    void SetUp() override
    {
        if (!RunsUnderWine()) GTEST_SKIP() << "it would add firewall rules to this host for good";
    }
};

TEST_F(WineFirewallTest, WineRefusesTheServiceRestrictionAndTheAgentSaysSoAndGoesOn)
{
    ASSERT_TRUE(HasManagedFirewall());
    EXPECT_EQ(kRefused, TracedByAnAgent());
}

TEST_F(WineFirewallTest, AThreadThatWasNotPreparedIsLeftAsItWas)
{
    ASSERT_EQ(std::nullopt, Apartment());
    EXPECT_EQ(kRefused, TracedByAnAgent());
    EXPECT_EQ(std::nullopt, Apartment());
}

TEST_F(WineFirewallTest, AThreadThatIsPreparedInTheSameWayStaysSo)
{
    ASSERT_EQ(S_OK, ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
    EXPECT_EQ(kRefused, TracedByAnAgent());
    EXPECT_EQ(APTTYPE_MAINSTA, Apartment());
    ::CoUninitialize();
    EXPECT_EQ(std::nullopt, Apartment()) << "no preparation is left over";
}

TEST_F(WineFirewallTest, AThreadThatIsPreparedInTheOtherWayGetsChangedModeGoesOnAndStaysSo)
{
    ASSERT_EQ(S_OK, ::CoInitializeEx(nullptr, COINIT_MULTITHREADED));
    EXPECT_EQ(0x80010106u, EnterFirewall());
    EXPECT_EQ(kRefused, TracedByAnAgent()) << "the refusal comes behind the preparation";
    EXPECT_EQ(APTTYPE_MTA, Apartment());
    ::CoUninitialize();
    EXPECT_EQ(std::nullopt, Apartment());
}

TEST_F(WineFirewallTest, WineHasTheClassOfTheRuleAndTakesEveryPropertyThoughItCanNotShowThatItKeepsThem)
{
    ASSERT_EQ(0u, EnterFirewall());
    SFirewallRule * made = nullptr;
    ASSERT_EQ(0u, NewFirewallRule(made));
    {
        TFirewallHandle<SFirewallRule> const rule(made);
        TFirewallHandle<SFirewallText> const text(NewFirewallText(L"3173"));
        for (RuleText const property :
             {RuleText::Name, RuleText::Description, RuleText::Grouping, RuleText::ApplicationName,
              RuleText::ServiceName, RuleText::RemotePorts, RuleText::LocalPorts})
            EXPECT_EQ(0u, PutRuleText(*rule.Get(), property, text.Get())) << static_cast<int>(property);
        for (RuleNumber const property :
             {RuleNumber::Protocol, RuleNumber::Direction, RuleNumber::Action, RuleNumber::Enabled})
            EXPECT_EQ(0u, PutRuleNumber(*rule.Get(), property, 1)) << static_cast<int>(property);
    }
    LeaveFirewall();
}

TEST_F(WineFirewallTest, WithoutAPreparedThreadTheClassesAreRefused)
{
    SFirewallPolicy * policy = nullptr;
    EXPECT_EQ(0x800401F0u, OpenFirewallPolicy(policy));
    EXPECT_EQ(nullptr, policy);
    SFirewallRule * rule = nullptr;
    EXPECT_EQ(0x800401F0u, NewFirewallRule(rule));
    EXPECT_EQ(nullptr, rule);
}

} // namespace
