#ifndef SERVICE_REQUEST_JOB_H
#define SERVICE_REQUEST_JOB_H

#include "NetSnmp.h"

#include <vector>

#include "Job.h"

namespace Service {

/// A manager's request, or the part of it that falls into one region, held back by Net-SNMP until Finish or
/// Refuse. What it points to lives as long as the request is delegated.
class CRequestJob : public CJob {
public:
    void Refuse(int status) override;

    /// The status as the request's version knows it: version 1 has 0 to 5 only.
    static int StatusFor(netsnmp_pdu const & pdu, std::uint32_t status) noexcept;
    /// Marks the requests as delegated and makes Net-SNMP keep them, whatever else it is working on.
    void Delegate();

protected:
    CRequestJob() = default;
    CRequestJob(netsnmp_agent_request_info & info, netsnmp_request_info * requests) { Take(info, requests); }
    /// Makes these the job's requests.
    void Take(netsnmp_agent_request_info & info, netsnmp_request_info * requests);

    netsnmp_pdu & Pdu() const noexcept { return *m_session->pdu; }
    bool IsVersion1() const noexcept { return Pdu().version == SNMP_VERSION_1; }
    /// The requests that Net-SNMP wants answered.
    std::vector<netsnmp_request_info *> const & Requests() const noexcept { return m_requests; }
    void SetError(netsnmp_request_info & request, std::uint32_t status) const noexcept;
    /// Lets Net-SNMP go on with all requests.
    void Release() noexcept;

private:
    netsnmp_agent_session * m_session = nullptr;
    std::vector<netsnmp_request_info *> m_requests;
};

} // namespace Service

#endif
