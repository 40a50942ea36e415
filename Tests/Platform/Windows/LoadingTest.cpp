#include "Platform/SharedModule.h"

#include <filesystem>

#include <gtest/gtest.h>

#include "Platform/Native/SockAddr.h" // the system's interface without its second names for ours
#include "Support/ScopedVariable.h"
#include "Support/TempDirectory.h"

using namespace Platform;

namespace {

constexpr DWORD NoBoxes = SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX;

/// A library of the system that nobody here uses, and its file.
constexpr char Unused[] = "msimg32";
constexpr char UnusedFile[] = "msimg32.dll";

class LoadingTest : public testing::Test {
protected:
    LoadingTest() { ::SetThreadErrorMode(0, &m_formerMode); }
    ~LoadingTest() override { ::SetThreadErrorMode(m_formerMode, nullptr); }
    void SetUp() override
    {
        std::string reason;
        m_probe.Reset(LoadModule(KXRA_LOAD_PROBE, reason));
        ASSERT_TRUE(m_probe) << reason;
        ASSERT_EQ(nullptr, ::GetModuleHandleA(UnusedFile));
    }
    template <class TFunction>
    TFunction * Function(char const * name) const
    {
        return reinterpret_cast<TFunction *>(ModuleSymbol(m_probe.Get(), name));
    }

private:
    DWORD m_formerMode = 0;
    CModuleHandle m_probe;
};

} // namespace

TEST_F(LoadingTest, TheUserIsAskedNothingMeanwhileAndTheThreadIsItselfAgainBehindIt)
{
    EXPECT_EQ(NoBoxes, Function<DWORD()>("ErrorModeAtLoad")() & NoBoxes);
    EXPECT_EQ(0u, ::GetThreadErrorMode());
}

TEST_F(LoadingTest, OnlyTheProgramItselfLoadsASharedModuleThatIsNotLoadedYet)
{
    auto * const openFromALibrary = Function<ModuleHandle(char const *)>("OpenSharedModuleFromALibrary");
    EXPECT_EQ(nullptr, openFromALibrary(Unused));
    EXPECT_EQ(nullptr, ::GetModuleHandleA(UnusedFile));
    const CModuleHandle opened(OpenSharedModule(Unused));
    ASSERT_TRUE(opened);
    const CModuleHandle found(openFromALibrary(Unused));
    EXPECT_EQ(opened.Get(), found.Get());
}

TEST_F(LoadingTest, AnExtensionsNameWithoutAFolderIsNotLookedForAmongTheSystemsLibraries)
{
    std::string reason;
    EXPECT_FALSE(CModuleHandle(LoadModule(UnusedFile, reason)));
    EXPECT_NE(std::string::npos, reason.find(UnusedFile)) << reason;
}

TEST_F(LoadingTest, ASharedModuleIsNotLookedForInTheCurrentFolderNorOnThePath)
{
    const CTempDirectory folder;
    std::filesystem::copy_file(KXRA_VERSION_PROBE, folder.File("kxra_elsewhere.dll"));
    const CScopedVariable path("PATH", folder.File(""));
    const std::filesystem::path former = std::filesystem::current_path();
    std::filesystem::current_path(folder.File(""));
    EXPECT_FALSE(CModuleHandle(OpenSharedModule("kxra_elsewhere")));
    std::filesystem::current_path(former);
}
