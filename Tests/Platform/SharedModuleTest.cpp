#include "Platform/SharedModule.h"

#include <gtest/gtest.h>

#include <string>

using namespace Platform;

namespace {

constexpr char Probe[] = KXRA_VERSION_PROBE; ///< path of a library
constexpr char ProbeName[] = "kxra_version_probe";

} // namespace

TEST(SharedModuleTest, ALoadedLibraryIsFoundByItsNameFromWhateverFolder)
{
    EXPECT_FALSE(CModuleHandle(OpenSharedModule(ProbeName))); // it is in no folder that the loader searches
    std::string reason;
    CModuleHandle loaded(LoadModule(Probe, reason));
    ASSERT_TRUE(loaded) << reason;
    {
        CModuleHandle const found(OpenSharedModule(ProbeName));
        EXPECT_EQ(loaded.Get(), found.Get());
        loaded.Reset();
        EXPECT_TRUE(CModuleHandle(OpenSharedModule(ProbeName))); // it was counted
    }
    EXPECT_FALSE(CModuleHandle(OpenSharedModule(ProbeName)));
}

TEST(SharedModuleTest, ObjectsAreFoundByTheirFullName)
{
    std::string reason;
    CModuleHandle const loaded(LoadModule(Probe, reason));
    ASSERT_TRUE(loaded) << reason;
    auto const * const number = static_cast<int const *>(SharedObject(loaded.Get(), "Probe::CShared::m_iNumber"));
    ASSERT_NE(nullptr, number);
    EXPECT_EQ(4711, *number);
    EXPECT_NE(nullptr, SharedObject(loaded.Get(), "Probe::Variable"));
}

TEST(SharedModuleTest, WhatIsNotThereIsNull)
{
    std::string reason;
    CModuleHandle const loaded(LoadModule(Probe, reason));
    ASSERT_TRUE(loaded) << reason;
    for (std::string const & name :
         {std::string("Probe::CShared::m_iOther"), std::string("Probe"), std::string(), std::string(2000, 'x')})
        EXPECT_EQ(nullptr, SharedObject(loaded.Get(), name.c_str())) << name;
    EXPECT_EQ(nullptr, SharedObject(nullptr, "Probe::CShared::m_iNumber"));
    EXPECT_EQ(nullptr, OpenSharedModule("kxra_there_is_no_such_library"));
    EXPECT_EQ(nullptr, OpenSharedModule(""));
    EXPECT_EQ(nullptr, OpenSharedModule(std::string(300, 'x').c_str()));
}
