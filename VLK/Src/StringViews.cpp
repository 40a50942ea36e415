#include "VLK/Strings.h"

#include <algorithm>
#include <bitset>
#include <new>

#include "CaseRules.h"
#include "Memory.h"
#include "Platform/Text.h"

namespace VLK::Strings {

constexpr CStringRef _TEmpty("", 0);
constexpr CStringRef _TBlank(" ", 1);
constexpr CStringRef _TNL("\n", 1);
constexpr CStringRef _TFNL("\r\n", 2);

namespace {

int SignOf(int difference) noexcept
{
    return (difference > 0) - (difference < 0);
}

int CompareText(char const * a, char const * b, std::size_t n, int ignoreCase) noexcept
{
    return ignoreCase != 0 ? Internals::CompareTextFolded(a, b, n) : std::strncmp(a, b, n);
}

/// Whether the text ends exactly behind n characters, -1 if before, 1 if it goes on.
int EndsBehind(char const * text, std::size_t n) noexcept
{
    std::size_t const length = ::strnlen(text, n + 1);
    return length == n ? 0 : length < n ? -1 : 1;
}

std::size_t FindTerminated(char const * text, std::size_t length, char const * pattern, std::size_t from) noexcept
{
    if (from > length) return CSubStringRef::POSERR;
    char const * const found = std::strstr(text + from, pattern);
    return found != nullptr ? static_cast<std::size_t>(found - text) : CSubStringRef::POSERR;
}

std::size_t FindBytes(CSubStringRef const & text, char const * pattern, std::size_t length, std::size_t from) noexcept
{
    if (from >= text.size()) return CSubStringRef::POSERR;
    if (length == 0) return from;
    while (length <= text.size() - from) {
        void const * const hit = std::memchr(text.data() + from, pattern[0], text.size() - from - length + 1);
        if (hit == nullptr) return CSubStringRef::POSERR;
        from = static_cast<std::size_t>(static_cast<char const *>(hit) - text.data());
        if (std::memcmp(text.data() + from, pattern, length) == 0) return from;
        ++from;
    }
    return CSubStringRef::POSERR;
}

/// Offset of the first character whose membership in the set is `member`.
std::size_t Span(CSubStringRef const & text, char const * set, bool member) noexcept
{
    if (text.size() == 0 || set == nullptr || *set == '\0') return CSubStringRef::POSERR;
    std::bitset<256> table;
    for (; *set != '\0'; ++set)
        table.set(static_cast<unsigned char>(*set));
    for (std::size_t i = 0; i != text.size(); ++i)
        if (table.test(static_cast<unsigned char>(text[i])) == member) return i;
    return CSubStringRef::POSERR;
}

/// Continuation bytes that a lead byte announces; POSERR for an invalid one.
std::size_t ContinuationBytes(unsigned char lead) noexcept
{
    if ((lead & 0xE0) == 0xC0) return 1;
    if ((lead & 0xF0) == 0xE0) return 2;
    if ((lead & 0xF8) == 0xF0) return 3;
    if ((lead & 0xFC) == 0xF8) return 4;
    if ((lead & 0xFE) == 0xFC) return CSubStringRef::POSERR;
    return 5;
}

std::size_t CountUtf8(char const * text, std::size_t size) noexcept
{
    std::size_t count = 0;
    for (std::size_t i = 0; i != size; ++count) {
        unsigned char const lead = static_cast<unsigned char>(text[i++]);
        if (lead < 0x80) continue;
        std::size_t const more = ContinuationBytes(lead);
        if (more > size - i) return CSubStringRef::POSERR;
        for (std::size_t const end = i + more; i != end; ++i)
            if ((text[i] & 0xC0) != 0x80) return CSubStringRef::POSERR;
    }
    return count;
}

/// A CStringRef and its text in one malloc block.
class CStringRefBlock final : public CStringRef {
public:
    static CStringRef * New(CSubStringRef const & text)
    {
        void * const block = Internals::TryAllocate(sizeof(CStringRefBlock) + text.size() + 1);
        if (block == nullptr) return nullptr;
        char * const copy = static_cast<char *>(block) + sizeof(CStringRefBlock);
        std::memcpy(copy, text.data(), text.size());
        copy[text.size()] = '\0';
        return ::new (block) CStringRefBlock(copy, text.size());
    }
    static void operator delete(void * block) noexcept { std::free(block); }

private:
    CStringRefBlock(char const * text, std::size_t length) noexcept : CStringRef(text, length) {}
};

/// A CStringVar whose inline buffer takes the rest of a malloc block.
class CStringVarBlock final : public CStringVar {
public:
    static CStringVar * New(CSubStringRef const & text, std::size_t room)
    {
        std::size_t const characters = std::max(room, text.size());
        if (characters > Internals::MaxBlock - sizeof(CStringVarBlock) - BlockStep) return nullptr;
        std::size_t const header = sizeof(CStringVarBlock) - sizeof(m_Inline);
        std::size_t const size =
            Internals::RoundUp(std::max(header + characters + 1, sizeof(CStringVarBlock)), BlockStep);
        void * const block = Internals::TryAllocate(size);
        if (block == nullptr) return nullptr;
        CStringVarBlock * const string = ::new (block) CStringVarBlock(size - header - 1);
        string->Append(text.data(), text.size());
        return string;
    }
    static void operator delete(void * block) noexcept { std::free(block); }

private:
    explicit CStringVarBlock(std::size_t capacity) noexcept : CStringVar(capacity) {}
};

} // namespace

CSubStringRef CSubStringRef::operator()(std::size_t pos, std::size_t len) const noexcept
{
    if (pos > m_uLength) return {m_pData, 0};
    return {m_pData + pos, std::min(len, m_uLength - pos)};
}

int CSubStringRef::Compare(CSubStringRef const & other, int ignoreCase) const noexcept
{
    std::size_t const n = std::min(m_uLength, other.m_uLength);
    int const difference = ignoreCase != 0 ? Internals::CompareBytesFolded(m_pData, other.m_pData, n)
                                           : std::memcmp(m_pData, other.m_pData, n);
    if (difference != 0) return difference;
    return (m_uLength > other.m_uLength) - (m_uLength < other.m_uLength);
}

int CSubStringRef::Compare(char const * other, int ignoreCase) const noexcept
{
    int const difference = CompareText(m_pData, other, m_uLength, ignoreCase);
    if (difference != 0) return difference;
    return EndsBehind(other, m_uLength) > 0 ? 1 : 0;
}

int CSubStringRef::Compare(std::size_t n, CSubStringRef const & other, int ignoreCase) const noexcept
{
    if (n == 0 || n > m_uLength) n = m_uLength;
    return CompareText(m_pData, other.m_pData, std::min(n, other.m_uLength), ignoreCase);
}

int CSubStringRef::Compare(std::size_t n, char const * other, int ignoreCase) const noexcept
{
    return CompareText(m_pData, other, n == 0 || n > m_uLength ? m_uLength : n, ignoreCase);
}

bool CSubStringRef::operator==(char const * other) const noexcept
{
    return std::strncmp(m_pData, other, m_uLength) == 0 && EndsBehind(other, m_uLength) == 0;
}

std::size_t CSubStringRef::Find(CSubStringRef const & text, std::size_t from) const noexcept
{
    if (IsTerminated() && text.IsTerminated()) return FindTerminated(m_pData, m_uLength, text.m_pData, from);
    return FindBytes(*this, text.m_pData, text.m_uLength, from);
}

std::size_t CSubStringRef::Find(char const * text, std::size_t from) const noexcept
{
    if (IsTerminated()) return FindTerminated(m_pData, m_uLength, text, from);
    return FindBytes(*this, text, std::strlen(text), from);
}

std::size_t CSubStringRef::Find(int c, std::size_t from) const noexcept
{
    void const * const found = std::memchr(m_pData + from, c, m_uLength - from);
    return found != nullptr ? static_cast<std::size_t>(static_cast<char const *>(found) - m_pData) : POSERR;
}

std::size_t CSubStringRef::FindLast(int c, std::size_t from) const noexcept
{
    for (std::size_t i = m_uLength; i > from;)
        if (m_pData[--i] == static_cast<char>(c)) return i;
    return POSERR;
}

std::size_t CSubStringRef::SpanExcluding(char const * set) const noexcept
{
    return Span(*this, set, /*member=*/false);
}

std::size_t CSubStringRef::SpanIncluding(char const * set) const noexcept
{
    return Span(*this, set, /*member=*/true);
}

std::size_t CSubStringRef::UTF8Length() const noexcept
{
    return CountUtf8(m_pData, m_uLength);
}

std::size_t UTF8length(std::string const & text) noexcept
{
    return CountUtf8(text.data(), text.size());
}

std::size_t CSubStringRef::UTF8BufferSize() const noexcept
{
    std::uint32_t const codePage = Platform::AnsiCodePage();
    std::size_t bytes = 0;
    for (std::size_t i = 0; i < m_uLength;) {
        unsigned char const byte = static_cast<unsigned char>(m_pData[i++]);
        if (byte < 0x80) {
            bytes += 1;
        } else if (codePage == 1252) {
            bytes += 2;
        } else if (codePage == 932 && byte >= 0xA1 && byte <= 0xDF) {
            bytes += 3;
        } else {
            unsigned int const next = i < m_uLength ? static_cast<unsigned char>(m_pData[i]) : 0;
            ++i;
            bytes += (static_cast<unsigned int>(byte) << 8 | next) < 0x800 ? 2 : 3;
        }
    }
    return bytes;
}

CStringRefPtr CSubStringRef::Dup() const
{
    CStringRef * const copy = CStringRefBlock::New(*this);
    if (copy == nullptr) Internals::RaiseOutOfMemory();
    return CStringRefPtr(copy);
}

CStringVarPtr CSubStringRef::Dup(std::size_t room) const
{
    CStringVar * const copy = CStringVarBlock::New(*this, room);
    if (copy == nullptr) Internals::RaiseOutOfMemory();
    return CStringVarPtr(copy);
}

int CStringRef::Compare(char const * other, int ignoreCase) const noexcept
{
    return ignoreCase != 0 ? Internals::CompareTextFolded(m_pData, other, POSERR) : SignOf(std::strcmp(m_pData, other));
}

int CStringRef::Compare(std::size_t n, char const * other, int ignoreCase) const noexcept
{
    return CompareText(m_pData, other, n == 0 || n > m_uLength ? m_uLength : n, ignoreCase);
}

std::size_t CStringRef::Find(char const * text, std::size_t from) const noexcept
{
    return FindTerminated(m_pData, m_uLength, text, from);
}

} // namespace VLK::Strings
