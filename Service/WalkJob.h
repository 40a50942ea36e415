#ifndef SERVICE_WALK_JOB_H
#define SERVICE_WALK_JOB_H

#include "RequestJob.h"

#include "WalkQuery.h"

namespace Service {

/// A GETNEXT, or a GETBULK with all its repetitions.
class CWalkJob final : public CRequestJob {
public:
    CWalkJob(netsnmp_agent_request_info & info, netsnmp_request_info * requests);
    CQuery & Query() noexcept override { return m_query; }
    bool Finish() override;

private:
    /// Whether a manager who may see only a part of the region asked for several objects. Net-SNMP looks at the
    /// first of them only, so the others are looked at here.
    bool HasMixedView() const;
    bool IsVisible(netsnmp_variable_list & variable) const;
    void TakeResult(CWalkQuery::SResult const & result);
    /// The range ends behind what the column has got: Net-SNMP goes on with what follows in the MIB.
    static void HandOn(netsnmp_request_info & request);

    CWalkQuery m_query;
    bool m_checksView;
    bool m_outOfMemory = false;
};

} // namespace Service

#endif
