#include "platform/CommandLine.h"

#include <gtest/gtest.h>

namespace companion::testing {

namespace {

using Texts = std::vector<std::string>;

/// A program with one option of each kind.
struct Program {
    ParsedCommandLine parse(const Texts& arguments)
    {
        return parseCommandLine({textOption("--name", "NAME", "a text", name),
                                    {"--item", "ITEM", "may be repeated",
                                        [this](const std::string& value) -> std::optional<std::string> {
                                            items.push_back(value);
                                            if (value == "bad\n")
                                                return "--item refuses '" + value + "'";
                                            return std::nullopt;
                                        }},
                                    flagOption("--json", "a flag", isJson)},
            arguments);
    }

    std::string problem(const Texts& arguments) { return parse(arguments).problem.value_or("none"); }

    std::optional<std::string> name;
    Texts items;
    bool isJson = false;
};

TEST(CommandLineTest, OptionsStandAnywhereAndJoinedOrNot)
{
    Program program;
    const ParsedCommandLine parsed =
        program.parse({"upload", "--name", "A=B", "--json", "file", "--item=C=D", "-"});
    EXPECT_EQ(parsed.problem, std::nullopt);
    EXPECT_EQ(program.name, "A=B");
    EXPECT_EQ(program.items, Texts{"C=D"});
    EXPECT_TRUE(program.isJson);
    EXPECT_EQ(parsed.operands, (Texts{"upload", "file", "-"}));
    EXPECT_EQ(parsed.givenOptions, (Texts{"--name", "--item", "--json"}));
}

TEST(CommandLineTest, RepeatedValuesComeInOrder)
{
    Program program;
    EXPECT_EQ(program.problem({"--item", "b", "--name", "1", "--item", "a", "--name", "2"}), "none");
    EXPECT_EQ(program.items, (Texts{"b", "a"}));
    EXPECT_EQ(program.name, "2");
}

TEST(CommandLineTest, ValuesAreTakenAsTheyStand)
{
    for (const char* value :
        {"--json", "-x", "--", "[a,b]", "{}", "[]", "%%", "\"quoted\"", "a b", "\xC3\xBC", "\xFF"}) {
        Program program;
        EXPECT_EQ(program.problem({"--item", value}), "none") << value;
        EXPECT_EQ(program.items, Texts{value});
        EXPECT_FALSE(program.isJson);
    }
}

TEST(CommandLineTest, WhatFollowsTwoDashesAreOperands)
{
    Program program;
    const ParsedCommandLine parsed = program.parse({"a", "--", "--json", "--name=", "[b]", "--", ""});
    EXPECT_EQ(parsed.problem, std::nullopt);
    EXPECT_EQ(parsed.operands, (Texts{"a", "--json", "--name=", "[b]", "--", ""}));
    EXPECT_FALSE(program.isJson);
}

TEST(CommandLineTest, BadUsageIsOneLineThatNamesTheOption)
{
    EXPECT_EQ(Program().problem({"--colour=red"}), "unknown option '--colour=red'");
    EXPECT_EQ(Program().problem({"-x", "--jso"}), "unknown option '-x'");
    EXPECT_EQ(Program().problem({"--jso"}), "unknown option '--jso'") << "no abbreviations";
    EXPECT_EQ(Program().problem({"a", "--name"}), "--name needs a value");
    EXPECT_EQ(Program().problem({"--name=", "b"}), "--name needs a value");
    EXPECT_EQ(Program().problem({"--name", ""}), "--name needs a value");
    EXPECT_EQ(Program().problem({"--json=yes"}), "--json takes no value");
    EXPECT_EQ(Program().problem({"--json="}), "--json takes no value");
    EXPECT_EQ(Program().problem({"--help=yes"}), "--help takes no value");
    EXPECT_EQ(Program().problem({"--item", "bad\n"}), "--item refuses 'bad\\n'");
}

TEST(CommandLineTest, HelpAndVersionAreReportedBesideProblems)
{
    EXPECT_TRUE(Program().parse({"-h"}).wantsHelp);
    EXPECT_FALSE(Program().parse({"-h"}).wantsVersion);
    const ParsedCommandLine parsed = Program().parse({"--nonsense", "--help", "--version", "--version"});
    EXPECT_TRUE(parsed.wantsHelp);
    EXPECT_TRUE(parsed.wantsVersion);
    EXPECT_EQ(parsed.problem, "unknown option '--nonsense'");
    EXPECT_FALSE(Program().parse({"--item", "--help"}).wantsHelp);
}

TEST(CommandLineTest, HelpStandsInColumns)
{
    bool flag = false;
    EXPECT_EQ(helpEntries({flagOption("--flag", "first line\nsecond line", flag)}, 12),
        "  --flag    first line\n"
        "            second line\n"
        "  --version\n"
        "            print the version and exit\n"
        "  --help    print this text and exit\n");
    std::string text;
    EXPECT_EQ(helpEntry(textOption("--a", "B", "help", text), 9), "  --a B  help\n");
    EXPECT_EQ(helpEntry(textOption("--a", "B", "help", text), 8), "  --a B\n        help\n");
}

} // namespace
} // namespace companion::testing
