// The functions and interfaces of the system that the platform's half asks, noted. What the agent has no business to
// call fails the test.

#include <gtest/gtest.h>

#include "Platform/Native/SockAddr.h" // the system's interface without its second names for ours

#include <netfw.h>
#include <objbase.h>
#include <oleauto.h>

#include "Tests/Agent/Firewall/Recorder.h"

namespace {

using Recorder::Note;
using Recorder::State;

HRESULT Failure()
{
    return static_cast<HRESULT>(State().failure);
}

HRESULT Answer(std::string call)
{
    return Note(std::move(call)) ? Failure() : S_OK;
}

std::string Narrow(BSTR text)
{
    std::string narrow;
    for (UINT i = 0; i < ::SysStringLen(text); ++i)
        narrow += static_cast<char>(text[i]);
    return narrow;
}

HRESULT Unexpected(char const * method)
{
    ADD_FAILURE() << method << " is called";
    return E_NOTIMPL;
}
#define NEVER_CALLED(method, ...)                                                                                      \
    HRESULT STDMETHODCALLTYPE method(__VA_ARGS__) override                                                             \
    {                                                                                                                  \
        return Unexpected(#method);                                                                                    \
    }

/// What all the interfaces share: the count of references, whose sum over all objects of a kind the recorder keeps.
template <class TInterface>
class TObject : public TInterface {
public:
    TObject(std::string name, int & held) : m_name(std::move(name)), m_held(held) { ++m_held; }
    virtual ~TObject() = default;

    ULONG STDMETHODCALLTYPE AddRef() override
    {
        ++m_held;
        return ++m_references;
    }
    ULONG STDMETHODCALLTYPE Release() override
    {
        Note("release " + m_name);
        --m_held;
        ULONG const left = --m_references;
        if (left == 0) delete this;
        return left;
    }
    NEVER_CALLED(QueryInterface, REFIID, void **)
    NEVER_CALLED(GetTypeInfoCount, UINT *)
    NEVER_CALLED(GetTypeInfo, UINT, LCID, ITypeInfo **)
    NEVER_CALLED(GetIDsOfNames, REFIID, LPOLESTR *, UINT, LCID, DISPID *)
    NEVER_CALLED(Invoke, DISPID, REFIID, LCID, WORD, DISPPARAMS *, VARIANT *, EXCEPINFO *, UINT *)

protected:
    std::string const m_name;

private:
    int & m_held;
    ULONG m_references = 1;
};

class CRule : public TObject<INetFwRule> {
public:
    explicit CRule(int number) : TObject("rule " + std::to_string(number), State().ruleObjects) {}
    std::string const & Name() const { return m_name; }

    HRESULT STDMETHODCALLTYPE put_Name(BSTR text) override { return Put("Name", Narrow(text)); }
    HRESULT STDMETHODCALLTYPE put_Description(BSTR text) override { return Put("Description", Narrow(text)); }
    HRESULT STDMETHODCALLTYPE put_ApplicationName(BSTR text) override { return Put("ApplicationName", Narrow(text)); }
    HRESULT STDMETHODCALLTYPE put_ServiceName(BSTR text) override { return Put("ServiceName", Narrow(text)); }
    HRESULT STDMETHODCALLTYPE put_LocalPorts(BSTR text) override { return Put("LocalPorts", Narrow(text)); }
    HRESULT STDMETHODCALLTYPE put_RemotePorts(BSTR text) override { return Put("RemotePorts", Narrow(text)); }
    HRESULT STDMETHODCALLTYPE put_Grouping(BSTR text) override { return Put("Grouping", Narrow(text)); }
    HRESULT STDMETHODCALLTYPE put_Protocol(LONG number) override { return Put("Protocol", std::to_string(number)); }
    HRESULT STDMETHODCALLTYPE put_Direction(NET_FW_RULE_DIRECTION number) override
    {
        return Put("Direction", std::to_string(number));
    }
    HRESULT STDMETHODCALLTYPE put_Action(NET_FW_ACTION number) override
    {
        return Put("Action", std::to_string(number));
    }
    HRESULT STDMETHODCALLTYPE put_Enabled(VARIANT_BOOL enabled) override
    {
        return Put("Enabled", enabled == VARIANT_TRUE ? "true" : "not " + std::to_string(enabled));
    }

    NEVER_CALLED(get_Name, BSTR *)
    NEVER_CALLED(get_Description, BSTR *)
    NEVER_CALLED(get_ApplicationName, BSTR *)
    NEVER_CALLED(get_ServiceName, BSTR *)
    NEVER_CALLED(get_Protocol, LONG *)
    NEVER_CALLED(get_LocalPorts, BSTR *)
    NEVER_CALLED(get_RemotePorts, BSTR *)
    NEVER_CALLED(get_LocalAddresses, BSTR *)
    NEVER_CALLED(put_LocalAddresses, BSTR)
    NEVER_CALLED(get_RemoteAddresses, BSTR *)
    NEVER_CALLED(put_RemoteAddresses, BSTR)
    NEVER_CALLED(get_IcmpTypesAndCodes, BSTR *)
    NEVER_CALLED(put_IcmpTypesAndCodes, BSTR)
    NEVER_CALLED(get_Direction, NET_FW_RULE_DIRECTION *)
    NEVER_CALLED(get_Interfaces, VARIANT *)
    NEVER_CALLED(put_Interfaces, VARIANT)
    NEVER_CALLED(get_InterfaceTypes, BSTR *)
    NEVER_CALLED(put_InterfaceTypes, BSTR)
    NEVER_CALLED(get_Enabled, VARIANT_BOOL *)
    NEVER_CALLED(get_Grouping, BSTR *)
    NEVER_CALLED(get_Profiles, LONG *)
    NEVER_CALLED(put_Profiles, LONG)
    NEVER_CALLED(get_EdgeTraversal, VARIANT_BOOL *)
    NEVER_CALLED(put_EdgeTraversal, VARIANT_BOOL)
    NEVER_CALLED(get_Action, NET_FW_ACTION *)

private:
    HRESULT Put(char const * property, std::string const & value)
    {
        return Answer(m_name + ".put_" + property + " " + value);
    }
};

class CRules : public TObject<INetFwRules> {
public:
    CRules() : TObject("rules", State().rules) {}

    HRESULT STDMETHODCALLTYPE Add(INetFwRule * rule) override
    {
        return Answer("rules.Add " + static_cast<CRule *>(rule)->Name());
    }

    NEVER_CALLED(get_Count, LONG *)
    NEVER_CALLED(Remove, BSTR)
    NEVER_CALLED(Item, BSTR, INetFwRule **)
    NEVER_CALLED(get__NewEnum, IUnknown **)
};

template <class TMade, class TInterface>
HRESULT HandOut(std::string call, TInterface ** out)
{
    if (Note(std::move(call))) return Failure();
    *out = new TMade;
    return S_OK;
}

class CRestriction : public TObject<INetFwServiceRestriction> {
public:
    CRestriction() : TObject("restriction", State().restrictions) {}

    HRESULT STDMETHODCALLTYPE get_Rules(INetFwRules ** rules) override
    {
        return HandOut<CRules>("restriction.get_Rules", rules);
    }

    NEVER_CALLED(RestrictService, BSTR, BSTR, VARIANT_BOOL, VARIANT_BOOL)
    NEVER_CALLED(ServiceRestricted, BSTR, BSTR, VARIANT_BOOL *)
};

class CPolicy : public TObject<INetFwPolicy2> {
public:
    CPolicy() : TObject("policy", State().policies) {}

    HRESULT STDMETHODCALLTYPE get_ServiceRestriction(INetFwServiceRestriction ** restriction) override
    {
        return HandOut<CRestriction>("policy.get_ServiceRestriction", restriction);
    }

    NEVER_CALLED(get_CurrentProfileTypes, LONG *)
    NEVER_CALLED(get_FirewallEnabled, NET_FW_PROFILE_TYPE2, VARIANT_BOOL *)
    NEVER_CALLED(put_FirewallEnabled, NET_FW_PROFILE_TYPE2, VARIANT_BOOL)
    NEVER_CALLED(get_ExcludedInterfaces, NET_FW_PROFILE_TYPE2, VARIANT *)
    NEVER_CALLED(put_ExcludedInterfaces, NET_FW_PROFILE_TYPE2, VARIANT)
    NEVER_CALLED(get_BlockAllInboundTraffic, NET_FW_PROFILE_TYPE2, VARIANT_BOOL *)
    NEVER_CALLED(put_BlockAllInboundTraffic, NET_FW_PROFILE_TYPE2, VARIANT_BOOL)
    NEVER_CALLED(get_NotificationsDisabled, NET_FW_PROFILE_TYPE2, VARIANT_BOOL *)
    NEVER_CALLED(put_NotificationsDisabled, NET_FW_PROFILE_TYPE2, VARIANT_BOOL)
    NEVER_CALLED(get_UnicastResponsesToMulticastBroadcastDisabled, NET_FW_PROFILE_TYPE2, VARIANT_BOOL *)
    NEVER_CALLED(put_UnicastResponsesToMulticastBroadcastDisabled, NET_FW_PROFILE_TYPE2, VARIANT_BOOL)
    NEVER_CALLED(get_Rules, INetFwRules **)
    NEVER_CALLED(EnableRuleGroup, LONG, BSTR, VARIANT_BOOL)
    NEVER_CALLED(IsRuleGroupEnabled, LONG, BSTR, VARIANT_BOOL *)
    NEVER_CALLED(RestoreLocalFirewallDefaults)
    NEVER_CALLED(get_DefaultInboundAction, NET_FW_PROFILE_TYPE2, NET_FW_ACTION *)
    NEVER_CALLED(put_DefaultInboundAction, NET_FW_PROFILE_TYPE2, NET_FW_ACTION)
    NEVER_CALLED(get_DefaultOutboundAction, NET_FW_PROFILE_TYPE2, NET_FW_ACTION *)
    NEVER_CALLED(put_DefaultOutboundAction, NET_FW_PROFILE_TYPE2, NET_FW_ACTION)
    NEVER_CALLED(get_IsRuleGroupCurrentlyEnabled, BSTR, VARIANT_BOOL *)
    NEVER_CALLED(get_LocalPolicyModifyState, NET_FW_MODIFY_STATE *)
};

HRESULT WINAPI EnterNoted(LPVOID reserved, DWORD mode)
{
    EXPECT_EQ(nullptr, reserved);
    EXPECT_EQ(static_cast<DWORD>(COINIT_APARTMENTTHREADED), mode);
    if (Note("CoInitializeEx")) return static_cast<HRESULT>(State().failure);
    HRESULT const result = static_cast<HRESULT>(State().enterResult);
    if (SUCCEEDED(result)) ++State().entered;
    return result;
}

void WINAPI LeaveNoted()
{
    Note("CoUninitialize");
    --State().entered;
}

HRESULT WINAPI CreateNoted(REFCLSID classId, LPUNKNOWN outer, DWORD context, REFIID interfaceId, LPVOID * out)
{
    EXPECT_EQ(nullptr, outer);
    EXPECT_EQ(static_cast<DWORD>(CLSCTX_INPROC_SERVER), context);
    *out = nullptr;
    if (classId == __uuidof(NetFwPolicy2)) {
        EXPECT_TRUE(interfaceId == __uuidof(INetFwPolicy2));
        if (Note("create policy")) return Failure();
        *out = static_cast<INetFwPolicy2 *>(new CPolicy);
        return S_OK;
    }
    EXPECT_TRUE(classId == __uuidof(NetFwRule));
    EXPECT_TRUE(interfaceId == __uuidof(INetFwRule));
    int const number = State().rulesMade + 1;
    if (Note("create rule " + std::to_string(number))) return Failure();
    State().rulesMade = number;
    *out = static_cast<INetFwRule *>(new CRule(number));
    return S_OK;
}

/// A function of the system that the import library would have brought.
template <class TFunction>
TFunction SystemFunction(char const * name)
{
    HMODULE const module = ::LoadLibraryA("oleaut32.dll");
    return reinterpret_cast<TFunction>(reinterpret_cast<void *>(::GetProcAddress(module, name)));
}

BSTR WINAPI MakeTextNoted(OLECHAR const * text)
{
    static auto const make = SystemFunction<BSTR(WINAPI *)(OLECHAR const *)>("SysAllocString");
    BSTR const made = make(text);
    ++State().texts;
    State().textsMade.push_back(Narrow(made));
    return made;
}

void WINAPI FreeTextNoted(BSTR text)
{
    static auto const free = SystemFunction<void(WINAPI *)(BSTR)>("SysFreeString");
    Note("free " + Narrow(text));
    --State().texts;
    free(text);
}

} // namespace

// The platform's half calls the system through these pointers, which the import libraries would have brought. Only
// that half uses the five functions in this program.
extern "C" {
decltype(&EnterNoted) __imp_CoInitializeEx = &EnterNoted;
decltype(&LeaveNoted) __imp_CoUninitialize = &LeaveNoted;
decltype(&CreateNoted) __imp_CoCreateInstance = &CreateNoted;
decltype(&MakeTextNoted) __imp_SysAllocString = &MakeTextNoted;
decltype(&FreeTextNoted) __imp_SysFreeString = &FreeTextNoted;
}
