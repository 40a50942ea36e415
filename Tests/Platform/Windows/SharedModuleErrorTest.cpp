#include "Platform/SharedModule.h"

#include <gtest/gtest.h>

#include "Platform/Error.h"

TEST(SharedModuleErrorTest, WhatIsNotThereLeavesTheThreadsErrorAsItWas)
{
    Platform::SetLastError(4711);
    EXPECT_EQ(nullptr, Platform::OpenSharedModule("kxra_there_is_no_such_library"));
    EXPECT_EQ(4711u, Platform::LastError());
    Platform::CModuleHandle const kernel(Platform::OpenSharedModule("kernel32"));
    ASSERT_TRUE(kernel);
    EXPECT_EQ(nullptr, Platform::SharedObject(kernel.Get(), "Nothing::OfTheKind"));
    EXPECT_EQ(4711u, Platform::LastError());
}
