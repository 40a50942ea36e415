#include "GetQuery.h"

#include <gtest/gtest.h>

#include "FakeFunctions.h"
#include "Support/AllocationFault.h"

namespace {

using Service::CArcs;
using Service::CGetQuery;
using Service::EGot;

/// Names {1, n}: below 10 there is a value, from 10 on none is known, {1, 5} has no value.
int AnswerUpToTen(std::uint8_t, RFC1157VarBindList & list, std::uint32_t & status, std::uint32_t & index)
{
    for (std::uint32_t i = 0; i < list.len; ++i) {
        const std::uint32_t number = NameOf(list.list[i])[1];
        index = i + 1;
        if (number >= 10) {
            status = SNMP_ERRORSTATUS_NOSUCHNAME;
            return 1;
        }
        if (number != 5) FakeInteger(list.list[i], static_cast<std::int32_t>(number));
    }
    index = 0;
    return 1;
}

TEST(GetQueryTest, AllNamesGoInOneCall)
{
    SFakeFunctions fake(AnswerUpToTen);
    CGetQuery query(/*stopAtMissing=*/false);
    for (std::uint32_t i = 1; i <= 4; ++i)
        query.Add(CArcs{1, i});
    query.Run(fake.functions);
    ASSERT_EQ(1u, fake.asked.size());
    EXPECT_EQ(4u, fake.asked[0].size());
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(EGot::Value, query.Got(i));
        EXPECT_EQ(static_cast<std::int32_t>(i + 1), query.Value(i).Any().asnValue.number);
    }
}

TEST(GetQueryTest, BehindAnUnknownNameTheRestIsAskedAgain)
{
    SFakeFunctions fake(AnswerUpToTen);
    CGetQuery query(/*stopAtMissing=*/false);
    for (const std::uint32_t number : {1u, 10u, 2u, 11u, 3u})
        query.Add(CArcs{1, number});
    query.Run(fake.functions);
    ASSERT_EQ(3u, fake.asked.size());
    EXPECT_EQ((std::vector<CArcs>{{1, 2}, {1, 11}, {1, 3}}), fake.asked[1]);
    EXPECT_EQ((std::vector<CArcs>{{1, 3}}), fake.asked[2]);
    const EGot expected[] = {EGot::Value, EGot::Missing, EGot::Value, EGot::Missing, EGot::Value};
    for (std::size_t i = 0; i < 5; ++i)
        EXPECT_EQ(expected[i], query.Got(i)) << i;
}

TEST(GetQueryTest, ForVersion1TheFirstUnknownNameEndsTheRequest)
{
    SFakeFunctions fake(AnswerUpToTen);
    CGetQuery query(/*stopAtMissing=*/true);
    for (const std::uint32_t number : {1u, 10u, 2u})
        query.Add(CArcs{1, number});
    query.Run(fake.functions);
    EXPECT_EQ(1u, fake.asked.size());
    EXPECT_EQ(EGot::Missing, query.Got(1));
    EXPECT_EQ(EGot::Nothing, query.Got(2));
}

TEST(GetQueryTest, AnObjectWithoutAValueIsMissing)
{
    SFakeFunctions fake(AnswerUpToTen);
    CGetQuery query(/*stopAtMissing=*/false);
    query.Add(CArcs{1, 5});
    query.Run(fake.functions);
    EXPECT_EQ(EGot::Missing, query.Got(0));
}

TEST(GetQueryTest, WhatCannotExistIsNeverAsked)
{
    SFakeFunctions fake(AnswerUpToTen);
    CGetQuery query(/*stopAtMissing=*/false);
    query.AddMissing();
    query.Run(fake.functions);
    EXPECT_TRUE(fake.asked.empty());
    EXPECT_EQ(EGot::Missing, query.Got(0));
}

TEST(GetQueryTest, AnUnknownNameWithoutAnIndexIsFoundByAskingOneByOne)
{
    SFakeFunctions fake(
        [](std::uint8_t type, RFC1157VarBindList & list, std::uint32_t & status, std::uint32_t & index) {
            const int result = AnswerUpToTen(type, list, status, index);
            index = 0;
            return result;
        });
    CGetQuery query(/*stopAtMissing=*/false);
    for (const std::uint32_t number : {1u, 10u, 2u})
        query.Add(CArcs{1, number});
    query.Run(fake.functions);
    EXPECT_EQ(EGot::Value, query.Got(0));
    EXPECT_EQ(EGot::Missing, query.Got(1));
    EXPECT_EQ(EGot::Value, query.Got(2));
}

TEST(GetQueryTest, AnotherStatusIsTheErrorOfItsBinding)
{
    SFakeFunctions fake([](std::uint8_t, RFC1157VarBindList &, std::uint32_t & status, std::uint32_t & index) {
        status = SNMP_ERRORSTATUS_AUTHORIZATIONERROR;
        index = 2;
        return 1;
    });
    CGetQuery query(/*stopAtMissing=*/false);
    query.Add(CArcs{1, 1});
    query.Add(CArcs{1, 2});
    query.Run(fake.functions);
    EXPECT_EQ(EGot::Nothing, query.Got(0));
    EXPECT_EQ(EGot::Error, query.Got(1));
    EXPECT_EQ(16u, query.Status(1));
}

TEST(GetQueryTest, ADroppedQueryMakesNoCall)
{
    SFakeFunctions fake(AnswerUpToTen);
    CGetQuery query(/*stopAtMissing=*/false);
    query.Add(CArcs{1, 1});
    query.Drop();
    query.Run(fake.functions);
    EXPECT_TRUE(fake.asked.empty());
}

/// An extension that needs no memory and knows every name.
std::int32_t KnowAll(std::uint8_t, RFC1157VarBindList * list, std::uint32_t * status, std::uint32_t * index)
{
    *status = 0;
    *index = 0;
    for (std::uint32_t i = 0; i < list->len; ++i)
        FakeInteger(list->list[i], 1);
    return 1;
}

TEST(GetQueryTest, AnySingleFailedAllocationIsAnErrorOfTheNamesThatHaveNoAnswer)
{
    Service::SEntryPoints extension;
    extension.query = KnowAll;
    bool failed = false;
    for (unsigned n = 1;; ++n) {
        CGetQuery query(/*stopAtMissing=*/false);
        query.Add(CArcs{1, 1});
        query.Add(CArcs{1, 2});
        const CAllocationFault fault(n);
        query.Run(extension);
        if (!fault.Fired()) break;
        failed = true;
        for (std::size_t i = 0; i < 2; ++i) {
            EXPECT_EQ(EGot::Error, query.Got(i)) << n;
            EXPECT_EQ(SNMP_ERRORSTATUS_RESOURCEUNAVAILABLE, query.Status(i)) << n;
        }
    }
    EXPECT_TRUE(failed);
}

/// What an extension makes of a call that it fails as a whole.
struct SFailure {
    char const * name;
    int result;
    std::uint32_t status;
    std::uint32_t lengthen;
    std::uint32_t expected;
};

class GetFailureTest : public testing::TestWithParam<SFailure> {};

TEST_P(GetFailureTest, IsAnErrorOfTheFirstBinding)
{
    SFailure const & failure = GetParam();
    SFakeFunctions fake([&](std::uint8_t, RFC1157VarBindList & list, std::uint32_t & status, std::uint32_t &) {
        status = failure.status;
        list.len += failure.lengthen;
        return failure.result;
    });
    CGetQuery query(/*stopAtMissing=*/false);
    query.Add(CArcs{1, 1});
    query.Add(CArcs{1, 2});
    query.Run(fake.functions);
    EXPECT_EQ(EGot::Error, query.Got(0));
    EXPECT_EQ(failure.expected, query.Status(0));
}

INSTANTIATE_TEST_SUITE_P(Kinds, GetFailureTest,
                         testing::Values(SFailure{"ResultZero", 0, 0, 0, 5}, SFailure{"LongerList", 1, 0, 7, 5},
                                         SFailure{"ShorterList", 1, 0, static_cast<std::uint32_t>(-1), 5},
                                         SFailure{"StatusBeyondAll", 1, 19, 0, 5},
                                         SFailure{"LargestStatus", 1, 18, 0, 18},
                                         SFailure{"ResultZeroWithStatus", 0, 13, 0, 13}),
                         [](auto const & test) { return std::string(test.param.name); });

} // namespace
