#include "SetQuery.h"

namespace Service {

bool CSetQuery::Add(ArcView name, AsnAny const & value) noexcept
{
    CValue owner(value);
    if (!m_bindings.Add(name)) return false;
    m_bindings.SetLastValue(owner.Release());
    return true;
}

void CSetQuery::Run(SEntryPoints const & extension) noexcept
{
    if (!IsDropped()) m_verdict = Ask(extension, SNMP_PDU_SET, m_bindings);
}

} // namespace Service
