#include "TrapQuery.h"

#include "Platform/SnmpUtil.h"

namespace Service {

void CTrapQuery::Run(SEntryPoints const & extension) noexcept
try {
    m_traps.reserve(m_limit);
    while (m_traps.size() < m_limit && TakeOne(extension)) {
    }
} catch (...) {
    m_reachedEnd = true; // without memory: the next signal of the event asks again
}

bool CTrapQuery::TakeOne(SEntryPoints const & extension)
{
    STrap trap;
    AsnObjectIdentifier enterprise{0, nullptr};
    if (extension.trap(&enterprise, &trap.generic, &trap.specific, &trap.timeStamp, &trap.variables.List()) == 0) {
        SnmpUtilOidFree(&enterprise);
        m_reachedEnd = true;
        return false;
    }
    Arc const * ids = enterprise.ids;
    if (ids != nullptr && enterprise.idLength <= kMaxArcs) trap.enterprise.assign(ids, ids + enterprise.idLength);
    SnmpUtilOidFree(&enterprise);
    m_traps.push_back(std::move(trap));
    return true;
}

} // namespace Service
