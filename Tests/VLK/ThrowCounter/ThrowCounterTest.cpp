#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <memory>
#include <string>

#include "Platform/SharedModule.h"
#include "ProgramWithLibrary.h"

// The counter of threads with throwing disabled, in processes with and without the library that shares it.

namespace {

constexpr char LibraryPath[] = KXRA_SHARED_LIBRARY;
constexpr char EmptyLibraryPath[] = KXRA_EMPTY_LIBRARY; ///< has the name, but not the counter
constexpr char ModulePath[] = KXRA_MODULE;
constexpr char OtherModulePath[] = KXRA_OTHER_MODULE;
constexpr char ProgramPath[] = KXRA_COUNTER_PROGRAM; ///< tells which counter it uses
constexpr unsigned int Error = 0;

class CLoaded {
public:
    explicit CLoaded(char const * path)
    {
        std::string reason;
        m_Module.Reset(Platform::LoadModule(path, reason));
        EXPECT_TRUE(m_Module) << reason;
    }
    template <class TFunction>
    TFunction * Function(char const * name) const
    {
        return reinterpret_cast<TFunction *>(Platform::ModuleSymbol(m_Module.Get(), name));
    }

private:
    Platform::CModuleHandle m_Module;
};

class CLibrary : public CLoaded {
public:
    explicit CLibrary(char const * path = LibraryPath) : CLoaded(path) {}
    int Count() const { return Function<int()>("SharedCount")(); }
};

class CModule : public CLoaded {
public:
    explicit CModule(char const * path = ModulePath) : CLoaded(path) {}
    int CountInUse() const { return Function<int()>("CountInUse")(); }
    int OwnCount() const { return Function<int()>("OwnCount")(); }
    bool Throws() const { return Function<bool()>("Throws")(); }
    unsigned int WithThrowDisabled(std::function<void()> look) const
    {
        return Function<unsigned int(void (*)(void *), void *)>("WithThrowDisabled")(
            [](void * argument) { (*static_cast<std::function<void()> *>(argument))(); }, &look);
    }
};

std::string OutputOf(std::string const & command)
{
    std::unique_ptr<std::FILE, int (*)(std::FILE *)> const pipe(::popen(command.c_str(), "r"), &::pclose);
    std::string output;
    for (int c = 0; pipe != nullptr && (c = std::fgetc(pipe.get())) != EOF;)
        output.push_back(static_cast<char>(c));
    return output;
}

bool IsLibraryLoaded()
{
    // It lies outside the folders that this program's loader searches, so only a loaded one is found.
    return static_cast<bool>(Platform::CModuleHandle(Platform::OpenSharedModule("orVLK")));
}

} // namespace

TEST(ThrowCounterTest, WithoutTheLibraryAModuleCountsForItself)
{
    ASSERT_FALSE(IsLibraryLoaded());
    CModule const module;
    EXPECT_TRUE(module.Throws());
    EXPECT_EQ(Error, module.WithThrowDisabled([&] {
        EXPECT_EQ(1, module.CountInUse());
        EXPECT_EQ(1, module.OwnCount());
    }));
    EXPECT_EQ(0, module.CountInUse());
    EXPECT_TRUE(module.Throws());
}

TEST(ThrowCounterTest, TheLibraryThatTheProcessHasLoadedCounts)
{
    CLibrary const library;
    CModule const module;
    EXPECT_TRUE(module.Throws());
    EXPECT_EQ(Error, module.WithThrowDisabled([&] {
        EXPECT_EQ(1, library.Count());
        EXPECT_EQ(1, module.CountInUse());
        EXPECT_EQ(0, module.OwnCount());
    }));
    EXPECT_EQ(0, library.Count());
    EXPECT_TRUE(module.Throws());
}

TEST(ThrowCounterTest, AProgramUsesTheLibraryThatItsLoaderFinds)
{
    EXPECT_EQ("own 1, in use 1\n", OutputOf(std::string("\"") + ProgramPath + "\""));
    const CProgramWithLibrary program(ProgramPath, LibraryPath);
    EXPECT_EQ("own 0, in use 1\n", OutputOf('"' + program.File() + '"'));
}

TEST(ThrowCounterTest, ModulesOfAProcessShareTheCounter)
{
    CLibrary const library;
    CModule const first;
    CModule const second(OtherModulePath);
    first.WithThrowDisabled([&] {
        EXPECT_EQ(1, second.CountInUse());
        EXPECT_TRUE(second.Throws()); // the choice is the thread's in that module alone
        second.WithThrowDisabled([&] { EXPECT_EQ(2, library.Count()); });
        EXPECT_EQ(1, library.Count());
    });
    EXPECT_EQ(0, library.Count());
}

TEST(ThrowCounterTest, TheModuleKeepsTheLibraryLoadedToItsEnd)
{
    {
        CModule const module = [] {
            CLibrary const library;
            return CModule();
        }();
        EXPECT_TRUE(IsLibraryLoaded());
        EXPECT_EQ(Error, module.WithThrowDisabled([&] { EXPECT_EQ(1, CLibrary().Count()); }));
    }
    EXPECT_FALSE(IsLibraryLoaded());
}

TEST(ThrowCounterTest, InALibraryWithoutTheCounterAModuleCountsForItself)
{
    CLibrary const library(EmptyLibraryPath);
    EXPECT_EQ(-1, library.Count());
    CModule const module;
    EXPECT_EQ(Error, module.WithThrowDisabled([&] { EXPECT_EQ(1, module.OwnCount()); }));
    EXPECT_EQ(0, module.CountInUse());
}
