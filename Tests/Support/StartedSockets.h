#ifndef TESTS_SUPPORT_STARTED_SOCKETS_H
#define TESTS_SUPPORT_STARTED_SOCKETS_H

#include <gtest/gtest.h>

#include "Platform/Socket.h"

/// Keeps the socket library ready while the tests of a program run, which is the business of whoever uses sockets.
class CStartedSockets : public testing::Environment {
public:
    void SetUp() override { ASSERT_EQ(Platform::Success, Platform::StartSockets()); }
    void TearDown() override { Platform::StopSockets(); }
};
inline testing::Environment * const g_startedSockets = testing::AddGlobalTestEnvironment(new CStartedSockets);

#endif
