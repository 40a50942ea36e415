#include "VLK/FormatStream.h"

#include <cstring>
#include <exception>

#include "Memory.h"
#include "VLK/Exceptions.h"
#include "VLK/Language.h"
#include "VLK/Strings.h"
#include "VLK/ThrowState.h"

namespace VLK::Output_Streams {

// The stream's life and the placing of values; the grammar lies in FormatGrammar.cpp, the inserters in
// FormatInsert.cpp.

bool CFormatStream::CFormatText::Assign(char const * text) noexcept
{
    std::size_t const size = text != nullptr ? std::strlen(text) + 1 : 0;
    char * const room = size <= sizeof m_Inline ? m_Inline : static_cast<char *>(Internals::TryAllocate(size));
    if (size != 0 && room != nullptr) std::memcpy(room, text, size);
    Clear();
    if (room == nullptr) return false;
    if (size != 0) m_pText = room;
    return true;
}

void CFormatStream::CFormatText::Clear() noexcept
{
    if (*m_pText != '\0' && m_pText != m_Inline) std::free(const_cast<char *>(m_pText));
    m_pText = "";
}

CFormatStream::CFormatStream(CBuffer & buffer, char const * format)
    : m_uMargin(buffer.GetLeftMargin()),
      m_uAlignment(AlignNone),
      m_uWidth(0),
      m_uSign(0),
      m_uFill(' '),
      m_uRadix(10),
      m_uUpper(0),
      m_uParameterCount(0),
      m_uType(TypeSigned),
      m_uParameter{},
      m_pBuffer(&buffer),
      m_uState(0),
      m_pCursor(nullptr)
{
    Construct([&] { OwnFormat(format); });
}

CFormatStream::CFormatStream(CFormatStream const & other) : m_pBuffer(other.m_pBuffer)
{
    m_pBuffer->SignalFormatCopy();
    Construct([&] { assignFields(other); });
}

/// Runs a constructor's work: a stream that never came to be has no end that would tell the buffer.
template <class TWork>
void CFormatStream::Construct(TWork const & work)
{
    try {
        work();
    } catch (...) {
        SignalEnd();
        throw;
    }
}

CFormatStream & CFormatStream::operator=(CFormatStream const & other)
{
    if (this == &other) return *this;
    CBuffer * const former = m_pBuffer;
    if (former != other.m_pBuffer) {
        other.m_pBuffer->SignalFormatCopy();
        m_pBuffer = other.m_pBuffer;
        if ((former->m_uFlags & CBuffer::FlagEndSignal) != 0) former->SignalFormatEnd();
    }
    assignFields(other);
    return *this;
}

void CFormatStream::assignFields(CFormatStream const & other)
{
    m_uMargin = other.m_uMargin;
    m_uAlignment = other.m_uAlignment;
    m_uWidth = other.m_uWidth;
    m_uSign = other.m_uSign;
    m_uFill = other.m_uFill;
    m_uRadix = other.m_uRadix;
    m_uUpper = other.m_uUpper;
    m_uParameterCount = other.m_uParameterCount;
    m_uType = other.m_uType;
    std::memcpy(m_uParameter, other.m_uParameter, sizeof m_uParameter);
    m_uState = other.m_uState;
    OwnFormat(other.m_Text.Get());
}

void CFormatStream::OwnFormat(char const * format)
{
    if (m_Text.Assign(format)) {
        m_pCursor = m_Text.Get();
        return;
    }
    VLK_SOURCE(source);
    m_pCursor = nullptr;
    m_pBuffer->m_pError = &source;
    if ((m_pBuffer->m_uFlags & CBuffer::FlagSilent) == 0) Internals::RaiseOutOfMemory();
}

void CFormatStream::SignalEnd()
{
    if ((m_pBuffer->m_uFlags & CBuffer::FlagEndSignal) != 0) m_pBuffer->SignalFormatEnd();
}

CFormatStream::~CFormatStream() noexcept(false)
{
    try {
        Close();
    } catch (...) {
        // One exception at a time: an error on the way out of another one ends here, in the thread's error log.
        if (std::uncaught_exceptions() == 0) throw;
        Exceptions::CThrowState state;
        VLK_SOURCE(source);
        state.EndException(source);
    }
}

void CFormatStream::Close()
{
    struct SEndSignal {
        ~SEndSignal() noexcept(false) { stream.SignalEnd(); }
        CFormatStream & stream;
    };
    // The signal comes last: with it the buffer may be gone.
    try {
        SEndSignal const signal{*this};
        if (m_pBuffer->m_pError == nullptr) {
            WriteRest();
            m_pBuffer->Flush(0);
        }
    } catch (Exceptions::SOURCE_INFO const *) {
        Catch();
    }
}

void CFormatStream::WriteRest()
{
    char const * const rest = m_pCursor;
    if (rest == nullptr || *rest == '\0') return;
    m_pCursor = nullptr;
    m_uAlignment = AlignNone;
    m_uUpper = 0;
    m_uMargin = m_pBuffer->GetLeftMargin();
    FormatedWrite(rest, std::strlen(rest), 1);
}

CFormatStream & CFormatStream::operator>>(char const * nextFormat)
{
    return Guarded([&] {
        VLK_SOURCE(source);
        if (m_pBuffer->m_pError != nullptr || m_uState != 0) doThrow(source);
        WriteRest();
        m_pCursor = nextFormat;
    });
}

void CFormatStream::Catch()
{
    m_pBuffer->Catch();
}

void CFormatStream::doThrow(Exceptions::SOURCE_INFO const & source)
{
    m_pBuffer->doThrow(source);
}

unsigned int CFormatStream::FormatedWrite(char const * text, std::size_t n, unsigned int splitLines)
{
    if ((n == 0 && m_uAlignment == AlignNone) || text == nullptr) return 1;
    CBuffer & buffer = *m_pBuffer;
    bool const isOneLine = splitLines == 0 || std::memchr(text, '\n', n) == nullptr;
    if (isOneLine && m_uAlignment == AlignNone && buffer.m_uColumn >= m_uMargin) {
        buffer.Write(text, n, m_uUpper);
        buffer.m_uColumn += n;
        return 1;
    }
    return WriteLines(text, n, splitLines);
}

unsigned int CFormatStream::WriteLines(char const * text, std::size_t n, unsigned int splitLines)
{
    CBuffer & buffer = *m_pBuffer;
    do {
        void const * const newline = splitLines != 0 && n != 0 ? std::memchr(text, '\n', n) : nullptr;
        std::size_t const line =
            newline != nullptr ? static_cast<std::size_t>(static_cast<char const *>(newline) - text) : n;
        std::size_t const taken = line + (newline != nullptr ? 1 : 0);
        if (buffer.m_uColumn < m_uMargin) {
            buffer.Fill(' ', m_uMargin - buffer.m_uColumn);
            buffer.m_uColumn += m_uMargin;
        }
        if (m_uAlignment == AlignNone) {
            buffer.Write(text, taken, m_uUpper);
            buffer.m_uColumn += line;
        } else {
            WriteField(text, line);
            if (newline != nullptr) buffer.Write("\n", 1, 0);
        }
        if (newline != nullptr) buffer.m_uColumn = 0;
        text += taken;
        n -= taken;
    } while (n != 0);
    return 1;
}

void CFormatStream::WriteField(char const * text, std::size_t n)
{
    CBuffer & buffer = *m_pBuffer;
    std::size_t const width = m_uWidth;
    std::size_t const spare = n < width ? width - n : 0;
    std::size_t const before = m_uAlignment == AlignRight ? spare : m_uAlignment == AlignCentre ? spare / 2 : 0;
    std::size_t const written = m_uAlignment == AlignRight || n < width ? n : width;
    // A centred text that fills its field keeps its case.
    unsigned int const upper = m_uAlignment == AlignCentre && n >= width ? 0 : m_uUpper;
    if (before != 0) buffer.Fill(static_cast<int>(m_uFill), before);
    if (written != 0) buffer.Write(text, written, upper);
    if (spare != before) buffer.Fill(static_cast<int>(m_uFill), spare - before);
    buffer.m_uColumn += written + spare;
}

} // namespace VLK::Output_Streams
