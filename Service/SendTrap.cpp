#include "TrapForwarder.h"

#include "Translate.h"

namespace Service {

namespace {

constexpr Arc kSysUpTime[] = {1, 3, 6, 1, 2, 1, 1, 3, 0};
constexpr Arc kSnmpTrapOid[] = {1, 3, 6, 1, 6, 3, 1, 1, 4, 1, 0};
constexpr Arc kSnmpTrapEnterprise[] = {1, 3, 6, 1, 6, 3, 1, 1, 4, 3, 0};
constexpr Arc kSnmpTraps[] = {1, 3, 6, 1, 6, 3, 1, 1, 5};
constexpr Arc kZeroDotZero[] = {0, 0};
constexpr std::int32_t kEnterpriseSpecific = SNMP_GENERICTRAP_ENTERSPECIFIC;

/// A list of variables under construction, freed in the end.
class CVariables {
public:
    CVariables() = default;
    ~CVariables() { snmp_free_varbind(m_first); }
    CVariables(CVariables const &) = delete;
    CVariables & operator=(CVariables const &) = delete;

    void AddTicks(ArcView name, std::uint32_t ticks) { Put(name, Wire::TimeTicks, u_long{ticks}); }
    void AddOid(ArcView name, ArcView value)
    {
        const std::vector<oid> wide(value.begin(), value.end());
        if (netsnmp_variable_list * variable = Append(name))
            snmp_set_var_typed_value(variable, Wire::ObjectId, wide.data(), wide.size() * sizeof(oid));
    }
    /// A value that isn't usable goes as Null, so that the others keep their places.
    void Add(ArcView name, CValue const & value)
    {
        netsnmp_variable_list * variable = Append(name);
        if (variable != nullptr && value.IsUsable()) PutValue(*variable, value);
    }
    netsnmp_variable_list * First() const noexcept { return m_first; }

private:
    void Put(ArcView name, u_char type, u_long value)
    {
        if (netsnmp_variable_list * variable = Append(name))
            snmp_set_var_typed_value(variable, type, &value, sizeof value);
    }
    netsnmp_variable_list * Append(ArcView name)
    {
        const std::vector<oid> wide(name.begin(), name.end());
        return snmp_varlist_add_variable(&m_first, wide.data(), wide.size(), Wire::Null, nullptr, 0);
    }

    netsnmp_variable_list * m_first = nullptr;
};

ArcView EnterpriseOf(STrap const & trap)
{
    return trap.enterprise.empty() ? ArcView(kZeroDotZero) : ArcView(trap.enterprise);
}

/// RFC 3584, section 3.1: generic traps have names of their own, others are enterprise.0.specific.
CArcs TrapOid(STrap const & trap)
{
    if (trap.generic >= 0 && trap.generic < kEnterpriseSpecific) {
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

void SendTrap(STrap & trap)
{
    CVariables variables;
    variables.AddTicks(kSysUpTime, trap.timeStamp);
    variables.AddOid(kSnmpTrapOid, TrapOid(trap));
    CBindings & bindings = trap.variables;
    for (std::uint32_t i = 0; i < bindings.Count(); ++i) {
        const ArcView name = bindings.Name(i);
        if (!name.empty()) variables.Add(name, bindings.TakeValue(i));
    }
    variables.AddOid(kSnmpTrapEnterprise, EnterpriseOf(trap));
    send_v2trap(variables.First());
}

} // namespace Service
