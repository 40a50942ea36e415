#include "WalkQuery.h"

#include <gtest/gtest.h>

#include "FakeFunctions.h"
#include "Platform/SnmpUtil.h"
#include "Support/AllocationFault.h"

namespace {

using Service::CArcs;
using Service::CWalkQuery;

const CArcs kRoot{1, 3};

/// The region 1.3 with the objects 1.3.c.r, c from 1 to 3, r from 1 to 5. GETNEXT beyond the last gives 1.4.
CArcs Next(CArcs const & name)
{
    for (std::uint32_t column = 1; column <= 3; ++column)
        for (std::uint32_t row = 1; row <= 5; ++row)
            if (const CArcs candidate{1, 3, column, row}; candidate > name) return candidate;
    return {1, 4};
}

int Serve(std::uint8_t type, RFC1157VarBindList & list, std::uint32_t & status, std::uint32_t & index)
{
    for (std::uint32_t i = 0; i < list.len; ++i) {
        const CArcs name = NameOf(list.list[i]);
        if (type == SNMP_PDU_GETNEXT) {
            FakeName(list.list[i], Next(name));
        } else if (name.size() != 4) {
            status = SNMP_ERRORSTATUS_NOSUCHNAME;
            index = i + 1;
            return 1;
        }
        FakeInteger(list.list[i], 1);
    }
    return 1;
}

std::vector<CArcs> Names(CWalkQuery & query, std::size_t column = 0)
{
    std::vector<CArcs> names;
    for (auto const & result : query.Results())
        if (result.column == column) {
            const auto name = query.Name(result);
            names.emplace_back(name.begin(), name.end());
        }
    return names;
}

TEST(WalkQueryTest, AGetNextIsOneCallWithOneResult)
{
    SFakeFunctions fake(Serve);
    CWalkQuery query;
    query.AddColumn(CArcs{1, 3, 1, 2}, /*inclusive=*/false, kRoot, {}, 1);
    query.Run(fake.functions);
    EXPECT_EQ(1u, fake.asked.size());
    EXPECT_EQ((std::vector<CArcs>{{1, 3, 1, 3}}), Names(query));
    EXPECT_FALSE(query.WantsMore());
}

TEST(WalkQueryTest, RepetitionsAskAllColumnsInEachCall)
{
    SFakeFunctions fake(Serve);
    CWalkQuery query;
    query.AddColumn(CArcs{1, 3, 1}, false, kRoot, {}, 4);
    query.AddColumn(CArcs{1, 3, 2}, false, kRoot, {}, 4);
    query.Run(fake.functions);
    EXPECT_EQ(4u, fake.asked.size());
    for (auto const & call : fake.asked)
        EXPECT_EQ(2u, call.size());
    EXPECT_EQ((std::vector<CArcs>{{1, 3, 1, 1}, {1, 3, 1, 2}, {1, 3, 1, 3}, {1, 3, 1, 4}}), Names(query, 0));
    EXPECT_EQ((std::vector<CArcs>{{1, 3, 2, 1}, {1, 3, 2, 2}, {1, 3, 2, 3}, {1, 3, 2, 4}}), Names(query, 1));
}

TEST(WalkQueryTest, AColumnAtItsEndIsAskedNoMore)
{
    SFakeFunctions fake(Serve);
    CWalkQuery query;
    query.AddColumn(CArcs{1, 3, 3, 4}, false, kRoot, {}, 3);
    query.AddColumn(CArcs{1, 3, 1}, false, kRoot, {}, 3);
    query.Run(fake.functions);
    ASSERT_EQ(3u, fake.asked.size());
    EXPECT_EQ(1u, fake.asked[2].size());
    EXPECT_EQ(1u, Names(query, 0).size());
    EXPECT_EQ(3u, Names(query, 1).size());
}

TEST(WalkQueryTest, AStartBeforeTheRegionBeginsAtItsRoot)
{
    SFakeFunctions fake(Serve);
    CWalkQuery query;
    query.AddColumn(CArcs{1}, false, kRoot, {}, 1);
    query.Run(fake.functions);
    EXPECT_EQ((std::vector<CArcs>{kRoot}), fake.asked[0]);
    EXPECT_EQ((std::vector<CArcs>{{1, 3, 1, 1}}), Names(query));
}

TEST(WalkQueryTest, AStartBehindTheRegionAsksNothing)
{
    SFakeFunctions fake(Serve);
    CWalkQuery query;
    query.AddColumn(CArcs{1, 4, 0}, false, kRoot, {}, 1);
    query.Run(fake.functions);
    EXPECT_TRUE(fake.asked.empty());
}

TEST(WalkQueryTest, AnInclusiveStartCountsWhenItExists)
{
    SFakeFunctions fake(Serve);
    CWalkQuery query;
    query.AddColumn(CArcs{1, 3, 1, 2}, /*inclusive=*/true, kRoot, {}, 2);
    query.AddColumn(CArcs{1, 3, 2}, /*inclusive=*/true, kRoot, {}, 1);
    query.Run(fake.functions);
    EXPECT_EQ((std::vector<CArcs>{{1, 3, 1, 2}, {1, 3, 1, 3}}), Names(query, 0));
    EXPECT_EQ((std::vector<CArcs>{{1, 3, 2, 1}}), Names(query, 1));
}

TEST(WalkQueryTest, TheRangeEndsBeforeItsEnd)
{
    SFakeFunctions fake(Serve);
    CWalkQuery query;
    query.AddColumn(CArcs{1, 3, 1}, false, kRoot, CArcs{1, 3, 1, 3}, 5);
    query.Run(fake.functions);
    EXPECT_EQ((std::vector<CArcs>{{1, 3, 1, 1}, {1, 3, 1, 2}}), Names(query));
}

TEST(WalkQueryTest, ObjectsWithoutAValueArePassedOver)
{
    SFakeFunctions fake(
        [](std::uint8_t type, RFC1157VarBindList & list, std::uint32_t & status, std::uint32_t & index) {
            Serve(type, list, status, index);
            if (NameOf(list.list[0])[3] != 4) SnmpUtilAsnAnyFree(&list.list[0].value);
            return 1;
        });
    CWalkQuery query;
    query.AddColumn(CArcs{1, 3, 1}, false, kRoot, {}, 2);
    query.Run(fake.functions);
    EXPECT_EQ((std::vector<CArcs>{{1, 3, 1, 4}, {1, 3, 2, 4}}), Names(query));
}

TEST(WalkQueryTest, WantingMoreGoesOnWhereItStopped)
{
    SFakeFunctions fake(Serve);
    CWalkQuery query;
    query.AddColumn(CArcs{1, 3, 1}, false, kRoot, {}, 2);
    query.Run(fake.functions);
    query.WantOneMore(0);
    ASSERT_TRUE(query.WantsMore());
    query.ForgetResults();
    query.Run(fake.functions);
    EXPECT_EQ((std::vector<CArcs>{{1, 3, 1, 3}}), Names(query));
}

TEST(WalkQueryTest, NoSuchNameIsTheEndOfItsColumnAndTheRestIsAskedAgain)
{
    SFakeFunctions fake(
        [](std::uint8_t type, RFC1157VarBindList & list, std::uint32_t & status, std::uint32_t & index) {
            for (std::uint32_t i = 0; i < list.len; ++i)
                if (NameOf(list.list[i])[2] == 3) {
                    status = SNMP_ERRORSTATUS_NOSUCHNAME;
                    index = i + 1;
                    return 1;
                }
            return Serve(type, list, status, index);
        });
    CWalkQuery query;
    query.AddColumn(CArcs{1, 3, 1, 1}, false, kRoot, {}, 1);
    query.AddColumn(CArcs{1, 3, 3, 1}, false, kRoot, {}, 1);
    query.Run(fake.functions);
    EXPECT_EQ(1u, Names(query, 0).size());
    EXPECT_EQ(0u, Names(query, 1).size());
    EXPECT_EQ(0u, query.Status(1));
}

TEST(WalkQueryTest, ANoSuchNameWithoutAnIndexIsFoundByAskingOneByOne)
{
    SFakeFunctions fake(
        [](std::uint8_t type, RFC1157VarBindList & list, std::uint32_t & status, std::uint32_t & index) {
            for (std::uint32_t i = 0; i < list.len; ++i)
                if (NameOf(list.list[i])[2] == 3) {
                    status = SNMP_ERRORSTATUS_NOSUCHNAME;
                    return 1;
                }
            return Serve(type, list, status, index);
        });
    CWalkQuery query;
    query.AddColumn(CArcs{1, 3, 3, 1}, false, kRoot, {}, 2);
    query.AddColumn(CArcs{1, 3, 1, 1}, false, kRoot, {}, 2);
    query.AddColumn(CArcs{1, 3, 2, 1}, false, kRoot, {}, 2);
    query.Run(fake.functions);
    EXPECT_EQ(0u, Names(query, 0).size());
    EXPECT_EQ((std::vector<CArcs>{{1, 3, 1, 2}, {1, 3, 1, 3}}), Names(query, 1));
    EXPECT_EQ((std::vector<CArcs>{{1, 3, 2, 2}, {1, 3, 2, 3}}), Names(query, 2));
    for (std::size_t i = 1; i < fake.asked.size(); ++i)
        EXPECT_EQ(1u, fake.asked[i].size());
    EXPECT_FALSE(query.WantsMore());
}

TEST(WalkQueryTest, AColumnThatHasAllItWantsIsAskedNoMore)
{
    SFakeFunctions fake(Serve);
    CWalkQuery query;
    query.AddColumn(CArcs{1, 3, 1}, false, kRoot, {}, 1);
    query.AddColumn(CArcs{1, 3, 2}, false, kRoot, {}, 3);
    query.Run(fake.functions);
    ASSERT_EQ(3u, fake.asked.size());
    EXPECT_EQ((std::vector<CArcs>{{1, 3, 2, 1}}), fake.asked[1]);
    EXPECT_EQ((std::vector<CArcs>{{1, 3, 2, 2}}), fake.asked[2]);
    EXPECT_EQ(1u, Names(query, 0).size());
    EXPECT_EQ(3u, Names(query, 1).size());
}

TEST(WalkQueryTest, AWalkThatIsDroppedMakesNoFurtherCall)
{
    CWalkQuery query;
    SFakeFunctions fake(
        [&](std::uint8_t type, RFC1157VarBindList & list, std::uint32_t & status, std::uint32_t & index) {
            query.Drop();
            return Serve(type, list, status, index);
        });
    query.AddColumn(CArcs{1, 3, 1}, false, kRoot, {}, 5);
    query.Run(fake.functions);
    EXPECT_EQ(1u, fake.asked.size());
    query.Run(fake.functions);
    EXPECT_EQ(1u, fake.asked.size());
}

/// An extension that needs no memory: behind each object comes the one whose last arc is 1 more.
std::int32_t CountUp(std::uint8_t, RFC1157VarBindList * list, std::uint32_t * status, std::uint32_t * index)
{
    *status = 0;
    *index = 0;
    for (std::uint32_t i = 0; i < list->len; ++i) {
        RFC1157VarBind & binding = list->list[i];
        ++binding.name.ids[binding.name.idLength - 1];
        FakeInteger(binding, 1);
    }
    return 1;
}

TEST(WalkQueryTest, AnySingleFailedAllocationIsAnErrorOfTheColumnsThatWantMore)
{
    Service::SEntryPoints extension;
    extension.query = CountUp;
    bool failed = false;
    for (unsigned n = 1;; ++n) {
        CWalkQuery query;
        query.AddColumn(CArcs{1, 3, 1, 0}, false, kRoot, {}, 4);
        query.AddColumn(CArcs{1, 3, 2, 0}, false, kRoot, {}, 4);
        const CAllocationFault fault(n);
        query.Run(extension);
        const bool fired = fault.Fired();
        EXPECT_FALSE(query.WantsMore());
        const bool isWhole = query.Results().size() == 8;
        EXPECT_EQ(fired, !isWhole) << n;
        EXPECT_EQ(isWhole, query.Status(0) == 0 && query.Status(1) == 0) << n;
        failed = failed || !isWhole;
        if (!fired) break;
    }
    EXPECT_TRUE(failed);
}

TEST(WalkQueryTest, AnotherErrorEndsTheWalk)
{
    SFakeFunctions fake([](std::uint8_t, RFC1157VarBindList &, std::uint32_t & status, std::uint32_t & index) {
        status = SNMP_ERRORSTATUS_GENERR;
        index = 2;
        return 1;
    });
    CWalkQuery query;
    query.AddColumn(CArcs{1, 3, 1}, false, kRoot, {}, 5);
    query.AddColumn(CArcs{1, 3, 2}, false, kRoot, {}, 5);
    query.Run(fake.functions);
    EXPECT_EQ(1u, fake.asked.size());
    EXPECT_EQ(0u, query.Status(0));
    EXPECT_EQ(5u, query.Status(1));
    EXPECT_FALSE(query.WantsMore());
}

/// Answers of which a walk must not take any.
struct SBadAnswer {
    char const * name;
    CArcs answer;
};

class WalkBadAnswerTest : public testing::TestWithParam<SBadAnswer> {};

TEST_P(WalkBadAnswerTest, IsTheEndOfTheRegion)
{
    SFakeFunctions fake([](std::uint8_t, RFC1157VarBindList & list, std::uint32_t &, std::uint32_t &) {
        FakeName(list.list[0], GetParam().answer);
        FakeInteger(list.list[0], 1);
        return 1;
    });
    CWalkQuery query;
    query.AddColumn(CArcs{1, 3, 2, 2}, false, kRoot, {}, 10);
    query.Run(fake.functions);
    EXPECT_EQ(1u, fake.asked.size());
    EXPECT_TRUE(query.Results().empty());
    EXPECT_FALSE(query.WantsMore());
}

INSTANTIATE_TEST_SUITE_P(Kinds, WalkBadAnswerTest,
                         testing::Values(SBadAnswer{"Behind", {1, 4}}, SBadAnswer{"Before", {1, 2, 9}},
                                         SBadAnswer{"Backwards", {1, 3, 2, 1}}, SBadAnswer{"Same", {1, 3, 2, 2}},
                                         SBadAnswer{"Parent", {1, 3, 2}}, SBadAnswer{"Root", {1, 3}},
                                         SBadAnswer{"Empty", {}}, SBadAnswer{"TooLong", CArcs(129, 1)}),
                         [](auto const & test) { return std::string(test.param.name); });

} // namespace
