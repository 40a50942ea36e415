#include "Platform/Firewall.h"

#include "System.h"

#include <netfw.h>
#include <objbase.h>
#include <oleauto.h>

// The handles of the header are the interfaces themselves: each cast here undoes one of the same name.

namespace {

using Platform::FirewallResult;

template <class TInterface, class THandle>
TInterface * Interface(THandle * handle) noexcept
{
    return reinterpret_cast<TInterface *>(handle);
}

template <class THandle, class TInterface>
FirewallResult HandOut(HRESULT result, TInterface * object, THandle *& out) noexcept
{
    out = SUCCEEDED(result) ? reinterpret_cast<THandle *>(object) : nullptr;
    // A success without an object would be none to the caller.
    return static_cast<FirewallResult>(SUCCEEDED(result) && object == nullptr ? E_POINTER : result);
}

template <class TClass, class TInterface, class THandle>
FirewallResult Create(THandle *& out) noexcept
{
    void * object = nullptr;
    const HRESULT result =
        ::CoCreateInstance(__uuidof(TClass), nullptr, CLSCTX_INPROC_SERVER, __uuidof(TInterface), &object);
    return HandOut(result, static_cast<TInterface *>(object), out);
}

template <class TInterface>
void ReleaseInterface(TInterface * object) noexcept
{
    if (object != nullptr) object->Release();
}

HRESULT PutText(INetFwRule & rule, Platform::RuleText property, BSTR text) noexcept
{
    switch (property) {
    case Platform::RuleText::Name:
        return rule.put_Name(text);
    case Platform::RuleText::Description:
        return rule.put_Description(text);
    case Platform::RuleText::Grouping:
        return rule.put_Grouping(text);
    case Platform::RuleText::ApplicationName:
        return rule.put_ApplicationName(text);
    case Platform::RuleText::ServiceName:
        return rule.put_ServiceName(text);
    case Platform::RuleText::RemotePorts:
        return rule.put_RemotePorts(text);
    case Platform::RuleText::LocalPorts:
        return rule.put_LocalPorts(text);
    }
    return E_INVALIDARG;
}

HRESULT PutNumber(INetFwRule & rule, Platform::RuleNumber property, int number) noexcept
{
    switch (property) {
    case Platform::RuleNumber::Protocol:
        return rule.put_Protocol(number);
    case Platform::RuleNumber::Direction:
        return rule.put_Direction(static_cast<NET_FW_RULE_DIRECTION>(number));
    case Platform::RuleNumber::Action:
        return rule.put_Action(static_cast<NET_FW_ACTION>(number));
    case Platform::RuleNumber::Enabled:
        return rule.put_Enabled(number != 0 ? VARIANT_TRUE : VARIANT_FALSE);
    }
    return E_INVALIDARG;
}

} // namespace

FirewallResult Platform::EnterFirewall() noexcept
{
    return static_cast<FirewallResult>(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
}

void Platform::LeaveFirewall() noexcept
{
    ::CoUninitialize();
}

Platform::SFirewallText * Platform::NewFirewallText(wchar_t const * text) noexcept
{
    return reinterpret_cast<SFirewallText *>(::SysAllocString(text));
}

void Platform::Release(SFirewallText * text) noexcept
{
    ::SysFreeString(reinterpret_cast<BSTR>(text));
}

FirewallResult Platform::OpenFirewallPolicy(SFirewallPolicy *& out) noexcept
{
    return Create<NetFwPolicy2, INetFwPolicy2>(out);
}

FirewallResult Platform::ServiceRestriction(SFirewallPolicy & policy, SFirewallRestriction *& out) noexcept
{
    INetFwServiceRestriction * restriction = nullptr;
    const HRESULT result = Interface<INetFwPolicy2>(&policy)->get_ServiceRestriction(&restriction);
    return HandOut(result, restriction, out);
}

FirewallResult Platform::RestrictionRules(SFirewallRestriction & restriction, SFirewallRules *& out) noexcept
{
    INetFwRules * rules = nullptr;
    const HRESULT result = Interface<INetFwServiceRestriction>(&restriction)->get_Rules(&rules);
    return HandOut(result, rules, out);
}

FirewallResult Platform::NewFirewallRule(SFirewallRule *& out) noexcept
{
    return Create<NetFwRule, INetFwRule>(out);
}

void Platform::Release(SFirewallPolicy * policy) noexcept
{
    ReleaseInterface(Interface<INetFwPolicy2>(policy));
}

void Platform::Release(SFirewallRules * rules) noexcept
{
    ReleaseInterface(Interface<INetFwRules>(rules));
}

void Platform::Release(SFirewallRule * rule) noexcept
{
    ReleaseInterface(Interface<INetFwRule>(rule));
}

FirewallResult Platform::PutRuleText(SFirewallRule & rule, RuleText property, SFirewallText * text) noexcept
{
    return static_cast<FirewallResult>(PutText(*Interface<INetFwRule>(&rule), property, reinterpret_cast<BSTR>(text)));
}

FirewallResult Platform::PutRuleNumber(SFirewallRule & rule, RuleNumber property, int number) noexcept
{
    return static_cast<FirewallResult>(PutNumber(*Interface<INetFwRule>(&rule), property, number));
}

FirewallResult Platform::AddFirewallRule(SFirewallRules & rules, SFirewallRule & rule) noexcept
{
    return static_cast<FirewallResult>(Interface<INetFwRules>(&rules)->Add(Interface<INetFwRule>(&rule)));
}
