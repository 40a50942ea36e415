#include "CommandLine.h"

#include <gtest/gtest.h>

namespace {

using Service::ECommand;
using Service::ReadCommandLine;
using Service::SCommand;

SCommand Read(std::vector<char const *> arguments)
{
    arguments.insert(arguments.begin(), "kxra-snmpd");
    return ReadCommandLine(static_cast<int>(arguments.size()), arguments.data(), "default.so");
}

TEST(CommandLineTest, DefaultsAreTheDocumentedOnes)
{
    const SCommand command = Read({});
    ASSERT_EQ(ECommand::Run, command.command);
    EXPECT_EQ(std::vector<std::string>{"default.so"}, command.options.libraries);
    EXPECT_EQ("udp:127.0.0.1:1161", command.options.listen);
    EXPECT_EQ("public", command.options.community);
    EXPECT_EQ(4000u, command.options.answerWithinMs);
    EXPECT_EQ(120000u, command.options.watchdogMs);
    EXPECT_FALSE(command.options.check);
    EXPECT_FALSE(command.options.logTraps);
}

TEST(CommandLineTest, LibrariesAndSinksMayBeRepeated)
{
    const SCommand command = Read({"--library", "a", "--library", "b", "--trap-sink", "c", "--trap-sink", "d"});
    ASSERT_EQ(ECommand::Run, command.command) << command.text;
    EXPECT_EQ((std::vector<std::string>{"a", "b"}), command.options.libraries);
    EXPECT_EQ((std::vector<std::string>{"c", "d"}), command.options.trapSinks);
}

TEST(CommandLineTest, SecondsMayHaveFractions)
{
    const SCommand command = Read({"--answer-within", "0.25", "--watchdog", "0"});
    ASSERT_EQ(ECommand::Run, command.command) << command.text;
    EXPECT_EQ(250u, command.options.answerWithinMs);
    EXPECT_EQ(0u, command.options.watchdogMs);
}

struct SWrong {
    char const * name;
    std::vector<char const *> arguments;
};

class WrongCommandLineTest : public testing::TestWithParam<SWrong> {};

TEST_P(WrongCommandLineTest, IsToldInOneLine)
{
    const SCommand command = Read(GetParam().arguments);
    EXPECT_EQ(ECommand::Wrong, command.command);
    EXPECT_FALSE(command.text.empty());
    EXPECT_EQ(std::string::npos, command.text.find('\n'));
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, WrongCommandLineTest,
    testing::Values(SWrong{"Unknown", {"--nonsense"}}, SWrong{"Stray", {"stray"}}, SWrong{"NoValue", {"--library"}},
                    SWrong{"EmptyLibrary", {"--library", ""}}, SWrong{"BothModes", {"--listen", "a", "--agentx", "b"}},
                    SWrong{"NegativeTime", {"--answer-within", "-1"}}, SWrong{"NoTime", {"--answer-within", "0"}},
                    SWrong{"NoNumber", {"--watchdog", "x"}}, SWrong{"HugeTime", {"--watchdog", "1e300"}},
                    SWrong{"Quote", {"--community", "a\"b"}}, SWrong{"LineEnd", {"--community", "a\nb"}}),
    [](auto const & test) { return std::string(test.param.name); });

} // namespace
