#include "Notification.h"

#include <algorithm>

#include "Translate.h"
#include "TrapText.h"

namespace Service {

namespace {

constexpr Arc kSysUpTime[] = {1, 3, 6, 1, 2, 1, 1, 3, 0};
constexpr Arc kSnmpTrapOid[] = {1, 3, 6, 1, 6, 3, 1, 1, 4, 1, 0};
constexpr Arc kSnmpTrapEnterprise[] = {1, 3, 6, 1, 6, 3, 1, 1, 4, 3, 0};
constexpr Arc kSnmpTraps[] = {1, 3, 6, 1, 6, 3, 1, 1, 5};
constexpr Arc kZeroDotZero[] = {0, 0};
constexpr std::int32_t kEnterpriseSpecific = SNMP_GENERICTRAP_ENTERSPECIFIC;

/// Of the AgentX protocol (RFC 2741, section 6.1).
constexpr int kAgentXNotify = 12;
/// Net-SNMP would send a notification again that isn't answered in time, and it would arrive twice. A master that
/// doesn't answer loses the session long before this.
constexpr long kAnswerWithinSeconds = 3600;

ArcView EnterpriseOf(STrap const & trap)
{
    return trap.enterprise.empty() ? ArcView(kZeroDotZero) : ArcView(trap.enterprise);
}

/// Whether it is one of the standard traps, whose names don't tell the enterprise.
bool IsGeneric(STrap const & trap)
{
    return trap.generic >= 0 && trap.generic < kEnterpriseSpecific;
}

/// RFC 3584, section 3.1: generic traps have names of their own, others are enterprise.0.specific.
CArcs TrapOid(STrap const & trap)
{
    if (IsGeneric(trap)) {
        CArcs name(std::begin(kSnmpTraps), std::end(kSnmpTraps));
        name.push_back(static_cast<Arc>(trap.generic) + 1);
        return name;
    }
    const ArcView enterprise = EnterpriseOf(trap);
    CArcs name(enterprise.begin(), enterprise.end());
    name.resize(std::min(name.size(), kMaxArcs - 2));
    name.push_back(0);
    name.push_back(static_cast<Arc>(trap.specific));
    return name;
}

} // namespace

CNotification::CNotification(STrap & trap)
{
    AddTicks(kSysUpTime, trap.timeStamp);
    AddOid(kSnmpTrapOid, TrapOid(trap));
    CBindings & bindings = trap.variables;
    for (std::uint32_t i = 0; i < bindings.Count(); ++i) {
        const ArcView name = bindings.Name(i);
        if (!name.empty()) Add(name, bindings.TakeValue(i));
    }
    if (IsGeneric(trap)) AddOid(kSnmpTrapEnterprise, EnterpriseOf(trap));
}

netsnmp_variable_list * CNotification::Append(ArcView name)
{
    const std::vector<oid> wide(name.begin(), name.end());
    return snmp_varlist_add_variable(&m_first, wide.data(), wide.size(), Wire::Null, nullptr, 0);
}

void CNotification::AddTicks(ArcView name, std::uint32_t ticks)
{
    const u_long value = ticks;
    if (netsnmp_variable_list * variable = Append(name))
        snmp_set_var_typed_value(variable, Wire::TimeTicks, &value, sizeof value);
}

void CNotification::AddOid(ArcView name, ArcView value)
{
    const std::vector<oid> wide(value.begin(), value.end());
    if (netsnmp_variable_list * variable = Append(name))
        snmp_set_var_typed_value(variable, Wire::ObjectId, wide.data(), wide.size() * sizeof(oid));
}

void CNotification::Add(ArcView name, CValue const & value)
{
    netsnmp_variable_list * variable = Append(name);
    // A value that isn't usable goes as Null, so that the others keep their places.
    if (variable != nullptr && value.IsUsable()) PutValue(*variable, value);
}

std::string CNotification::Text() const
{
    netsnmp_variable_list const * const name = m_first == nullptr ? nullptr : m_first->next_variable;
    if (name == nullptr || name->type != Wire::ObjectId) return "without a name"; // there was no memory for it
    return TrapText(name->val.objid, name->val_len / sizeof(oid));
}

void CNotification::SendToSinks() const
{
    send_v2trap(m_first);
}

int CNotification::SendToMaster(netsnmp_session * master, snmp_callback answered, void * argument) const
{
    netsnmp_pdu * pdu = snmp_pdu_create(kAgentXNotify);
    if (pdu == nullptr) return 0;
    pdu->version = master->version;
    pdu->sessid = master->sessid;
    pdu->flags |= UCD_MSG_FLAG_PDU_TIMEOUT;
    pdu->time = kAnswerWithinSeconds;
    pdu->variables = snmp_clone_varbind(m_first);
    const int number = snmp_async_send(master, pdu, answered, argument);
    if (number == 0) snmp_free_pdu(pdu);
    return number;
}

} // namespace Service
