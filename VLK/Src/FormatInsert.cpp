#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <type_traits>

#include "CaseRules.h"
#include "VLK/Exceptions.h"
#include "VLK/FormatStream.h"
#include "VLK/Language.h"
#include "VLK/Strings.h"

namespace VLK::Output_Streams {

namespace {

constexpr char LowerDigits[] = "0123456789abcdef";
constexpr char UpperDigits[] = "0123456789ABCDEF";

/// "00" to "99", since divisions are what costs here.
struct SDigitPairs {
    constexpr SDigitPairs() noexcept : text()
    {
        for (int i = 0; i != 100; ++i) {
            text[2 * i] = static_cast<char>('0' + i / 10);
            text[2 * i + 1] = static_cast<char>('0' + i % 10);
        }
    }
    char text[200];
};
constexpr SDigitPairs DigitPairs;

template <class TUnsigned>
char * DecimalDigits(TUnsigned value, char * end) noexcept
{
    while (value >= 100) {
        end -= 2;
        std::memcpy(end, DigitPairs.text + 2 * static_cast<unsigned int>(value % 100), 2);
        value /= 100;
    }
    if (value >= 10) {
        end -= 2;
        std::memcpy(end, DigitPairs.text + 2 * static_cast<unsigned int>(value), 2);
    } else {
        *--end = static_cast<char>('0' + static_cast<unsigned int>(value));
    }
    return end;
}

/// radix: a power of two.
template <class TUnsigned>
char * BinaryDigits(TUnsigned value, unsigned int radix, char const * digits, char * end) noexcept
{
    unsigned int const shift = static_cast<unsigned int>(std::countr_zero(radix));
    do {
        *--end = digits[value & (radix - 1)];
        value >>= shift;
    } while (value != 0);
    return end;
}

constexpr std::size_t RowBytes = 16;
constexpr std::size_t UnlimitedHead = std::size_t{1} << 32;
constexpr std::size_t RepeatedRow = 17;      ///< from this length of a run on a row stands for nothing new
constexpr std::size_t MoreRepeatedRows = 33; ///< from here on it is told already
constexpr double LogOf16 = 2.772588722239781;

std::size_t RoundUpToRow(std::size_t n) noexcept
{
    return (n + RowBytes - 1) / RowBytes * RowBytes;
}

} // namespace

template <class TUnsigned>
char * CFormatStream::Digits(TUnsigned value, char (&buffer)[DigitRoom])
{
    char * const end = buffer + DigitRoom;
    if (m_uType == TypeChar) {
        char const c = static_cast<char>(value);
        end[-1] = m_uUpper != 0 ? Internals::UpperOf(c) : c;
        m_uUpper = 0;
        return end - 1;
    }
    if (m_uType == TypeSigned && static_cast<std::make_signed_t<TUnsigned>>(value) < 0) {
        m_uSign = '-';
        value = TUnsigned{0} - value;
    }
    char * first = m_uRadix == 10 ? DecimalDigits(value, end)
                                  : BinaryDigits(value, m_uRadix, m_uUpper != 0 ? UpperDigits : LowerDigits, end);
    // The sink needn't turn digits to upper case again.
    m_uUpper = 0;
    if (m_uSign != 0) *--first = static_cast<char>(m_uSign);
    return first;
}

char * CFormatStream::UIntToString(std::uint32_t value, char (&buffer)[DigitRoom])
{
    return Digits(value, buffer);
}

char * CFormatStream::UIntToString(std::uint64_t value, char (&buffer)[DigitRoom])
{
    return Digits(value, buffer);
}

template <class TValue>
void CFormatStream::PrintInt(TValue value)
{
    using Unsigned = std::conditional_t<sizeof(TValue) <= 4, std::uint32_t, std::uint64_t>;
    char buffer[DigitRoom];
    char const * const first = UIntToString(static_cast<Unsigned>(value), buffer);
    FormatedWrite(first, static_cast<std::size_t>(buffer + DigitRoom - first), 0);
}

template <class TValue>
CFormatStream & CFormatStream::Insert(TValue value)
{
    return Guarded([&] {
        unsigned int const parse = GetFormatParameters(static_cast<unsigned int>(value), 1);
        if (parse == ValueConsumed) return;
        if (parse == NoPlaceholder) m_uRadix = 10;
        FormatInt(value);
    });
}

// Used by what the header has in line.
template VLK_API CFormatStream & CFormatStream::Insert(int);
template VLK_API CFormatStream & CFormatStream::Insert(unsigned int);
template VLK_API CFormatStream & CFormatStream::Insert(long long);
template VLK_API CFormatStream & CFormatStream::Insert(unsigned long long);
template VLK_API void CFormatStream::PrintInt(int);
template VLK_API void CFormatStream::PrintInt(unsigned int);
template VLK_API void CFormatStream::PrintInt(long long);
template VLK_API void CFormatStream::PrintInt(unsigned long long);

CFormatStream & CFormatStream::operator<<(long value)
{
    return Insert(static_cast<std::conditional_t<sizeof(long) == 4, int, long long>>(value));
}

CFormatStream & CFormatStream::operator<<(unsigned long value)
{
    return Insert(static_cast<std::conditional_t<sizeof(long) == 4, unsigned int, unsigned long long>>(value));
}

void CFormatStream::FormatPointer(void const * pointer)
{
    PrintInt(static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(pointer)));
}

/// Prints a text behind the parsing of its placeholder. maxParameters: how many a hexadecimal dump may have; one is
/// the number of bytes.
void CFormatStream::InsertPlaced(char const * text, std::size_t n, unsigned int maxParameters)
{
    VLK_SOURCE(source);
    if (GetFormatParameters(0, 0) == NoPlaceholder || m_uType == TypeString) {
        FormatedWrite(text, n, 1);
    } else if (m_uType == TypePointer) {
        FormatPointer(text);
    } else {
        if (m_uParameterCount > maxParameters) doThrow(source);
        if (m_uParameterCount == 1) n = m_uParameter[0];
        HexDump(reinterpret_cast<unsigned char const *>(text), text != nullptr ? n : 0);
    }
}

CFormatStream & CFormatStream::operator<<(char const * text)
{
    return Guarded([&] { InsertPlaced(text, text != nullptr ? std::strlen(text) : 0, 1); });
}

CFormatStream & CFormatStream::operator<<(Strings::CSubStringRef const & text)
{
    return Guarded([&] { InsertPlaced(text.data(), text.size(), 0); });
}

CFormatStream & CFormatStream::operator<<(std::string const & text)
{
    return Guarded([&] { InsertPlaced(text.data(), text.size(), 0); });
}

CFormatStream & CFormatStream::operator<<(void const * pointer)
{
    return Guarded([&] {
        VLK_SOURCE(source);
        if (GetFormatParameters(0, 0) == NoPlaceholder) {
            m_uType = TypePointer;
            m_uRadix = 16;
        }
        if (m_uType == TypePointer) {
            FormatPointer(pointer);
            return;
        }
        if (m_uType != TypeHexDump || m_uParameterCount != 1) doThrow(source);
        HexDump(static_cast<unsigned char const *>(pointer), pointer != nullptr ? m_uParameter[0] : 0);
    });
}

CFormatStream & CFormatStream::operator<<(Language_Support::CLanguageStrg const & text)
{
    Strings::TString<512> copy(text);
    return *this << static_cast<Strings::CSubStringRef const &>(copy);
}

CFormatStream & CFormatStream::operator<<(Internals::CFormatResortBuffer & text)
{
    Strings::TString<512> ordered;
    text.PutInOrder(ordered);
    return *this << static_cast<Strings::CSubStringRef const &>(ordered);
}

void CFormatStream::HexDump(unsigned char const * data, std::size_t size)
{
    // On return the column where the dump began is the left margin, whatever the margin was before.
    struct SMargin {
        ~SMargin() { buffer.SetLeftMargin(column); }
        CBuffer & buffer;
        std::size_t column;
    };
    SMargin const margin{*m_pBuffer, m_pBuffer->GetColumn()};
    m_pBuffer->SetLeftMargin(margin.column + m_uMargin);
    if (size == 0) return;
    int const digits = static_cast<int>(std::log(static_cast<double>(size)) / LogOf16) + 1;
    std::size_t const head = std::min(m_uWidth != 0 ? RoundUpToRow(m_uWidth) : UnlimitedHead, size);
    DumpRows(data, 0, head, digits);
    if (head == size) return;
    if (size - head > RowBytes) m_pBuffer->Format("%= *S\n") << digits + 2 << ":";
    DumpRows(data, RoundUpToRow(size) - RowBytes, size, digits);
}

/// The rows from one offset to another; rows that only repeat one byte are told by one row of dots.
void CFormatStream::DumpRows(unsigned char const * data, std::size_t from, std::size_t to, int digits)
{
    std::size_t run = 0;
    for (std::size_t row = from; row < to; row += RowBytes) {
        std::size_t const end = std::min(row + RowBytes, to);
        // The first row repeats nothing, so the run begins with the second.
        for (std::size_t i = row; row != from && i != end; ++i)
            run = data[i] == data[i - 1] ? run + 1 : 0;
        if (run < RepeatedRow || end == to)
            DumpRow(data + row, end - row, row, digits);
        else if (run < MoreRepeatedRows)
            m_pBuffer->Format("[%=.*s]\n") << digits << "";
    }
}

void CFormatStream::DumpRow(unsigned char const * row, std::size_t n, std::size_t offset, int digits)
{
    char hex[3 * RowBytes + 1];
    char characters[RowBytes + 1];
    for (std::size_t i = 0; i != n; ++i) {
        hex[3 * i] = ' ';
        hex[3 * i + 1] = UpperDigits[row[i] >> 4];
        hex[3 * i + 2] = UpperDigits[row[i] & 0xF];
        characters[i] = row[i] < 33 ? '.' : static_cast<char>(row[i]);
    }
    hex[3 * n] = '\0';
    characters[n] = '\0';
    m_pBuffer->Format("[%0*X]:%- 50s%s\n") << digits << offset << hex << characters;
}

} // namespace VLK::Output_Streams
