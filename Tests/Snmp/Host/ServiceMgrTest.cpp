#include "Snmp/Host/ServiceMgr.h"

#include "QueryFixture.h"

namespace {

constexpr char Opening[] =
    "\nCServiceMgr         : Open service control manager database \"default\" at \"local system\"...";
constexpr char Closed[] = "\nCServiceMgr         : Service control manager database successfully closed!";

class ServiceMgrTest : public CQueryTest {
protected:
    CServiceMgr m_manager;

    /// The lines but for the one with a handle's number, which is only looked at for its start.
    static std::vector<SLine> Lines()
    {
        std::vector<SLine> lines = Fake::TraceLines();
        const std::string start =
            "\nCServiceMgr         : ... open service control manager database returned handle 0x";
        std::erase_if(lines, [&](SLine const & line) { return line.level == 3 && line.text.rfind(start, 0) == 0; });
        return lines;
    }
};

} // namespace

TEST_F(ServiceMgrTest, AServiceThatCanBeReadIsFound)
{
    m_host.services["Kestrix Services"];
    EXPECT_NE(0, m_manager.QueryService("Kestrix Services", nullptr));
    EXPECT_EQ(4u, Fake::TraceLines().size());
    EXPECT_THAT(Lines(),
                testing::ElementsAre(SLine{3, Opening},
                                     SLine{3, "\nCServiceMgr         : QueryServiceConfig for \"Kestrix Services\" OK"},
                                     SLine{3, Closed}));
}

TEST_F(ServiceMgrTest, ADatabaseIsNamedInTheTrace)
{
    m_manager.QueryService("x", "other");
    EXPECT_EQ("\nCServiceMgr         : Open service control manager database \"other\" at \"local system\"...",
              Lines().front().text);
}

TEST_F(ServiceMgrTest, NoNameAsksNothing)
{
    EXPECT_EQ(0, m_manager.QueryService(nullptr, nullptr));
    EXPECT_EQ(0, m_manager.QueryService("", nullptr));
    EXPECT_THAT(Fake::TraceLines(), testing::ElementsAre());
}

TEST_F(ServiceMgrTest, AMissingServiceIsAWarningAndTheManagerIsClosed)
{
    EXPECT_EQ(0, m_manager.QueryService("missing", nullptr));
    EXPECT_EQ(0, m_host.openHandles);
    EXPECT_THAT(Lines(),
                testing::ElementsAre(
                    SLine{3, Opening},
                    SLine{3, "\nCServiceMgr         : WARNING! OpenService() \"missing\" failed (ErrorCode 0x424)!"},
                    SLine{3, Closed}));
}

TEST_F(ServiceMgrTest, AManagerThatDoesntOpenIsAnError)
{
    m_host.managerError = 0x5;
    EXPECT_EQ(0, m_manager.QueryService("x", nullptr));
    EXPECT_THAT(
        Fake::TraceLines(),
        testing::ElementsAre(SLine{3, Opening},
                             SLine{1, "\nCServiceMgr         : ERROR 0x5! Could NOT open service control manager "
                                      "database \"default\" at \"local system\"!!"}));
}

TEST_F(ServiceMgrTest, AManagerThatDoesntOpenWithoutAnErrorIsToldTwice)
{
    m_host.managerIsNull = true;
    EXPECT_EQ(0, m_manager.QueryService("x", nullptr));
    EXPECT_THAT(
        Fake::TraceLines(),
        testing::ElementsAre(SLine{3, Opening},
                             SLine{1, "\nCServiceMgr         : ERROR 0x0! Could NOT open service control manager "
                                      "database \"default\" at \"local system\"!!"},
                             SLine{1, "\nCServiceMgr         : ERROR! Service control manager not opened!"}));
}

TEST_F(ServiceMgrTest, AConfigurationThatDoesntFitIsReadAgainWithItsSize)
{
    m_host.services["x"].configSize = 1025;
    EXPECT_NE(0, m_manager.QueryService("x", nullptr));
    EXPECT_THAT(m_host.configRooms, testing::ElementsAre(1024u, 1025u));
    char failed[128];
    std::snprintf(failed, sizeof failed,
                  "\nCServiceMgr         : ERROR! QueryServiceConfig \"x\" FAILED (ErrorCode 0x%X)",
                  Platform::ErrorInsufficientBuffer());
    EXPECT_THAT(Lines(), testing::ElementsAre(SLine{3, Opening}, SLine{1, failed},
                                              SLine{3, "\nCServiceMgr         : QueryServiceConfig for \"x\" OK"},
                                              SLine{3, Closed}));
}

TEST_F(ServiceMgrTest, AConfigurationThatCantBeReadIsAFailure)
{
    m_host.services["x"].configError = 0x1F;
    EXPECT_EQ(0, m_manager.QueryService("x", nullptr));
    EXPECT_THAT(Lines(),
                testing::ElementsAre(
                    SLine{3, Opening},
                    SLine{1, "\nCServiceMgr         : ERROR! QueryServiceConfig \"x\" FAILED (ErrorCode 0x1F)"},
                    SLine{3, Closed}));
}

TEST_F(ServiceMgrTest, ACallThatNeverHasEnoughRoomIsGivenUp)
{
    m_host.services["x"].asksForNoMore = true;
    EXPECT_EQ(0, m_manager.QueryService("x", nullptr));
    EXPECT_THAT(m_host.configRooms, testing::ElementsAre(1024u));
}

TEST_F(ServiceMgrTest, AStatusThatCantBeReadIsAFailure)
{
    m_host.services["x"].statusError = 1;
    EXPECT_EQ(0, m_manager.QueryService("x", nullptr));
}

TEST_F(ServiceMgrTest, AFailedCloseIsTold)
{
    m_host.services["x"];
    m_host.closeError = 6;
    EXPECT_NE(0, m_manager.QueryService("x", nullptr));
    EXPECT_EQ((SLine{1, "\nCServiceMgr         : ERROR 0x6! FAILED to close service control manager database!"}),
              Lines().back());
}

TEST_F(ServiceMgrTest, CloseOfWhatIsNotOpenIsNothing)
{
    EXPECT_EQ(Platform::Success, m_manager.Close());
    EXPECT_THAT(Fake::TraceLines(), testing::ElementsAre());
}

TEST_F(ServiceMgrTest, WithoutTraceNothingIsTold)
{
    Fake::EnableTrace(false);
    m_host.services["x"];
    EXPECT_NE(0, m_manager.QueryService("x", nullptr));
    EXPECT_THAT(Fake::TraceLines(), testing::ElementsAre());
}
