#include "SetJob.h"

#include "Translate.h"

namespace Service {

CSetJob::CSetJob(netsnmp_agent_request_info & info, netsnmp_request_info * requests) : CRequestJob(info, requests)
{
    m_complete = m_query.Prepare(static_cast<std::uint32_t>(Requests().size()));
    CArcs name;
    for (netsnmp_request_info * request : Requests()) {
        AsnAny value;
        m_complete = m_complete && ToArcs(request->requestvb->name, request->requestvb->name_length, name) &&
                     ToAny(*request->requestvb, value) && m_query.Add(name, value);
    }
}

bool CSetJob::Finish()
{
    const SVerdict verdict = m_query.Verdict();
    if (verdict.status != SNMP_ERR_NOERROR)
        SetError(*Requests()[verdict.index == 0 ? 0 : verdict.index - 1], verdict.status);
    Release();
    return true;
}

int UnsettableStatus(netsnmp_request_info const & request)
{
    CArcs name;
    if (!ToArcs(request.requestvb->name, request.requestvb->name_length, name)) return SNMP_ERR_NOCREATION;
    AsnAny value;
    if (!ToAny(*request.requestvb, value)) return SNMP_ERR_WRONGTYPE;
    const CValue owner(value);
    return SNMP_ERR_NOERROR;
}

} // namespace Service
