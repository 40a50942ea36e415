#include "WalkJob.h"

#include <algorithm>

#include "Translate.h"

namespace Service {

CWalkJobPool::~CWalkJobPool()
{
    for (std::size_t i = 0; i < m_count; ++i)
        delete m_idle[i];
}

std::unique_ptr<CWalkJob, SJobDisposer> CWalkJobPool::Take()
{
    return std::unique_ptr<CWalkJob, SJobDisposer>(m_count != 0 ? m_idle[--m_count] : new CWalkJob(*this));
}

void CWalkJob::Dispose() noexcept
{
    if (m_pool.m_count == CWalkJobPool::kMaxIdle) {
        delete this;
        return;
    }
    Renew();
    m_query.Renew();
    m_pool.m_idle[m_pool.m_count++] = this;
}

void CWalkJob::Begin(netsnmp_agent_request_info & info, netsnmp_request_info * requests, ArcView root)
{
    Take(info, requests);
    m_outOfMemory = false;
    m_checksView = HasMixedView();
    for (netsnmp_request_info const * request : Requests())
        AddColumn(*request, root);
}

void CWalkJob::AddColumn(netsnmp_request_info const & request, ArcView root)
{
    ToStart(request.requestvb->name, request.requestvb->name_length, m_start);
    ToStart(request.range_end, request.range_end_len, m_end);
    // Mostly the range ends with the region.
    if (!IsInside(m_end, root)) m_end.clear();
    m_query.AddColumn(m_start, request.inclusive != 0, root, m_end, static_cast<std::size_t>(request.repeat) + 1);
}

bool CWalkJob::HasMixedView() const
{
    netsnmp_pdu & pdu = Pdu();
    if (pdu.command != SNMP_MSG_GETBULK || (pdu.flags & UCD_MSG_FLAG_ALWAYS_IN_VIEW) != 0 || Requests().empty())
        return false;
    netsnmp_subtree const & tree = *Requests().front()->subtree;
    return netsnmp_acm_check_subtree(&pdu, tree.name_a, tree.namelen) != VACM_SUCCESS;
}

bool CWalkJob::Finish()
{
    for (CWalkQuery::SResult const & result : m_query.Results())
        TakeResult(result);
    if (m_query.WantsMore() && !m_outOfMemory) {
        m_query.ForgetResults();
        return false;
    }
    for (std::size_t i = 0; i < Requests().size(); ++i) {
        netsnmp_request_info & request = *Requests()[i];
        PassNameOn(request);
        if (m_outOfMemory) SetError(request, SNMP_ERR_RESOURCEUNAVAILABLE);
        if (m_query.Status(i) != 0) SetError(request, m_query.Status(i));
    }
    Release();
    return true;
}

void CWalkJob::TakeResult(CWalkQuery::SResult const & result)
{
    netsnmp_request_info & request = *Requests()[result.column];
    netsnmp_variable_list & variable = *request.requestvb;
    if (!m_checksView) {
        m_outOfMemory = m_outOfMemory || !PutName(variable, m_query.Name(result));
    } else if (!PutVisible(variable, result)) {
        m_query.WantOneMore(result.column);
        return;
    }
    m_outOfMemory = m_outOfMemory || !PutValue(variable, result.value);
    request.inclusive = 0;
    if (request.repeat == 0) return;
    --request.repeat;
    request.requestvb = variable.next_variable;
    request.requestvb->type = Wire::Null;
}

bool CWalkJob::PutVisible(netsnmp_variable_list & variable, CWalkQuery::SResult const & result)
{
    oid before[kMaxArcs];
    const std::size_t length = std::min<std::size_t>(variable.name_length, kMaxArcs);
    std::copy(variable.name, variable.name + length, before);
    m_outOfMemory = m_outOfMemory || !PutName(variable, m_query.Name(result));
    if (in_a_view(variable.name, &variable.name_length, &Pdu(), result.value.Any().asnType) == VACM_SUCCESS)
        return true;
    m_outOfMemory = m_outOfMemory || snmp_set_var_objid(&variable, before, length) != 0;
    return false;
}

void CWalkJob::PassNameOn(netsnmp_request_info & request)
{
    // A variable that got its answer, and the first one of all, have a name.
    if (request.requestvb->name_length != 0) return;
    netsnmp_variable_list * last = request.requestvb_start;
    while (last != request.requestvb && last->next_variable != request.requestvb)
        last = last->next_variable;
    if (last != request.requestvb) snmp_set_var_objid(request.requestvb, last->name, last->name_length);
}

} // namespace Service
