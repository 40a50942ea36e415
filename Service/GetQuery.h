#ifndef SERVICE_GET_QUERY_H
#define SERVICE_GET_QUERY_H

#include <vector>

#include "Query.h"

namespace Service {

/// What a GET got for one name.
enum class EGot : std::uint8_t {
    Nothing, ///< not asked or not answered, because another name ended the request
    Value,
    Missing, ///< no such object, or one without a value
    Error    ///< `status` says which
};

/// A GET of several names.
class CGetQuery final : public CQuery {
public:
    /// stopAtMissing: the first unknown name ends the request, as version 1 has it. Otherwise that name is
    /// missing and the rest is asked again.
    explicit CGetQuery(bool stopAtMissing) : m_stopAtMissing(stopAtMissing) {}

    void Add(ArcView name);
    /// A name that can't exist.
    void AddMissing();
    void Run(SEntryPoints const & extension) noexcept override;

    std::size_t Count() const noexcept { return m_entries.size(); }
    EGot Got(std::size_t index) const noexcept { return m_entries[index].got; }
    std::uint32_t Status(std::size_t index) const noexcept { return m_entries[index].status; }
    CValue const & Value(std::size_t index) const noexcept { return m_entries[index].value; }

private:
    struct SEntry {
        std::size_t nameAt = 0; ///< in m_arcs
        std::size_t nameLength = 0;
        EGot got = EGot::Nothing;
        std::uint32_t status = 0;
        CValue value;
    };

    /// One call; false: the request has ended.
    bool AskOnce(SEntryPoints const & extension);
    bool CollectOpen();
    bool TakeVerdict(SVerdict verdict);
    void TakeAnswer(std::uint32_t position, bool final);
    bool Fail(std::uint32_t position, std::uint32_t status);

    bool m_stopAtMissing;
    bool m_oneByOne = false; ///< the extension didn't say which name it doesn't know
    CArcs m_arcs;
    std::vector<SEntry> m_entries;
    std::vector<std::size_t> m_asked; ///< entries of the present call
    CBindings m_bindings;
};

} // namespace Service

#endif
