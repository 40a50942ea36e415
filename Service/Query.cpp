#include "Query.h"

namespace Service {

SVerdict CQuery::Ask(SEntryPoints const & extension, std::uint8_t pduType, CBindings & bindings) noexcept
{
    SVerdict verdict;
    const std::int32_t result = extension.query(pduType, &bindings.List(), &verdict.status, &verdict.index);
    const bool failed = result == 0 && verdict.status == SNMP_ERRORSTATUS_NOERROR;
    if (failed || !bindings.IsIntact()) return {SNMP_ERRORSTATUS_GENERR, 0};
    if (verdict.status > SNMP_ERRORSTATUS_INCONSISTENTNAME) verdict.status = SNMP_ERRORSTATUS_GENERR;
    if (verdict.index > bindings.Count()) verdict.index = 0;
    return verdict;
}

} // namespace Service
