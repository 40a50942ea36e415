#include "Snmp/Mib/OidText.h"

#include <cstring>
#include <limits>

namespace {

bool IsDigit(char c) noexcept
{
    return c >= '0' && c <= '9';
}

std::uint64_t AppendDigit(std::uint64_t value, char digit) noexcept
{
    constexpr std::uint64_t most = std::numeric_limits<std::int64_t>::max();
    const std::uint64_t next = static_cast<std::uint64_t>(digit - '0');
    return value > (most - next) / 10 ? most : value * 10 + next;
}

/// Reads a sequence of digits and steps behind it.
std::uint32_t TakeNumber(char const *& at) noexcept
{
    std::uint64_t value = 0;
    for (; IsDigit(*at); ++at)
        value = AppendDigit(value, *at);
    return static_cast<std::uint32_t>(value);
}

} // namespace

char const * OidText::SkipBlanks(char const * text) noexcept
{
    while (*text == ' ' || *text == '\t')
        ++text;
    return text;
}

std::uint32_t OidText::CountArcs(char const * text) noexcept
{
    std::uint32_t count = 1;
    char const * at = *text == '.' ? text + 1 : text;
    for (; *at != '\0'; ++at) {
        if (*at == '.') ++count;
        if (*at != '"') continue;
        while (at[1] != '\0' && at[1] != '"')
            ++count, ++at;
        if (at[1] == '"') ++at;
    }
    return count;
}

bool OidText::FillArcs(char const * text, std::uint32_t * arcs, std::uint32_t count) noexcept
{
    std::uint32_t filled = 0;
    for (char const * at = text; *at != '\0' && filled < count;) {
        if (IsDigit(*at)) {
            arcs[filled++] = TakeNumber(at);
        } else if (*at == '.') {
            ++at;
        } else if (*at == '"') {
            std::uint32_t & length = arcs[filled++];
            length = 0;
            for (++at; *at != '\0' && *at != '"' && filled < count; ++at, ++length) {
                arcs[filled++] = static_cast<std::uint32_t>(static_cast<signed char>(*at));
            }
            if (*at == '"') ++at;
        } else {
            return false;
        }
    }
    // An empty place between dots brings an arc to the count, and no number.
    std::fill(arcs + filled, arcs + count, 0u);
    return true;
}

std::uint32_t OidText::ToNumber(char const * text) noexcept
{
    while (*text == ' ' || (*text >= '\t' && *text <= '\r'))
        ++text;
    const bool negative = *text == '-';
    if (*text == '-' || *text == '+') ++text;
    const std::uint32_t value = TakeNumber(text);
    return negative ? 0u - value : value;
}

bool COidBuffer::Parse(char const * text)
{
    m_length = 0;
    if (text == nullptr || *text == '\0') return false;
    text = OidText::SkipBlanks(text);
    if (ParsePlain(text)) return true;

    const std::uint32_t count = OidText::CountArcs(text);
    m_length = 0;
    if (count < 2) return false;
    Reserve(count);
    if (!OidText::FillArcs(text, m_arcs, count)) return false;
    m_length = count;
    return true;
}

/// Numbers joined by single dots, as nearly all texts are, in one pass. False: not of that kind.
bool COidBuffer::ParsePlain(char const * text) noexcept
{
    char const * at = *text == '.' ? text + 1 : text;
    std::uint32_t length = 0;
    for (;; ++at) {
        std::uint32_t value = static_cast<std::uint32_t>(*at) - '0';
        if (value > 9) return false;
        std::uint32_t digits = 1;
        for (std::uint32_t next = 0; (next = static_cast<std::uint32_t>(*++at) - '0') <= 9; ++digits) {
            value = value * 10 + next;
        }
        if (digits > 9 || length == kRoom) return false;
        m_arcs[length++] = value;
        if (*at != '.') break;
    }
    if (*at != '\0' || length < 2) return false;
    m_length = length;
    return true;
}

void COidBuffer::Append(std::uint32_t arc)
{
    Reserve(m_length + 1);
    m_arcs[m_length++] = arc;
}

void COidBuffer::OverwriteTail(std::array<std::uint32_t, 5> const & indexes) noexcept
{
    OverwriteTailArcs(m_arcs, m_length, indexes);
}

void COidBuffer::AppendString(char const * text)
{
    if (text == nullptr) return;
    const auto bytes = static_cast<std::uint32_t>(std::strlen(text));
    Reserve(m_length + bytes + 1);
    m_arcs[m_length++] = bytes;
    for (; *text != '\0'; ++text)
        m_arcs[m_length++] = static_cast<unsigned char>(*text);
}

void COidBuffer::Reserve(std::uint32_t arcs)
{
    if (arcs <= m_capacity) return;
    const std::uint32_t capacity = std::max(arcs, m_capacity * 2);
    auto heap = std::make_unique<std::uint32_t[]>(capacity);
    std::copy(m_arcs, m_arcs + m_length, heap.get());
    m_heap = std::move(heap);
    m_arcs = m_heap.get();
    m_capacity = capacity;
}
