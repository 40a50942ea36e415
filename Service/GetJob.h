#ifndef SERVICE_GET_JOB_H
#define SERVICE_GET_JOB_H

#include "RequestJob.h"

#include "GetQuery.h"

namespace Service {

class CGetJob final : public CRequestJob {
public:
    CGetJob(netsnmp_agent_request_info & info, netsnmp_request_info * requests);
    CQuery & Query() noexcept override { return m_query; }
    bool Finish() override;

private:
    void Answer(netsnmp_request_info & request, std::size_t index);

    CGetQuery m_query;
};

} // namespace Service

#endif
