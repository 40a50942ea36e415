#ifndef TESTS_SUPPORT_WINE_H
#define TESTS_SUPPORT_WINE_H

/// Whether the system is Wine and not Windows itself.
bool RunsUnderWine();

/// At the start of a test that holds on Windows and that Wine can't show, for a reason that is printed.
#define SKIP_UNDER_WINE(reason)                                                                                        \
    if (RunsUnderWine()) GTEST_SKIP() << "Wine can't show this: " << reason

#endif
