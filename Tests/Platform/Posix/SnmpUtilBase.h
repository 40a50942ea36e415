#ifndef TESTS_PLATFORM_POSIX_SNMP_UTIL_BASE_H
#define TESTS_PLATFORM_POSIX_SNMP_UTIL_BASE_H

#include <gtest/gtest.h>

/// Blocks of the utility functions that are allocated and not freed yet.
int SnmpBlocks() noexcept;

/// Every block of a test is freed at its end.
class SnmpUtilTest : public testing::Test {
protected:
    void SetUp() override { m_before = SnmpBlocks(); }
    void TearDown() override { EXPECT_EQ(m_before, SnmpBlocks()); }

private:
    int m_before = 0;
};

#endif
