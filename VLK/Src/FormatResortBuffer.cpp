#include "StringStreamBuffer.h"
#include "VLK/Exceptions.h"
#include "VLK/FormatStream.h"
#include "VLK/ThrowState.h"

namespace VLK::Internals {

using Output_Streams::CFormatStream;

CFormatResortBuffer::CFormatResortBuffer() noexcept
    : CFormatStreamBuffer(FlagEndSignal | FlagFieldSignal), m_uNesting(0), m_uFields(0), m_uMaskLength(0), m_uOffset{}
{
}

CFormatResortBuffer::~CFormatResortBuffer() = default;

CFormatStream CFormatResortBuffer::Format(char const * format)
{
    ++m_uNesting;
    return CFormatStream(*this, format);
}

unsigned int CFormatResortBuffer::Write(char const * text, std::size_t n, unsigned int upper)
{
    CStringStreamBuffer::AppendText(m_Text, text, n, upper);
    return 1;
}

unsigned int CFormatResortBuffer::Fill(int c, std::size_t n)
{
    CStringStreamBuffer::AppendFill(m_Text, c, n);
    return 1;
}

void CFormatResortBuffer::SignalFormatCopy()
{
    ++m_uNesting;
}

void CFormatResortBuffer::SignalFormatEnd()
{
    VLK_SOURCE(source);
    if (m_uNesting == 0) doThrow(source);
    --m_uNesting;
}

void CFormatResortBuffer::SignalNewFormatField()
{
    VLK_SOURCE(source);
    if (m_uNesting != 1) return;
    if (m_uFields >= MaxFields) doThrow(source);
    m_uOffset[m_uFields++] = m_Text.size();
}

/// Whether every field that the mask names is there.
bool CFormatResortBuffer::IsMaskGood() const noexcept
{
    for (std::size_t i = 0; i + 1 < m_uMaskLength; ++i) {
        if (m_Text[i] != '%') continue;
        char const c = m_Text[++i];
        if (c == '0' || (c > '0' && c <= '9' && static_cast<unsigned int>(c - '0') > m_uFields)) return false;
    }
    return true;
}

void CFormatResortBuffer::PutInOrder(Strings::CStringVar & out)
{
    Exceptions::CThrowState state;
    try {
        if (!IsMaskGood()) VLK_RAISE(state, Errors::ResortMask);
        m_uOffset[m_uFields] = m_Text.size();
        for (std::size_t i = 0; i != m_uMaskLength; ++i) {
            char const c = m_Text[i];
            out += c;
            if (c != '%' || i + 1 == m_uMaskLength) continue;
            char const next = m_Text[++i];
            if (next == '%') continue;
            if (next < '1' || next > '9') {
                out += next;
                continue;
            }
            unsigned int const field = static_cast<unsigned int>(next - '1');
            out.Cut(out.size() - 1);
            out += m_Text(m_uOffset[field], m_uOffset[field + 1] - m_uOffset[field]);
        }
        return;
    }
    VLK_THROW_NEXT_VOID(state)
}

} // namespace VLK::Internals

namespace VLK::Output_Streams {

CFormatStream CFormatResortBuffer::Format(char const * mask, char const * format)
{
    Reset();
    m_uNesting = 1;
    m_uFields = 0;
    m_uOffset[0] = 0;
    m_Text = mask;
    m_uMaskLength = m_Text.size();
    m_Text += ' ';
    return CFormatStream(*this, format);
}

} // namespace VLK::Output_Streams
