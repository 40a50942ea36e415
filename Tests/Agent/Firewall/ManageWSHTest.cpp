// The rules that the agent adds to the firewall when it is made, step by step.

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

#include "Agent/Src/Intervals.h"
#include "Agent/Src/ORBA_MIB.h"
#include "HostFakes.h"
#include "Recorder.h"
#include "Tests/Fake/Debug.h"

namespace {

using Calls = std::vector<std::string>;

constexpr char kOutboundAdded[] = "\nManageWSH: outbound WSH allow rule added";
constexpr char kInboundAdded[] = "\nManageWSH: inbound WSH allow rule added";
constexpr char kManaged[] = "\nCKestrixRAIDAgent(): Manage Windows Service Hardening";

/// A step of a run in which nothing fails, and the name of what it does in the message of its failure.
struct SStep {
    char const * name;
    char const * call;
    char const * operation;
};
void PrintTo(SStep const & step, std::ostream * out)
{
    *out << step.call;
}

constexpr SStep kSteps[] = {
    {"Enter", "CoInitializeEx", "CoInitializeEx"},
    {"Policy", "create policy", "CoCreateInstance for INetFwPolicy2"},
    {"Restriction", "policy.get_ServiceRestriction", "get_ServiceRestriction"},
    {"Rules", "restriction.get_Rules", "get_Rules"},
    {"OutboundRule", "create rule 1", "CoCreateInstance for Firewall Rule"},
    {"OutboundName", "rule 1.put_Name Kestrix_RAID", "put_Name"},
    {"OutboundDescription", "rule 1.put_Description Allow Kestrix RAID network traffic", "put_Description"},
    {"OutboundGrouping", "rule 1.put_Grouping Kestrix RAID Group", "put_Grouping"},
    {"OutboundApplication", "rule 1.put_ApplicationName %SystemDrive%\\Windows\\System32\\snmp.exe",
     "put_ApplicationName"},
    {"OutboundService", "rule 1.put_ServiceName SNMP", "put_ServiceName"},
    {"OutboundProtocol", "rule 1.put_Protocol 6", "put_Protocol"},
    {"OutboundPort", "rule 1.put_RemotePorts 3173", "put_RemotePorts"},
    {"OutboundDirection", "rule 1.put_Direction 2", "put_Direction"},
    {"OutboundAction", "rule 1.put_Action 1", "put_Action"},
    {"OutboundEnabled", "rule 1.put_Enabled true", "put_Enabled"},
    {"OutboundAdd", "rules.Add rule 1", "Firewall Rule Add"},
    {"InboundRule", "create rule 2", "CoCreateInstance for Firewall Rule"},
    {"InboundName", "rule 2.put_Name Kestrix_RAID", "put_Name"},
    {"InboundDescription", "rule 2.put_Description Allow Kestrix RAID network traffic", "put_Description"},
    {"InboundGroupingOfTheOutboundRule", "rule 1.put_Grouping Kestrix RAID Group", "put_Grouping"},
    {"InboundApplication", "rule 2.put_ApplicationName %SystemDrive%\\Windows\\System32\\snmp.exe",
     "put_ApplicationName"},
    {"InboundService", "rule 2.put_ServiceName SNMP", "put_ServiceName"},
    {"InboundProtocol", "rule 2.put_Protocol 6", "put_Protocol"},
    {"InboundPort", "rule 2.put_LocalPorts 3173", "put_LocalPorts"},
    {"InboundDirection", "rule 2.put_Direction 1", "put_Direction"},
    {"InboundAction", "rule 2.put_Action 1", "put_Action"},
    {"InboundEnabled", "rule 2.put_Enabled true", "put_Enabled"},
    {"InboundAdd", "rules.Add rule 2", "Firewall Rule Add"},
};

std::size_t PlaceOf(std::string const & name)
{
    for (std::size_t i = 0; i < std::size(kSteps); ++i)
        if (name == kSteps[i].name) return i;
    ADD_FAILURE() << "no step " << name;
    return 0;
}

/// The calls up to and with the one at `last`.
Calls StepsUpTo(std::size_t last)
{
    Calls calls;
    for (std::size_t i = 0; i <= last; ++i)
        calls.push_back(kSteps[i].call);
    return calls;
}

/// The texts, which the clean-up frees in no special order.
Calls SortedTexts()
{
    return {"%SystemDrive%\\Windows\\System32\\snmp.exe",
            "127.0.0.1,::1",
            "3173",
            "Allow Kestrix RAID network traffic",
            "Kestrix RAID Group",
            "Kestrix_RAID",
            "SNMP"};
}

Calls Sorted(Calls calls)
{
    std::sort(calls.begin(), calls.end());
    return calls;
}

/// The clean-up behind the texts when the step at `failed` is the one that failed.
Calls CleanUpAfter(std::size_t failed)
{
    Calls calls;
    if (failed > PlaceOf("OutboundRule")) calls.push_back("release rule 1");
    if (failed > PlaceOf("InboundRule")) calls.push_back("release rule 2");
    if (failed > PlaceOf("Rules")) calls.push_back("release rules");
    if (failed > PlaceOf("Policy")) calls.push_back("release policy");
    if (failed > PlaceOf("Enter")) calls.push_back("CoUninitialize");
    return calls;
}

Calls CleanUp()
{
    return CleanUpAfter(std::size(kSteps));
}

class ManageWSHTest : public testing::Test {
protected:
    ManageWSHTest()
    {
        Recorder::State() = {};
        g_hostFakes = {};
        Fake::ClearTrace();
        Fake::EnableTrace(true);
    }
    ~ManageWSHTest() override
    {
        Fake::EnableTrace(false);
        Fake::ClearTrace();
    }

    /// Makes an agent, which is where the rules come from.
    void Run() { SNMP::CKestrixRAIDAgent const agent; }

    static Calls const & Done() { return Recorder::State().calls; }
    static auto FirstFree()
    {
        return std::find_if(Done().begin(), Done().end(), [](auto const & call) { return call.starts_with("free "); });
    }
    /// What was done ahead of the clean-up.
    static Calls Work() { return {Done().begin(), FirstFree()}; }
    /// The texts that the clean-up freed first, and what it did then.
    static Calls Freed()
    {
        Calls texts;
        for (auto at = FirstFree(); at != Done().end() && at->starts_with("free "); ++at)
            texts.push_back(at->substr(5));
        return texts;
    }
    static Calls Released()
    {
        Calls calls(FirstFree(), Done().end());
        calls.erase(calls.begin(), calls.begin() + static_cast<std::ptrdiff_t>(Freed().size()));
        return calls;
    }
    static void ExpectNothingHeldBut(int restrictions)
    {
        Recorder::SState const & state = Recorder::State();
        EXPECT_EQ(0, state.texts);
        EXPECT_EQ(0, state.policies);
        EXPECT_EQ(0, state.rules);
        EXPECT_EQ(0, state.ruleObjects);
        EXPECT_EQ(0, state.entered);
        EXPECT_EQ(restrictions, state.restrictions) << "is the one that is never released";
    }
    /// The lines that the hardening traced.
    static std::vector<Fake::STraceLine> Traced()
    {
        std::vector<Fake::STraceLine> lines;
        for (Fake::STraceLine const & line : Fake::TraceLines())
            if (line.text.starts_with("\nManageWSH")) lines.push_back(line);
        return lines;
    }
    static bool HasTraced(char const * text)
    {
        auto const lines = Fake::TraceLines();
        return std::any_of(lines.begin(), lines.end(), [&](auto const & line) { return line.text == text; });
    }
};

TEST_F(ManageWSHTest, BothRulesAreAddedWithTheirPropertiesInTheSettledOrderAndThenItSleeps)
{
    Run();
    Calls expected = StepsUpTo(std::size(kSteps) - 1);
    expected.push_back("Sleep " + std::to_string(g_agentIntervals.firewallMs));
    EXPECT_EQ(expected, Work());
    EXPECT_EQ((std::vector<Fake::STraceLine>{{1, kOutboundAdded}, {1, kInboundAdded}}), Traced());
}

TEST_F(ManageWSHTest, TheGroupingOfTheInboundRuleGoesToTheOutboundRuleWhichHasBeenAddedAlready)
{
    Run();
    Calls const & calls = Done();
    std::string const grouping = "rule 1.put_Grouping Kestrix RAID Group";
    EXPECT_EQ(2, std::count(calls.begin(), calls.end(), grouping));
    auto const added = std::find(calls.begin(), calls.end(), "rules.Add rule 1");
    EXPECT_EQ(1, std::count(added, calls.end(), grouping));
    EXPECT_TRUE(std::none_of(calls.begin(), calls.end(),
                             [](auto const & call) { return call.starts_with("rule 2.put_Grouping"); }));
}

TEST_F(ManageWSHTest, AllTextsAreMadeAtTheStartThatOfTheAddressesTooThoughNoRuleGetsIt)
{
    Recorder::State().failAt = PlaceOf("Enter");
    Run();
    EXPECT_EQ(SortedTexts(), Sorted(Recorder::State().textsMade));
    EXPECT_EQ(SortedTexts(), Sorted(Freed()));
}

TEST_F(ManageWSHTest, EverythingIsGivenBackButTheServiceRestriction)
{
    Run();
    EXPECT_EQ(SortedTexts(), Sorted(Freed()));
    EXPECT_EQ(CleanUp(), Released());
    ExpectNothingHeldBut(/*restrictions=*/1);
}

TEST_F(ManageWSHTest, ItRunsBehindTheFirstTraceOfTheConstructorAndAheadOfTheConfiguration)
{
    Run();
    std::vector<std::string> texts;
    for (Fake::STraceLine const & line : Fake::TraceLines())
        texts.push_back(line.text);
    auto const place = [&](auto const & begin) {
        return std::find_if(texts.begin(), texts.end(), [&](auto const & text) { return text.starts_with(begin); }) -
               texts.begin();
    };
    auto const constructor = place("\nCKestrixRAIDAgent(): c'tor...");
    EXPECT_EQ(constructor + 1, place(kManaged));
    EXPECT_EQ(constructor + 2, place(kOutboundAdded));
    EXPECT_EQ(constructor + 3, place(kInboundAdded));
    EXPECT_LT(constructor + 3, place("\nCKestrixRAIDAgent(): m_ASRunning"));
}

TEST_F(ManageWSHTest, EveryConstructionAddsTheTwoRulesAgain)
{
    Run();
    Calls const first = Done();
    Recorder::State() = {};
    Run();
    EXPECT_EQ(first, Done());
}

TEST_F(ManageWSHTest, AThreadThatIsPreparedAlreadyInTheSameWayIsLeftAsOftenAsEntered)
{
    Recorder::State().enterResult = 1; // S_FALSE
    Run();
    EXPECT_EQ(CleanUp(), Released());
    EXPECT_EQ(2u, Traced().size());
    ExpectNothingHeldBut(/*restrictions=*/1);
}

TEST_F(ManageWSHTest, AThreadThatIsPreparedInAnotherWayServesTooAndIsNotTakenBack)
{
    Recorder::State().enterResult = 0x80010106; // RPC_E_CHANGED_MODE
    Run();
    Calls cleanUp = CleanUp();
    cleanUp.pop_back();
    EXPECT_EQ(cleanUp, Released());
    EXPECT_EQ((std::vector<Fake::STraceLine>{{1, kOutboundAdded}, {1, kInboundAdded}}), Traced());
    ExpectNothingHeldBut(/*restrictions=*/1);
}

TEST_F(ManageWSHTest, WithoutATraceTheSameIsDone)
{
    Run();
    Calls const traced = Done();
    Recorder::State() = {};
    Fake::EnableTrace(false);
    Fake::ClearTrace();
    Run();
    EXPECT_EQ(traced, Done());
    EXPECT_TRUE(Fake::TraceLines().empty());
}

TEST_F(ManageWSHTest, AHostWithoutSuchAFirewallIsLeftAlone)
{
    g_hostFakes.hasManagedFirewall = false;
    Run();
    EXPECT_EQ(Calls{}, Done());
    EXPECT_FALSE(HasTraced(kManaged));
}

TEST_F(ManageWSHTest, AHostThatDoesNotTellItsVersionIsLeftAlone)
{
    g_hostFakes.versionError = 1;
    Run();
    EXPECT_EQ(Calls{}, Done());
}

class FailingStepTest : public ManageWSHTest, public testing::WithParamInterface<SStep> {};

TEST_P(FailingStepTest, IsNamedWithItsResultAndFollowedByTheCleanUpAlone)
{
    std::size_t const failed = PlaceOf(GetParam().name);
    Recorder::State().failAt = failed;
    Run();
    EXPECT_EQ(StepsUpTo(failed), Work()) << "and no sleep";
    std::vector<Fake::STraceLine> expected;
    if (failed > PlaceOf("OutboundAdd")) expected.push_back({1, kOutboundAdded});
    expected.push_back({1, std::string("\nManageWSH: ") + GetParam().operation + " failed: 0x80070005"});
    EXPECT_EQ(expected, Traced());
    EXPECT_EQ(SortedTexts(), Sorted(Freed()));
    EXPECT_EQ(CleanUpAfter(failed), Released());
    ExpectNothingHeldBut(/*restrictions=*/failed > PlaceOf("Restriction") ? 1 : 0);
    EXPECT_TRUE(HasTraced("\nCKestrixRAIDAgent(): m_ASRunning = 600, m_ASIniting = 900, m_PortNumber = 3173"))
        << "the constructor goes on";
}

INSTANTIATE_TEST_SUITE_P(Steps, FailingStepTest, testing::ValuesIn(kSteps),
                         [](auto const & test) { return std::string(test.param.name); });

struct SVersion {
    char const * name;
    std::uint32_t major, minor;
    bool isManaged;
};
void PrintTo(SVersion const & version, std::ostream * out)
{
    *out << version.major << '.' << version.minor;
}

class VersionTest : public ManageWSHTest, public testing::WithParamInterface<SVersion> {};

TEST_P(VersionTest, RulesAreAddedFromVersion6Point2On)
{
    g_hostFakes.version = {GetParam().major, GetParam().minor, 0};
    Run();
    EXPECT_EQ(GetParam().isManaged, !Done().empty());
    EXPECT_EQ(GetParam().isManaged, HasTraced(kManaged));
}

INSTANTIATE_TEST_SUITE_P(Edges, VersionTest,
                         testing::Values(SVersion{"SmallerMajorWithThatMinor", 5, 2, false},
                                         SVersion{"First6", 6, 0, false}, SVersion{"LastWithout", 6, 1, false},
                                         SVersion{"FirstWith", 6, 2, true}, SVersion{"Last6", 6, 3, true},
                                         SVersion{"SmallMinorOfALaterOne", 7, 0, true}, SVersion{"Ten", 10, 0, true}),
                         [](auto const & test) { return std::string(test.param.name); });

} // namespace
