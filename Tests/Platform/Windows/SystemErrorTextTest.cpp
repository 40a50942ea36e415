#include "Platform/Error.h"

#include <gtest/gtest.h>

#include "Platform/Native/SockAddr.h" // the system's interface without its second names for ours

using namespace Platform;

TEST(SystemErrorTextTest, ATextWithAPlaceForANameKeepsThePlace)
{
    EXPECT_NE(std::string::npos, ErrorText(ERROR_BAD_EXE_FORMAT).find("%1")) << ErrorText(ERROR_BAD_EXE_FORMAT);
}
