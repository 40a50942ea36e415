#ifndef TESTS_SNMP_MIB_MIB_FIXTURE_H
#define TESTS_SNMP_MIB_MIB_FIXTURE_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "Fake/Debug.h"
#include "Platform/SnmpUtil.h"
#include "Snmp/Mib/SnmpMibTree.h"

using TArcs = std::vector<std::uint32_t>;

/// The agent class of the tests: the tree and nothing else.
class CPlainAgent : public CSnmpMibTree<CPlainAgent> {
public:
    virtual ~CPlainAgent() = default;
    void SetGlobalCheckSet(MibCallback callback) { m_globalCheckSetFunc = callback; }

    int m_indexAppendMode = 0;
};

/// An agent whose callbacks write down their calls and do what the test tells them.
class CTestAgent : public CPlainAgent {
public:
    using TAction = std::function<std::uint32_t(MibEntry * entry, RFC1157VarBind * binding)>;

    std::uint32_t fGet(RFC1157VarBind * binding, std::uint8_t mode) { return Plain("Get", binding, mode); }
    std::uint32_t fSet(RFC1157VarBind * binding, std::uint8_t mode) { return Plain("Set", binding, mode); }
    std::uint32_t fGetSet(RFC1157VarBind * binding, std::uint8_t mode) { return Plain("GetSet", binding, mode); }
    std::uint32_t fCheckGet(RFC1157VarBind * binding, std::uint8_t mode) { return Plain("CheckGet", binding, mode); }
    std::uint32_t fEx(MibEntry * entry, RFC1157VarBind * binding, std::uint8_t mode)
    {
        return Run("Ex", entry, binding, mode);
    }
    std::uint32_t fGlobal(MibEntry * entry, RFC1157VarBind * binding, std::uint8_t mode)
    {
        return Run("Global", entry, binding, mode);
    }

    static MibCallback Get() { return Callback<&CTestAgent::fGet>(); }
    static MibCallback Set() { return Callback<&CTestAgent::fSet>(); }
    static MibCallback GetSet() { return Callback<&CTestAgent::fGetSet>(); }
    static MibCallback CheckGet() { return Callback<&CTestAgent::fCheckGet>(); }
    static MibCallback Ex() { return Callback<&CTestAgent::fEx>(); }
    static MibCallback Global() { return Callback<&CTestAgent::fGlobal>(); }

    /// Calls since the last one of this, such as "Get(0)".
    std::vector<std::string> TakeCalls() { return std::exchange(m_calls, {}); }
    /// What the callback of this name does; by default it returns 0.
    void On(std::string const & name, TAction action) { m_actions[name] = std::move(action); }
    void Fail(std::string const & name, std::uint32_t status)
    {
        On(name, [status](MibEntry *, RFC1157VarBind *) { return status; });
    }

private:
    std::uint32_t Plain(char const * name, RFC1157VarBind * binding, std::uint8_t mode)
    {
        return Run(name, nullptr, binding, mode);
    }
    std::uint32_t Run(std::string const & name, MibEntry * entry, RFC1157VarBind * binding, std::uint8_t mode)
    {
        m_calls.push_back(name + "(" + std::to_string(mode) + ")");
        const auto action = m_actions.find(name);
        return action != m_actions.end() ? action->second(entry, binding) : 0;
    }

    std::vector<std::string> m_calls;
    std::map<std::string, TAction> m_actions;
};

/// What a request sees of an object.
struct SReply {
    int found = 0;
    std::uint32_t status = 0;
    std::string name;
    std::string oid;
    std::string value; // VarBindValueToText
};

TArcs ArcsOf(AsnObjectIdentifier const & oid);
std::string TextOf(AsnObjectIdentifier const & oid);
std::string ValueText(RFC1157VarBind const & binding);
/// The stored bytes of an octet-string-like value.
std::string Octets(AsnAny const & value);

/// One MibGetVarbind for the OID (160 GET, 161 GETNEXT).
SReply Ask(CMibTree & tree, std::string const & oid, std::uint32_t requestType);
inline SReply Get(CMibTree & tree, std::string const & oid)
{
    return Ask(tree, oid, SNMP_PDU_GET);
}
inline SReply GetNext(CMibTree & tree, std::string const & oid)
{
    return Ask(tree, oid, SNMP_PDU_GETNEXT);
}
/// All OIDs of the tree, by GETNEXT.
std::vector<std::string> Walk(CMibTree & tree);

/// A binding with an OID and, with a type, a number.
void FillBinding(CVarBind & binding, std::string const & oid, std::uint32_t number = 0, std::uint32_t type = ASN_NULL);
/// What MibCheckSetVarbind or MibSetVarbind says to a SET of an integer.
SReply CheckSet(CMibTree & tree, std::string const & oid, std::uint32_t number = 1);
SReply Commit(CMibTree & tree, std::string const & oid, std::uint32_t number = 1);

/// The trace is recorded while one of these lives.
class CRecordedTrace {
public:
    CRecordedTrace();
    ~CRecordedTrace();
    CRecordedTrace(CRecordedTrace const &) = delete;
    CRecordedTrace & operator=(CRecordedTrace const &) = delete;

    /// The lines so far, those up to a level, as "<level>|<text>".
    std::vector<std::string> Lines(unsigned highestLevel = 5) const;
};

#endif
