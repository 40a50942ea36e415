#ifndef PLATFORM_ATTRIBUTES_H
#define PLATFORM_ATTRIBUTES_H

#include <stdio.h> // says which printf the C library has, where there are two

/// Marks a function whose parameter number `text` (counted from 1; a static member counts no object) is a printf
/// format for the arguments from number `first` on, so that the compiler checks every call. `first` is 0 where
/// the arguments come as a va_list. Means nothing to a compiler without such a check.
#if defined(__MINGW_PRINTF_FORMAT)
#define PLATFORM_PRINTF(text, first) __attribute__((format(__MINGW_PRINTF_FORMAT, text, first)))
#elif defined(__GNUC__)
#define PLATFORM_PRINTF(text, first) __attribute__((format(printf, text, first)))
#else
#define PLATFORM_PRINTF(text, first)
#endif

#endif
