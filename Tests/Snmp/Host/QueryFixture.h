#ifndef TESTS_SNMP_HOST_QUERY_FIXTURE_H
#define TESTS_SNMP_HOST_QUERY_FIXTURE_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Fake/Debug.h"
#include "QueryFakes.h"

/// A host of its own and an empty trace for each test; at the end no handle may be open.
class CQueryTest : public testing::Test {
protected:
    using SLine = Fake::STraceLine;

    void SetUp() override
    {
        m_host = QueryFakes::SHost();
        Fake::EnableTrace(true);
        Fake::ClearTrace();
    }
    void TearDown() override { EXPECT_EQ(0, m_host.openHandles); }

    QueryFakes::SHost & m_host = QueryFakes::Host();
};

#endif
