#include "Snmp/Host/Debug.h"

#include <algorithm>
#include <cstring>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "DebugFakes.h"
#include "DebugFixture.h"
#include "Platform/Error.h"
#include "Platform/Host.h"
#include "Platform/NamedMutex.h"
#include "Platform/Process.h"
#include "Platform/Text.h"
#include "Platform/Thread.h"
#include "Snmp/Host/DebugState.h"
#include "Snmp/Host/TraceFile.h"
#include "Support/Deadline.h"
#include "Support/MatchesPattern.h"
#include "Support/RegistryFixture.h"
#include "Support/ScopedVariable.h"
#include "Support/TempDirectory.h"

using testing::ElementsAre;

namespace {

constexpr std::size_t MiB = 1U << 20;
constexpr char TooSmall[] = "\n################# CDebug::Trace() - BUFFER TOO SMALL - FIXME! #################";
constexpr char Exception[] = "\n\n################# EXCEPTION in CDebug::Trace() #################\n";

constexpr char Debugger[] = "\"WinDebugLevel\"=dword:6\n";
constexpr char Console[] = "\"ConDebugLevel\"=dword:6\n";

} // namespace

TEST_F(DebugTest, WithoutARegistryTheTraceIsOff)
{
    CDebug::Init(m_app.c_str(), /*writeBanner=*/true);
    EXPECT_FALSE(CDebug::Enabled());
}

TEST_F(DebugTest, WithAllValuesZeroTheTraceIsOffAndTheRegistryIsNeverReadAgain)
{
    DebugFakes::SetTickMs(1000);
    Configure("\"ConDebugLevel\"=dword:0\n\"WinDebugLevel\"=dword:0\n\"FileDebugLevel\"=dword:0\n");
    EXPECT_FALSE(CDebug::Enabled());
    WriteRegistry(Debugger);
    DebugFakes::SetTickMs(1000000);
    CDebug::Trace(1, "lost");
    EXPECT_FALSE(CDebug::Enabled());
    EXPECT_THAT(Lines(), ElementsAre());
}

TEST_F(DebugTest, WithDynamicUpdateAloneARaisedLevelTakesEffectWithinThePeriod)
{
    DebugFakes::SetTickMs(10999);
    Configure("", 5);
    EXPECT_TRUE(CDebug::Enabled());
    CDebug::Trace(1, "lost");
    WriteRegistry(Debugger, 5);
    DebugFakes::SetTickMs(14999); // 14 s: one second before the reading is due
    CDebug::Trace(1, "lost");
    EXPECT_THAT(Lines(), ElementsAre());
    DebugFakes::SetTickMs(15000);
    CDebug::Trace(1, "seen");
    EXPECT_THAT(Lines(), ElementsAre("seen\n"));
}

TEST_F(DebugTest, AClockThatWentBackwardsCausesAReading)
{
    DebugFakes::SetTickMs(100000);
    Configure("", 50);
    WriteRegistry(Debugger, 50);
    DebugFakes::SetTickMs(99000);
    CDebug::Trace(1, "seen");
    EXPECT_THAT(Lines(), ElementsAre("seen\n"));
}

TEST_F(DebugTest, AfterDynamicUpdateWentToZeroTheRegistryIsNotReadAgain)
{
    DebugFakes::SetTickMs(1000);
    Configure(Debugger, 1);
    WriteRegistry(Debugger, 0);
    DebugFakes::SetTickMs(3000);
    CDebug::Trace(1, "a");
    WriteRegistry("", 0);
    DebugFakes::SetTickMs(9000);
    CDebug::Trace(1, "b");
    EXPECT_THAT(Lines(), ElementsAre("a\n", "b\n"));
}

TEST_F(DebugTest, WithoutTheApplicationsKeyTheLevelsKeepTheirOldValuesAndTheSwitchesDont)
{
    Configure(std::string(Debugger) + "\"AppNameOn\"=dword:1\n", 1);
    m_registry.Write("[HKLM\\SOFTWARE\\Debug]\n\"DynamicUpdate\"=dword:1\n");
    CDebug::Init(m_app.c_str(), /*writeBanner=*/false);
    EXPECT_TRUE(CDebug::Enabled());
    CDebug::Trace(6, "still");
    EXPECT_THAT(Lines(), ElementsAre("still\n"));
    m_registry.Write("");
    CDebug::Init(m_app.c_str(), /*writeBanner=*/false);
    EXPECT_FALSE(CDebug::Enabled());
}

TEST_F(DebugTest, ANullNameOnlySwitchesOff)
{
    Configure(Debugger);
    EXPECT_TRUE(CDebug::Enabled());
    CDebug::Init(nullptr, /*writeBanner=*/true);
    EXPECT_FALSE(CDebug::Enabled());
    EXPECT_THAT(Lines(), ElementsAre());
}

TEST_F(DebugTest, AnEmptyNameReadsTheRootKey)
{
    m_registry.Write(std::string("[HKLM\\SOFTWARE\\Debug]\n") + Debugger);
    CDebug::Init("", /*writeBanner=*/false);
    EXPECT_TRUE(CDebug::Enabled());
}

TEST_F(DebugTest, BannerTellsNameAndTime)
{
    WriteRegistry(Console);
    DebugFakes::ClearOutputs();
    CDebug::Init(m_app.c_str(), /*writeBanner=*/true);
    EXPECT_EQ("\n\n----- Application [TESTAPP] started at 07:05:04 03/09/2024 -----\n", DebugFakes::ConsoleText());
}

TEST_F(DebugTest, EachOutputHasItsOwnLevelAndLevelZeroCountsAsOne)
{
    StartNarrow();
    Configure(File("1", "\"ConDebugLevel\"=dword:2\n\"WinDebugLevel\"=dword:3\n"));
    for (unsigned level = 0; level <= 4; ++level)
        CDebug::Trace(level, "%u\n", level);
    EXPECT_EQ("#0\r\n1\r\n", Trace());
    EXPECT_EQ("0\n1\n2\n", DebugFakes::ConsoleText());
    EXPECT_THAT(Lines(), ElementsAre("0\n", "1\n", "2\n", "3\n"));
}

TEST_F(DebugTest, TheLastErrorOfTheCallerIsKept)
{
    Configure(std::string("\"FileDebugLevel\"=dword:2\n\"TraceFile\"=\"/no/such/directory/trace\"\n") + Debugger, 1);
    for (const unsigned level : {1U, 9U}) {
        DebugFakes::SetTickMs(level * 100000); // with a reading of the registry
        Platform::SetLastError(4711);
        CDebug::Trace(level, "text");
        EXPECT_EQ(4711u, Platform::LastError());
    }
}

TEST_F(DebugTest, AFileThatCantBeOpenedLosesTheLineForThatOutputOnly)
{
    Configure(std::string("\"FileDebugLevel\"=dword:2\n\"TraceFile\"=\"/no/such/directory/trace\"\n") + Debugger +
              Console);
    CDebug::Trace(1, "text");
    EXPECT_EQ("text", DebugFakes::ConsoleText());
    EXPECT_THAT(Lines(), ElementsAre("text\n"));
}

TEST_F(DebugTest, TheConsoleIsOpenedOnce)
{
    Configure(Console);
    const unsigned opened = DebugFakes::ConsolesOpened();
    Configure("");
    Configure(Console);
    EXPECT_EQ(opened, DebugFakes::ConsolesOpened());
    CDebug::Trace(1, "text");
    EXPECT_EQ("text", DebugFakes::ConsoleText());
}

TEST_F(DebugTest, NewlinesAtTheStartStandAheadOfAllStamps)
{
    Configure(std::string(Console) + "\"TimeStampOn\"=dword:1\n");
    CDebug::Trace(1, "\n\n%s", "text");
    EXPECT_EQ("\n\n[07:05:04.012] text", DebugFakes::ConsoleText());
}

TEST_F(DebugTest, StampsStandInTheirOrder)
{
    Configure(std::string(Console) + "\"TimeStampOn\"=dword:1\n\"DateStampOn\"=dword:1\n\"ThreadIdOn\"=dword:1\n"
                                     "\"CpuIdOn\"=dword:1\n\"AppNameOn\"=dword:1\n\"MemUsageOn\"=dword:1\n"
                                     "\"HandleCountOn\"=dword:1\n");
    CDebug::Trace(1, "\ntext");
    char thread[32];
    std::snprintf(thread, sizeof thread, "%06d", static_cast<int>(Platform::CurrentThreadId()));
    EXPECT_THAT(DebugFakes::ConsoleText(),
                MatchesPattern("\n\\[2024-03-09\\] \\[07:05:04\\.012\\] \\(" + std::string(thread) +
                               "\\) #[0-9][0-9]+ \\{PB -?[0-9]{5,}kB, MU [0-9]{5,}kB\\} \\{[0-9]{3,} H\\} "
                               "TESTAPP:       text"));
}

namespace {

struct SName {
    char const *name, *app, *stamp;
};
class DebugNameTest : public DebugTest, public testing::WithParamInterface<SName> {};

} // namespace

TEST_P(DebugNameTest, TheColonReplacesTheCharacterBehindTheName)
{
    m_app = GetParam().app;
    Configure(std::string(Console) + "\"AppNameOn\"=dword:1\n");
    CDebug::Trace(1, "|");
    EXPECT_EQ(std::string(GetParam().stamp) + "|", DebugFakes::ConsoleText());
}

INSTANTIATE_TEST_SUITE_P(Names, DebugNameTest,
                         testing::Values(SName{"Short", "KXRA_MIB", "KXRA_MIB:      "},
                                         SName{"Twelve", "ABCDEFGHIJKL", "ABCDEFGHIJKL:  "},
                                         SName{"Thirteen", "ABCDEFGHIJKLM", "ABCDEFGHIJKLM: "},
                                         SName{"Twenty", "ABCDEFGHIJKLMNOPQRST", "ABCDEFGHIJKLMNOPQRST: "}),
                         [](const auto & test) { return std::string(test.param.name); });

TEST_F(DebugTest, ANameIsCutTo47Bytes)
{
    m_app = std::string(47, 'x');
    WriteRegistry(std::string(Console) + "\"AppNameOn\"=dword:1\n");
    DebugFakes::ClearOutputs();
    CDebug::Init((m_app + "yyy").c_str(), /*writeBanner=*/false);
    CDebug::Trace(1, "|");
    EXPECT_EQ(m_app + ": |", DebugFakes::ConsoleText());
}

TEST_F(DebugTest, ANewFileIsWideBehindItsMarkWithCarriageReturns)
{
    Configure(File("1"));
    CDebug::Trace(1, "\nfirst");
    CDebug::Trace(1, "\nsecond\n");
    EXPECT_EQ("\xFF\xFE" + Wide("\r\nfirst\r\nsecond\r\n"), Trace());
}

TEST_F(DebugTest, AnEmptyFileBecomesWide)
{
    m_directory.Write("trace.log", "");
    Configure(File("1"));
    CDebug::Trace(1, "a");
    EXPECT_EQ("\xFF\xFE" + Wide("a"), Trace());
}

TEST_F(DebugTest, AFileWithoutTheMarkStaysNarrow)
{
    Configure(File("1"));
    for (char const * const start : {"x", "xy", "\xFE\xFF"}) {
        m_directory.Write("trace.log", start);
        CDebug::Trace(1, "\nü");
        CDebug::Trace(1, "\n\nb\n");
        EXPECT_EQ(std::string(start) + "\r\nü\r\n\r\nb\r\n", Trace());
    }
}

TEST_F(DebugTest, AWideRunHasAsManyUnitsAsItHadBytes)
{
    Configure(File("1"));
    const std::string letter = Platform::FromUtf16(u"ü", 1);
    CDebug::Trace(1, "a%s\nb", letter.c_str());
    const std::string rest(2 * (letter.size() - 1), '\0');
    EXPECT_EQ("\xFF\xFE" + std::string("a\0\xFC\0", 4) + rest + Wide("\r\nb"), Trace());
}

namespace {

struct SRoll {
    char const * name;
    char const * limit; ///< the registry's line
    std::size_t size;   ///< of the old file
    bool rolls;
};
class DebugRollTest : public DebugTest, public testing::WithParamInterface<SRoll> {};

} // namespace

TEST_P(DebugRollTest, HappensAtTheLimit)
{
    m_directory.Write("trace.log", "\xFF\xFE");
    std::filesystem::resize_file(Path(), GetParam().size);
    m_directory.Write("trace.log.txt", "an older one");
    Configure(File("1", GetParam().limit));
    CDebug::Trace(1, "a");
    EXPECT_EQ(GetParam().rolls ? 4u : GetParam().size + 2, std::filesystem::file_size(Path()));
    EXPECT_EQ(GetParam().rolls ? GetParam().size : 12u, std::filesystem::file_size(Path() + ".txt"));
}

INSTANTIATE_TEST_SUITE_P(Limits, DebugRollTest,
                         testing::Values(SRoll{"At", "\"TraceFileLimit\"=dword:1\n", MiB, true},
                                         SRoll{"Below", "\"TraceFileLimit\"=dword:1\n", MiB - 1, false},
                                         SRoll{"Above", "\"TraceFileLimit\"=dword:1\n", MiB + 1, true},
                                         SRoll{"AtTheDefault", "", 10 * MiB, true},
                                         SRoll{"BelowTheDefault", "", 10 * MiB - 1, false},
                                         SRoll{"ZeroIsNone", "\"TraceFileLimit\"=dword:0\n", 11 * MiB, false},
                                         SRoll{"Shift4096IsNone", "\"TraceFileLimit\"=dword:1000\n", 11 * MiB, false},
                                         SRoll{"Shift4097IsOne", "\"TraceFileLimit\"=dword:1001\n", MiB, true}),
                         [](const auto & test) { return std::string(test.param.name); });

TEST_F(DebugTest, ARollKeepsTheFormOfTheOldFile)
{
    Configure(File("1", "\"TraceFileLimit\"=dword:1\n"));
    const std::string narrow(MiB, 'x');
    m_directory.Write("trace.log", narrow);
    CDebug::Trace(1, "\nnew");
    EXPECT_EQ("\r\nnew", Trace());
    EXPECT_EQ(narrow, m_directory.Read("trace.log.txt"));
    m_directory.Write("trace.log", "\xFF\xFE" + narrow);
    CDebug::Trace(1, "\nnew");
    EXPECT_EQ("\xFF\xFE" + Wide("\r\nnew"), Trace());
}

TEST_F(DebugTest, ATextThatFillsTheBufferStandsWhole)
{
    StartNarrow();
    Configure(File("1", "\"DateStampOn\"=dword:1\n"));
    const std::string message(65635 - 1 - 13, 'x'); // a newline and the stamp come first
    CDebug::Trace(1, "\n%s", message.c_str());
    EXPECT_EQ("#\r\n[2024-03-09] " + message, Trace());
}

TEST_F(DebugTest, ATextThatIsOneByteTooLongIsMarkedWithoutStampsAndCut)
{
    StartNarrow();
    Configure(File("1", "\"DateStampOn\"=dword:1\n"));
    const std::string message(65636 - 1 - 13, 'x');
    CDebug::Trace(1, "\n%s", message.c_str());
    const std::string expected = TooSmall + message;
    EXPECT_EQ("#\r" + expected.substr(0, 65635), Trace());
}

TEST_F(DebugTest, NewlinesAloneCanFillTheBuffer)
{
    Configure(Console);
    CDebug::Trace(1, std::string(65635, '\n').c_str());
    EXPECT_EQ(std::string(65635, '\n'), DebugFakes::ConsoleText());
    DebugFakes::ClearOutputs();
    CDebug::Trace(1, std::string(70000, '\n').c_str());
    EXPECT_EQ((TooSmall + std::string(70000 - 65635, '\n')), DebugFakes::ConsoleText());
}

TEST_F(DebugTest, TheDebuggerGetsLineByLineWithoutTheFirstNewline)
{
    Configure(Debugger);
    CDebug::Trace(1, "\n\na\nb\n");
    CDebug::Trace(1, "\n");
    EXPECT_THAT(Lines(), ElementsAre("\n", "a\n", "b\n"));
}

TEST_F(DebugTest, ADebuggerLineIsCut)
{
    Configure(Debugger);
    const std::string line(65635, 'x');
    CDebug::Trace(1, "%s", line.c_str());
    EXPECT_THAT(Lines(), ElementsAre(line.substr(0, 65634) + "\n"));
}

TEST_F(DebugTest, AnExpandableTraceFileTakesTheEnvironment)
{
    const CScopedVariable variable("KXRA_TEST_DIR", m_directory.File(""));
    Configure("\"FileDebugLevel\"=dword:1\n\"TraceFile\"=" + CRegistryFixture::Expandable("%KXRA_TEST_DIR%e.log") +
              '\n');
    EXPECT_TRUE(CDebug::Enabled());
    CDebug::Trace(1, "a");
    EXPECT_EQ("\xFF\xFE" + Wide("a"), m_directory.Read("e.log"));
}

TEST_F(DebugTest, ATraceFileOf259BytesIsTakenAndALongerOneIsNot)
{
    const std::string folder = m_directory.File(std::string(150, 'd'));
    std::filesystem::create_directory(folder);
    const std::string path = folder + "/" + std::string(258 - folder.size(), 'f');
    ASSERT_EQ(259u, path.size());
    Configure("\"FileDebugLevel\"=dword:1\n" + TraceFile(path));
    CDebug::Trace(1, "a");
    EXPECT_TRUE(std::filesystem::exists(path));
    Configure("\"FileDebugLevel\"=dword:1\n" + TraceFile(path + "f"));
    EXPECT_FALSE(CDebug::Enabled());
    CDebug::Trace(1, "a");
    EXPECT_FALSE(std::filesystem::exists(path + "f"));
}

TEST_F(DebugTest, AFileLevelWithoutATraceFileEnablesNothing)
{
    Configure("\"FileDebugLevel\"=dword:1\n");
    EXPECT_FALSE(CDebug::Enabled());
    Configure("\"FileDebugLevel\"=dword:1\n\"TraceFile\"=dword:1\n");
    EXPECT_FALSE(CDebug::Enabled());
    Configure(TraceFile(Path()));
    EXPECT_FALSE(CDebug::Enabled());
}

TEST_F(DebugTest, AnotherTraceFileTakesOverAtTheNextReading)
{
    DebugFakes::SetTickMs(0);
    Configure(File("1"), 1);
    CDebug::Trace(1, "a");
    WriteRegistry("\"FileDebugLevel\"=dword:1\n" + TraceFile(m_directory.File("other.log")), 1);
    DebugFakes::SetTickMs(2000);
    CDebug::Trace(1, "b");
    EXPECT_EQ("\xFF\xFE" + Wide("a"), Trace());
    EXPECT_EQ("\xFF\xFE" + Wide("b"), m_directory.Read("other.log"));
}

TEST_F(DebugTest, AMutexThatAnotherHoldsDelaysTheLineButNeverLosesIt)
{
    Configure(File("1"));
    std::atomic<bool> held{false};
    std::atomic<bool> release{false};
    std::thread holder([&] {
        Platform::NamedMutexHandle mutex = nullptr;
        ASSERT_EQ(Platform::Success, Platform::NewNamedMutex(mutex, TraceMutexName(Path()).c_str()));
        const Platform::CNamedMutexHandle owner(mutex);
        ASSERT_TRUE(Platform::TakeNamedMutex(mutex, kDeadlineMs));
        held = true;
        HoldsWithin(kDeadline, [&] { return release.load(); });
        Platform::ReleaseNamedMutex(mutex);
    });
    ASSERT_TRUE(HoldsWithin(kDeadline, [&] { return held.load(); }));
    CDebug::Trace(1, "a");
    EXPECT_EQ("\xFF\xFE" + Wide("a"), Trace());
    release = true;
    holder.join();
}

TEST_F(DebugTest, AnExceptionIsToldToTheOutputsAndTheLastErrorIsNotRestored)
{
    StartNarrow();
    Configure(File("2", "\"ConDebugLevel\"=dword:2\n\"WinDebugLevel\"=dword:1\n"));
    const std::string message(50000, 'x');
    Platform::SetLastError(4711);
    DebugFakes::FailAllocations(50000, 1); // the buffer of the call
    CDebug::Trace(1, "%s", message.c_str());
    EXPECT_EQ(4711u, Platform::LastError());
    EXPECT_EQ("#", Trace()); // without its buffer the call does nothing at all
    DebugFakes::FailAllocations(0, 0);

    const std::string wide(33000, 'x');
    m_directory.Write("trace.log", "\xFF\xFE");
    Platform::SetLastError(4711);
    DebugFakes::FailAllocations(66000, 1); // the buffer of 65636 bytes passes, that of the wide text does not
    CDebug::Trace(2, "%s", wide.c_str());
    EXPECT_NE(4711u, Platform::LastError()) << "it is that of the last call inside";
    EXPECT_EQ("\xFF\xFE" + Wide("\r\n\r\n################# EXCEPTION in CDebug::Trace() #################\r\n"),
              Trace());
    EXPECT_EQ(Exception, DebugFakes::ConsoleText());
    EXPECT_THAT(Lines(), ElementsAre());
}

TEST_F(DebugTest, ThreadsMayTraceWhileTheConfigurationChanges)
{
    DebugFakes::SetTickMs(0);
    Configure(std::string(Debugger) + File("6", "\"AppNameOn\"=dword:1\n"), 1);
    std::vector<std::thread> threads;
    constexpr int perThread = 40;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([i] {
            for (int n = 0; n < perThread; ++n)
                if (CDebug::Enabled()) CDebug::Trace(3, "\nthread %d line %d", i, n);
        });
    for (unsigned n = 1; n <= 20; ++n) {
        WriteRegistry(std::string(Debugger) + "\"FileDebugLevel\"=dword:6\n\"AppNameOn\"=dword:1\n" +
                          TraceFile(m_directory.File(n % 2 == 0 ? "trace.log" : "other.log")),
                      1);
        DebugFakes::SetTickMs(n * 2000);
    }
    for (std::thread & thread : threads)
        thread.join();
    EXPECT_TRUE(CDebug::Enabled());
    EXPECT_FALSE(Lines().empty());
    EXPECT_THAT(Lines(), testing::Each(MatchesPattern("TESTAPP:       thread [0-9] line [0-9]+\n")));
}

namespace {

class MutexNameTest : public testing::TestWithParam<std::pair<char const *, char const *>> {};

} // namespace

TEST_P(MutexNameTest, HasNoPathInIt)
{
    EXPECT_EQ(GetParam().second, TraceMutexName(GetParam().first));
}

TEST(MutexNameSeparatorTest, TheSystemsOwnSeparatorOfPathsIsReplaced)
{
    std::string path = "/var/log/a:b";
    std::replace(path.begin(), path.end(), '/', Platform::PathSeparator());
    EXPECT_EQ("CFileDebug__var_log_a_b", TraceMutexName(path));
}

INSTANTIATE_TEST_SUITE_P(Paths, MutexNameTest,
                         testing::Values(std::pair("C:\\Log\\a.txt", "CFileDebug_C__Log_a.txt"),
                                         std::pair("Größe", "CFileDebug_Größe"), std::pair("", "CFileDebug_")),
                         [](const auto & test) { return "Path" + std::to_string(test.index); });
