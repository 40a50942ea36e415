#ifndef TESTS_EXTENSION_EXTENSION_FIXTURE_H
#define TESTS_EXTENSION_EXTENSION_FIXTURE_H

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "Platform/Process.h"
#include "Support/Deadline.h"
#include "Support/RegistryFixture.h"
#include "Support/ScopedVariable.h"
#include "Tests/Extension/LoadedExtension.h"

/// What tests of the test extension need again and again.

inline constexpr char kFile[] = TEST_EXTENSION_FILE;
inline const std::string kA = "1.3.6.1.4.1.88417.99.1";
inline const std::string kB = "1.3.6.1.4.1.88417.99.2";

inline std::uint32_t Handles()
{
    std::uint32_t count = 0;
    EXPECT_TRUE(Platform::HandleCount(count));
    return count;
}

/// Without a registry.
class ExtensionTest : public testing::Test {
protected:
    CRegistryFixture m_noRegistry;
};

#endif
