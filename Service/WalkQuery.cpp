#include "WalkQuery.h"

#include <algorithm>

namespace Service {

std::size_t CWalkQuery::AddColumn(ArcView start, bool inclusive, ArcView root, ArcView end, std::size_t wanted)
{
    SColumn column;
    column.root = root;
    column.end.assign(end.begin(), end.end());
    column.wanted = wanted;
    const bool inside = IsInside(start, root);
    const bool before = !inside && CompareArcs(start, root) < 0;
    if (before) start = root;
    column.nameLength = start.size();
    column.nameAt = Keep(start);
    // The root of a region is a node of the tree and never an object.
    column.inclusive = inclusive && inside && start.size() > root.size();
    column.ended = !inside && !before;
    m_columns.push_back(std::move(column));
    return m_columns.size() - 1;
}

void CWalkQuery::Run(SEntryPoints const & extension) noexcept
try {
    for (std::size_t i = 0; i < m_columns.size(); ++i)
        if (m_columns[i].inclusive && m_columns[i].IsOpen() && !IsDropped()) AskInclusive(extension, i);
    while (!IsDropped() && (m_canGoOn || CollectOpen()) && AskOnce(extension)) {
    }
} catch (...) {
    for (SColumn & column : m_columns) {
        if (column.IsOpen()) column.status = SNMP_ERRORSTATUS_GENERR;
        column.ended = true;
    }
}

void CWalkQuery::Renew() noexcept
{
    CQuery::Renew();
    m_arcs.clear();
    m_columns.clear();
    m_results.clear();
    m_asked.clear();
    m_oneByOne = false;
    m_canGoOn = false;
}

void CWalkQuery::ForgetResults()
{
    m_results.clear();
    // Only the names from which the columns go on are still needed.
    CArcs kept;
    for (SColumn & column : m_columns) {
        const ArcView name = View(column.nameAt, column.nameLength);
        column.nameAt = kept.size();
        kept.insert(kept.end(), name.begin(), name.end());
    }
    m_arcs.swap(kept);
}

bool CWalkQuery::WantsMore() const noexcept
{
    return std::any_of(m_columns.begin(), m_columns.end(), [](SColumn const & column) { return column.IsOpen(); });
}

std::size_t CWalkQuery::Keep(ArcView name)
{
    const std::size_t at = m_arcs.size();
    m_arcs.insert(m_arcs.end(), name.begin(), name.end());
    return at;
}

bool CWalkQuery::CollectOpen()
{
    m_asked.clear();
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        if (m_columns[i].IsOpen()) m_asked.push_back(i);
        if (m_oneByOne && !m_asked.empty()) break;
    }
    return !m_asked.empty();
}

bool CWalkQuery::AskOnce(SEntryPoints const & extension)
{
    if (!m_canGoOn && !FillBindings()) return Fail(0, SNMP_ERRORSTATUS_GENERR);
    m_canGoOn = true;
    return TakeVerdict(Ask(extension, SNMP_PDU_GETNEXT, m_bindings));
}

bool CWalkQuery::FillBindings()
{
    if (!m_bindings.Prepare(static_cast<std::uint32_t>(m_asked.size()))) return false;
    for (const std::size_t index : m_asked)
        if (!m_bindings.Add(View(m_columns[index].nameAt, m_columns[index].nameLength))) return false;
    return true;
}

bool CWalkQuery::TakeVerdict(SVerdict verdict)
{
    const auto count = static_cast<std::uint32_t>(m_asked.size());
    if (verdict.status == SNMP_ERRORSTATUS_NOERROR) {
        for (std::uint32_t i = 0; i < count; ++i)
            TakeAnswer(i);
        return true;
    }
    m_canGoOn = false;
    if (verdict.index == 0 && count == 1) verdict.index = 1;
    if (verdict.status != SNMP_ERRORSTATUS_NOSUCHNAME)
        return Fail(verdict.index == 0 ? 0 : verdict.index - 1, verdict.status);
    if (verdict.index == 0)
        m_oneByOne = true;
    else // how version 1 says that nothing follows; the rest is asked again
        m_columns[m_asked[verdict.index - 1]].ended = true;
    return true;
}

void CWalkQuery::TakeAnswer(std::uint32_t position)
{
    const std::size_t index = m_asked[position];
    SColumn & column = m_columns[index];
    const ArcView name = m_bindings.Name(position);
    if (!IsNext(column, name)) {
        column.ended = true;
        m_canGoOn = false;
        return;
    }
    column.nameAt = Keep(name);
    column.nameLength = name.size();
    CValue value = m_bindings.TakeValue(position);
    // An object without a value isn't shown, nor is one whose value nobody could read.
    if (!value.IsUsable()) return;
    if (--column.wanted == 0) m_canGoOn = false;
    m_results.push_back({index, column.nameAt, column.nameLength, std::move(value)});
}

void CWalkQuery::AskInclusive(SEntryPoints const & extension, std::size_t index)
{
    SColumn & column = m_columns[index];
    column.inclusive = false;
    m_canGoOn = false;
    if (!m_bindings.Prepare(1) || !m_bindings.Add(View(column.nameAt, column.nameLength))) return;
    if (Ask(extension, SNMP_PDU_GET, m_bindings).status != SNMP_ERRORSTATUS_NOERROR) return;
    CValue value = m_bindings.TakeValue(0);
    if (!value.IsUsable()) return;
    --column.wanted;
    m_results.push_back({index, column.nameAt, column.nameLength, std::move(value)});
}

bool CWalkQuery::IsNext(SColumn const & column, ArcView name) const noexcept
{
    const ArcView asked = View(column.nameAt, column.nameLength);
    const std::size_t common = CommonArcs(name, asked);
    // What was asked for lies in the subtree, so one that shares less than the root with it doesn't.
    if (common < column.root.size() || common == name.size()) return false;
    // A name that isn't behind the one asked for would let a manager walk in circles.
    const bool isBehind = common == asked.size() || name[common] > asked[common];
    return isBehind && (column.end.empty() || CompareArcs(name, column.end) < 0);
}

bool CWalkQuery::Fail(std::uint32_t position, std::uint32_t status)
{
    m_columns[m_asked[position]].status = status;
    for (SColumn & column : m_columns)
        column.ended = true;
    return false;
}

} // namespace Service
