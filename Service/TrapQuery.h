#ifndef SERVICE_TRAP_QUERY_H
#define SERVICE_TRAP_QUERY_H

#include <vector>

#include "Query.h"

namespace Service {

/// A trap as an extension hands it out.
struct STrap {
    CArcs enterprise;
    std::int32_t generic = 0; ///< 0 to 5: a standard trap; 6: `specific` of the enterprise
    std::int32_t specific = 0;
    std::uint32_t timeStamp = 0; ///< hundredths of a second since the uptime reference
    CBindings variables;
};

/// Takes the waiting traps of an extension, the oldest first, up to a number of them.
class CTrapQuery final : public CQuery {
public:
    explicit CTrapQuery(std::size_t limit) : m_limit(limit) {}
    void Run(SEntryPoints const & extension) noexcept override;

    std::vector<STrap> & Traps() noexcept { return m_traps; }
    /// Whether the extension said that no more traps wait.
    bool ReachedEnd() const noexcept { return m_reachedEnd; }

private:
    bool TakeOne(SEntryPoints const & extension);

    std::size_t m_limit;
    std::vector<STrap> m_traps;
    bool m_reachedEnd = false;
};

} // namespace Service

#endif
