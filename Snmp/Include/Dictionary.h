#ifndef SNMP_DICTIONARY_H
#define SNMP_DICTIONARY_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string_view>
#include <utility>

namespace SNMP {

/// Names of consecutive identifiers, as a table is written down: each name is followed by a comma, and the first one
/// belongs to the identifier `first`.
struct SNameRun {
    std::int32_t first;
    std::string_view names;
};

/// One row of a table.
struct SNameRow {
    std::int32_t id;
    std::string_view name;
};

/// How much room a table takes.
struct SDictionarySize {
    std::size_t runs = 0;
    std::size_t rows = 0;
    std::size_t characters = 0;
};

template <std::size_t RUNS>
consteval SDictionarySize SizeOfDictionary(SNameRun const (&runs)[RUNS])
{
    SDictionarySize size{RUNS};
    for (SNameRun const & run : runs) {
        if (!run.names.ends_with(',')) throw "a comma is missing behind the last name of a run"; // ends the build
        for (char const c : run.names)
            ++(c == ',' ? size.rows : size.characters);
    }
    return size;
}

/// Names of numeric identifiers. Built by the compiler and free of pointers, so that a table is read-only data in the
/// file: nothing runs and nothing is relocated when a program starts. Made from the runs that SIZE was taken of.
/// Any thread. No function can fail or allocates.
template <SDictionarySize SIZE>
class TDictionary {
public:
    consteval explicit TDictionary(SNameRun const (&runs)[SIZE.runs])
    {
        std::size_t row = 0;
        std::size_t at = 0;
        for (std::size_t i = 0; i < SIZE.runs; ++i) {
            m_runs[i].first = runs[i].first;
            m_runs[i].row = static_cast<Count>(row);
            for (char const c : runs[i].names) {
                if (c == ',')
                    m_ends[row++] = static_cast<Count>(at);
                else
                    m_text[at++] = c;
            }
            m_runs[i].count = static_cast<Count>(row - m_runs[i].row);
        }
    }

    /// The name of an identifier; empty if the table has none. Of rows with the same identifier the first one counts.
    constexpr std::string_view NameOf(std::int32_t id) const noexcept
    {
        std::uint32_t const place = PlaceOf(id);
        return place == kNowhere ? std::string_view() : NameAt(place);
    }
    /// Whether the table has the identifier; its name may be empty.
    constexpr bool Contains(std::int32_t id) const noexcept { return PlaceOf(id) != kNowhere; }

    /// Rows as written down, those included whose identifier stood before.
    static constexpr std::size_t RowCount() noexcept { return SIZE.rows; }
    static constexpr std::size_t RunCount() noexcept { return SIZE.runs; }
    /// place: below RowCount().
    constexpr SNameRow Row(std::size_t place) const noexcept
    {
        std::size_t i = SIZE.runs - 1;
        while (m_runs[i].row > place)
            --i;
        return {m_runs[i].first + static_cast<std::int32_t>(place - m_runs[i].row), NameAt(place)};
    }

private:
    using Count = std::uint16_t;
    static_assert(SIZE.rows <= std::numeric_limits<Count>::max());
    static_assert(SIZE.characters <= std::numeric_limits<Count>::max());

    struct SRun {
        std::int32_t first; ///< identifier of its first row
        Count row;          ///< place of its first row
        Count count;
    };

    static constexpr std::uint32_t kNowhere = std::numeric_limits<std::uint32_t>::max();

    constexpr std::uint32_t PlaceOf(std::int32_t id) const noexcept
    {
        return PlaceOf(static_cast<std::uint32_t>(id), std::make_index_sequence<SIZE.runs>());
    }
    /// The runs are few, and which of them has the identifier can't be foretold: looking at all of them without a
    /// branch costs less than a wrong guess. The first one is looked at last, so that it overrides the others.
    template <std::size_t... BEFORE_LAST>
    constexpr std::uint32_t PlaceOf(std::uint32_t id, std::index_sequence<BEFORE_LAST...>) const noexcept
    {
        std::uint32_t place = kNowhere;
        ((place = PlaceIn(m_runs[SIZE.runs - 1 - BEFORE_LAST], id, place)), ...);
        return place;
    }
    static constexpr std::uint32_t PlaceIn(SRun const & run, std::uint32_t id, std::uint32_t otherwise) noexcept
    {
        // For an identifier below the run's first one the distance wraps round, and is above every count.
        std::uint32_t const distance = id - static_cast<std::uint32_t>(run.first);
        return distance < run.count ? run.row + distance : otherwise;
    }
    constexpr std::string_view NameAt(std::size_t place) const noexcept
    {
        std::size_t const begin = place == 0 ? 0 : m_ends[place - 1];
        return {m_text.data() + begin, m_ends[place] - begin};
    }

    std::array<SRun, SIZE.runs> m_runs{};
    std::array<Count, SIZE.rows> m_ends{}; ///< where in the text the names end
    std::array<char, SIZE.characters> m_text{};
};

} // namespace SNMP

#endif
