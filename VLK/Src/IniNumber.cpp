#include "IniNumber.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

#include "VLK/FormatStream.h"

namespace VLK::Internals {

using Strings::CSubStringRef;
using Strings::TString;

namespace {

bool ParseSigned(CSubStringRef const & text, long long & value, long long least, long long largest)
{
    TString<64> copy;
    copy = text;
    char * end = nullptr;
    value = std::clamp(std::strtoll(copy.C_Str(), &end, 0), least, largest);
    return *end == '\0';
}

bool ParseUnsigned(CSubStringRef const & text, unsigned long long & value, unsigned long long largest)
{
    TString<64> copy;
    copy = text;
    char * end = nullptr;
    value = std::strtoull(copy.C_Str(), &end, 0);
    // "-1" is the largest number, as for strtoul with a type of that width.
    bool const isNegative = copy.Find('-') != CSubStringRef::POSERR;
    if ((isNegative ? 0 - value : value) > largest) value = largest;
    return *end == '\0';
}

} // namespace

bool ParseNumber(CSubStringRef const & text, int & value)
{
    using Limits = std::numeric_limits<int>;
    long long number = 0;
    bool const good = ParseSigned(text, number, Limits::min(), Limits::max());
    value = static_cast<int>(number);
    return good;
}

bool ParseNumber(CSubStringRef const & text, unsigned int & value)
{
    unsigned long long number = 0;
    bool const good = ParseUnsigned(text, number, std::numeric_limits<unsigned int>::max());
    value = static_cast<unsigned int>(number);
    return good;
}

bool ParseNumber(CSubStringRef const & text, long long & value)
{
    using Limits = std::numeric_limits<long long>;
    return ParseSigned(text, value, Limits::min(), Limits::max());
}

bool ParseNumber(CSubStringRef const & text, unsigned long long & value)
{
    return ParseUnsigned(text, value, std::numeric_limits<unsigned long long>::max());
}

template <class T>
TString<32> FormatNumber(T value, unsigned int radix)
{
    // Also what has no sign goes through "%d": the largest values read back all the same.
    TString<32> text;
    text.Format(radix == 16 ? "0x%X" : "%d") << value;
    return text;
}

template TString<32> FormatNumber(int, unsigned int);
template TString<32> FormatNumber(unsigned int, unsigned int);
template TString<32> FormatNumber(long long, unsigned int);
template TString<32> FormatNumber(unsigned long long, unsigned int);

} // namespace VLK::Internals
