#include "Platform/Firewall.h"

namespace Platform {

FirewallResult EnterFirewall() noexcept
{
    return kNoFirewall;
}

void LeaveFirewall() noexcept {}

SFirewallText * NewFirewallText(wchar_t const *) noexcept
{
    return nullptr;
}

void Release(SFirewallText *) noexcept {}

FirewallResult OpenFirewallPolicy(SFirewallPolicy *& out) noexcept
{
    out = nullptr;
    return kNoFirewall;
}

FirewallResult ServiceRestriction(SFirewallPolicy &, SFirewallRestriction *& out) noexcept
{
    out = nullptr;
    return kNoFirewall;
}

FirewallResult RestrictionRules(SFirewallRestriction &, SFirewallRules *& out) noexcept
{
    out = nullptr;
    return kNoFirewall;
}

FirewallResult NewFirewallRule(SFirewallRule *& out) noexcept
{
    out = nullptr;
    return kNoFirewall;
}

void Release(SFirewallPolicy *) noexcept {}

void Release(SFirewallRules *) noexcept {}

void Release(SFirewallRule *) noexcept {}

FirewallResult PutRuleText(SFirewallRule &, RuleText, SFirewallText *) noexcept
{
    return kNoFirewall;
}

FirewallResult PutRuleNumber(SFirewallRule &, RuleNumber, int) noexcept
{
    return kNoFirewall;
}

FirewallResult AddFirewallRule(SFirewallRules &, SFirewallRule &) noexcept
{
    return kNoFirewall;
}

} // namespace Platform
