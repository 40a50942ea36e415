#ifndef SERVICE_SET_JOB_H
#define SERVICE_SET_JOB_H

#include "RequestJob.h"

#include "SetQuery.h"

namespace Service {

class CSetJob final : public CRequestJob {
public:
    /// Takes the values that the bindings want to set; IsComplete says whether all of them could be taken.
    CSetJob(netsnmp_agent_request_info & info, netsnmp_request_info * requests);
    bool IsComplete() const noexcept { return m_complete; }
    CQuery & Query() noexcept override { return m_query; }
    bool Finish() override;

private:
    CSetQuery m_query;
    bool m_complete = true;
};

/// Status of a binding that no extension could take, before anything is set; 0 for one that it could.
int UnsettableStatus(netsnmp_request_info const & request);

} // namespace Service

#endif
