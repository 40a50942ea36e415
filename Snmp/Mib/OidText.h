#ifndef SNMP_MIB_OID_TEXT_H
#define SNMP_MIB_OID_TEXT_H

#include <array>
#include <cstdint>
#include <memory>

#include "Snmp/Mib/Oid.h"
#include "Snmp/Mib/OidView.h"

/// Writes indexes over the tail of some arcs, from the right to the left. An absent one (kNoOidIndex) takes no place.
template <class TIndexes>
void OverwriteTailArcs(std::uint32_t * arcs, std::uint32_t length, TIndexes const & indexes) noexcept
{
    for (const std::uint32_t index : indexes) {
        if (index == kNoOidIndex || length == 0) continue;
        arcs[--length] = index;
    }
}

/// The reader of OID texts behind StrToOid, in its two steps.
namespace OidText {

/// The text behind its leading blanks.
char const * SkipBlanks(char const * text) noexcept;
/// Number of arcs that a text brings. text: behind its blanks.
std::uint32_t CountArcs(char const * text) noexcept;
/// Writes the arcs of a text, `count` as counted. False: a character that doesn't belong there.
bool FillArcs(char const * text, std::uint32_t * arcs, std::uint32_t count) noexcept;
/// What atoi makes of a text, without a locale: the low 32 bits of a number in the range of 64.
std::uint32_t ToNumber(char const * text) noexcept;

} // namespace OidText

/// The OID of an insert while it is being built: without the allocator as long as it has an ordinary length.
/// One thread. Long ones may raise std::bad_alloc.
class COidBuffer {
public:
    COidBuffer() noexcept = default;
    COidBuffer(COidBuffer const &) = delete;
    COidBuffer & operator=(COidBuffer const &) = delete;

    /// As StrToOid. False: no OID, and the buffer is empty.
    bool Parse(char const * text);
    void Append(std::uint32_t arc);
    /// As OidAppendString.
    void AppendString(char const * text);

    std::uint32_t Length() const noexcept { return m_length; }
    /// The arcs, valid until the buffer changes.
    SOidView View() const noexcept { return {m_arcs, m_length}; }
    /// As OverwriteOidIndexes; the indexes from the right to the left.
    void OverwriteTail(std::array<std::uint32_t, 5> const & indexes) noexcept;

private:
    bool ParsePlain(char const * text) noexcept;
    void Reserve(std::uint32_t arcs);

    static constexpr std::uint32_t kRoom = 48;
    std::uint32_t m_length = 0;
    std::uint32_t m_capacity = kRoom;
    std::uint32_t * m_arcs = m_room;
    std::unique_ptr<std::uint32_t[]> m_heap; // instead of m_room, for long ones
    std::uint32_t m_room[kRoom];
};

#endif
