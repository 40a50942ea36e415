#ifndef SERVICE_QUERY_H
#define SERVICE_QUERY_H

#include <atomic>
#include <cstdint>

#include "Bindings.h"
#include "EntryPoints.h"

namespace Service {

/// What one call to SnmpExtensionQuery said.
struct SVerdict {
    std::uint32_t status = 0; ///< 0 to 18; anything else an extension says has become genErr
    std::uint32_t index = 0;  ///< of the binding it stopped at, counted from 1; 0: none of them
};

/// One piece of work for an extension that knows nothing of Net-SNMP: it is filled in by the thread that runs
/// the loop, run by the thread that makes the call, and read by the thread that then runs the loop. The
/// hand-over orders the accesses; only Drop may come at any time.
class CQuery {
public:
    virtual ~CQuery() = default;
    /// Calls the extension as often as it takes. Leaves no exception out.
    virtual void Run(SEntryPoints const & extension) noexcept = 0;
    /// The answer isn't wanted any more: Run makes no further call.
    void Drop() noexcept { m_dropped.store(true, std::memory_order_relaxed); }
    bool IsDropped() const noexcept { return m_dropped.load(std::memory_order_relaxed); }

protected:
    CQuery() = default;
    /// For a query that is used again.
    void Renew() noexcept { m_dropped.store(false, std::memory_order_relaxed); }
    CQuery(CQuery const &) = delete;
    CQuery & operator=(CQuery const &) = delete;

    /// One call with the list as it stands. A failure of the extension as a whole, or a list that came back
    /// with another length, is genErr at no binding.
    static SVerdict Ask(SEntryPoints const & extension, std::uint8_t pduType, CBindings & bindings) noexcept;

private:
    std::atomic<bool> m_dropped{false};
};

} // namespace Service

#endif
