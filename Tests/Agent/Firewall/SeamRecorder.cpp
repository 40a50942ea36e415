// Platform/Firewall.h, noted. Calls bear the names that they have on the system.

#include <gtest/gtest.h>

#include "Platform/Firewall.h"
#include "Recorder.h"

namespace Platform {

struct SFirewallText {
    std::string text;
};
struct SFirewallPolicy {};
struct SFirewallRestriction {};
struct SFirewallRules {};
struct SFirewallRule {
    int number;
};

namespace {

using Recorder::Note;
using Recorder::State;

SFirewallPolicy g_policy;
SFirewallRestriction g_restriction;
SFirewallRules g_rules;

FirewallResult Answer(std::string call)
{
    return Note(std::move(call)) ? State().failure : 0;
}

template <class TObject>
FirewallResult HandOut(std::string call, TObject & object, TObject *& out, int & references)
{
    const FirewallResult result = Answer(std::move(call));
    out = Succeeded(result) ? &object : nullptr;
    if (out != nullptr) ++references;
    return result;
}

std::string Named(SFirewallRule const & rule)
{
    return "rule " + std::to_string(rule.number);
}

} // namespace

FirewallResult EnterFirewall() noexcept
{
    if (Note("CoInitializeEx")) return State().failure;
    if (Succeeded(State().enterResult)) ++State().entered;
    return State().enterResult;
}

void LeaveFirewall() noexcept
{
    Note("CoUninitialize");
    --State().entered;
}

SFirewallText * NewFirewallText(wchar_t const * text) noexcept
{
    ++State().texts;
    auto * const made = new SFirewallText;
    while (*text != L'\0')
        made->text += static_cast<char>(*text++);
    State().textsMade.push_back(made->text);
    return made;
}

void Release(SFirewallText * text) noexcept
{
    Note("free " + text->text);
    --State().texts;
    delete text;
}

FirewallResult OpenFirewallPolicy(SFirewallPolicy *& out) noexcept
{
    return HandOut("create policy", g_policy, out, State().policies);
}

FirewallResult ServiceRestriction(SFirewallPolicy & policy, SFirewallRestriction *& out) noexcept
{
    EXPECT_EQ(&g_policy, &policy);
    return HandOut("policy.get_ServiceRestriction", g_restriction, out, State().restrictions);
}

FirewallResult RestrictionRules(SFirewallRestriction & restriction, SFirewallRules *& out) noexcept
{
    EXPECT_EQ(&g_restriction, &restriction);
    return HandOut("restriction.get_Rules", g_rules, out, State().rules);
}

FirewallResult NewFirewallRule(SFirewallRule *& out) noexcept
{
    const int number = State().rulesMade + 1;
    const FirewallResult result = Answer("create rule " + std::to_string(number));
    out = Succeeded(result) ? new SFirewallRule{number} : nullptr;
    if (out != nullptr) {
        ++State().rulesMade;
        ++State().ruleObjects;
    }
    return result;
}

void Release(SFirewallPolicy *) noexcept
{
    Note("release policy");
    --State().policies;
}

void Release(SFirewallRules *) noexcept
{
    Note("release rules");
    --State().rules;
}

void Release(SFirewallRule * rule) noexcept
{
    Note("release " + Named(*rule));
    --State().ruleObjects;
    delete rule;
}

FirewallResult PutRuleText(SFirewallRule & rule, RuleText property, SFirewallText * text) noexcept
{
    static constexpr char const * names[] = {"Name",        "Description", "Grouping",  "ApplicationName",
                                             "ServiceName", "RemotePorts", "LocalPorts"};
    return Answer(Named(rule) + ".put_" + names[static_cast<int>(property)] + " " + text->text);
}

FirewallResult PutRuleNumber(SFirewallRule & rule, RuleNumber property, int number) noexcept
{
    if (property == RuleNumber::Enabled)
        return Answer(Named(rule) + ".put_Enabled " + (number != 0 ? "true" : "false"));
    static constexpr char const * names[] = {"Protocol", "Direction", "Action"};
    return Answer(Named(rule) + ".put_" + names[static_cast<int>(property)] + " " + std::to_string(number));
}

FirewallResult AddFirewallRule(SFirewallRules & rules, SFirewallRule & rule) noexcept
{
    EXPECT_EQ(&g_rules, &rules);
    return Answer("rules.Add " + Named(rule));
}

} // namespace Platform
