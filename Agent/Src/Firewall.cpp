// The rules that let the SNMP service, and the agent inside it, through its own hardening.

#include "Platform/Firewall.h"

#include "Agent/Src/Intervals.h"
#include "Agent/Src/ORBA_MIB.h"
#include "Platform/Wait.h"
#include "Snmp/Host/Debug.h"

namespace SNMP {

namespace {

using Platform::FirewallResult;
using Platform::RuleNumber;
using Platform::RuleText;
using Platform::SFirewallPolicy;
using Platform::SFirewallRestriction;
using Platform::SFirewallRule;
using Platform::SFirewallRules;
using Platform::SFirewallText;
using Platform::TFirewallHandle;

constexpr FirewallResult kPreparedInAnotherWay = 0x80010106;
constexpr int kTcp = 6;
constexpr int kAllow = 1;

/// What differs between the two rules.
struct SEnd {
    char const * name;
    RuleText port;
    char const * putPort;
    int direction;
};
constexpr SEnd kOutbound{"outbound", RuleText::RemotePorts, "put_RemotePorts", 2};
constexpr SEnd kInbound{"inbound", RuleText::LocalPorts, "put_LocalPorts", 1};

bool Worked(FirewallResult result, char const * operation)
{
    if (Platform::Succeeded(result)) return true;
    if (CDebug::Enabled()) {
        CDebug::Trace(1, "\nManageWSH: %s failed: 0x%08lx", operation, static_cast<unsigned long>(result));
    }
    return false;
}

class CText {
public:
    explicit CText(wchar_t const * text) : m_text(Platform::NewFirewallText(text)) {}
    SFirewallText * Get() const { return m_text.Get(); }

private:
    TFirewallHandle<SFirewallText> m_text;
};

struct STexts {
    CText service{L"SNMP"};
    CText application{L"%SystemDrive%\\Windows\\System32\\snmp.exe"};
    CText rule{L"Kestrix_RAID"};
    CText description{L"Allow Kestrix RAID network traffic"};
    CText grouping{L"Kestrix RAID Group"};
    CText port{L"3173"};
    CText addresses{L"127.0.0.1,::1"}; // of no rule: neither is limited to certain addresses
};

/// The calling thread's right to speak to the firewall, for a scope.
class CFirewallThread {
public:
    CFirewallThread() = default;
    CFirewallThread(CFirewallThread const &) = delete;
    CFirewallThread & operator=(CFirewallThread const &) = delete;
    ~CFirewallThread()
    {
        if (m_entered) Platform::LeaveFirewall();
    }
    bool Enter()
    {
        FirewallResult const result = Platform::EnterFirewall();
        m_entered = Platform::Succeeded(result);
        return result == kPreparedInAnotherWay || Worked(result, "CoInitializeEx");
    }

private:
    bool m_entered = false;
};

/// One run. What it holds goes in the reverse order of the members, on every way out.
class CHardening {
public:
    /// Both rules are there.
    bool AddRules()
    {
        // The grouping of the second rule goes to the first one, which has it and is in force already.
        return m_thread.Enter() && OpenRules() && New(m_outbound) && Put(m_outbound, m_outbound, kOutbound) &&
               Add(m_outbound, kOutbound) && New(m_inbound) && Put(m_inbound, m_outbound, kInbound) &&
               Add(m_inbound, kInbound);
    }

private:
    using Rule = TFirewallHandle<SFirewallRule>;

    bool OpenRules()
    {
        SFirewallPolicy * policy = nullptr;
        if (!Worked(Platform::OpenFirewallPolicy(policy), "CoCreateInstance for INetFwPolicy2")) return false;
        m_policy.Reset(policy);
        SFirewallRestriction * restriction = nullptr; // never released
        if (!Worked(Platform::ServiceRestriction(*policy, restriction), "get_ServiceRestriction")) return false;
        SFirewallRules * rules = nullptr;
        if (!Worked(Platform::RestrictionRules(*restriction, rules), "get_Rules")) return false;
        m_rules.Reset(rules);
        return true;
    }
    static bool New(Rule & rule)
    {
        SFirewallRule * made = nullptr;
        if (!Worked(Platform::NewFirewallRule(made), "CoCreateInstance for Firewall Rule")) return false;
        rule.Reset(made);
        return true;
    }
    bool Put(Rule const & rule, Rule const & grouped, SEnd const & end) const
    {
        return PutText(rule, RuleText::Name, m_texts.rule, "put_Name") &&
               PutText(rule, RuleText::Description, m_texts.description, "put_Description") &&
               PutText(grouped, RuleText::Grouping, m_texts.grouping, "put_Grouping") &&
               PutText(rule, RuleText::ApplicationName, m_texts.application, "put_ApplicationName") &&
               PutText(rule, RuleText::ServiceName, m_texts.service, "put_ServiceName") &&
               PutNumber(rule, RuleNumber::Protocol, kTcp, "put_Protocol") &&
               PutText(rule, end.port, m_texts.port, end.putPort) &&
               PutNumber(rule, RuleNumber::Direction, end.direction, "put_Direction") &&
               PutNumber(rule, RuleNumber::Action, kAllow, "put_Action") &&
               PutNumber(rule, RuleNumber::Enabled, 1, "put_Enabled");
    }
    static bool PutText(Rule const & rule, RuleText property, CText const & text, char const * operation)
    {
        return Worked(Platform::PutRuleText(*rule.Get(), property, text.Get()), operation);
    }
    static bool PutNumber(Rule const & rule, RuleNumber property, int number, char const * operation)
    {
        return Worked(Platform::PutRuleNumber(*rule.Get(), property, number), operation);
    }
    bool Add(Rule const & rule, SEnd const & end) const
    {
        if (!Worked(Platform::AddFirewallRule(*m_rules.Get(), *rule.Get()), "Firewall Rule Add")) return false;
        if (CDebug::Enabled()) CDebug::Trace(1, "\nManageWSH: %s WSH allow rule added", end.name);
        return true;
    }

    CFirewallThread m_thread;
    TFirewallHandle<SFirewallPolicy> m_policy;
    TFirewallHandle<SFirewallRules> m_rules;
    Rule m_inbound;
    Rule m_outbound;
    STexts m_texts;
};

} // namespace

void CKestrixRAIDAgent::ManageWSH()
{
    CHardening hardening;
    if (hardening.AddRules()) Platform::Sleep(g_agentIntervals.firewallMs);
}

} // namespace SNMP
