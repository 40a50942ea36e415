#include <array>

#include "VLK/Exceptions.h"
#include "VLK/FormatStream.h"

namespace VLK::Output_Streams {

namespace {

enum EKind : unsigned char { KindNone, KindInteger, KindText };

struct SConversion {
    EKind kind;
    unsigned char type;
    unsigned char radix; ///< 0: stays as it is
    unsigned char upper;
    char sign;
};

// The types by value, since CFormatStream keeps its own to itself.
enum : unsigned char { Char, Signed, Unsigned, Pointer, String, HexDump };

constexpr std::array<SConversion, 128> MakeConversions() noexcept
{
    std::array<SConversion, 128> table{};
    table['c'] = {KindInteger, Char, 0, 0, '\0'};
    table['C'] = {KindInteger, Char, 0, 1, '\0'};
    table['d'] = {KindInteger, Signed, 10, 0, '\0'};
    table['D'] = {KindInteger, Signed, 10, 0, '+'};
    table['x'] = {KindInteger, Unsigned, 16, 0, '\0'};
    table['X'] = {KindInteger, Unsigned, 16, 1, '\0'};
    table['o'] = {KindInteger, Unsigned, 8, 0, '\0'};
    table['b'] = {KindInteger, Unsigned, 2, 0, '\0'};
    table['s'] = {KindText, String, 0, 0, '\0'};
    table['S'] = {KindText, String, 0, 1, '\0'};
    table['p'] = {KindText, Pointer, 16, 0, '\0'};
    table['P'] = {KindText, Pointer, 16, 1, '\0'};
    table['h'] = {KindText, HexDump, 16, 0, '\0'};
    table['H'] = {KindText, HexDump, 16, 1, '\0'};
    return table;
}

constexpr std::array<SConversion, 128> Conversions = MakeConversions();

/// The end of the format, or the sign of a placeholder.
bool EndsPlainText(char c) noexcept
{
    return static_cast<unsigned char>(c) <= '%' && (c == '%' || c == '\0');
}

enum : unsigned int { BetweenPlaceholders = 0, BehindWidth = 4 };

bool IsDigit(char c) noexcept
{
    return c >= '0' && c <= '9';
}

} // namespace

unsigned int CFormatStream::GetFormatParameters(unsigned int value, unsigned int isInteger)
{
    VLK_SOURCE(source);
    if (m_pBuffer->m_pError != nullptr) doThrow(source);
    if (m_uState == BetweenPlaceholders) {
        BeginPlaceholder();
        if (!FindPlaceholder()) return NoPlaceholder;
        m_uState = BehindWidth;
        ParseAlignment();
        if (ParseWidth(value, isInteger)) return ValueConsumed;
    } else if (m_uState != BehindWidth) {
        doThrow(source);
    }
    if (m_uWidth == 0) m_uAlignment = AlignNone;
    if (ParseParameters(value, isInteger)) return ValueConsumed;
    ParseConversion(isInteger);
    m_uState = BetweenPlaceholders;
    return PlaceholderReady;
}

void CFormatStream::BeginPlaceholder()
{
    if ((m_pBuffer->m_uFlags & CBuffer::FlagFieldSignal) != 0) m_pBuffer->SignalNewFormatField();
    m_uMargin = m_pBuffer->GetLeftMargin();
    m_uWidth = 0;
    m_uSign = 0;
    m_uUpper = 0;
    m_uParameterCount = 0;
    m_uAlignment = AlignNone;
    m_uFill = ' ';
}

/// Writes the plain text in front of the next placeholder and goes behind its percent sign. False at the format's end.
bool CFormatStream::FindPlaceholder()
{
    VLK_SOURCE(source);
    if (m_pCursor == nullptr) return false;
    for (;;) {
        char const * const plain = m_pCursor;
        char const * percent = plain;
        bool hasNewline = false;
        for (; !EndsPlainText(*percent); ++percent)
            hasNewline |= *percent == '\n';
        unsigned int const splitLines = hasNewline ? 1 : 0;
        if (*percent == '\0') {
            m_pCursor = nullptr;
            FormatedWrite(plain, static_cast<std::size_t>(percent - plain), splitLines);
            return false;
        }
        bool const isEscape = percent[1] == '%';
        m_pCursor = percent + (isEscape ? 2 : 1);
        FormatedWrite(plain, static_cast<std::size_t>(percent - plain) + (isEscape ? 1 : 0), splitLines);
        if (!isEscape) return true;
        if (*m_pCursor == '\0') doThrow(source);
    }
}

void CFormatStream::ParseAlignment()
{
    VLK_SOURCE(source);
    if (*m_pCursor == '!') {
        m_uMargin = m_pBuffer->GetColumn();
        ++m_pCursor;
    }
    switch (*m_pCursor) {
    case '-':
        m_uAlignment = AlignLeft;
        break;
    case '=':
        m_uAlignment = AlignCentre;
        break;
    case '+':
        m_uAlignment = AlignRight;
        break;
    case '0':
        m_uAlignment = AlignRight;
        m_uFill = '0';
        ++m_pCursor;
        return;
    default:
        return;
    }
    if (m_pCursor[1] == '\0') doThrow(source);
    m_uFill = static_cast<unsigned char>(m_pCursor[1]);
    m_pCursor += 2;
}

bool CFormatStream::ParseWidth(unsigned int value, unsigned int isInteger)
{
    VLK_SOURCE(source);
    if (*m_pCursor != '*') {
        m_uWidth = ParseNumber();
        return false;
    }
    if (isInteger == 0) doThrow(source);
    m_uWidth = value;
    ++m_pCursor;
    return true;
}

bool CFormatStream::ParseParameters(unsigned int value, unsigned int isInteger)
{
    VLK_SOURCE(source);
    while (*m_pCursor == '.') {
        ++m_pCursor;
        bool const isInserted = *m_pCursor == '*';
        if (m_uParameterCount == MaxParameters || (isInserted ? isInteger == 0 : !IsDigit(*m_pCursor))) doThrow(source);
        if (isInserted) {
            m_uParameter[m_uParameterCount++] = value;
            ++m_pCursor;
            return true;
        }
        m_uParameter[m_uParameterCount++] = ParseNumber();
    }
    return false;
}

void CFormatStream::ParseConversion(unsigned int isInteger)
{
    VLK_SOURCE(source);
    std::size_t const index = static_cast<unsigned char>(*m_pCursor);
    SConversion const conversion = index < Conversions.size() ? Conversions[index] : SConversion{};
    if (conversion.kind != (isInteger != 0 ? KindInteger : KindText)) doThrow(source);
    m_uType = conversion.type;
    m_uUpper = conversion.upper;
    m_uSign = static_cast<unsigned char>(conversion.sign);
    if (conversion.radix != 0) m_uRadix = conversion.radix;
    ++m_pCursor;
}

/// Decimal digits at the cursor; 0 if there are none, the largest value if there are too many.
unsigned int CFormatStream::ParseNumber() noexcept
{
    constexpr unsigned int Largest = ~0u;
    unsigned int number = 0;
    for (; IsDigit(*m_pCursor); ++m_pCursor) {
        unsigned int const digit = static_cast<unsigned int>(*m_pCursor - '0');
        number = number > (Largest - digit) / 10 ? Largest : number * 10 + digit;
    }
    return number;
}

} // namespace VLK::Output_Streams
