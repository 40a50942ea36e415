// A host without rules for hardened services.

#include "Platform/Firewall.h"
#include "Platform/Host.h"
#include "Tests/Agent/Firewall/SystemTest.h"

namespace Platform {

// Something to call the operations on, which hand out nothing.
struct SFirewallPolicy {};
struct SFirewallRestriction {};
struct SFirewallRules {};
struct SFirewallRule {};

} // namespace Platform

namespace {

using namespace Platform;

class NoFirewallTest : public CFirewallSystemTest {
protected:
    SFirewallPolicy policy;
    SFirewallRestriction restriction;
    SFirewallRules rules;
    SFirewallRule rule;
};

TEST_F(NoFirewallTest, TheAgentLeavesTheHardeningOut)
{
    ASSERT_FALSE(HasManagedFirewall());
    SNMP::CKestrixRAIDAgent const agent;
    EXPECT_EQ(std::vector<std::string>{}, Traced());
}

TEST_F(NoFirewallTest, EveryOperationSaysThatThereIsNoFirewall)
{
    EXPECT_EQ(kNoFirewall, EnterFirewall());
    EXPECT_EQ(kNoFirewall, PutRuleText(rule, RuleText::Name, nullptr));
    EXPECT_EQ(kNoFirewall, PutRuleNumber(rule, RuleNumber::Protocol, 6));
    EXPECT_EQ(kNoFirewall, AddFirewallRule(rules, rule));
    EXPECT_FALSE(Succeeded(kNoFirewall));
}

TEST_F(NoFirewallTest, NothingIsHandedOut)
{
    SFirewallPolicy * policyOut = &policy;
    EXPECT_EQ(kNoFirewall, OpenFirewallPolicy(policyOut));
    EXPECT_EQ(nullptr, policyOut);
    SFirewallRestriction * restrictionOut = &restriction;
    EXPECT_EQ(kNoFirewall, ServiceRestriction(policy, restrictionOut));
    EXPECT_EQ(nullptr, restrictionOut);
    SFirewallRules * rulesOut = &rules;
    EXPECT_EQ(kNoFirewall, RestrictionRules(restriction, rulesOut));
    EXPECT_EQ(nullptr, rulesOut);
    SFirewallRule * ruleOut = &rule;
    EXPECT_EQ(kNoFirewall, NewFirewallRule(ruleOut));
    EXPECT_EQ(nullptr, ruleOut);
    EXPECT_EQ(nullptr, NewFirewallText(L"text"));
}

} // namespace
