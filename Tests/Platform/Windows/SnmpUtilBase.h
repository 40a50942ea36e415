#ifndef TESTS_PLATFORM_WINDOWS_SNMP_UTIL_BASE_H
#define TESTS_PLATFORM_WINDOWS_SNMP_UTIL_BASE_H

#include <gtest/gtest.h>

/// The memory is the system's, in whose place nothing can be put.
class SnmpUtilTest : public testing::Test {};

#endif
