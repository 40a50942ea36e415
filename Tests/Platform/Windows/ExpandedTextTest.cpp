#include "Platform/Registry.h"

#include <gtest/gtest.h>

#include <cstring>

#include "Platform/Windows/ReplacedImport.h"

namespace {

constexpr char Expanded[] = "expanded";
DWORD g_counted = 0; ///< bytes that the system says the text has

DWORD WINAPI Expand(LPCSTR, LPSTR out, DWORD room)
{
    if (g_counted == 0 || room < g_counted) return g_counted;
    std::memset(out, '\0', g_counted);
    std::memcpy(out, Expanded, sizeof Expanded);
    return g_counted;
}

} // namespace

TEST(ExpandedTextTest, EndsAtItsFirstNulHoweverManyTheSystemCounts)
{
    const TReplacedImport<decltype(::ExpandEnvironmentStringsA)> replaced("ExpandEnvironmentStringsA", &Expand);
    for (const DWORD more : {DWORD{0}, DWORD{1}, DWORD{9}}) {
        g_counted = DWORD{sizeof Expanded} + more;
        EXPECT_EQ(Expanded, Platform::ExpandEnvironment("%x%")) << more;
    }
}

TEST(ExpandedTextTest, WhatCannotBeExpandedStaysAsItIs)
{
    const TReplacedImport<decltype(::ExpandEnvironmentStringsA)> replaced("ExpandEnvironmentStringsA", &Expand);
    g_counted = 0;
    EXPECT_EQ("%x%", Platform::ExpandEnvironment("%x%"));
}
