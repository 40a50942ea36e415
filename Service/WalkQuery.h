#ifndef SERVICE_WALK_QUERY_H
#define SERVICE_WALK_QUERY_H

#include <vector>

#include "Query.h"

namespace Service {

/// A GETNEXT or GETBULK: columns, each of which wants the next so many objects behind a name, within a range.
/// All columns that still want something are asked in one call, as often as it takes.
class CWalkQuery final : public CQuery {
public:
    struct SResult {
        std::size_t column;
        std::size_t nameAt; ///< see Name
        std::size_t nameLength;
        CValue value;
    };

    /// Adds a column. start: objects behind it are wanted, with `inclusive` also the one of that name. root:
    /// the subtree that an answer must lie in, which outlives the query; end: where the range ends within it, itself
    /// outside, empty for no end but the subtree's. wanted: number of objects. Returns the column's number, from 0.
    std::size_t AddColumn(ArcView start, bool inclusive, ArcView root, ArcView end, std::size_t wanted);
    void Run(SEntryPoints const & extension) noexcept override;
    /// Back to no columns, with the memory for a similar walk.
    void Renew() noexcept;

    /// What Run found since the last ForgetResults, for each column in its order.
    std::vector<SResult> & Results() noexcept { return m_results; }
    ArcView Name(SResult const & result) const noexcept { return View(result.nameAt, result.nameLength); }
    void ForgetResults();
    /// One more object is wanted; the next Run goes on where the last one stopped.
    void WantOneMore(std::size_t column) noexcept { ++m_columns[column].wanted; }
    /// Whether another Run can find something that is still wanted.
    bool WantsMore() const noexcept;
    /// Error of a column; 0 for none.
    std::uint32_t Status(std::size_t column) const noexcept { return m_columns[column].status; }

private:
    struct SColumn {
        std::size_t nameAt = 0; ///< behind which to ask; in m_arcs
        std::size_t nameLength = 0;
        ArcView root;
        CArcs end;
        std::size_t wanted = 0;
        std::uint32_t status = 0;
        bool inclusive = false;
        bool ended = false;

        bool IsOpen() const noexcept { return wanted != 0 && !ended; }
    };

    ArcView View(std::size_t at, std::size_t length) const noexcept { return ArcView(m_arcs).subspan(at, length); }
    std::size_t Keep(ArcView name);
    bool CollectOpen();
    bool AskOnce(SEntryPoints const & extension);
    bool FillBindings();
    bool TakeVerdict(SVerdict verdict);
    void TakeAnswer(std::uint32_t position);
    void AskInclusive(SEntryPoints const & extension, std::size_t column);
    bool IsNext(SColumn const & column, ArcView name) const noexcept;
    bool Fail(std::uint32_t position, std::uint32_t status);

    CArcs m_arcs; ///< all names, one behind the other
    std::vector<SColumn> m_columns;
    std::vector<SResult> m_results;
    std::vector<std::size_t> m_asked; ///< columns of the present call
    CBindings m_bindings;
    bool m_oneByOne = false; ///< the extension didn't say at which name it ended
    bool m_canGoOn = false;  ///< the bindings that came back are what the same columns, all still open, ask next
};

} // namespace Service

#endif
