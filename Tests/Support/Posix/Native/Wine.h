#ifndef TESTS_SUPPORT_NATIVE_WINE_H
#define TESTS_SUPPORT_NATIVE_WINE_H

/// Whether the program runs under Wine, which can't show everything that its system promises.
inline bool RunsUnderWine()
{
    return false;
}

#endif
