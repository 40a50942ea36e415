#include "Platform/Module.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <filesystem>

#include <gtest/gtest.h>

#include <windows.h>

#include "Platform/VersionBlockAccess.h"

using namespace Platform;

namespace {

std::string Lower(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

} // namespace

TEST(SystemModuleTest, TheHandleOfAListedOrPinnedModuleIsTheSystemsOwn)
{
    std::map<std::string, void *> modules;
    ASSERT_EQ(Success, LoadedModules(modules));
    const auto kernel = std::find_if(modules.begin(), modules.end(),
                                     [](auto const & module) { return Lower(module.first) == "kernel32.dll"; });
    ASSERT_NE(modules.end(), kernel);
    EXPECT_EQ(::GetModuleHandleA("kernel32"), kernel->second);
    EXPECT_EQ(::GetModuleHandleA("kernel32"), PinModule("kernel32.dll"));
}

TEST(SystemModuleTest, APinnedModuleStaysHoweverOftenItIsGivenBack)
{
    constexpr char name[] = "cabinet.dll"; // of the system, and used by nobody here
    ASSERT_EQ(nullptr, ::GetModuleHandleA(name));
    const HMODULE module = ::LoadLibraryA(name);
    ASSERT_NE(nullptr, module) << ::GetLastError();
    EXPECT_EQ(module, PinModule(name));
    for (int i = 0; i < 10; ++i)
        ::FreeLibrary(module);
    EXPECT_EQ(module, ::GetModuleHandleA(name));
}

TEST(SystemModuleTest, AskingForThePathOfALibraryKeepsItNotLoaded)
{
    const HMODULE module = ::LoadLibraryA(KXRA_VERSION_PROBE);
    ASSERT_NE(nullptr, module) << ::GetLastError();
    const FARPROC inside = ::GetProcAddress(module, "VersionProbe");
    std::string path;
    EXPECT_EQ(Success, ModulePath(reinterpret_cast<void const *>(inside), path));
    EXPECT_NE(FALSE, ::FreeLibrary(module));
    EXPECT_EQ(nullptr, ::GetModuleHandleA(KXRA_VERSION_PROBE));
}

TEST(SystemModuleTest, BothDirectoriesOfTheSystemAreThere)
{
    std::string own;
    std::string other;
    ASSERT_TRUE(SystemLibraryDirectory(own));
    ASSERT_TRUE(OtherWordSizeDirectory(other));
    EXPECT_EQ("system32", Lower(std::filesystem::path(own).filename().string()));
    EXPECT_EQ("syswow64", Lower(std::filesystem::path(other).filename().string()));
    EXPECT_TRUE(std::filesystem::is_directory(own));
}

TEST(SystemModuleTest, TheKernelsFileTellsAVersionOfItsOwn)
{
    std::string file;
    ASSERT_TRUE(SystemVersionFile(file));
    EXPECT_EQ("kernel32.dll", Lower(std::filesystem::path(file).filename().string()));
    const std::string block = LoadVersionBlock(file);
    void const * data = nullptr;
    std::uint32_t size = 0;
    ASSERT_TRUE(QueryVersionBlock(block, "\\", data, size));
    SFixedVersion fixed{};
    ASSERT_GE(size, sizeof fixed);
    std::memcpy(&fixed, data, sizeof fixed);
    EXPECT_EQ(0xFEEF04BDu, fixed.signature);
    EXPECT_GE(fixed.fileVersionMS >> 16, 6u);
}

TEST(SystemModuleTest, AProgramOf64BitsRunsInNoCompatibilityLayer)
{
    EXPECT_FALSE(RunsInCompatibilityLayer());
}
