#ifndef SERVICE_WALK_JOB_H
#define SERVICE_WALK_JOB_H

#include "RequestJob.h"

#include "WalkQuery.h"

namespace Service {

class CWalkJobPool;

/// A GETNEXT, or a GETBULK with all its repetitions. It comes from a pool and goes back there: walking is what
/// managers do most, one small request after the other.
class CWalkJob final : public CRequestJob {
public:
    /// root: of the region, which outlives the job.
    void Begin(netsnmp_agent_request_info & info, netsnmp_request_info * requests, ArcView root);
    CQuery & Query() noexcept override { return m_query; }
    bool Finish() override;
    void Dispose() noexcept override;

private:
    friend class CWalkJobPool;
    explicit CWalkJob(CWalkJobPool & pool) : m_pool(pool) {}

    void AddColumn(netsnmp_request_info const & request, ArcView root);
    /// Whether a manager who may see only a part of the region asked for several objects. Net-SNMP looks at the
    /// first of them only, so the others are looked at here.
    bool HasMixedView() const;
    void TakeResult(CWalkQuery::SResult const & result);
    bool PutVisible(netsnmp_variable_list & variable, CWalkQuery::SResult const & result);
    /// What follows the region goes on from the last name that was found.
    static void PassNameOn(netsnmp_request_info & request);

    CWalkJobPool & m_pool;
    CWalkQuery m_query;
    CArcs m_start; ///< room for the names of one column
    CArcs m_end;
    bool m_checksView = false;
    bool m_outOfMemory = false;
};

/// Keeps walk jobs that have ended, with their memory. Threads: the owner of the loop.
class CWalkJobPool {
public:
    CWalkJobPool() = default;
    ~CWalkJobPool();
    CWalkJobPool(CWalkJobPool const &) = delete;
    CWalkJobPool & operator=(CWalkJobPool const &) = delete;

    std::unique_ptr<CWalkJob, SJobDisposer> Take();

private:
    friend class CWalkJob;
    static constexpr std::size_t kMaxIdle = 4;

    CWalkJob * m_idle[kMaxIdle] = {};
    std::size_t m_count = 0;
};

} // namespace Service

#endif
