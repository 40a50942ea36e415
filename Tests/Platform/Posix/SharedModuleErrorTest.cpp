#include "Platform/SharedModule.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

TEST(SharedModuleErrorTest, ALibraryThatIsNotThereLeavesNoErrorBehind)
{
    ::dlerror();
    EXPECT_EQ(nullptr, Platform::OpenSharedModule("kxra_there_is_no_such_library"));
    EXPECT_EQ(nullptr, ::dlerror());
}
