#include "Platform/DynamicLibrary.h"

#include <filesystem>

#include <gtest/gtest.h>

#include "Support/TempDirectory.h"

using namespace Platform;

namespace {

constexpr char Needing[] = "needing.dll";

int AnswerOf(CModuleHandle const & needing)
{
    auto * const answer = reinterpret_cast<int (*)()>(ModuleSymbol(needing.Get(), "NeedingProbe"));
    return answer != nullptr ? answer() : 0;
}

} // namespace

TEST(NeededLibraryTest, WhatALibraryNeedsIsLookedForBesideIt)
{
    const CTempDirectory folder;
    const std::filesystem::path needed = KXRA_NEEDED_PROBE;
    std::filesystem::copy_file(KXRA_NEEDING_PROBE, folder.File(Needing));
    std::string reason;
    EXPECT_FALSE(CModuleHandle(LoadModule(folder.File(Needing), reason)));
    EXPECT_NE(std::string::npos, reason.find(Needing)) << reason;
    std::filesystem::copy_file(needed, folder.File(needed.filename().string()));
    const CModuleHandle needing(LoadModule(folder.File(Needing), reason));
    ASSERT_TRUE(needing) << reason;
    EXPECT_EQ(4711, AnswerOf(needing));
}
