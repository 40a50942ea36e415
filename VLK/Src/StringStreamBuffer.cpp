#include "StringStreamBuffer.h"

#include <cstdint>
#include <cstring>
#include <new>

#include "Memory.h"
#include "VLK/SourceInfo.h"
#include "VLK/ThreadCB.h"

namespace VLK::Internals {

using Output_Streams::CFormatStream;
using Strings::CStringVar;

namespace {

/// What a stream gets that could have no sink: it stands in the error state for good and is never written to, so all
/// threads can share it.
class CDeadStreamBuffer final : public Output_Streams::Base_Classes::CFormatStreamBuffer {
public:
    CDeadStreamBuffer() noexcept : CFormatStreamBuffer(FlagSilent)
    {
        VLK_SOURCE(source);
        m_pError = &source;
    }
    unsigned int Write(char const *, std::size_t, unsigned int) override { return 1; }
    unsigned int Fill(int, std::size_t) override { return 1; }
};

CDeadStreamBuffer g_DeadBuffer;

/// The highest bit of each byte that is 0; of the bytes behind the first of them nothing is said.
constexpr std::uint64_t ZeroBytes(std::uint64_t word) noexcept
{
    return (word - 0x0101010101010101u) & ~word & 0x8080808080808080u;
}

template <class TWord>
bool CopyWord(char * to, char const * from) noexcept
{
    TWord word;
    std::memcpy(&word, from, sizeof word);
    std::memcpy(to, &word, sizeof word);
    constexpr std::uint64_t Beyond =
        sizeof word < sizeof(std::uint64_t) ? ~std::uint64_t{0} << (8 * sizeof word % 64) : 0;
    return ZeroBytes(word | Beyond) == 0;
}

/// Copies n bytes; false if a NUL is among them. Words that overlap at the end spare the odd bytes.
bool CopyPlain(char * to, char const * from, std::size_t n) noexcept
{
    bool plain = true;
    if (n >= sizeof(std::uint64_t)) {
        for (std::size_t i = 0; i + sizeof(std::uint64_t) < n; i += sizeof(std::uint64_t))
            plain &= CopyWord<std::uint64_t>(to + i, from + i);
        return CopyWord<std::uint64_t>(to + n - sizeof(std::uint64_t), from + n - sizeof(std::uint64_t)) && plain;
    }
    if (n >= sizeof(std::uint32_t)) {
        plain = CopyWord<std::uint32_t>(to, from);
        return CopyWord<std::uint32_t>(to + n - sizeof(std::uint32_t), from + n - sizeof(std::uint32_t)) && plain;
    }
    for (std::size_t i = 0; i != n; ++i) {
        to[i] = from[i];
        plain &= from[i] != '\0';
    }
    return plain;
}

constexpr std::size_t SmallText = 64;

} // namespace

CStringStreamBuffer * CStringStreamBuffer::Take(CThreadCB * thread) noexcept
{
    if (thread == nullptr || thread->m_StreamPool.pFirst == nullptr) return new (std::nothrow) CStringStreamBuffer;
    CStringStreamBuffer * const buffer = static_cast<CStringStreamBuffer *>(thread->m_StreamPool.pFirst);
    thread->m_StreamPool.pFirst = buffer->m_pNext;
    return buffer;
}

void CStringStreamBuffer::GiveBack(CThreadCB * thread) noexcept
{
    if (thread == nullptr) {
        delete this;
        return;
    }
    m_pNext = static_cast<CStringStreamBuffer *>(thread->m_StreamPool.pFirst);
    thread->m_StreamPool.pFirst = this;
    thread->m_StreamPool.pRelease = &ReleaseList;
}

void CStringStreamBuffer::ReleaseList(void * first) noexcept
{
    for (CStringStreamBuffer * buffer = static_cast<CStringStreamBuffer *>(first); buffer != nullptr;) {
        CStringStreamBuffer * const next = buffer->m_pNext;
        delete buffer;
        buffer = next;
    }
}

CFormatStream CStringStreamBuffer::Open(CStringVar & target, char const * format)
{
    CStringStreamBuffer * const buffer = Take(CThreadCB::Current());
    if (buffer == nullptr) {
        RaiseOutOfMemory();
        return CFormatStream(g_DeadBuffer, nullptr);
    }
    buffer->m_pTarget = &target;
    buffer->m_uColumn = 0;
    buffer->m_uLeftMargin = 0;
    buffer->m_pError = nullptr;
    buffer->m_uNesting = 1;
    return CFormatStream(*buffer, format);
}

CFormatStream CStringStreamBuffer::Format(char const * format)
{
    ++m_uNesting;
    return CFormatStream(*this, format);
}

void CStringStreamBuffer::SignalFormatCopy()
{
    ++m_uNesting;
}

void CStringStreamBuffer::SignalFormatEnd()
{
    if (--m_uNesting != 0) return;
    // Looked up anew: a thread from outside may have lost its block while the stream was open.
    CThreadCB * const thread = CThreadCB::Current();
    if (thread != nullptr && m_pTarget == &thread->m_Name) thread->SetDbgThreadName(m_pTarget->C_Str());
    GiveBack(thread);
}

unsigned int CStringStreamBuffer::Write(char const * text, std::size_t n, unsigned int upper)
{
    AppendText(*m_pTarget, text, n, upper);
    return 1;
}

unsigned int CStringStreamBuffer::Fill(int c, std::size_t n)
{
    AppendFill(*m_pTarget, c, n);
    return 1;
}

void CStringStreamBuffer::AppendText(CStringVar & target, char const * text, std::size_t n, unsigned int upper)
{
    if (n == 0) return;
    std::size_t const before = target.IsReference() ? 0 : target.size();
    if (n <= SmallText && target.HasRoom(n)) {
        // Most pieces are short: sooner copied than measured. As everywhere, a NUL ends the text.
        char * const end = target.Data() + target.size();
        target.SetLength(target.size() + (CopyPlain(end, text, n) ? n : ::strnlen(text, n)));
    } else {
        target.AllocCopy(text, n);
    }
    if (upper == 0 || target.size() <= before) return;
    // Exactly what was appended, also where the text ended early.
    UpperCase(target.Data() + before, target.size() - before);
}

void CStringStreamBuffer::AppendFill(CStringVar & target, int c, std::size_t n)
{
    if (n == 0) return;
    if (target.IsReference() || n > target.m_uCapacity - target.m_uLength) {
        target(target.size(), 0).Set(static_cast<char>(c), n);
        return;
    }
    std::memset(target.Data() + target.m_uLength, c, n);
    target.SetLength(target.m_uLength + n);
}

} // namespace VLK::Internals
