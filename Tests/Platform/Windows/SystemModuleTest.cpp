#include "Platform/Module.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <filesystem>

#include <gtest/gtest.h>

#include <windows.h>

#include "Platform/DynamicLibrary.h"
#include "Platform/VersionBlockAccess.h"
#include "Support/TempDirectory.h"

using namespace Platform;

namespace {

std::string Lower(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

/// A folder whose path is longer than the system once allowed, for a scope. In the form that knows no limit.
class CDeepFolder {
public:
    static constexpr std::size_t PrefixLength = 4;

    CDeepFolder()
    {
        for (std::wstring * const folder : {&m_outer, &m_inner})
            EXPECT_NE(FALSE, ::CreateDirectoryW(folder->c_str(), nullptr)) << ::GetLastError();
    }
    ~CDeepFolder()
    {
        for (std::wstring * const folder : {&m_inner, &m_outer})
            ::RemoveDirectoryW(folder->c_str());
    }
    CDeepFolder(CDeepFolder const &) = delete;
    CDeepFolder & operator=(CDeepFolder const &) = delete;

    std::wstring Path() const { return m_inner; }

private:
    CTempDirectory m_directory;
    std::wstring const m_longName = std::wstring(200, L'a') + L'\\';
    std::wstring m_outer = L"\\\\?\\" + std::filesystem::path(m_directory.File("")).wstring() + m_longName;
    std::wstring m_inner = m_outer + m_longName;
};

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

TEST(SystemModuleTest, APathBeyondTheSystemsOldLimitIsToldInFull)
{
    const CDeepFolder folder;
    const std::wstring file = folder.Path() + L"deep.dll";
    ASSERT_NE(FALSE, ::CopyFileW(std::filesystem::path(KXRA_VERSION_PROBE).c_str(), file.c_str(), TRUE));
    CModuleHandle module(::LoadLibraryExW(file.c_str(), nullptr, 0));
    ASSERT_TRUE(module) << ::GetLastError();
    std::string path;
    EXPECT_EQ(Success, ModulePath(ModuleSymbol(module.Get(), "VersionProbe"), path));
    const std::string behindThePrefix = std::filesystem::path(file.substr(CDeepFolder::PrefixLength)).string();
    EXPECT_GT(behindThePrefix.size(), std::size_t{MAX_PATH});
    EXPECT_TRUE(path.ends_with(behindThePrefix)) << path;
    module.Reset();
    EXPECT_NE(FALSE, ::DeleteFileW(file.c_str()));
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
