#include "Platform/Runtime.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <stdlib.h>

#include <io.h>

namespace {

std::atomic<int> g_calls{0};

void CountCall(wchar_t const *, wchar_t const *, wchar_t const *, unsigned, std::uintptr_t)
{
    ++g_calls;
}

TEST(ParameterChecksTest, AreSilentUntilTheFormerHandlerIsPutBack)
{
    _invalid_parameter_handler const own = ::_set_invalid_parameter_handler(&CountCall);
    Platform::ParameterHandler const former = Platform::SilenceParameterChecks();
    EXPECT_EQ(-1, ::_close(4711)); // would end the process
    EXPECT_EQ(EBADF, errno);
    EXPECT_EQ(0, g_calls);
    Platform::RestoreParameterChecks(former);
    EXPECT_EQ(&CountCall, ::_set_invalid_parameter_handler(own));
}

} // namespace
