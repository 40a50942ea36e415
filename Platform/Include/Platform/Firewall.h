#ifndef PLATFORM_FIREWALL_H
#define PLATFORM_FIREWALL_H

#include <cstdint>

#include "Platform/Handle.h"

/// The rules that the system's firewall has for hardened services, and the objects that carry them. Thin on purpose:
/// which rules there are, and in what order they come about, is the caller's business.
///
/// For hosts with HasManagedFirewall(). Where there is none (POSIX) every operation answers kNoFirewall and hands out
/// nothing.
///
/// Threads: one, the one between EnterFirewall and LeaveFirewall. Nothing raises.
namespace Platform {

/// What the firewall answers: a failure from 0x80000000 on, else a success. The system's own numbers.
using FirewallResult = std::uint32_t;
inline constexpr FirewallResult kNoFirewall = 0x80004001;
inline constexpr bool Succeeded(FirewallResult result) noexcept
{
    return result < 0x80000000u;
}

// The system's objects; nobody but the system knows their insides.
struct SFirewallText;
struct SFirewallPolicy;
struct SFirewallRestriction;
struct SFirewallRules;
struct SFirewallRule;

/// Prepares the calling thread. After a success LeaveFirewall is owed; with 0x80010106 the thread was prepared in
/// another way before, which serves as well, and nothing is owed.
FirewallResult EnterFirewall() noexcept;
void LeaveFirewall() noexcept;

/// A copy of `text` as the firewall takes it. Null when there is no memory, which the firewall takes for an empty text.
SFirewallText * NewFirewallText(wchar_t const * text) noexcept;
/// Null is allowed.
void Release(SFirewallText * text) noexcept;

// Each hands out an object of the caller's: not null after a success, null after a failure.
FirewallResult OpenFirewallPolicy(SFirewallPolicy *& out) noexcept;
/// The part of the policy for hardened services. There is no release for it.
FirewallResult ServiceRestriction(SFirewallPolicy & policy, SFirewallRestriction *& out) noexcept;
FirewallResult RestrictionRules(SFirewallRestriction & restriction, SFirewallRules *& out) noexcept;
/// A rule that isn't in force until it is added.
FirewallResult NewFirewallRule(SFirewallRule *& out) noexcept;

void Release(SFirewallPolicy * policy) noexcept;
void Release(SFirewallRules * rules) noexcept;
void Release(SFirewallRule * rule) noexcept;

enum class RuleText { Name, Description, Grouping, ApplicationName, ServiceName, RemotePorts, LocalPorts };
FirewallResult PutRuleText(SFirewallRule & rule, RuleText property, SFirewallText * text) noexcept;

/// Protocol: an IP protocol number. Direction: 1 in, 2 out. Action: 0 block, 1 allow. Enabled: 0 or 1.
enum class RuleNumber { Protocol, Direction, Action, Enabled };
FirewallResult PutRuleNumber(SFirewallRule & rule, RuleNumber property, int number) noexcept;

/// Puts the rule in force. Both stay the caller's.
FirewallResult AddFirewallRule(SFirewallRules & rules, SFirewallRule & rule) noexcept;

template <class TObject>
struct TFirewallTraits {
    using Type = TObject *;
    static constexpr Type None() noexcept { return nullptr; }
    static void Close(Type object) noexcept { Release(object); }
};
template <class TObject>
using TFirewallHandle = THandle<TFirewallTraits<TObject>>;

} // namespace Platform

#endif
