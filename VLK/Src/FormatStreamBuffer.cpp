#include "CaseRules.h"
#include "VLK/Exceptions.h"
#include "VLK/FormatStream.h"
#include "VLK/ThrowState.h"

namespace VLK::Output_Streams::Base_Classes {

CFormatStreamBuffer::~CFormatStreamBuffer() = default;

unsigned int CFormatStreamBuffer::Flush(unsigned int)
{
    return 1;
}

CFormatStream CFormatStreamBuffer::Format(char const * format)
{
    return CFormatStream(*this, format);
}

unsigned int CFormatStreamBuffer::Reset()
{
    m_uColumn = 0;
    m_uLeftMargin = 0;
    m_pError = nullptr;
    return 1;
}

void CFormatStreamBuffer::SignalFormatEnd() {}

void CFormatStreamBuffer::SignalNewFormatField() {}

void CFormatStreamBuffer::SignalFormatCopy() {}

std::size_t CFormatStreamBuffer::SetLeftMargin(std::size_t margin) noexcept
{
    std::size_t const former = m_uLeftMargin;
    m_uLeftMargin = margin;
    return former;
}

void CFormatStreamBuffer::UpperCase(char * text, std::size_t n) noexcept
{
    Internals::UpperText(text, n);
}

void CFormatStreamBuffer::doThrow(Exceptions::SOURCE_INFO const & source)
{
    if (m_pError == nullptr) m_pError = &source;
    throw static_cast<Exceptions::SOURCE_INFO const *>(m_pError);
}

void CFormatStreamBuffer::Catch()
{
    VLK_SOURCE(somewhere);
    if (m_pError == nullptr) m_pError = &somewhere;
    if ((m_uFlags & FlagSilent) != 0) return;
    Exceptions::CThrowState state;
    try {
        Exceptions::Raise(state.StartException(__LINE__).prepareThrow(Errors::StreamOutput, *m_pError, ""));
    }
    VLK_THROW_NEXT_VOID(state)
}

} // namespace VLK::Output_Streams::Base_Classes
