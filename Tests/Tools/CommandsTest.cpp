#include "Tools/Commands.h"

#include <sstream>

#include <gtest/gtest.h>

#include "Tools/Synthetic.h"

namespace {

using namespace Coresim;

/// A core service without agents, and what the commands say.
class CommandsTest : public testing::Test {
protected:
    /// Runs one line; returns what was complained about.
    std::string Complaint(std::string const & line)
    {
        testing::internal::CaptureStderr();
        goesOn = commands.Execute(line);
        return testing::internal::GetCapturedStderr();
    }

    CReport report{/*quiet=*/true};
    CEstate estate{MakeSyntheticEstate({1, 1, 2})};
    CServer server{estate, report};
    CCommands commands{estate, server, report};
    bool goesOn = true;
};

TEST_F(CommandsTest, SetChangesAFieldAndQuotesKeepBlanks)
{
    EXPECT_EQ("", Complaint(R"(set drive:0.0 Name "new \"name\" \\ here")"));
    EXPECT_EQ(R"(new "name" \ here)", estate.Drives()[0].Name);
    EXPECT_TRUE(goesOn);
}

TEST_F(CommandsTest, AnEmptyQuotedWordIsAnEmptyText)
{
    EXPECT_EQ("", Complaint(R"(set drive:0.0 Name "")"));
    EXPECT_EQ("", estate.Drives()[0].Name);
}

TEST_F(CommandsTest, ProgressSetsTheCounter)
{
    EXPECT_EQ("", Complaint("progress 7 8 45"));
    EXPECT_EQ(45, estate.Progress(7, 8));
}

TEST_F(CommandsTest, RefuseTogglesOrTakesItsWord)
{
    EXPECT_EQ("", Complaint("refuse"));
    EXPECT_TRUE(server.IsRefusing());
    EXPECT_EQ("", Complaint("refuse on"));
    EXPECT_TRUE(server.IsRefusing());
    EXPECT_EQ("", Complaint("refuse"));
    EXPECT_FALSE(server.IsRefusing());
    EXPECT_EQ("kxra-coresim: usage: refuse [on|off]\n", Complaint("refuse maybe"));
}

TEST_F(CommandsTest, QuitEndsAndTheEndOfTheInputDoesNot)
{
    std::istringstream withQuit("drop\nquit\nset nonsense\n");
    EXPECT_TRUE(commands.ExecuteAll(withQuit));
    std::istringstream without("drop\n\n  \n");
    EXPECT_FALSE(commands.ExecuteAll(without));
}

TEST_F(CommandsTest, HelpTellsEveryCommand)
{
    std::string const help = CCommands::Help();
    for (char const * command : {"help", "event", "set", "progress", "flag", "drop", "refuse", "quit"})
        EXPECT_NE(std::string::npos, ("\n" + help).find("\n" + std::string(command))) << command;
}

struct SBadLine {
    char const * name;
    char const * line;
    char const * reason;
};

class BadCommandTest : public CommandsTest, public testing::WithParamInterface<SBadLine> {};

TEST_P(BadCommandTest, IsComplainedAboutAndTheProgramGoesOn)
{
    EXPECT_EQ(std::string("kxra-coresim: ") + GetParam().reason + "\n", Complaint(GetParam().line));
    EXPECT_TRUE(goesOn);
}

INSTANTIATE_TEST_SUITE_P(
    Table, BadCommandTest,
    testing::Values(SBadLine{"Unknown", "explode", "'explode' is no command; try 'help'"},
                    SBadLine{"SetTooShort", "set status Overall", "usage: set OBJECT FIELD VALUE"},
                    SBadLine{"SetTooLong", "set status Overall 1 2", "usage: set OBJECT FIELD VALUE"},
                    SBadLine{"SetUnknownField", "set status Overal 1", "there is no field 'Overal' here"},
                    SBadLine{"EventWithoutId", "event", "usage: event ID [text]..."},
                    SBadLine{"EventIdNoNumber", "event ten", "'ten' is no number"},
                    SBadLine{"EventWithNineTexts", "event 1 a b c d e f g h", "usage: event ID [text]..."},
                    SBadLine{"FlagNoNumber", "flag 0xg", "'0xg' is no number"},
                    SBadLine{"FlagTooLarge", "flag 0x10000000000000000",
                             "'0x10000000000000000' is out of range (0 to 2^64 - 1)"},
                    SBadLine{"ProgressTooShort", "progress 1 2", "usage: progress CTRL DRIVE VALUE"},
                    SBadLine{"QuitWithWords", "quit now", "usage: quit"},
                    SBadLine{"OpenQuote", "set drive:0.0 Name \"x", "the closing quote is missing"}),
    [](auto const & test) { return std::string(test.param.name); });

} // namespace
