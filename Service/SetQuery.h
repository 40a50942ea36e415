#ifndef SERVICE_SET_QUERY_H
#define SERVICE_SET_QUERY_H

#include "Query.h"

namespace Service {

/// A SET: one call with all bindings.
class CSetQuery final : public CQuery {
public:
    /// Room for `count` bindings. False: no memory.
    bool Prepare(std::uint32_t count) noexcept { return m_bindings.Prepare(count); }
    /// value: owned by the query afterwards, whatever the result. False: no memory.
    bool Add(ArcView name, AsnAny const & value) noexcept;
    void Run(SEntryPoints const & extension) noexcept override;

    SVerdict const & Verdict() const noexcept { return m_verdict; }

private:
    CBindings m_bindings;
    SVerdict m_verdict{SNMP_ERRORSTATUS_GENERR, 0};
};

} // namespace Service

#endif
