#include "RequestJob.h"

namespace Service {

void CRequestJob::Take(netsnmp_agent_request_info & info, netsnmp_request_info * requests)
{
    m_session = info.asp;
    m_requests.clear();
    for (netsnmp_request_info * request = requests; request != nullptr; request = request->next)
        if (request->processed == 0) m_requests.push_back(request);
}

void CRequestJob::Delegate()
{
    for (netsnmp_request_info * request : m_requests)
        request->delegated = REQUEST_IS_DELEGATED;
    // Net-SNMP itself doesn't keep a request that is delegated a second time while another one with the same
    // transaction number waits, as a master's repeated request has.
    netsnmp_check_for_delegated_and_add(m_session);
}

int CRequestJob::StatusFor(netsnmp_pdu const & pdu, std::uint32_t status) noexcept
{
    // Net-SNMP translates the answers to SET itself.
    const bool translate = pdu.version == SNMP_VERSION_1 && pdu.command != SNMP_MSG_SET;
    return translate && status > SNMP_ERR_GENERR ? SNMP_ERR_GENERR : static_cast<int>(status);
}

void CRequestJob::SetError(netsnmp_request_info & request, std::uint32_t status) const noexcept
{
    // An exception among the values would take the place of the error in version 1.
    if (IsVersion1() && Pdu().command == SNMP_MSG_GET) request.requestvb->type = Wire::Null;
    netsnmp_request_set_error(&request, StatusFor(Pdu(), status));
}

void CRequestJob::Refuse(int status)
{
    for (netsnmp_request_info * request : m_requests)
        SetError(*request, static_cast<std::uint32_t>(status));
    Release();
}

void CRequestJob::Release() noexcept
{
    for (netsnmp_request_info * request : m_requests)
        request->delegated = REQUEST_IS_NOT_DELEGATED;
}

} // namespace Service
