#include "GetJob.h"

#include "Translate.h"

namespace Service {

CGetJob::CGetJob(netsnmp_agent_request_info & info, netsnmp_request_info * requests)
    : CRequestJob(info, requests), m_query(/*stopAtMissing=*/IsVersion1())
{
    CArcs name;
    for (netsnmp_request_info * request : Requests()) {
        if (ToArcs(request->requestvb->name, request->requestvb->name_length, name))
            m_query.Add(name);
        else
            m_query.AddMissing();
    }
}

bool CGetJob::Finish()
{
    for (std::size_t i = 0; i < Requests().size(); ++i)
        Answer(*Requests()[i], i);
    Release();
    return true;
}

void CGetJob::Answer(netsnmp_request_info & request, std::size_t index)
{
    switch (m_query.Got(index)) {
    case EGot::Value:
        if (!PutValue(*request.requestvb, m_query.Value(index))) SetError(request, SNMP_ERR_RESOURCEUNAVAILABLE);
        break;
    case EGot::Missing:
        if (IsVersion1())
            SetError(request, SNMP_ERR_NOSUCHNAME);
        else
            netsnmp_request_set_error(&request, SNMP_NOSUCHINSTANCE);
        break;
    case EGot::Error:
        SetError(request, m_query.Status(index));
        break;
    case EGot::Nothing: // another binding's error answers for all
        if (IsVersion1()) request.requestvb->type = Wire::Null;
        break;
    }
}

} // namespace Service
