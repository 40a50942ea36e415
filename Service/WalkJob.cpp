#include "WalkJob.h"

#include "Translate.h"

namespace Service {

CWalkJob::CWalkJob(netsnmp_agent_request_info & info, netsnmp_request_info * requests)
    : CRequestJob(info, requests), m_checksView(HasMixedView())
{
    CArcs start;
    CArcs root;
    CArcs end;
    for (netsnmp_request_info * request : Requests()) {
        netsnmp_subtree const & tree = *request->subtree;
        ToStart(request->requestvb->name, request->requestvb->name_length, start);
        ToArcs(tree.name_a, tree.namelen, root);
        ToStart(request->range_end, request->range_end_len, end);
        m_query.AddColumn(start, request->inclusive != 0, root, end, static_cast<std::size_t>(request->repeat) + 1);
    }
}

bool CWalkJob::HasMixedView() const
{
    netsnmp_pdu & pdu = Pdu();
    if (pdu.command != SNMP_MSG_GETBULK || (pdu.flags & UCD_MSG_FLAG_ALWAYS_IN_VIEW) != 0 || Requests().empty())
        return false;
    netsnmp_subtree const & tree = *Requests().front()->subtree;
    return netsnmp_acm_check_subtree(&pdu, tree.name_a, tree.namelen) != VACM_SUCCESS;
}

bool CWalkJob::IsVisible(netsnmp_variable_list & variable) const
{
    return !m_checksView || in_a_view(variable.name, &variable.name_length, &Pdu(), variable.type) == VACM_SUCCESS;
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
        if (m_outOfMemory) SetError(*Requests()[i], SNMP_ERR_RESOURCEUNAVAILABLE);
        if (m_query.Status(i) != 0) SetError(*Requests()[i], m_query.Status(i));
    }
    Release();
    return true;
}

void CWalkJob::TakeResult(CWalkQuery::SResult const & result)
{
    netsnmp_request_info & request = *Requests()[result.column];
    netsnmp_variable_list & variable = *request.requestvb;
    if (m_checksView) {
        // Looked at under its own name, which it loses again if the manager may not see it.
        CArcs before;
        ToArcs(variable.name, variable.name_length, before);
        m_outOfMemory = m_outOfMemory || !PutName(variable, m_query.Name(result));
        variable.type = result.value.Any().asnType;
        const bool visible = IsVisible(variable);
        variable.type = Wire::Null;
        if (!visible) {
            m_outOfMemory = m_outOfMemory || !PutName(variable, before);
            m_query.WantOneMore(result.column);
            return;
        }
    } else {
        m_outOfMemory = m_outOfMemory || !PutName(variable, m_query.Name(result));
    }
    m_outOfMemory = m_outOfMemory || !PutValue(variable, result.value);
    request.inclusive = 0;
    if (request.repeat > 0) HandOn(request);
}

void CWalkJob::HandOn(netsnmp_request_info & request)
{
    netsnmp_variable_list const & got = *request.requestvb;
    netsnmp_variable_list * next = got.next_variable;
    --request.repeat;
    snmp_set_var_objid(next, got.name, got.name_length);
    next->type = Wire::Null;
    request.requestvb = next;
}

} // namespace Service
