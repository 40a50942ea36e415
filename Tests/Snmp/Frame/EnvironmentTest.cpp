#include <cstdio>
#include <filesystem>

#include "FrameFixture.h"
#include "Platform/Host.h"
#include "Snmp/Frame/Build.h"
#include "Snmp/Frame/PlatformName.h"
#include "Support/ScopedVariable.h"

namespace {

constexpr char kUuidKey[] = "SYSTEM\\CurrentControlSet\\Control\\UUID\\5E2D7A14-3B90-4C6E-9F21-7A1C0D4B8E36";
constexpr char kDefaultRoot[] = "SOFTWARE\\Halvorn Systems";
constexpr char kModule[] = "kxra_frame_tests";

class EnvironmentTest : public FrameTest {
protected:
    void Initialize()
    {
        m_agent.SetRegistryName("Kestrix RAID");
        m_agent.InitializeModule(&g_moduleName);
    }
    CAgentUnderTest m_agent;
};

} // namespace

TEST_F(EnvironmentTest, AnAddressOutsideEveryModuleEndsTheInitialisationWithoutABanner)
{
    const auto heap = std::make_unique<int>(1);
    m_agent.InitializeModule(heap.get());
    EXPECT_TRUE(Fake::TraceLines().empty());
    EXPECT_EQ("", m_agent.m_commonRoot);
    EXPECT_STREQ("FRAME_MIB", g_moduleName);
}

TEST_F(EnvironmentTest, WithoutAnEntryTheDefaultRootCounts)
{
    Initialize();
    EXPECT_EQ(kDefaultRoot, m_agent.m_commonRoot);
    EXPECT_EQ(std::string(kDefaultRoot) + "\\" + kModule, m_agent.m_agentRoot);
    EXPECT_EQ("", m_agent.m_fileRoot);
    EXPECT_EQ("", m_agent.m_dataRoot);
    EXPECT_TRUE(Traced(Frame(3, "Status changed to: loaded (1)")));
}

TEST_F(EnvironmentTest, TheEntryUnderTheRegistryNameGivesTheRoot)
{
    m_registry.Text(kUuidKey, "Kestrix RAID", "SOFTWARE\\Shared");
    m_registry.Text(kUuidKey, "Other", "SOFTWARE\\Wrong");
    m_registry.Text("SOFTWARE\\Shared\\#Setup", "FileRoot", "C:\\Files\\");
    m_registry.Text("SOFTWARE\\Shared\\#Setup", "DataRoot", "C:\\Data\\");
    Initialize();
    EXPECT_EQ("SOFTWARE\\Shared", m_agent.m_commonRoot);
    EXPECT_EQ(std::string("SOFTWARE\\Shared\\") + kModule, m_agent.m_agentRoot);
    EXPECT_EQ("C:\\Files", m_agent.m_fileRoot);
    EXPECT_EQ("C:\\Data", m_agent.m_dataRoot);
}

TEST_F(EnvironmentTest, FileRootWinsOverAgentRoot)
{
    m_registry.Text(std::string(kDefaultRoot) + "\\#Setup", "AgentRoot", "C:\\Agents");
    m_registry.Text(std::string(kDefaultRoot) + "\\#Setup", "FileRoot", "C:\\Files");
    Initialize();
    EXPECT_EQ("C:\\Files", m_agent.m_fileRoot);
}

TEST_F(EnvironmentTest, AgentRootStandsInForFileRoot)
{
    m_registry.Text(std::string(kDefaultRoot) + "\\#Setup", "AgentRoot", "C:\\Agents\\");
    Initialize();
    EXPECT_EQ("C:\\Agents", m_agent.m_fileRoot);
}

TEST_F(EnvironmentTest, AnExpandableTextIsExpanded)
{
    const CScopedVariable place("FRAME_TEST_DIRECTORY", "D:\\place");
    m_registry.Raw(std::string(kDefaultRoot) + "\\#Setup",
                   "\"DataRoot\"=" + CRegistryFixture::Expandable("%FRAME_TEST_DIRECTORY%\\data"));
    Initialize();
    EXPECT_EQ("D:\\place\\data", m_agent.m_dataRoot);
}

namespace {

struct SDirectory {
    char const * name;
    char const * text;
    char const * expected;
};

class DataRootTest : public EnvironmentTest, public testing::WithParamInterface<SDirectory> {};

} // namespace

TEST_P(DataRootTest, LosesOneTrailingBackslashBehindADrivesRoot)
{
    m_registry.Text(std::string(kDefaultRoot) + "\\#Setup", "DataRoot", GetParam().text);
    Initialize();
    EXPECT_EQ(GetParam().expected, m_agent.m_dataRoot);
}

INSTANTIATE_TEST_SUITE_P(
    Edges, DataRootTest,
    testing::Values(SDirectory{"Directory", "C:\\Data\\", "C:\\Data"}, SDirectory{"Drive", "C:\\", "C:\\"},
                    SDirectory{"Without", "C:\\Data", "C:\\Data"}, SDirectory{"Two", "C:\\Data\\\\", "C:\\Data\\"},
                    SDirectory{"PositionTwo", "ab\\", "ab\\"}, SDirectory{"PositionThree", "abc\\", "abc"},
                    SDirectory{"Alone", "\\", "\\"}, SDirectory{"Empty", "", ""}),
    [](auto const & test) { return std::string(test.param.name); });

TEST_F(EnvironmentTest, TheBannerSaysWhereTheAgentStands)
{
    Initialize();
    std::string computer;
    Platform::ComputerName(computer, 16);
    EXPECT_EQ(computer, m_agent.m_computerName);
    const std::string path = m_agent.m_modulePath;
    EXPECT_EQ(kModule, std::filesystem::path(path).stem().string());
    const Lines banner{{1, "\n\n*** SNMP agent module \"kxra_frame_tests\" loaded ***\n"},
                       {1, "\n      Computer name : " + computer},
                       {1, "\n   Operating system : Windows"},
                       {1, std::string("\n        OS platform : ") + PlatformName(Platform::Architecture())},
                       {1, "\n  Agent description : "},
                       {2, "\n       Company name : "},
                       {1, "\n      Agent version : "},
                       {1, "\n       File version : "},
                       {1, "\n           Encoding : MBC"},
                       {1, std::string("\n    Build date/time : ") + g_buildDate + " " + g_buildTime},
                       {2, "\n"},
                       {2, "\n        Module path : " + path},
                       {2, "\n        Common root : SOFTWARE\\Halvorn Systems"},
                       {2, "\n         Agent root : SOFTWARE\\Halvorn Systems\\kxra_frame_tests"},
                       {1, "\n\n"}};
    // This program has no version block; the lines of its search are those of another room.
    Lines traced = Traced();
    std::erase_if(traced, [](Fake::STraceLine const & line) {
        return line.text.starts_with("\nCFileVersionInfo") || line.text.starts_with("\nCVersionResource");
    });
    traced.erase(traced.begin()); // the status
    EXPECT_EQ(banner, traced);
}

TEST_F(EnvironmentTest, WithoutDebugOutputThereIsNoBannerButAllElse)
{
    Fake::EnableTrace(false);
    Initialize();
    EXPECT_TRUE(Fake::TraceLines().empty());
    EXPECT_EQ(kDefaultRoot, m_agent.m_commonRoot);
}

TEST(PlatformNameTest, NamesTheArchitectures)
{
    EXPECT_STREQ("iA64", PlatformName(6));
    EXPECT_STREQ("x64", PlatformName(9));
    EXPECT_STREQ("x86", PlatformName(0));
    EXPECT_STREQ("<< Unknown!! >>", PlatformName(12));
}

// The list of dirty modules.

namespace {

class LockListTest : public EnvironmentTest {
protected:
    LockListTest()
    {
        g_fakes.loadedModules = {{"present.so", nullptr}, {"Other.so", nullptr}};
        g_fakes.pinHandle = &g_fakes;
    }
    void List(char const * label, std::string const & module)
    {
        m_registry.Text(std::string(kDefaultRoot) + "\\#LockList", label, module);
    }
    Lines ListTraces()
    {
        Lines lines = Traced();
        std::erase_if(
            lines, [](Fake::STraceLine const & line) { return line.text.find("Dirty module") == std::string::npos; });
        return lines;
    }
};

} // namespace

TEST_F(LockListTest, PinsTheModulesThatAreLoaded)
{
    List("a", "present.so");
    List("b", "absent.so");
    Initialize();
    EXPECT_EQ((std::vector<std::string>{"present.so"}), g_fakes.pinned);
    char handle[32];
    std::snprintf(handle, sizeof handle, "0x%X",
                  static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(g_fakes.pinHandle)));
    EXPECT_EQ((Lines{Frame(3, "Dirty module \"present.so\" found in list"),
                     Frame(3, std::string("Dirty module present.so (") + handle + ") successfully locked!"),
                     Frame(3, "Dirty module \"absent.so\" found in list"),
                     Frame(3, "Dirty module absent.so was not already loaded before this agent!")}),
              ListTraces());
}

TEST_F(LockListTest, TheCaseOfANameCounts)
{
    List("a", "other.so");
    Initialize();
    EXPECT_TRUE(g_fakes.pinned.empty());
}

TEST_F(LockListTest, AModuleThatCannotBePinnedIsPassedOver)
{
    g_fakes.pinHandle = nullptr;
    List("a", "present.so");
    List("b", "Other.so");
    Initialize();
    EXPECT_EQ((std::vector<std::string>{"present.so", "Other.so"}), g_fakes.pinned);
    EXPECT_EQ(0u, CountTraced("successfully locked!"));
}

TEST_F(LockListTest, ANameThatIsTooLongEndsTheList)
{
    List("a", std::string(259, 'x'));
    List("b", std::string(260, 'x'));
    List("c", "present.so");
    Initialize();
    EXPECT_EQ(2u, ListTraces().size());
    EXPECT_TRUE(g_fakes.pinned.empty());
}

TEST_F(LockListTest, ALabelThatIsTooLongEndsTheList)
{
    List(std::string(259, 'a').c_str(), "Other.so");
    List(std::string(260, 'b').c_str(), "present.so");
    List("c", "present.so");
    Initialize();
    EXPECT_EQ((std::vector<std::string>{"Other.so"}), g_fakes.pinned);
}

TEST_F(LockListTest, IsLeftOutInACompatibilityLayer)
{
    g_fakes.inCompatibilityLayer = true;
    List("a", "present.so");
    Initialize();
    EXPECT_TRUE(g_fakes.pinned.empty());
}

TEST_F(LockListTest, IsLeftOutWhereModulesCannotBeListed)
{
    g_fakes.loadedModulesError = kFakeError;
    List("a", "present.so");
    Initialize();
    EXPECT_TRUE(ListTraces().empty());
}

TEST_F(LockListTest, WithoutAListNothingIsPinned)
{
    Initialize();
    EXPECT_TRUE(ListTraces().empty());
}

// Files and parameters.

namespace {

struct SFilePath {
    char const * name;
    char const * value;
    char const * expected;
    bool absolute;
};

class FilePathTest : public EnvironmentTest, public testing::WithParamInterface<SFilePath> {};

} // namespace

TEST_P(FilePathTest, RelativePathsStandBelowTheDataRoot)
{
    m_registry.Text(std::string(kDefaultRoot) + "\\#Setup", "DataRoot", "D:\\data");
    m_registry.Text(std::string(kDefaultRoot) + "\\" + kModule + "\\FILE", "Ini", GetParam().value);
    Initialize();
    Fake::ClearTrace();
    std::string path;
    EXPECT_EQ(1, m_agent.GetAgentRegFilePath("Ini", path));
    EXPECT_EQ(GetParam().expected, path);
    EXPECT_EQ(
        (Lines{Frame(5, std::string("GetAgentRegFilePath(): registry value Ini = ") + GetParam().value),
               {5, GetParam().absolute ? "\n    absolute INI file path..."
                                       : "\n    relative INI file path, add data root path D:\\data..."},
               Frame(4, std::string("GetAgentRegFilePath(): return file path for Ini = ") + GetParam().expected)}),
        Traced());
}

INSTANTIATE_TEST_SUITE_P(
    Edges, FilePathTest,
    testing::Values(SFilePath{"Relative", "logs\\agent.ini", "D:\\data\\logs\\agent.ini", false},
                    SFilePath{"Share", "\\\\server\\share\\a.ini", "\\\\server\\share\\a.ini", true},
                    SFilePath{"Backslash", "\\a.ini", "\\a.ini", true}, SFilePath{"Drive", "C:\\a", "C:\\a", true},
                    SFilePath{"DriveAlone", "C:\\", "D:\\data\\C:\\", false},
                    SFilePath{"DriveRelative", "C:abc", "D:\\data\\C:abc", false},
                    SFilePath{"NoLetter", "1:\\abc", "D:\\data\\1:\\abc", false},
                    SFilePath{"Empty", "", "D:\\data\\", false}),
    [](auto const & test) { return std::string(test.param.name); });

TEST_F(EnvironmentTest, AFilePathThatBeginsWithTheSystemsSeparatorStandsAsItIs)
{
    const std::string file = std::string(1, Platform::PathSeparator()) + "etc" + Platform::PathSeparator() + "a.ini";
    m_registry.Text(std::string(kDefaultRoot) + "\\" + kModule + "\\FILE", "Ini", file);
    Initialize();
    std::string path;
    EXPECT_EQ(1, m_agent.GetAgentRegFilePath("Ini", path));
    EXPECT_EQ(file, path);
}

TEST_F(EnvironmentTest, AFilePathMayBeThatOfAnotherModule)
{
    m_registry.Text(std::string(kDefaultRoot) + "\\OTHER\\FILE", "Ini", "C:\\other.ini");
    Initialize();
    std::string path = "as it was";
    EXPECT_EQ(1, m_agent.GetAgentRegFilePath("Ini", path, "OTHER"));
    EXPECT_EQ("C:\\other.ini", path);
    EXPECT_EQ(0, m_agent.GetAgentRegFilePath("Ini", path, "")) << "an empty module name";
    EXPECT_EQ(0, m_agent.GetAgentRegFilePath("Ini", path)) << "not there";
    EXPECT_EQ(0, m_agent.GetAgentRegFilePath(nullptr, path, "OTHER"));
    EXPECT_EQ("C:\\other.ini", path);
}

TEST_F(EnvironmentTest, ParametersAreReadAsTextAndAsNumber)
{
    const std::string key = std::string(kDefaultRoot) + "\\" + kModule + "\\Parameters";
    m_registry.Text(key, "Text", "value");
    m_registry.Number(key, "Number", 4000000000u);
    Initialize();
    Fake::ClearTrace();
    std::string text;
    EXPECT_EQ(1, m_agent.GetAgentRegParam("Text", text, true));
    EXPECT_EQ("value", text);
    std::uint32_t number = 0;
    EXPECT_EQ(1, m_agent.GetAgentRegParam("Number", &number, true));
    EXPECT_EQ(4000000000u, number);
    EXPECT_EQ((Lines{Frame(4, "GetAgentRegParam(): return parameter value for Text = \"value\""),
                     Frame(4, "GetAgentRegParam(): return parameter value for Number = -294967296")}),
              Traced());
}

TEST_F(EnvironmentTest, AMissingParameterIsTracedWhereThatIsWanted)
{
    Initialize();
    Fake::ClearTrace();
    std::string text = "as it was";
    std::uint32_t number = 7;
    EXPECT_EQ(0, m_agent.GetAgentRegParam("Missing", text, false));
    EXPECT_EQ(0, m_agent.GetAgentRegParam("Missing", &number, false));
    EXPECT_TRUE(Fake::TraceLines().empty());
    EXPECT_EQ(0, m_agent.GetAgentRegParam("Missing", text, true));
    EXPECT_EQ(0, m_agent.GetAgentRegParam("Missing", &number, true));
    EXPECT_EQ("as it was", text);
    EXPECT_EQ(7u, number);
    const Fake::STraceLine line =
        Frame(1, "GetAgentRegParam(): ## ERROR! Could not read agent param \"Missing\" from \"SOFTWARE\\Halvorn "
                 "Systems\\kxra_frame_tests\\Parameters\"!");
    EXPECT_EQ((Lines{line, line}), Traced());
}
