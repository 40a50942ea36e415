#include "GetQuery.h"

namespace Service {

void CGetQuery::Add(ArcView name)
{
    SEntry entry;
    entry.nameAt = m_arcs.size();
    entry.nameLength = name.size();
    m_arcs.insert(m_arcs.end(), name.begin(), name.end());
    m_entries.push_back(std::move(entry));
}

void CGetQuery::AddMissing()
{
    SEntry entry;
    entry.got = EGot::Missing;
    m_entries.push_back(std::move(entry));
}

void CGetQuery::Run(SEntryPoints const & extension) noexcept
try {
    while (!IsDropped() && CollectOpen() && AskOnce(extension)) {
    }
} catch (...) {
    for (SEntry & entry : m_entries)
        if (entry.got == EGot::Nothing) entry.got = EGot::Error, entry.status = SNMP_ERRORSTATUS_RESOURCEUNAVAILABLE;
}

bool CGetQuery::CollectOpen()
{
    m_asked.clear();
    for (std::size_t i = 0; i < m_entries.size(); ++i) {
        if (m_entries[i].got == EGot::Nothing) m_asked.push_back(i);
        if (m_oneByOne && !m_asked.empty()) break;
    }
    return !m_asked.empty();
}

bool CGetQuery::AskOnce(SEntryPoints const & extension)
{
    if (!m_bindings.Prepare(static_cast<std::uint32_t>(m_asked.size()))) return Fail(0, SNMP_ERRORSTATUS_GENERR);
    for (const std::size_t index : m_asked) {
        SEntry const & entry = m_entries[index];
        if (!m_bindings.Add(ArcView(m_arcs).subspan(entry.nameAt, entry.nameLength)))
            return Fail(0, SNMP_ERRORSTATUS_GENERR);
    }
    return TakeVerdict(Ask(extension, SNMP_PDU_GET, m_bindings));
}

bool CGetQuery::TakeVerdict(SVerdict verdict)
{
    const auto count = static_cast<std::uint32_t>(m_asked.size());
    if (verdict.status == SNMP_ERRORSTATUS_NOERROR) {
        for (std::uint32_t i = 0; i < count; ++i)
            TakeAnswer(i, /*final=*/true);
        return true;
    }
    if (verdict.index == 0 && count == 1) verdict.index = 1;
    if (verdict.status != SNMP_ERRORSTATUS_NOSUCHNAME)
        return Fail(verdict.index == 0 ? 0 : verdict.index - 1, verdict.status);
    if (verdict.index == 0) {
        m_oneByOne = true;
        return true;
    }
    const std::uint32_t position = verdict.index - 1;
    m_entries[m_asked[position]].got = EGot::Missing;
    if (m_stopAtMissing) return false;
    // What came before the unknown name has been answered; what has no value yet is asked again with the rest.
    for (std::uint32_t i = 0; i < position; ++i)
        TakeAnswer(i, /*final=*/false);
    return true;
}

void CGetQuery::TakeAnswer(std::uint32_t position, bool final)
{
    SEntry & entry = m_entries[m_asked[position]];
    CValue value = m_bindings.TakeValue(position);
    if (value.IsUsable()) {
        entry.got = EGot::Value;
        entry.value = std::move(value);
    } else if (final && value.IsNull()) {
        entry.got = EGot::Missing;
    } else if (!value.IsNull()) {
        entry.got = EGot::Error;
        entry.status = SNMP_ERRORSTATUS_GENERR;
    }
}

bool CGetQuery::Fail(std::uint32_t position, std::uint32_t status)
{
    SEntry & entry = m_entries[m_asked[position]];
    entry.got = EGot::Error;
    entry.status = status;
    return false;
}

} // namespace Service
