#include "CommandLine.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace tessly {
namespace {

TEST(CommandLine, StartsWithoutArguments)
{
    EXPECT_EQ(parseCommandLine({}).verb, Command::Verb::start);
}

TEST(CommandLine, MapsEachCommandToACallOfTheRunningInstance)
{
    const std::vector<std::pair<const char*, QString>> commands = {
        {"show", u"Show"_s}, {"hide", u"Hide"_s}, {"toggle", u"Toggle"_s}, {"quit", u"Quit"_s}};
    for (const auto& [name, method] : commands) {
        const auto command = parseCommandLine({name});
        EXPECT_EQ(command.verb, Command::Verb::callRunningInstance) << name;
        EXPECT_EQ(command.method, method) << name;
    }
}

TEST(CommandLine, PrintsTheVersion)
{
    const auto command = parseCommandLine({"--version"});
    EXPECT_EQ(command.verb, Command::Verb::print);
    EXPECT_EQ(command.text, u"tessly "_s + programVersion() + u'\n');
    EXPECT_FALSE(programVersion().isEmpty());
}

TEST(CommandLine, ExplainsItself)
{
    const auto command = parseCommandLine({"--help"});
    EXPECT_EQ(command.verb, Command::Verb::print);
    EXPECT_TRUE(command.text.startsWith(u"Usage: tessly"_s));
}

TEST(CommandLine, RefusesWhatItDoesNotKnowAndNamesIt)
{
    for (const auto& arguments : std::vector<std::vector<const char*>>{
             {"frobnicate"},
             {"--frobnicate"},
             {"show", "frobnicate"},
             {"--version", "frobnicate"}}) {
        const auto command = parseCommandLine(arguments);
        EXPECT_EQ(command.verb, Command::Verb::wrongUsage);
        EXPECT_TRUE(
            command.text.contains(u"\"frobnicate\""_s) ||
            command.text.contains(u"\"--frobnicate\""_s));
        EXPECT_TRUE(command.text.contains(u"Usage: tessly"_s));
    }
}

} // namespace
} // namespace tessly
