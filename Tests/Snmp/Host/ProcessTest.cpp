#include "Snmp/Host/Process.h"

#include "QueryFixture.h"

namespace {

class ProcessNameTest : public CQueryTest {
protected:
    static std::string LastText() { return Fake::TraceLines().back().text; }
    static unsigned LastLevel() { return Fake::TraceLines().back().level; }
};

struct SWellKnown {
    char const * name;
    std::uint32_t major, minor, pid;
    char const * expected; ///< empty: none
};
class WellKnownProcessTest : public CQueryTest, public testing::WithParamInterface<SWellKnown> {};

} // namespace

TEST_F(ProcessNameTest, AProcessThatCanBeOpenedTellsItsName)
{
    m_host.processes.push_back({.id = 12, .name = "snmpd"});
    std::string name;
    EXPECT_EQ(1, CProcess::GetName(name, 12));
    EXPECT_EQ("snmpd", name);
    EXPECT_THAT(Fake::TraceLines(),
                testing::ElementsAre(SLine{4, "\nCProcess            : -> process #12 name = \"snmpd\""}));
}

TEST_F(ProcessNameTest, ANameThatCantBeReadIsAnErrorAndTheOutputStays)
{
    m_host.processes.push_back({.id = 12, .nameError = 0x1F, .name = ""});
    std::string name = "kept";
    EXPECT_EQ(0, CProcess::GetName(name, 12));
    EXPECT_EQ("kept", name);
    const std::string first = Fake::TraceLines().front().text;
    EXPECT_EQ(0u, first.rfind("\nCProcess            : ## ERROR 0x0000001F! GetModuleBaseName hProcess 0x", 0))
        << first;
    EXPECT_EQ(" FAILED!", first.substr(first.size() - 8));
    EXPECT_EQ(1u, LastLevel());
    EXPECT_EQ("\nCProcess            : ## ERROR 0x0000001F! Could not get process name for process with PID 12!",
              LastText());
}

TEST_P(WellKnownProcessTest, HasItsNameByTheVersion)
{
    m_host.major = GetParam().major;
    m_host.minor = GetParam().minor;
    m_host.processes.push_back({.id = GetParam().pid, .openError = 5, .name = ""});
    std::string name;
    const bool known = *GetParam().expected != '\0';
    EXPECT_EQ(known ? 1 : 0, CProcess::GetName(name, GetParam().pid));
    EXPECT_EQ(GetParam().expected, name);
    const std::string pid = std::to_string(GetParam().pid);
    EXPECT_EQ((SLine{4, "\nCProcess            : Could not open process PID " + pid +
                            ", try to get name of Windows default process..."}),
              Fake::TraceLines().front());
    const SLine last =
        known
            ? SLine{4, "\nCProcess            : -> process #" + pid + " name = \"" + GetParam().expected + "\""}
            : SLine{1, "\nCProcess            : ## ERROR 0x00000005! Could not get process name for process with PID " +
                           pid + "!"};
    EXPECT_EQ(last, Fake::TraceLines().back());
}

INSTANTIATE_TEST_SUITE_P(
    Versions, WellKnownProcessTest,
    testing::Values(SWellKnown{"Four0", 4, 0, 0, "System Idle Process"}, SWellKnown{"Four2", 4, 9, 2, "System"},
                    SWellKnown{"Four4", 4, 0, 4, ""}, SWellKnown{"FiveZero0", 5, 0, 0, "System Idle Process"},
                    SWellKnown{"FiveZero8", 5, 0, 8, "System"}, SWellKnown{"FiveZero4", 5, 0, 4, ""},
                    SWellKnown{"FiveOne0", 5, 1, 0, "System Idle Process"}, SWellKnown{"FiveOne4", 5, 1, 4, "System"},
                    SWellKnown{"FiveTwo4", 5, 2, 4, "System"}, SWellKnown{"FiveTwo8", 5, 2, 8, ""},
                    SWellKnown{"FiveThree0", 5, 3, 0, ""}, SWellKnown{"Six0", 6, 1, 0, "System Idle Process"},
                    SWellKnown{"Six4", 6, 1, 4, "System"}, SWellKnown{"Six5", 6, 1, 5, ""},
                    SWellKnown{"Seven0", 7, 0, 0, ""}, SWellKnown{"Three4", 3, 51, 4, ""}),
    [](const auto & test) { return std::string(test.param.name); });

TEST_F(ProcessNameTest, AnOutputThatHeldANameCountsAsNamedThoughNoneWasFound)
{
    m_host.processes.push_back({.id = 12, .openError = 5, .name = ""});
    std::string name = "old";
    EXPECT_EQ(1, CProcess::GetName(name, 12));
    EXPECT_EQ("old", name);
    EXPECT_EQ("\nCProcess            : -> process #12 name = \"old\"", LastText());
}

namespace {

class IsProcessRunningTest : public CQueryTest {
protected:
    static bool Ask(char const * name)
    {
        Fake::ClearTrace();
        const bool found = IsProcessRunning(name);
        EXPECT_THAT(Fake::TraceLines(),
                    testing::ElementsAre(SLine{1, std::string("\nStart IsProcessRunning (") + name + ")."},
                                         SLine{1, found ? "\nEnd IsProcessRunning. Process found."
                                                        : "\nEnd IsProcessRunning. Process not found."}));
        return found;
    }
};

} // namespace

TEST_F(IsProcessRunningTest, AnyProcessWithAnotherNameMakesItTrue)
{
    m_host.processes = {{.id = 1, .name = "init"}, {.id = 2, .name = "SnmpTrapListen.exe"}};
    EXPECT_TRUE(Ask("SnmpTrapListen.exe"));
    EXPECT_TRUE(Ask("no such process"));
    EXPECT_EQ(0, m_host.openHandles);
}

TEST_F(IsProcessRunningTest, ItIsFalseWhenEveryProcessThatCanBeExaminedBearsTheName)
{
    m_host.processes = {{.id = 1, .name = "SNMPTRAPLISTEN.exe"}, {.id = 2, .name = "snmptraplisten.EXE"}};
    EXPECT_FALSE(Ask("SnmpTrapListen.exe"));
    EXPECT_TRUE(Ask("SnmpTrapListen.ex"));
}

TEST_F(IsProcessRunningTest, ItIsFalseWhenNoProcessCanBeExamined)
{
    EXPECT_FALSE(Ask("x"));
    m_host.processes = {{.id = 1, .openError = 5, .name = "a"}, {.id = 2, .hasModules = false, .name = "b"}};
    EXPECT_FALSE(Ask("x"));
}

TEST_F(IsProcessRunningTest, ANameThatCantBeReadIsTheLastOneThatCould)
{
    m_host.processes = {{.id = 1, .nameError = 5, .name = ""}};
    EXPECT_FALSE(Ask("<UNKNOWN>"));
    EXPECT_TRUE(Ask("x"));
    m_host.processes = {{.id = 1, .name = "x"}, {.id = 2, .nameError = 5, .name = ""}};
    EXPECT_FALSE(Ask("x"));
}

TEST_F(IsProcessRunningTest, OnlyTheFirst1024ProcessesAreLookedAt)
{
    for (std::uint32_t id = 1; id <= 1024; ++id)
        m_host.processes.push_back({.id = id, .name = "x"});
    m_host.processes.push_back({.id = 2000, .name = "another"});
    EXPECT_FALSE(Ask("x"));
}

TEST_F(IsProcessRunningTest, AFailedEnumerationIsFalse)
{
    m_host.enumError = 5;
    EXPECT_FALSE(IsProcessRunning("x"));
    EXPECT_THAT(Fake::TraceLines(), testing::ElementsAre(SLine{1, "\nStart IsProcessRunning (x)."},
                                                         SLine{1, "\nEnd IsProcessRunning. EnumProcesses failed."}));
}
