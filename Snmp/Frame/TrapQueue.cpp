#include "Snmp/Frame/TrapQueue.h"

#include <utility>

#include "Platform/SnmpUtil.h"
#include "Snmp/Mib/Oid.h"

STrapRecord::STrapRecord(STrapRecord && other) noexcept
    : varBinds(other.varBinds), enterprise(other.enterprise), specificTrap(other.specificTrap)
{
    other.varBinds = {};
    other.enterprise = {};
}

STrapRecord::~STrapRecord()
{
    SnmpUtilOidFree(&enterprise);
    SnmpUtilVarBindListFree(&varBinds);
}

void CTrapQueue::Append(char const * enterpriseOidText, std::uint32_t specificTrap, RFC1157VarBindList const * bindings)
{
    const Platform::CCriticalLock lock(m_lock);
    STrapRecord record;
    StrToOid(enterpriseOidText, &record.enterprise);
    record.specificTrap = specificTrap;
    if (bindings != nullptr) SnmpUtilVarBindListCpy(&record.varBinds, bindings);
    m_records.push_back(std::move(record));
    m_count = m_records.size();
}

std::optional<STrapRecord> CTrapQueue::Take() noexcept
{
    if (m_count == 0) return std::nullopt;
    const Platform::CCriticalLock lock(m_lock);
    if (m_records.empty()) return std::nullopt;
    std::optional<STrapRecord> oldest(std::move(m_records.front()));
    m_records.pop_front();
    m_count = m_records.size();
    return oldest;
}

void CTrapQueue::AbandonLock() noexcept
{
    if (m_lock.IsHeld()) m_lock.Leave();
}
