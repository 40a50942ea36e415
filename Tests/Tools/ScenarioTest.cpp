#include "Tools/Scenario.h"

#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>

#include "Tools/BadInput.h"

namespace {

using namespace Coresim;

/// A file that is gone with the object.
class CScenarioFile {
public:
    explicit CScenarioFile(std::string const & text)
        : m_path(std::filesystem::temp_directory_path() /
                 ("kxra-scenario-" + std::to_string(reinterpret_cast<std::uintptr_t>(this)) + ".xml"))
    {
        std::ofstream(m_path, std::ios::binary) << text;
    }
    ~CScenarioFile() { std::filesystem::remove(m_path); }
    CScenarioFile(CScenarioFile const &) = delete;
    CScenarioFile & operator=(CScenarioFile const &) = delete;
    std::string Path() const { return m_path.string(); }

private:
    std::filesystem::path m_path;
};

std::string FailureOf(std::string const & path)
{
    try {
        ReadScenario(path);
    } catch (CBadInput const & bad) {
        return bad.what();
    }
    return "read without a complaint";
}

TEST(ScenarioTest, RecordsTakeTheirFieldsFromAttributesAndTheirKeysFromTheNodesAround)
{
    CScenarioFile const file(R"(<estate>
        <status LogicalDrives="2" PhysicalDevices="3" Controllers="4" Overall="5"/>
        <numbers NumberLogicalDrives="7"/>
        <controller Nr="3" ModelName="M &amp; N" BBUStatusEx="4">
            <drive Nr="1" Name="system"><member Nr="0" Idx="9"/></drive>
            <device Channel="1" Target="2" SSDEstimatedLifetime="96 %" SSDTotalDataWritten="1 TB"/>
        </controller>
        <progress CtrlNr="3" LogicalDriveNr="1" value="40" limit="90"/>
    </estate>)");
    SScenario const scenario = ReadScenario(file.Path());
    SEstate const & estate = scenario.estate;

    EXPECT_EQ(5, estate.status.Overall);
    EXPECT_EQ(7, estate.numbers.NumberLogicalDrives);
    EXPECT_EQ(-1, estate.numbers.NumberPhysicalDevices);
    ASSERT_EQ(1u, estate.controllers.size());
    EXPECT_EQ("M & N", estate.controllers[0].ModelName);
    EXPECT_EQ(4, estate.controllers[0].BBUStatusEx);
    ASSERT_EQ(1u, estate.drives.size());
    EXPECT_EQ(3, estate.drives[0].CtrlNr);
    EXPECT_EQ("system", estate.drives[0].Name);
    ASSERT_EQ(1u, estate.contents.size());
    EXPECT_EQ(3, estate.contents[0].CtrlNr);
    EXPECT_EQ(1, estate.contents[0].LogicalDriveNr);
    EXPECT_EQ(9, estate.contents[0].Idx);
    ASSERT_EQ(1u, estate.devices.size());
    EXPECT_EQ(3, estate.devices[0].CtrlNr);
    EXPECT_EQ("96 %", estate.devices[0].GetSSDEstimatedLifetime());
    EXPECT_EQ("1 TB", estate.devices[0].GetSSDTotalDataWritten());
    EXPECT_EQ(40, CEstate(estate).Progress(3, 1));
}

TEST(ScenarioTest, StepsAreSortedByTheirTimeAndKeepTheOrderOfTheFileOtherwise)
{
    CScenarioFile const file(R"(<estate><timeline repeat="yes">
        <at seconds="9"><flag mask="0x6"/></at>
        <at seconds="1.5"><event id="10022" server="atlas"><text>a</text><text>b c</text></event></at>
        <at seconds="9"><progress CtrlNr="0" LogicalDriveNr="1" value="5"/></at>
    </timeline></estate>)");
    STimeline const timeline = ReadScenario(file.Path()).timeline;

    EXPECT_TRUE(timeline.repeat);
    ASSERT_EQ(3u, timeline.steps.size());
    EXPECT_EQ(1.5, timeline.steps[0].seconds);
    SNMP::ORBA_EVENTINFO const & event = timeline.steps[0].changes.at(0).event;
    EXPECT_EQ(10022, event.TrapId);
    EXPECT_EQ("atlas", event.ServerName);
    EXPECT_EQ("a", event.Param1);
    EXPECT_EQ("b c", event.Param2);
    EXPECT_EQ("", event.Param3);
    EXPECT_EQ(6u, timeline.steps[1].changes.at(0).mask);
    EXPECT_EQ(SChange::Kind::Progress, timeline.steps[2].changes.at(0).kind);
}

TEST(ScenarioTest, AFileThatIsNotThereIsNamed)
{
    EXPECT_EQ("/nowhere/at/all.xml: can't be opened", FailureOf("/nowhere/at/all.xml"));
}

TEST(ScenarioTest, AFolderInPlaceOfTheFileIsNamed)
{
    std::string const folder = std::filesystem::temp_directory_path().string();
    EXPECT_EQ(folder + ": can't be read", FailureOf(folder));
}

TEST(ScenarioTest, ATextMayBeMadeOfSeveralPieces)
{
    CScenarioFile const file("<?xml version='1.0'?><!-- first --><estate><timeline><at seconds='1'><event id='1'>"
                             "<text>a <![CDATA[<b>]]> c</text></event></at></timeline></estate>\n<!-- last -->\n");
    EXPECT_EQ("a <b> c", ReadScenario(file.Path()).timeline.steps.at(0).changes.at(0).event.Param1);
}

struct SMistake {
    char const * name;
    char const * text;
    int line;
    char const * reason;
};

class ScenarioMistakeTest : public testing::TestWithParam<SMistake> {};

TEST_P(ScenarioMistakeTest, IsReportedWithFileLineAndReason)
{
    CScenarioFile const file(GetParam().text);
    EXPECT_EQ(file.Path() + ":" + std::to_string(GetParam().line) + ": " + GetParam().reason, FailureOf(file.Path()));
}

INSTANTIATE_TEST_SUITE_P(
    Table, ScenarioMistakeTest,
    testing::Values(
        SMistake{"Empty", "", 1, "<estate> was expected, and there is no element"},
        SMistake{"TextAlone", "estate", 1, "<estate> was expected, and there is no element"},
        SMistake{"SecondRoot", "<estate/>\n<estate/>", 2, "<estate> is out of place here"},
        SMistake{"TextBehindTheRoot", "<estate/>\n\nand more", 3, "text is out of place here"},
        SMistake{"TextAheadOfTheRoot", "\nmore\n<estate/>", 2, "text is out of place here"},
        SMistake{"RepeatedField", "<estate>\n<controller Nr='1' Nr='2'/></estate>", 2,
                 "<controller>: the attribute 'Nr' is there twice"},
        SMistake{"RepeatedAttribute", "<estate><timeline repeat='yes' repeat='no'/></estate>", 1,
                 "<timeline>: the attribute 'repeat' is there twice"},
        SMistake{
            "ElementInAText",
            "<estate><timeline><at seconds='1'><event id='1'><text>a\n<b/></text></event></at></timeline></estate>", 2,
            "<b> is out of place here"},
        SMistake{"AttributeOfAText",
                 "<estate><timeline><at seconds='1'><event id='1'>\n<text a='1'/></event></at></timeline></estate>", 2,
                 "<text>: there is no attribute 'a' here"},
        SMistake{"NotXml", "<estate>\n<status", 2, "Error parsing start element tag"},
        SMistake{"OtherRoot", "\n<raid/>", 2, "<estate> was expected, not <raid>"},
        SMistake{"AttributeOfTheRoot", "<estate a='1'/>", 1, "<estate>: there is no attribute 'a' here"},
        SMistake{"UnknownElement", "<estate>\n\n<disk/></estate>", 3, "<disk> is out of place here"},
        SMistake{"TextOutOfPlace", "<estate>\nhello</estate>", 2, "text is out of place here"},
        SMistake{"ElementInStatus", "<estate><status>\n<a/></status></estate>", 2, "<a> is out of place here"},
        SMistake{"UnknownField", "<estate>\n<controller Nmae='x'/></estate>", 2,
                 "<controller>: there is no field 'Nmae' here"},
        SMistake{"NoNumber", "<estate>\n<controller Nr='one'/></estate>", 2, "<controller>: Nr: 'one' is no number"},
        SMistake{"EmptyNumber", "<estate><controller Nr=''/></estate>", 1, "<controller>: Nr: '' is no number"},
        SMistake{"NumberOutOfRange", "<estate><controller Nr='2147483648'/></estate>", 1,
                 "<controller>: Nr: '2147483648' is out of range (-2147483648 to 2147483647)"},
        SMistake{"DriveOutsideAController", "<estate>\n<drive Nr='0'/></estate>", 2, "<drive> is out of place here"},
        SMistake{"MemberElsewhere", "<estate><controller>\n<member/></controller></estate>", 2,
                 "<member> is out of place here"},
        SMistake{"ProgressWithoutADrive", "<estate><progress CtrlNr='0'/></estate>", 1,
                 "<progress>: the attribute 'LogicalDriveNr' is missing"},
        SMistake{"RepeatNeitherYesNorNo", "<estate><timeline repeat='1'/></estate>", 1,
                 "<timeline>: '1' is neither yes nor no"},
        SMistake{"RepeatWithoutTime", "<estate><timeline repeat='yes'><at seconds='0'/></timeline></estate>", 1,
                 "<timeline>: a timeline that repeats must take some time"},
        SMistake{"StepWithoutTime", "<estate><timeline>\n<at/></timeline></estate>", 2,
                 "<at>: the attribute 'seconds' is missing"},
        SMistake{"NegativeTime", "<estate><timeline><at seconds='-1'/></timeline></estate>", 1,
                 "<at>: '-1' is out of range (0 to 1000000)"},
        SMistake{"UnknownChange", "<estate><timeline><at seconds='1'>\n<boom/></at></timeline></estate>", 2,
                 "<boom> is out of place here"},
        SMistake{"SetOfARowThatIsNotThere",
                 "<estate><timeline><at seconds='1'>\n<set object='drive:0.0' field='Status' value='1'/></at>"
                 "</timeline></estate>",
                 2, "<set>: there is no such row"},
        SMistake{"SetOfAnUnknownObject",
                 "<estate><timeline><at seconds='1'><set object='fan:0' field='Status' value='1'/></at>"
                 "</timeline></estate>",
                 1,
                 "<set>: 'fan:0' is no object (status, numbers, controller:C, drive:C.N, member:C.L.N.I, "
                 "device:C.CH.T.L)"},
        SMistake{"EventWithSevenTexts",
                 "<estate><timeline><at seconds='1'><event id='1'><text/><text/><text/><text/><text/><text/><text/>"
                 "</event></at></timeline></estate>",
                 1, "<event>: an event has six texts at the most"},
        SMistake{"MaskNoNumber", "<estate><timeline><at seconds='1'><flag mask='0x'/></at></timeline></estate>", 1,
                 "<flag>: '0x' is no number"}),
    [](auto const & test) { return std::string(test.param.name); });

} // namespace
