// The MIB: 98 objects, and how a group is replaced.

#include <gmock/gmock.h>

#include <map>
#include <set>

#include "Platform/SnmpUtil.h"
#include "Tests/Agent/Support/AgentUnderTest.h"
#include "Tests/Support/MatchesPattern.h"

namespace {

class GroupsTest : public CAgentTest {
protected:
    void Fetch(CRawConnection & connection, unsigned int number, Wire::CBytes const & answer)
    {
        std::size_t const before = TimesTraced(kDone);
        ASSERT_TRUE(Flag(connection, 1ull << number));
        ASSERT_TRUE(Serve(connection, number, answer));
        ASSERT_TRUE(HoldsWithin(kDeadline, [&] { return TimesTraced(kDone) > before; }));
    }
    static constexpr char kDone[] = "              ... URET_WaitObject0: alle events abgehandelt!";
};

TEST_F(GroupsTest, AllNinetyEightObjectsAreThereWithOidNameTypeAndValue)
{
    CRawConnection connection = StartConnected();
    std::set<std::string> names;
    for (unsigned int number = 1; number <= kShownRequests; ++number)
        Fetch(connection, number, AnswerOf(number, 0));
    for (unsigned int number = 1; number <= kShownRequests; ++number)
        EXPECT_EQ(ShownAfter(number, 0), agent->Walk(RootOf(number))) << "request " << number;
    for (SShownObject const & object : agent->Walk())
        names.insert(object.name);
    for (char const * const row : {"3.4", "8.9"}) { // the indexes of the drives, as the answers have them
        EXPECT_EQ(4u, agent->CheckSet(std::string("1.6.2.1.9.") + row));
    }
    names.insert("kxrLogicalDriveProgress");
    EXPECT_EQ(98u, names.size());
}

TEST_F(GroupsTest, TheAgentsOwnGroupComesFromTheVersionBlock)
{
    Start();
    std::vector<SShownObject> const shown = agent->Walk("1.1.");
    ASSERT_EQ(4u, shown.size());
    EXPECT_EQ((SShownObject{"1.1.1.0", "kxrAgentId", 4, "Kestrix RAID SNMP agent"}), shown[0]);
    EXPECT_EQ((SShownObject{"1.1.2.0", "kxrAgentCompany", 4, "Norvane"}), shown[1]);
    EXPECT_EQ((SShownObject{"1.1.3.0", "kxrAgentVersion", 4, "7.10.2"}), shown[2]);
    EXPECT_EQ("1.1.4.0", shown[3].oid);
    EXPECT_EQ("kxrAgentBuild", shown[3].name);
    EXPECT_EQ(4u, shown[3].type);
    EXPECT_THAT(shown[3].value, MatchesPattern("Build: [A-Z][a-z][a-z] [ 123][0-9] [0-9]+, [0-9]+:[0-9]+:[0-9]+"));
}

TEST_F(GroupsTest, OnlyTheBuildIsShownWithoutAVersionBlock)
{
    struct CNoVersion : CAgentUnderTest {
        CNoVersion() { m_version = {}; }
    };
    auto noVersion = std::make_unique<CNoVersion>();
    noVersion->m_PortNumber = peer.Port();
    agent = std::move(noVersion);
    Start();
    std::vector<SShownObject> const shown = agent->Walk("1.1.");
    ASSERT_EQ(1u, shown.size());
    EXPECT_EQ("kxrAgentBuild", shown[0].name);
}

TEST_F(GroupsTest, AGroupIsReplacedAsAWhole)
{
    CRawConnection connection = StartConnected();
    for (unsigned int number = 1; number <= kShownRequests; ++number) {
        Fetch(connection, number, AnswerOf(number, 0));
        Fetch(connection, number, AnswerOf(number, 1));
    }
    std::vector<SShownObject> expected;
    for (unsigned int const number : {1u, 3u, 2u, 7u, 6u, 5u, 4u, 8u})
        for (SShownObject const & object : ShownAfter(number, 1))
            expected.push_back(object);
    std::vector<SShownObject> shown = agent->Walk();
    std::erase_if(shown, [](SShownObject const & object) { return object.oid.starts_with("1.1."); });
    EXPECT_EQ(expected, shown);
}

TEST_F(GroupsTest, AnEmptyTableRemovesAllRows)
{
    CRawConnection connection = StartConnected();
    for (unsigned int const number : {2u, 4u, 6u, 8u}) {
        Fetch(connection, number, AnswerOf(number, 0));
        Fetch(connection, number, Wire::Int(0));
    }
    for (char const * const root : {"1.4.2.", "1.6.2.", "1.5.2.", "1.6.3."})
        EXPECT_TRUE(agent->Walk(root).empty()) << root;
    EXPECT_EQ(2u, agent->CheckSet("1.6.2.1.9.3.4")) << "the progress objects are gone too";
}

TEST_F(GroupsTest, TheLinesOfTheTracesComeInTheirOrder)
{
    CRawConnection connection = StartConnected();
    for (unsigned int number = 1; number <= kShownRequests; ++number)
        Fetch(connection, number, AnswerOf(number, 0));
    ExpectTraced({"\nAdapterStatus:Phase 2",
                  "\n-- Delete \"kxrStatus\" group --",
                  "\n-- Insert \"kxrStatus\" group --",
                  "\nAdapterTable:Phase 2",
                  "\n-- Delete \"kxrCtrlTable\" table --",
                  "\nCSnmpMibTree        : Delete all objects under root OID 1.3.6.1.4.1.88417.2.49.1.4.2",
                  "\n-- Insert \"kxrCtrlTable\" table --",
                  "\nAdapterInfo:Phase 2",
                  "\n-- Delete \"kxrControllerInfo\" group --",
                  "\n-- Insert \"kxrControllerInfo\" group --",
                  "\nLogicalDriveTable:Phase 2",
                  "\n-- Insert \"kxrLogicalDriveTable\" table --",
                  "\nCSnmpMibTree        : Delete all objects under root OID 1.3.6.1.4.1.88417.2.49.1.6.2",
                  "\n-- Delete \"kxrLogicalDriveTable\" table --",
                  "\nLogicalDriveInfo:Phase 2",
                  "\n-- Delete \"kxrLogicalDriveInfo\" group --",
                  "\n-- Insert \"kxrLogicalDriveInfo\" group --",
                  "\nPhysicalDeviceTable:Phase 2",
                  "\n-- Delete \"kxrPhysicalDeviceTable\" table --",
                  "\n-- Insert \"kxrPhysicalDeviceTable\" table --",
                  "\nPhysicalDeviceInfo:Phase 2",
                  "\n-- Delete \"kxrPhysicalDeviceInfo\" group --",
                  "\n-- Insert \"kxrPhysicalDeviceInfo\" group --",
                  "\nLogicalDriveContentsTable:Phase 2",
                  "\n-- Delete \"kxrLogicalDriveContentsTable\" table --",
                  "\n-- Insert \"kxrLogicalDriveContentsTable\" table --"});
}

Wire::CBytes ContentsRow(int ctrl, int drive, int nr, int idx, int span)
{
    using namespace Wire;
    return Int(ctrl) + Int(drive) + Int(nr) + Int(7) + Int(8) + Int(9) + Int(idx) + Int(span);
}

TEST_F(GroupsTest, OfTwoEntriesWithTheSameIndexesTheLaterRemains)
{
    CRawConnection connection = StartConnected();
    Fetch(connection, 8, Wire::Int(2) + ContentsRow(1, 2, 3, 4, 5) + ContentsRow(1, 2, 3, 4, 6));
    EXPECT_EQ(8u, agent->Walk("1.6.3.").size());
    EXPECT_EQ("6", agent->Get("1.6.3.1.8.1.2.3.4").value_or(SShownObject{}).value);
}

TEST_F(GroupsTest, AnIndexOfMinusOneCountsAsAbsentAndTheOthersShift)
{
    CRawConnection connection = StartConnected();
    Fetch(connection, 8, Wire::Int(1) + ContentsRow(1, -1, 3, 4, 5));
    // Four places, three indexes: they stand at the end, and the first place keeps its zero.
    EXPECT_EQ("-1", agent->Get("1.6.3.1.2.0.1.3.4").value_or(SShownObject{}).value);
}

TEST_F(GroupsTest, EnumeratedFieldsReachTheTreeNormalised)
{
    using namespace Wire;
    CRawConnection connection = StartConnected();
    Fetch(connection, 4,
          Int(1) + Int(1) + Int(2) + Int(3) + Int(4) + Int(5) + Text("6") + Int(7) + Int(99) + Int(0) + Text("") +
              Int(11) + Int(12) + Text("13") + Int(14) + Int(15) + Int(16) + Int(17) + Int(16) + Text(""));
    EXPECT_EQ("1", agent->Get("1.6.2.1.8.1.2").value_or(SShownObject{}).value);
    EXPECT_EQ("1", agent->Get("1.6.2.1.10.1.2").value_or(SShownObject{}).value);
    EXPECT_EQ("1", agent->Get("1.6.2.1.19.1.2").value_or(SShownObject{}).value);
    EXPECT_EQ((SShownObject{"1.6.2.1.11.1.2", "kxrLogicalDriveName", 4, ""}),
              agent->Get("1.6.2.1.11.1.2").value_or(SShownObject{}))
        << "an empty text is an object with a value of no length";
}

TEST_F(GroupsTest, ASetOfAnyObjectIsRefusedAsReadOnly)
{
    CRawConnection connection = StartConnected();
    for (unsigned int number = 1; number <= kShownRequests; ++number)
        Fetch(connection, number, AnswerOf(number, 0));
    for (SShownObject const & object : agent->Walk()) {
        EXPECT_EQ(4u, agent->CheckSet(object.oid)) << object.oid;
        EXPECT_EQ(4u, agent->Set(object.oid)) << object.oid;
    }
    EXPECT_EQ(4u, agent->CheckSet("1.6.2.1.9.3.4"));
    EXPECT_EQ(4u, agent->Set("1.6.2.1.9.3.4"));
}

TEST_F(GroupsTest, ALostConnectionLeavesTheGroupsAsTheyAre)
{
    g_agentIntervals.intervalMs = 5;
    CRawConnection connection = StartConnected();
    for (unsigned int number = 1; number <= kShownRequests; ++number)
        Fetch(connection, number, AnswerOf(number, 0));
    std::vector<SShownObject> const before = agent->Walk();
    connection.Close();
    EXPECT_EQ(4, agent->AwaitTrap().specific);
    EXPECT_EQ(before, agent->Walk());
}

TEST_F(GroupsTest, ARebuildWaitsForTheRequestLock)
{
    CRawConnection connection = StartConnected();
    agent->m_requestLock.Enter();
    ASSERT_TRUE(Flag(connection, 0x2));
    ASSERT_TRUE(Serve(connection, 1, AnswerOf(1, 0)));
    ASSERT_TRUE(HoldsWithin(kDeadline, [&] { return Traced("\n-- Delete \"kxrStatus\" group --"); }));
    EXPECT_FALSE(Traced("\n-- Insert \"kxrStatus\" group --"));
    EXPECT_TRUE(agent->Walk("1.3.").empty());
    agent->m_requestLock.Leave();
    EXPECT_TRUE(HoldsWithin(kDeadline, [&] { return agent->Walk("1.3.") == ShownAfter(1, 0); }));
}

} // namespace
