#ifndef VLK_SRC_INI_NUMBER_H
#define VLK_SRC_INI_NUMBER_H

#include "VLK/Strings.h"

namespace VLK::Internals {

/// Numbers as the C library's strtol family reads them, with base 0; an empty text is 0, what is too large becomes the
/// limit of the type. False when other characters follow.
bool ParseNumber(Strings::CSubStringRef const & text, int & value);
bool ParseNumber(Strings::CSubStringRef const & text, unsigned int & value);
bool ParseNumber(Strings::CSubStringRef const & text, long long & value);
bool ParseNumber(Strings::CSubStringRef const & text, unsigned long long & value);

/// Decimal, or "0x" and upper-case digits.
template <class T>
Strings::TString<32> FormatNumber(T value, unsigned int radix);

extern template Strings::TString<32> FormatNumber(int, unsigned int);
extern template Strings::TString<32> FormatNumber(unsigned int, unsigned int);
extern template Strings::TString<32> FormatNumber(long long, unsigned int);
extern template Strings::TString<32> FormatNumber(unsigned long long, unsigned int);

} // namespace VLK::Internals

#endif
