#ifndef SERVICE_JOB_H
#define SERVICE_JOB_H

#include <cstdint>
#include <memory>

#include "Query.h"

namespace Service {

/// A piece of work for one extension: what to ask, and what to do with the answer. Everything but the query's
/// Run belongs to the thread that runs the loop.
class CJob {
public:
    virtual ~CJob() = default;
    CJob(CJob const &) = delete;
    CJob & operator=(CJob const &) = delete;

    /// Run by the thread that makes the call, outside Net-SNMP.
    virtual CQuery & Query() noexcept = 0;
    /// Uses the answer, inside Net-SNMP. False: the query has to run once more.
    virtual bool Finish() = 0;
    /// Answers with an SNMP error in place of the extension. Called at most once, and Finish never after it.
    virtual void Refuse(int status) = 0;
    /// Whether somebody waits, so that the answer has to come in time.
    virtual bool IsRequest() const noexcept { return true; }

    std::uint64_t ArrivedMs() const noexcept { return m_arrivedMs; }
    void SetArrivedMs(std::uint64_t nowMs) noexcept { m_arrivedMs = nowMs; }
    /// Ends the job's life; some are kept to be used again.
    virtual void Dispose() noexcept { delete this; }
    bool IsAnswered() const noexcept { return m_answered; }
    void SetAnswered() noexcept { m_answered = true; }

protected:
    CJob() = default;
    /// Makes a job that is used again like a new one.
    void Renew() noexcept { m_answered = false; }

private:
    std::uint64_t m_arrivedMs = 0;
    bool m_answered = false; ///< refused, or its request is gone; only the call goes on
};

struct SJobDisposer {
    void operator()(CJob * job) const noexcept { job->Dispose(); }
};
using JobPtr = std::unique_ptr<CJob, SJobDisposer>;

} // namespace Service

#endif
