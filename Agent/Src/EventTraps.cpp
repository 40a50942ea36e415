// From an event to the trap that tells of it.

#include "Agent/Src/MibRoot.h"
#include "Agent/Src/ORBA_MIB.h"
#include "Platform/Clock.h"
#include "Platform/SnmpUtil.h"
#include "Snmp/Host/Debug.h"

namespace SNMP {

namespace {

#define KXRA_TRAP_ENTERPRISE KXRA_MIB_ROOT ".2"

/// One of the eight variables of every trap: a text of the record, or the time of sending.
struct STrapVariable {
    char const * oid;
    std::string ORBA_EVENTINFO::*text; ///< null: the time
};

constexpr STrapVariable kServerName{KXRA_TRAP_ENTERPRISE ".1.1.0", &ORBA_EVENTINFO::ServerName};

constexpr STrapVariable kVariables[] = {
    kServerName,
    {KXRA_TRAP_ENTERPRISE ".1.2.0", nullptr},
    {KXRA_TRAP_ENTERPRISE ".1.3.0", &ORBA_EVENTINFO::Param1},
    {KXRA_TRAP_ENTERPRISE ".1.4.0", &ORBA_EVENTINFO::Param2},
    {KXRA_TRAP_ENTERPRISE ".1.5.0", &ORBA_EVENTINFO::Param3},
    {KXRA_TRAP_ENTERPRISE ".1.6.0", &ORBA_EVENTINFO::Param4},
    {KXRA_TRAP_ENTERPRISE ".1.7.0", &ORBA_EVENTINFO::Param5},
    {KXRA_TRAP_ENTERPRISE ".1.8.0", &ORBA_EVENTINFO::Param6},
};
constexpr std::uint32_t kVariableCount = std::size(kVariables);

/// Owns a list of bindings.
class CBindings {
public:
    CBindings() = default;
    CBindings(CBindings const &) = delete;
    CBindings & operator=(CBindings const &) = delete;
    ~CBindings()
    {
        if (m_list.list != nullptr && m_list.len != 0) SnmpUtilVarBindListFree(&m_list);
    }
    bool Grow(std::uint32_t count) { return GrowVarBindList(m_list, count) != 0; }
    RFC1157VarBind * At(std::uint32_t index)
    {
        RFC1157VarBind * const bindings = m_list.list;
        return bindings + index;
    }
    RFC1157VarBindList const * Get() const { return &m_list; }

private:
    RFC1157VarBindList m_list{};
};

std::string const & TextOf(STrapVariable const & variable, ORBA_EVENTINFO const & trap, std::string const & host)
{
    std::string const & text = trap.*variable.text;
    return variable.text == kServerName.text && text.empty() ? host : text;
}

} // namespace

void CKestrixRAIDAgent::QueueTrap(ORBA_EVENTINFO const & trap)
{
    if (CDebug::Enabled()) CDebug::Trace(1, "\nStart QueueTrap.");
    m_TrapQueue.push_back(trap);
    if (CDebug::Enabled()) CDebug::Trace(1, "\nEnd QueueTrap.");
}

void CKestrixRAIDAgent::SendTrap(ORBA_EVENTINFO const & trap)
{
    if (CDebug::Enabled()) CDebug::Trace(1, "\nStart SendTrap.");
    CBindings bindings;
    bindings.Grow(kVariableCount);
    for (std::uint32_t i = 0; i < kVariableCount; ++i) {
        // Without memory for the whole list a shorter one is tried; what has no place goes without.
        if (!bindings.Grow(i + 1)) continue;
        STrapVariable const & variable = kVariables[i];
        RFC1157VarBind * const binding = bindings.At(i);
        if (StrToOid(variable.oid, &binding->name) == 0) continue;
        if (variable.text == nullptr) {
            SetVarBindNumber(binding, static_cast<std::uint32_t>(Platform::UnixTimeMs() / 1000), ASN_INTEGER);
        } else {
            SetVarBindFromText(binding, TextOf(variable, trap, m_computerName).c_str(), ASN_OCTETSTRING);
        }
    }
    CreateTrap(KXRA_TRAP_ENTERPRISE, static_cast<std::uint32_t>(trap.TrapId), bindings.Get());
    if (CDebug::Enabled()) CDebug::Trace(1, "\nEnd SendTrap.");
}

} // namespace SNMP
