#include <gtest/gtest.h>

#include <filesystem>
#include <map>

#include "Platform/DynamicLibrary.h"
#include "Platform/Module.h"
#include "Platform/Process.h"
#include "Support/RegistryFixture.h"
#include "Support/TempDirectory.h"

TEST(DebugUnloadTest, ALibraryThatTracedUnloadsAndLeavesNoHandleOpen)
{
    const CTempDirectory directory;
    const std::string path = directory.File("trace.log");
    CRegistryFixture registry;
    registry.Write("[HKLM\\SOFTWARE\\Debug\\PROBE]\n\"FileDebugLevel\"=dword:1\n\"TraceFile\"=" +
                   CRegistryFixture::Quoted(path) + "\n");
    directory.Write("trace.log", "#");
    std::uint32_t before = 0;
    for (int round = 0; round < 4; ++round) {
        std::string reason;
        Platform::CModuleHandle library(Platform::LoadModule(KXRA_DEBUG_PROBE, reason));
        ASSERT_TRUE(library) << reason;
        using TraceFn = int (*)(char const *);
        const auto trace = reinterpret_cast<TraceFn>(Platform::ModuleSymbol(library.Get(), "TraceFromALibrary"));
        ASSERT_NE(nullptr, trace);
        EXPECT_EQ(1, trace("PROBE"));
        library.Reset();
        std::map<std::string, void *> modules;
        ASSERT_EQ(Platform::Success, Platform::LoadedModules(modules));
        EXPECT_FALSE(modules.contains(std::filesystem::path(KXRA_DEBUG_PROBE).filename().string()));
        std::uint32_t handles = 0;
        ASSERT_TRUE(Platform::HandleCount(handles));
        if (round == 0) before = handles;
        EXPECT_EQ(before, handles);
    }
    EXPECT_EQ("#\r\nfrom a library\r\nfrom a library\r\nfrom a library\r\nfrom a library", directory.Read("trace.log"));
}
