#include "VLK/IniFile.h"

#include <gtest/gtest.h>

#include <atomic>
#include <boost/filesystem/operations.hpp>
#include <boost/filesystem/path.hpp>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>

#include "Foundation.h"
#include "Support/Deadline.h"

using namespace VLK;
using namespace VLK::INI_Files;
using VLK::Strings::TString;

namespace {

constexpr std::uint32_t IoError = 0x2001000C;
constexpr std::uint32_t DoesNotExist = 0x2001000D;
constexpr std::uint32_t PreviousCall = 0x20010010;
constexpr std::uint32_t KeyNotFound = 0x20010011;
constexpr std::uint32_t IndexOutOfBounds = 0x20010014;
constexpr std::uint32_t NotOpenForWriting = 0x20010015;
// These raises don't store their code.
constexpr std::uint32_t CodeNotStored = 0;

/// Whether the function raised, whatever the code in the record.
template <class TFunction>
bool Raises(TFunction && function, std::uint32_t & code)
{
    Exceptions::CThrowState state;
    try {
        function();
        return false;
    } catch (unsigned int) {
        VLK_CONTINUE(state, caught);
        code = caught.GetError();
        Exceptions::CErrorLog log;
        caught >> log;
        return true;
    }
}

#define EXPECT_RAISES(expected, statement)                                                                             \
    do {                                                                                                               \
        std::uint32_t raisedCode = 1;                                                                                  \
        EXPECT_TRUE(Raises([&] { statement; }, raisedCode));                                                           \
        EXPECT_EQ(expected, raisedCode);                                                                               \
    } while (false)

/// Of a thread from outside: what the function raises fails the test with the whole record.
template <class TFunction>
void RunAndReport(TFunction && function)
{
    Threading::CCallBackGuard const guard;
    Exceptions::CErrorLog log;
    bool finished = false;
    RaisedBy([&] { function(), finished = true; }, log);
    EXPECT_TRUE(finished) << Printed("%S", log);
}

class IniFileTest : public CFoundationTest {
protected:
    IniFileTest() : m_Directory(boost::filesystem::temp_directory_path() / boost::filesystem::unique_path())
    {
        boost::filesystem::create_directory(m_Directory);
    }
    ~IniFileTest() override { boost::filesystem::remove_all(m_Directory); }

    std::string Name() const { return (m_Directory / "test.ini").string(); }
    std::string LockName() const { return Name() + ".lck"; }
    void Put(std::string const & text) const { std::ofstream(Name(), std::ios::binary) << text; }
    static std::string Get(std::string const & name)
    {
        std::stringstream text;
        text << std::ifstream(name, std::ios::binary).rdbuf();
        return text.str();
    }
    bool IsLocked() const { return boost::filesystem::exists(LockName()); }

    /// The value of the key in section "s", list elements separated by "|".
    std::string ValueOf(std::string const & text, char const * key = "a")
    {
        Put(text);
        CIniFile file;
        file.Read(Name(), 0);
        CIniList list;
        file["s"][key].GetValue(list);
        std::string values;
        for (std::size_t i = 0; i != list.Count(); ++i) {
            std::string value;
            list[i].GetValue(value);
            values += (i != 0 ? "|" : "") + value;
        }
        return values;
    }
    std::string Rewritten(std::string const & text)
    {
        Put(text);
        CIniFile file;
        file.Lock(Name(), 0);
        file.Flush(0);
        return Get(Name());
    }

    boost::filesystem::path m_Directory;
};

// Syntax

struct SSyntax {
    char const * name;
    char const * text;
    char const * values;
};

class IniSyntaxTest : public IniFileTest, public testing::WithParamInterface<SSyntax> {};

TEST_P(IniSyntaxTest, GivesTheValues)
{
    EXPECT_EQ(GetParam().values, ValueOf(std::string("[s]\n") + GetParam().text));
}

INSTANTIATE_TEST_SUITE_P(
    Edges, IniSyntaxTest,
    testing::Values(SSyntax{"Single", "a=1", "1"}, SSyntax{"List", "a = a, b", "a|b"},
                    SSyntax{"QuotedComma", "a = \"a, b\"", "a, b"}, SSyntax{"Empty", "a=", ""},
                    SSyntax{"EmptyElements", "a=,,", "||"}, SSyntax{"BlanksVanish", "a = x y\tz", "xyz"},
                    SSyntax{"CarriageReturnsVanish", "a=1\r\n", "1"}, SSyntax{"LaterEqualSign", "a=b=c", "b=c"},
                    SSyntax{"QuotedSemicolon", "a = \"b;c\"", "b;c"}, SSyntax{"Comment", "a=1;2", "1"},
                    SSyntax{"DoubledQuote", "a=\"x\"\"y\"", "x\"y"},
                    SSyntax{"BlankBehindADoubledQuoteVanishes", "a=\"x\"\" y\"", "x\"y"},
                    SSyntax{"OpenQuoteEndsWithTheLine", "a=\"x y\n+z", "x y"},
                    SSyntax{"OpenEmptyQuoteEndsWithTheLine", "a=\"\n+z", ""}, SSyntax{"EmptyQuotes", "a=\"\"", ""},
                    SSyntax{"ControlCharactersInQuotesVanish", "a=\"x\x01y\"", "xy"},
                    SSyntax{"Continuation", "a = 1,\r\n+ 2", "1|2"},
                    SSyntax{"ContinuationBehindBlankLines", "a=1\n \n\t\r\n + 2", "12"},
                    SSyntax{"ContinuationBehindAComment", "a=1,;c\n+2", "1|2"},
                    SSyntax{"CommentLineEndsAContinuation", "a=1,\n;c\n+2", "1|"},
                    SSyntax{"FirstOfTwoKeys", "a=1\na=2", "1"}, SSyntax{"OtherCase", "A=1", "1"},
                    SSyntax{"MergedSections", "b=1\n[t]\na=2\n[S]\na=3", "3"},
                    SSyntax{"SectionWithoutBracket", "b=1\n[t\n[s]\na=4", "4"},
                    SSyntax{"LinesWithoutEqualSign", "junk\na=5\njunk", "5"},
                    SSyntax{"CommaInTheKey", "b,c=1\na=2", "2"}, SSyntax{"NoNewlineAtTheEnd", "b=1\na=6", "6"}),
    [](auto const & test) { return std::string(test.param.name); });

TEST_F(IniFileTest, KeysBeforeTheFirstSectionBelongToTheSectionWithoutName)
{
    Put("a=1\n[s]\nb=2\n");
    CIniFile file;
    EXPECT_EQ(1u, file.Read(Name(), 0));
    EXPECT_EQ(2u, file.Count());
    int value = 0;
    file[""]["a"].GetValue(value);
    EXPECT_EQ(1, value);
    EXPECT_EQ(" a = 1\r\n\r\n[s]\r\n b = 2\r\n\r\n", Rewritten("a=1\n[s]\nb=2\n"));
}

TEST_F(IniFileTest, TheTextEndsAtItsFirstNul)
{
    Put(std::string("[s]\na=1\n\0b=2", 13));
    CIniFile file;
    file.Read(Name(), 0);
    EXPECT_EQ(1u, file["s"].Count());
}

TEST_F(IniFileTest, SectionsAndKeysAreWalkedInFileOrder)
{
    Put("[one]\nx=1\ny=2\n[two]\n[ONE]\nz=3\n");
    CIniFile file;
    file.Read(boost::filesystem::path(Name()), 0);
    std::string names;
    for (CIniSection section = file.First(); section != file.End(); section++) {
        std::string name;
        section.Name(name);
        names += name + ":";
        for (CIniKey key = section.First(); key != section.End(); key++) {
            TString<32> keyName;
            key.Name(keyName);
            names += keyName.C_Str();
        }
        names += " ";
    }
    EXPECT_EQ("one:xyz two: ", names);
}

TEST_F(IniFileTest, LongFilesNeedMoreEntriesThanOneBlock)
{
    std::string text;
    for (int i = 0; i != 1000; ++i)
        text += "[s" + std::to_string(i) + "]\nk=" + std::to_string(i) + "\n";
    Put(text);
    CIniFile file;
    file.Read(Name(), 0);
    EXPECT_EQ(1000u, file.Count());
    int value = 0;
    file["s999"]["k"].GetValue(value);
    EXPECT_EQ(999, value);
}

// Values

struct SNumber {
    char const * name;
    char const * text;
    bool good;
    int asInt;
    unsigned int asUnsigned;
    unsigned long long asUnsigned64;
};

class IniNumberTest : public IniFileTest, public testing::WithParamInterface<SNumber> {};

TEST_P(IniNumberTest, FollowsTheFamilyOfStrtol)
{
    Put(std::string("[s]\na=") + GetParam().text);
    CIniFile file;
    file.Read(Name(), 0);
    CIniKey const key = file["s"]["a"];
    int asInt = -77;
    unsigned int asUnsigned = 77;
    unsigned long long asUnsigned64 = 77;
    if (!GetParam().good) {
        EXPECT_RAISES(CodeNotStored, key.GetValue(asInt));
        EXPECT_RAISES(CodeNotStored, key.GetValue(asUnsigned));
        EXPECT_EQ(-77, asInt);
        return;
    }
    key.GetValue(asInt);
    key.GetValue(asUnsigned);
    key.GetValue(asUnsigned64);
    EXPECT_EQ(GetParam().asInt, asInt);
    EXPECT_EQ(GetParam().asUnsigned, asUnsigned);
    EXPECT_EQ(GetParam().asUnsigned64, asUnsigned64);
}

INSTANTIATE_TEST_SUITE_P(
    Edges, IniNumberTest,
    testing::Values(SNumber{"Decimal", "12", true, 12, 12, 12}, SNumber{"Hexadecimal", "0x1F", true, 31, 31, 31},
                    SNumber{"Octal", "010", true, 8, 8, 8}, SNumber{"Empty", "", true, 0, 0, 0},
                    SNumber{"Negative", "-1", true, -1, 0xFFFFFFFFu, ~0ull},
                    SNumber{"TooLarge", "4294967296", true, 0x7FFFFFFF, 0xFFFFFFFFu, 4294967296ull},
                    SNumber{"Letters", "12abc", false, 0, 0, 0}, SNumber{"OnlyLetters", "abc", false, 0, 0, 0},
                    SNumber{"Point", "1.5", false, 0, 0, 0}),
    [](auto const & test) { return std::string(test.param.name); });

TEST_F(IniFileTest, ANumberEndsAtTheComment)
{
    Put("[s]\na=12;comment\nb=;34\n");
    CIniFile file;
    file.Lock(Name(), 0);
    unsigned int value = 0;
    file["s"]["a"].GetValue(value);
    EXPECT_EQ(12u, value);
    file["s"]["b"].GetValue(value);
    EXPECT_EQ(0u, value);
}

TEST_F(IniFileTest, AListIsNoSingleValueAndTheCodeIsNotStored)
{
    Put("[s]\na = 1, 2\n");
    CIniFile file;
    file.Read(Name(), 0);
    CIniKey key = file["s"]["a"];
    EXPECT_EQ(2u, key.Count());
    unsigned int number = 0;
    std::string text;
    EXPECT_RAISES(CodeNotStored, key.GetValue(number));
    EXPECT_RAISES(CodeNotStored, key.GetValue(text));
    EXPECT_RAISES(CodeNotStored, key.GetValue(number, 5));
}

TEST_F(IniFileTest, AKeyWithoutValueClearsTheTargetAndRaises)
{
    CIniFile file;
    CIniKey key = file["s"]["a"];
    int number = 5;
    TString<32> text;
    text = "old";
    std::string standard = "old";
    CIniList list;
    list.AddValue(1);
    EXPECT_RAISES(KeyNotFound, key.GetValue(number));
    EXPECT_RAISES(KeyNotFound, key.GetValue(text));
    EXPECT_RAISES(KeyNotFound, key.GetValue(standard));
    EXPECT_RAISES(KeyNotFound, key.GetValue(list));
    EXPECT_EQ(0, number);
    EXPECT_EQ(0u, text.size());
    EXPECT_EQ("", standard);
    EXPECT_EQ(0u, list.Count());
}

TEST_F(IniFileTest, DefaultsAreTakenAndWithImpSetKept)
{
    CIniFile file;
    file.Create(Name());
    unsigned int number = 0;
    std::string text;
    TString<32> string;
    CIniSection section = file["s"];
    section["n"].GetValue(number, 5);
    EXPECT_EQ(5u, number);
    EXPECT_EQ(0u, section["n"].Count());
    section["n"].ImpSet().GetValue(number, 6);
    section["h"].ImpSet().Hex().GetValue(number, 255);
    section["t"].ImpSet().GetValue(text, "a b");
    section["u"].GetValue(string, "standard");
    EXPECT_TRUE(string == "standard");
    file.Flush(0);
    EXPECT_EQ("[s]\r\n n = 6\r\n h = 0xFF\r\n t = \"a b\"\r\n\r\n", Get(Name()));
}

TEST_F(IniFileTest, SetValueReplacesValueAndComment)
{
    Put("[s]\na = 1 ;comment\nb = 2 ;stays\n");
    CIniFile file;
    file.Lock(Name(), 0);
    CIniSection section = file["s"];
    section["a"].SetValue(-7);
    section["c"].SetValue("text");
    section["d"].Hex().SetValue(0xABCDull);
    section["e"].SetValue(4000000000u); // written with its sign, reads back all the same
    file.Flush(0);
    std::string const text = Get(Name());
    EXPECT_EQ(std::string::npos, text.find("comment"));
    EXPECT_NE(std::string::npos, text.find(";stays"));
    CIniFile again;
    again.Read(Name(), 0);
    int number = 0;
    again["s"]["a"].GetValue(number);
    EXPECT_EQ(-7, number);
    unsigned int large = 0;
    again["s"]["e"].GetValue(large);
    EXPECT_EQ(4000000000u, large);
    unsigned long long hexadecimal = 0;
    again["s"]["d"].GetValue(hexadecimal);
    EXPECT_EQ(0xABCDu, hexadecimal);
}

TEST_F(IniFileTest, ListsAreReadByTheirCursor)
{
    Put("[s]\na = 1, two, 0x10\n");
    CIniFile file;
    file.Read(Name(), 0);
    CIniList list;
    file["s"]["a"].GetValue(list);
    EXPECT_EQ(3u, list.Count());
    int number = 0;
    std::string text;
    EXPECT_EQ(1u, list.GetValue(number));
    EXPECT_EQ(1, number);
    list.GetValue(text);
    EXPECT_EQ("two", text);
    list.GetValue(number);
    EXPECT_EQ(16, number);
    EXPECT_RAISES(IndexOutOfBounds, list.GetValue(number));
    EXPECT_RAISES(CodeNotStored, list[1].GetValue(number));
    EXPECT_RAISES(IndexOutOfBounds, list[3]);
    list[2].GetValue(number);
    list[0].GetValue(number);
    EXPECT_EQ(1, number);
}

TEST_F(IniFileTest, AListMustBePositionedBehindAddValue)
{
    CIniList list;
    list.AddValue(1).Hex().AddValue(255u).AddValue("x").AddValue(std::string("y"));
    int number = 0;
    EXPECT_RAISES(IndexOutOfBounds, list.GetValue(number));
    list[1].GetValue(number);
    EXPECT_EQ(255, number);
    CIniFile file;
    file["s"]["a"].SetValue(list);
    EXPECT_EQ(4u, file["s"]["a"].Count());
    list.Clear();
    EXPECT_EQ(0u, list.Count());
    EXPECT_RAISES(IndexOutOfBounds, list[0]);
    EXPECT_RAISES(IndexOutOfBounds, CIniList().GetValue(number));
}

TEST_F(IniFileTest, RemoveTakesKeysAndSectionsOut)
{
    Put("[s]\na=1\nb=2\nc=3\n[t]\nd=4\n");
    CIniFile file;
    file.Lock(Name(), 0);
    CIniKey key = file["s"]["c"];
    key.Remove();
    EXPECT_RAISES(PreviousCall, key.Count());
    file["s"]["e"].SetValue(5);
    file["s"]["a"].Remove();
    EXPECT_EQ(2u, file["s"].Count());
    CIniSection section = file["t"];
    section.Remove();
    EXPECT_RAISES(PreviousCall, section.Count());
    EXPECT_EQ(1u, file.Count());
    file["u"]["f"].SetValue(6);
    file.Flush(0);
    EXPECT_EQ("[s]\r\n b = 2\r\n e = 5\r\n\r\n[u]\r\n f = 6\r\n\r\n", Get(Name()));
}

TEST_F(IniFileTest, EveryOperationOnAnEmptyHandleRaises)
{
    CIniSection section;
    CIniKey key;
    std::string text;
    TString<32> string;
    int number = 0;
    CIniList list;
    EXPECT_RAISES(PreviousCall, section.Name(text));
    EXPECT_RAISES(PreviousCall, section.Name(string));
    EXPECT_RAISES(PreviousCall, section.Count());
    EXPECT_RAISES(PreviousCall, section.First());
    EXPECT_RAISES(PreviousCall, section.End());
    EXPECT_RAISES(PreviousCall, section++);
    EXPECT_RAISES(PreviousCall, section.Remove());
    EXPECT_RAISES(PreviousCall, section["a"]);
    EXPECT_RAISES(PreviousCall, key.Name(text));
    EXPECT_RAISES(PreviousCall, key.Count());
    EXPECT_RAISES(PreviousCall, key++);
    EXPECT_RAISES(PreviousCall, key.Hex());
    EXPECT_RAISES(PreviousCall, key.ImpSet());
    EXPECT_RAISES(PreviousCall, key.Remove());
    EXPECT_RAISES(PreviousCall, key.GetValue(number));
    EXPECT_RAISES(PreviousCall, key.GetValue(number, 1));
    EXPECT_RAISES(PreviousCall, key.GetValue(list));
    EXPECT_RAISES(PreviousCall, key.SetValue(1));
    EXPECT_RAISES(PreviousCall, key.SetValue("x"));
    EXPECT_RAISES(PreviousCall, key.SetValue(list));
}

// Writing

TEST_F(IniFileTest, KeysAreAlignedAndCommentsSurvive)
{
    std::string const written =
        Rewritten("; head\n[s] ;about s\n;more\nlong = 1 ;one\n  ;two\n\nk = \"a b\"\n[empty]\n;lonely\n[none]\n");
    EXPECT_EQ(" ; head\r\n\r\n\r\n"
              "[s]\r\n ;about s\r\n ;more\r\n\r\n"
              " long = 1" +
                  std::string(48, ' ') + ";one\r\n" + std::string(57, ' ') +
                  ";two\r\n"
                  "    k = \"a b\"\r\n\r\n"
                  "[empty]\r\n ;lonely\r\n\r\n\r\n",
              written);
    EXPECT_EQ(written, Rewritten(written));
}

TEST_F(IniFileTest, LongListsAreWrappedAndReadBack)
{
    CIniList list;
    std::string expected;
    for (int i = 0; i != 60; ++i) {
        list.AddValue("element " + std::to_string(i));
        expected += (i != 0 ? "|element " : "element ") + std::to_string(i);
    }
    CIniFile file;
    file.Create(Name());
    file["s"]["a"].SetValue(list);
    file.Flush(0);
    std::string const text = Get(Name());
    EXPECT_NE(std::string::npos, text.find("\r\n   +"));
    EXPECT_EQ(expected, ValueOf(text));
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);)
        EXPECT_LT(line.size(), 80u) << line;
}

TEST_F(IniFileTest, ALongCommentStandsOnALineOfItsOwn)
{
    std::string const comment(60, 'c');
    EXPECT_EQ("[s]\r\n a = 1 \r\n   ;" + comment + "\r\n\r\n", Rewritten("[s]\na=1;" + comment + "\n"));
}

TEST_F(IniFileTest, QuotesAreDoubledAndTextWithBlanksIsQuoted)
{
    CIniFile file;
    file.Create(Name());
    file["a b"]["k\"k"].SetValue("x\"y");
    file["a b"]["k"].SetValue("plain");
    file.Flush(0);
    EXPECT_EQ("[\"a b\"]\r\n \"k\"\"k\" = \"x\"\"y\"\r\n      k = plain\r\n\r\n", Get(Name()));
}

TEST_F(IniFileTest, OnlyBlanksAndQuotesBringQuotesSoACommaOrSemicolonAloneLosesThem)
{
    EXPECT_EQ("[s]\r\n a = b,c\r\n\r\n", Rewritten("[s]\na = \"b,c\"\n"));
    EXPECT_EQ("[s]\r\n a = b;c\r\n\r\n", Rewritten("[s]\na = \"b;c\"\n"));
    EXPECT_EQ("[s]\r\n a = \"b, c\"\r\n\r\n", Rewritten("[s]\na = \"b, c\"\n"));
}

TEST_F(IniFileTest, AnInterruptedFlushLeavesTheFormerFileAndNoLock)
{
    // A directory is never removed, so the flush waits until the thread is cancelled.
    boost::filesystem::create_directory(Name());
    std::uint32_t raised = 0;
    Threading::CThread thread;
    std::atomic<bool> locked{false};
    StartThread(thread, [&] {
        CIniFile file;
        file.Create(Name());
        file["s"]["a"].SetValue(1);
        locked = true;
        raised = RaisedBy([&] { file.Flush(0); });
        EXPECT_RAISES(NotOpenForWriting, file.Flush(0));
    });
    ASSERT_TRUE(HoldsWithin(kDeadline, [&] { return locked.load(); }));
    thread.Cancel();
    ASSERT_EQ(URET_OK, thread.Wait(kDeadlineMs));
    EXPECT_EQ(Errors::ThreadInterrupt, raised);
    EXPECT_TRUE(boost::filesystem::is_directory(Name()));
    EXPECT_FALSE(IsLocked());
}

TEST_F(IniFileTest, KeysWithoutValueAreNotWritten)
{
    CIniFile file;
    file.Create(Name());
    file["s"]["a"];
    file["s"]["b"].SetValue(1);
    file["t"];
    file.Flush(0);
    EXPECT_EQ("[s]\r\n b = 1\r\n\r\n", Get(Name()));
}

TEST_F(IniFileTest, ALockedFileGrowsBeyondItsRoom)
{
    Put("[s]\na=1\n");
    CIniFile file;
    file.Lock(Name(), 0);
    std::string const large(40000, 'x');
    file["s"]["b"].SetValue(large);
    file["s"]["b"].SetValue(large + "y");
    file.Flush(0);
    std::string text;
    CIniFile again;
    again.Read(Name(), 0);
    again["s"]["b"].GetValue(text);
    EXPECT_EQ(large + "y", text);
}

TEST_F(IniFileTest, AFlushedFileIsUnlockedAndNoLongerOpenForWriting)
{
    CIniFile file;
    file.Create(Name());
    file["s"]["a"].SetValue(1);
    EXPECT_EQ(1u, file.Flush(0));
    EXPECT_FALSE(IsLocked());
    EXPECT_RAISES(NotOpenForWriting, file.Flush(0));
}

TEST_F(IniFileTest, FlushWithoutSectionsRaisesAfterRemovingTheLock)
{
    CIniFile file;
    file.Create(Name());
    EXPECT_TRUE(IsLocked());
    EXPECT_RAISES(IoError, file.Flush(0));
    EXPECT_FALSE(IsLocked());
    EXPECT_FALSE(boost::filesystem::exists(Name()));
}

TEST_F(IniFileTest, AFileThatWasOnlyReadIsNotWritten)
{
    Put("[s]\na=1\n");
    CIniFile file;
    file.Read(Name(), 0);
    file["x"];
    EXPECT_EQ(2u, file.Count());
    EXPECT_RAISES(NotOpenForWriting, file.Flush(0));
}

// The lock protocol

TEST_F(IniFileTest, AMissingFileDoesNotExistAndLeavesNoLock)
{
    CIniFile file;
    EXPECT_RAISES(DoesNotExist, file.Read(Name(), 0));
    EXPECT_FALSE(IsLocked());
    EXPECT_RAISES(DoesNotExist, file.Lock(Name(), 0));
    EXPECT_FALSE(IsLocked());
}

TEST_F(IniFileTest, ADirectoryThatDoesNotExistIsAnIoError)
{
    CIniFile file;
    std::string const name = (m_Directory / "none" / "x.ini").string();
    EXPECT_RAISES(IoError, file.Read(name, 0));
    EXPECT_RAISES(IoError, file.Lock(name, 0));
    EXPECT_RAISES(IoError, file.Create(name));
}

TEST_F(IniFileTest, WithThrowingDisabledFailuresAreReturned)
{
    Exceptions::CThrowState state;
    state.DisableThrow();
    CIniFile file;
    EXPECT_EQ(0u, file.Read(Name(), 0));
    EXPECT_EQ(0u, file.Flush(0));
    EXPECT_EQ(NotOpenForWriting, Threading::CCurrentThread().GetErrorLog().GetError());
    int number = 0;
    EXPECT_EQ(0u, file["s"]["a"].GetValue(number));
}

TEST_F(IniFileTest, AStaleLockTimesOutWithItsCodeNotStored)
{
    std::ofstream(LockName()) << "";
    CIniFile file;
    EXPECT_RAISES(CodeNotStored, file.Read(Name(), 0));
    EXPECT_RAISES(CodeNotStored, file.Read(Name(), 5));
    EXPECT_RAISES(IoError, file.Create(Name()));
    Put("[s]\na=1\n");
    EXPECT_RAISES(CodeNotStored, file.Lock(Name(), 5));
    EXPECT_TRUE(IsLocked());
    EXPECT_EQ(1u, file.Read(Name(), 0)); // a lock alone doesn't keep readers out
}

TEST_F(IniFileTest, TheEndOfALockedFileReleasesTheLock)
{
    Put("[s]\na=1\n");
    {
        CIniFile file;
        file.Lock(Name(), 0);
        EXPECT_TRUE(IsLocked());
        CIniFile other;
        EXPECT_RAISES(CodeNotStored, other.Lock(Name(), 0));
        EXPECT_TRUE(IsLocked());
    }
    EXPECT_FALSE(IsLocked());
    EXPECT_EQ("[s]\na=1\n", Get(Name()));
}

TEST_F(IniFileTest, AReaderWaitsForTheWriterThatReplacesTheFile)
{
    std::ofstream(LockName(), std::ios::binary) << "[s]\na=7\n";
    std::atomic<int> value{0};
    std::thread reader([&] {
        Threading::CCallBackGuard const guard;
        CIniFile file;
        file.Read(Name(), 0xFFFFFFFF);
        int number = 0;
        file["s"]["a"].GetValue(number);
        value = number;
    });
    boost::filesystem::rename(LockName(), Name());
    reader.join();
    EXPECT_EQ(7, value);
}

TEST_F(IniFileTest, WritersTakeTurnsAndNoChangeIsLost)
{
    Put("[s]\nn=0\n");
    constexpr int Rounds = 50;
    auto const count = [&] {
        for (int i = 0; i != Rounds; ++i) {
            CIniFile file;
            file.Lock(Name(), 0xFFFFFFFF);
            int n = 0;
            file["s"]["n"].GetValue(n);
            file["s"]["n"].SetValue(n + 1);
            file.Flush(0);
        }
    };
    std::thread first([&] { RunAndReport(count); });
    std::thread second([&] { RunAndReport(count); });
    std::atomic<bool> stop{false};
    std::thread reader([&] {
        RunAndReport([&] {
            int last = 0;
            while (!stop) {
                CIniFile file;
                file.Read(Name(), 0xFFFFFFFF);
                int n = -1;
                file["s"]["n"].GetValue(n);
                EXPECT_GE(n, last);
                last = n;
            }
        });
    });
    first.join();
    second.join();
    stop = true;
    reader.join();
    CIniFile file;
    file.Read(Name(), 0);
    int n = 0;
    file["s"]["n"].GetValue(n);
    EXPECT_EQ(2 * Rounds, n);
}

} // namespace
