#ifndef SNMP_MIB_SNMP_MIB_TREE_H
#define SNMP_MIB_SNMP_MIB_TREE_H

#include "Snmp/Mib/MibTree.h"

/// The tree as the base class of its agent:
///
///     class CSnmpAgent : public CSnmpMibTree<CSnmpAgent> { ... };
///
/// All operations are those of CMibTree; this adds the way from the tree to the agent, a plain downcast at the
/// time of a call, so nothing is virtual. TAgent has a member m_indexAppendMode (an integer) that this class
/// may read: public, or by friendship with CSnmpMibTree<TAgent>.
template <class TAgent>
class CSnmpMibTree : public CMibTree {
public:
    /// The callback for a member function of TAgent or of a class derived from it, plain or extended form:
    ///     MibInsertVarOid(oid, name, ASN_INTEGER, Callback<&CMyAgent::fGetSpeed>(), {}, {}, {}, 0, nullptr);
    /// `{}` is an empty callback. See MakeMibCallback.
    template <auto Member, class TOwner = typename MibCallbackDetail::TOwnerOf<decltype(Member)>::Type>
    static MibCallback Callback() noexcept
    {
        return MakeMibCallback<TAgent, Member, TOwner>();
    }

protected:
    CSnmpMibTree() noexcept : CMibTree(kAccess) {}
    ~CSnmpMibTree() = default;

private:
    static TAgent & AgentOf(CMibTree & tree) noexcept
    {
        return static_cast<TAgent &>(static_cast<CSnmpMibTree &>(tree));
    }
    static void * Agent(CMibTree & tree) noexcept { return &AgentOf(tree); }
    static bool AppendsIndexes(CMibTree & tree) noexcept { return AgentOf(tree).m_indexAppendMode != 0; }

    static constexpr SAgentAccess kAccess{&Agent, &AppendsIndexes};
};

#endif
