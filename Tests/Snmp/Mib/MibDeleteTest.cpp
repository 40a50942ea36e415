#include "MibFixture.h"

namespace {

constexpr std::uint32_t kNone = kNoOidIndex;

using testing::ElementsAre;

void Insert(CPlainAgent & agent, std::initializer_list<char const *> oids)
{
    for (char const * oid : oids)
        agent.MibInsertConstOid(oid, "x", 1u, ASN_INTEGER, 0);
}

TEST(MibDeleteTest, DropsTheRootAndAllBelowIt)
{
    CPlainAgent agent;
    Insert(agent, {"1.3.5", "1.3.5.9", "1.3.6", "1.3.6.1", "1.3.6.2.5", "1.3.7", "1.4"});
    const COid root("1.3.6");
    EXPECT_EQ(3u, agent.MibDeleteOids(root.Get(), kNone, kNone, kNone, kNone, kNone));
    EXPECT_THAT(Walk(agent), ElementsAre("1.3.5", "1.3.5.9", "1.3.7", "1.4"));
    EXPECT_EQ("1.3.6", TextOf(*root.Get()));
}

TEST(MibDeleteTest, TracesEachObjectAndTheirNumber)
{
    CPlainAgent agent;
    Insert(agent, {"1.3.6.1", "1.3.6.2"});
    const COid root("1.3.6");
    const CRecordedTrace trace;
    agent.MibDeleteOids(root.Get(), kNone, kNone, kNone, kNone, kNone);
    EXPECT_THAT(trace.Lines(), ElementsAre("3|\nCSnmpMibTree        : Delete all objects under root OID 1.3.6",
                                           "5|\nCSnmpMibTree        :   delete object with OID 1.3.6.1...",
                                           "5|\nCSnmpMibTree        :   delete object with OID 1.3.6.2...",
                                           "3|\nCSnmpMibTree        : 2 object(s) deleted"));
}

TEST(MibDeleteTest, TracesTheFilterAndWhatItKeeps)
{
    CPlainAgent agent;
    Insert(agent, {"1.3.6.1", "1.3.6.2"});
    const COid root("1.3.6");
    const CRecordedTrace trace;
    agent.MibDeleteOids(root.Get(), 2, kNone, kNone, kNone, kNone);
    EXPECT_THAT(trace.Lines(),
                ElementsAre("3|\nCSnmpMibTree        : Delete all objects under root OID 1.3.6",
                            "5|\nCSnmpMibTree        :   filters active: index1=2, index2=-1, index3=-1, index4=-1, "
                            "index5=-1",
                            "5|\nCSnmpMibTree        :   delete object with OID 1.3.6.1...",
                            "5|\nCSnmpMibTree        :   -> object not deleted (one of the indexes not matching)",
                            "5|\nCSnmpMibTree        :   delete object with OID 1.3.6.2...",
                            "3|\nCSnmpMibTree        : 1 object(s) deleted"));
}

TEST(MibDeleteTest, ReportsNoneForARootWithoutEntries)
{
    CPlainAgent agent;
    Insert(agent, {"1.3.5", "1.3.60"});
    const COid root("1.3.6");
    const CRecordedTrace trace;
    EXPECT_EQ(0u, agent.MibDeleteOids(root.Get()));
    EXPECT_THAT(trace.Lines(), ElementsAre("3|\nCSnmpMibTree        : Delete all objects under root OID 1.3.6",
                                           "3|\nCSnmpMibTree        : 0 object(s) deleted"));
    EXPECT_EQ(0u, agent.MibDeleteOids(nullptr));
    EXPECT_EQ(2u, agent.MibSize());
}

struct SFilter {
    char const * name;
    std::uint32_t indexes[5];
    std::vector<std::string> left;
};

std::ostream & operator<<(std::ostream & out, SFilter const & test)
{
    return out << test.name;
}

class MibDeleteFilterTest : public testing::TestWithParam<SFilter> {};

TEST_P(MibDeleteFilterTest, CountsFromTheTailOfTheOid)
{
    CPlainAgent agent;
    Insert(agent, {"1.2.1.3", "1.2.2.3", "1.2.3.1", "1.2.5.6.7.8"});
    std::uint32_t const * const index = GetParam().indexes;
    const COid root("1.2");
    EXPECT_EQ(4 - GetParam().left.size(),
              agent.MibDeleteOids(root.Get(), index[0], index[1], index[2], index[3], index[4]));
    EXPECT_EQ(GetParam().left, Walk(agent));
}

INSTANTIATE_TEST_SUITE_P(
    Filters, MibDeleteFilterTest,
    testing::Values(
        SFilter{"Index1IsTheLastArc", {3, kNone, kNone, kNone, kNone}, {"1.2.3.1", "1.2.5.6.7.8"}},
        SFilter{"Index2IsTheOneBefore", {kNone, 3, kNone, kNone, kNone}, {"1.2.1.3", "1.2.2.3", "1.2.5.6.7.8"}},
        SFilter{"AllMustFit", {3, 2, kNone, kNone, kNone}, {"1.2.1.3", "1.2.3.1", "1.2.5.6.7.8"}},
        SFilter{"Index4CountsTheRootToo", {kNone, kNone, kNone, 1, kNone}, {"1.2.5.6.7.8"}},
        SFilter{"AMissingArcCountsAsZero", {kNone, kNone, kNone, kNone, 0}, {"1.2.5.6.7.8"}},
        SFilter{"FiveFit", {8, 7, 6, 5, 2}, {"1.2.1.3", "1.2.2.3", "1.2.3.1"}},
        SFilter{"ZeroFitsNone", {0, kNone, kNone, kNone, kNone}, {"1.2.1.3", "1.2.2.3", "1.2.3.1", "1.2.5.6.7.8"}},
        SFilter{"NoFilter", {kNone, kNone, kNone, kNone, kNone}, {}}),
    [](auto const & test) { return std::string(test.param.name); });

TEST(MibDeleteTest, AnEmptyRootIsAboveEverything)
{
    CPlainAgent agent;
    Insert(agent, {"1.3.5", "2.5", "x"});
    const COid root;
    EXPECT_EQ(3u, agent.MibDeleteOids(root.Get()));
    EXPECT_EQ(0u, agent.MibSize());
}

TEST(MibDeleteTest, SkipsNoRowOfALargeTable)
{
    CPlainAgent agent;
    for (std::uint32_t row = 1; row <= 3000; ++row) {
        for (std::uint32_t column = 1; column <= 3; ++column) {
            agent.MibInsertConstTableOid("1.3.6.0.0.0", "x", row, ASN_INTEGER, column, row / 100, row);
        }
    }
    Insert(agent, {"1.3.5", "1.3.7"});
    const COid root("1.3.6");
    EXPECT_EQ(30u * 3u, agent.MibDeleteOids(root.Get(), kNone, 7, kNone, kNone, kNone) - 70u * 3u);
    EXPECT_EQ(2900u * 3u + 2u, agent.MibSize());
    EXPECT_EQ(2900u * 3u, agent.MibDeleteOids(root.Get()));
    EXPECT_THAT(Walk(agent), ElementsAre("1.3.5", "1.3.7"));
}

TEST(MibDeleteTest, FreesOwnedContextsAndKeepsBorrowedOnes)
{
    CPlainAgent agent;
    const auto borrowed = std::make_unique<int>(1);
    agent.MibInsertVarTableOid("1.3.0", "x", 2, {}, {}, {}, {}, 0, borrowed.get(), 1, kNone, kNone, kNone, kNone);
    agent.MibInsertOidWithStringContext("1.3.0", "x", 2, {}, {}, {}, {}, 0, "owned", 2, kNone, kNone, kNone, kNone);
    const COid root("1.3");
    EXPECT_EQ(2u, agent.MibDeleteOids(root.Get()));
    EXPECT_EQ(1, *borrowed);
}

} // namespace
