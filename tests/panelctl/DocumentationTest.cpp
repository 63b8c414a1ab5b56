// What the help, the manual pages and the shells' completion say must be the same.

#include "tests/support/ChildProcess.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>

namespace companion::testing {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using Names = std::set<std::string>;

namespace {

constexpr auto remedy = " (./test --with-optional installs it)";

std::string contentOf(const std::string& path)
{
    std::ostringstream text;
    text << std::ifstream(std::string(PROJECT_FOLDER "/") + path).rdbuf();
    return text.str();
}

std::string outputOf(const std::vector<std::string>& command)
{
    ChildProcess process(command);
    process.waitForExit();
    return process.output();
}

/// What the first group of `pattern` matches, anywhere in `text`.
Names matches(const std::string& text, const std::string& pattern)
{
    const std::regex regex(pattern);
    Names names;
    for (std::sregex_iterator match(text.begin(), text.end(), regex), end; match != end; ++match)
        names.insert((*match)[1]);
    return names;
}

/// Of a help text: what a line begins with.
Names optionsOfHelp(const std::string& program)
{
    return matches(outputOf({program, "--help"}), "\n +(--[a-z-]+)");
}

/// Of a manual page: what has an entry of its own.
Names optionsOfManual(const std::string& page)
{
    Names options;
    for (const std::string& name : matches(contentOf("packaging/man/" + page), "\n\\.It Fl -([a-z-]+)"))
        options.insert("--" + name);
    return options;
}

Names commandsOfHelp()
{
    const std::string help = outputOf({PANELCTL, "--help"});
    const std::size_t begin = help.find("Commands:");
    return matches(help.substr(begin, help.find("Options of every") - begin), "\n  ([a-z]+)");
}

/// "discover" and what the help says it does, in one line, which the shells show beside it.
std::set<std::string> commandsWithTheirHelp(const std::string& between)
{
    std::set<std::string> lines;
    for (const std::string& command : commandsOfHelp()) {
        const std::string help = outputOf({PANELCTL, command, "--help"});
        lines.insert(command + between + *matches(help, "\npanelctl [a-z]+: ([^\n]+)").begin());
    }
    return lines;
}

Names wordsOf(const std::string& text)
{
    return matches(text, "([^\\s]+)");
}

/// What bash offers for the command line so far, whose last word is being typed.
Names offeredByBash(const std::vector<std::string>& words)
{
    std::string script = "source " PROJECT_FOLDER "/packaging/completion/panelctl.bash; COMP_WORDS=(";
    for (const std::string& word : words)
        script += "'" + word + "' ";
    script += "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _panelctl; printf '%s\\n' \"${COMPREPLY[@]}\"";
    return wordsOf(outputOf({"bash", "-c", script}));
}

Names operator-(const Names& a, const Names& b)
{
    Names difference;
    std::set_difference(
        a.begin(), a.end(), b.begin(), b.end(), std::inserter(difference, difference.begin()));
    return difference;
}

/// Of the help of one command, the common options included.
Names optionsOfCommand(const std::string& command)
{
    return matches(outputOf({PANELCTL, command, "--help"}), "\n +(--[a-z-]+)");
}

} // namespace

TEST(DocumentationTest, ManualPagesHaveTheOptionsOfTheHelp)
{
    ASSERT_GE(optionsOfHelp(PANELCTL).size(), 12U);
    EXPECT_EQ(optionsOfManual("panelctl.1"), optionsOfHelp(PANELCTL));
    ASSERT_GE(optionsOfHelp(PANEL_SIMULATOR).size(), 10U);
    EXPECT_EQ(optionsOfManual("panel-simulator.1"), optionsOfHelp(PANEL_SIMULATOR));
    ASSERT_GE(optionsOfHelp(PANEL_COMPANION).size(), 6U);
    EXPECT_EQ(optionsOfManual("panel-companion.1"), optionsOfHelp(PANEL_COMPANION));
}

TEST(DocumentationTest, ManualPageHasTheCommandsOfTheHelp)
{
    const std::string page = contentOf("packaging/man/panelctl.1");
    ASSERT_EQ(commandsOfHelp().size(), 7U);
    EXPECT_EQ(matches(page, "\n\\.It Cm ([a-z]+)"), commandsOfHelp());
    const std::string synopsis = page.substr(0, page.find(".Sh DESCRIPTION"));
    EXPECT_EQ(matches(synopsis, "\n\\.Nm\n\\.Cm ([a-z]+)"), commandsOfHelp());
}

TEST(DocumentationTest, ManualPageListsTheExitStatuses)
{
    const std::string page = contentOf("packaging/man/panelctl.1");
    const std::string section = page.substr(page.find(".Sh EXIT STATUS"));
    EXPECT_EQ(matches(section, "\n\\.It ([0-9])"), (Names{"0", "1", "2", "3", "4"}));
}

TEST(DocumentationTest, ManualPagesHaveNoMistakesOfForm)
{
    if (!isInstalled("man") || !isInstalled("groff"))
        GTEST_SKIP() << "man or groff is not installed" << remedy;
    for (const char* page : {"panelctl.1", "panel-companion.1", "panel-simulator.1"})
        EXPECT_EQ(
            outputOf({"bash", "-c",
                std::string("LC_ALL=C.UTF-8 man --warnings -l -Tutf8 -Z " PROJECT_FOLDER "/packaging/man/")
                    + page + " 2>&1 >/dev/null"}),
            "")
            << page;
}

TEST(DocumentationTest, BashOffersEveryCommandAndItsOptions)
{
    const Names common = optionsOfCommand("ping");
    EXPECT_EQ(offeredByBash({"panelctl", ""}) - common, commandsOfHelp());
    EXPECT_EQ(offeredByBash({"panelctl", "-"}), common);
    for (const std::string& command : commandsOfHelp())
        EXPECT_EQ(offeredByBash({"panelctl", command, "-"}), optionsOfCommand(command)) << command;
}

TEST(DocumentationTest, BashOffersWhatCommandsTake)
{
    EXPECT_EQ(offeredByBash({"panelctl", "touchback", "o"}), (Names{"on", "off"}));
    EXPECT_EQ(offeredByBash({"panelctl", "--json", "do"}), (Names{"doctor"}));
    EXPECT_THAT(offeredByBash({"panelctl", "ping", "--panel", ""}), IsEmpty());
}

TEST(DocumentationTest, BashOffersTheNetworkInterfaces)
{
    if (!std::filesystem::exists("/sys/class/net/lo"))
        GTEST_SKIP() << "there is no /sys/class/net, where they are listed";
    EXPECT_THAT(offeredByBash({"panelctl", "ping", "--interface", "l"}), ::testing::Contains("lo"));
    EXPECT_THAT(offeredByBash({"panelctl", "ping", "--interface", "=", "l"}), ::testing::Contains("lo"));
}

TEST(DocumentationTest, ZshAndFishDescribeCommandsAsTheHelpDoes)
{
    EXPECT_EQ(matches(contentOf("packaging/completion/_panelctl"), "\n +'([a-z]+:[^']+)'"),
        commandsWithTheirHelp(":"));
    const std::string fish = contentOf("packaging/completion/panelctl.fish");
    for (std::string line : commandsWithTheirHelp(" -d '")) {
        char& first = line[line.find('\'') + 1];
        first = static_cast<char>(first - 'a' + 'A');
        EXPECT_THAT(fish, HasSubstr("-a " + line + "'"));
    }
}

TEST(DocumentationTest, ZshAndFishKnowTheSameCommandsAndOptions)
{
    const std::string zsh = contentOf("packaging/completion/_panelctl");
    EXPECT_EQ(matches(zsh, "\n +'([a-z]+):"), commandsOfHelp());
    EXPECT_EQ(matches(zsh, "'(?:\\([^)]*\\))?(--[a-z-]+)[=\\[]"), optionsOfHelp(PANELCTL));
    for (const std::string& command : commandsOfHelp()) {
        const Names own =
            matches(zsh, "\n +(?:[a-z]+ \\| )?" + command + "(?: \\| [a-z]+)?\\) (_arguments.*)");
        ASSERT_EQ(own.size(), 1U) << command;
        EXPECT_EQ(matches(*own.begin(), "'(--[a-z-]+)"), optionsOfCommand(command) - optionsOfCommand("ping"))
            << command;
    }

    const std::string fish = contentOf("packaging/completion/panelctl.fish");
    EXPECT_EQ(matches(fish, "set -l commands( [a-z ]+)").size(), 1U);
    EXPECT_EQ(wordsOf(*matches(fish, "set -l commands( [a-z ]+)").begin()), commandsOfHelp());
    EXPECT_EQ(matches(fish, "not __fish_seen_subcommand_from \\$commands\" -a ([a-z]+) "), commandsOfHelp());
    Names fishOptions;
    for (const std::string& name : matches(fish, " -l ([a-z-]+) "))
        if (name != "commands")
            fishOptions.insert("--" + name);
    EXPECT_EQ(fishOptions, optionsOfHelp(PANELCTL));
    for (const std::string& command : commandsOfHelp()) {
        Names own;
        for (const std::string& name :
            matches(fish, "\n[^\n]*'__fish_seen_subcommand_from " + command + "' -l ([a-z-]+)"))
            own.insert("--" + name);
        EXPECT_EQ(own, optionsOfCommand(command) - optionsOfCommand("ping")) << command;
    }
}

class CompletionScriptTest : public ::testing::Test {
protected:
    /// What the shell says of its script when it only reads it.
    static std::string complaintsOf(const std::string& shell, const std::string& script)
    {
        return outputOf({shell, "-n", PROJECT_FOLDER "/packaging/completion/" + script});
    }
};

TEST_F(CompletionScriptTest, ParsesInBash)
{
    EXPECT_EQ(complaintsOf("bash", "panelctl.bash"), "");
}

TEST_F(CompletionScriptTest, ParsesInZsh)
{
    if (!isInstalled("zsh"))
        GTEST_SKIP() << "zsh is not installed" << remedy;
    EXPECT_EQ(complaintsOf("zsh", "_panelctl"), "");
}

TEST_F(CompletionScriptTest, ParsesInFish)
{
    if (!isInstalled("fish"))
        GTEST_SKIP() << "fish is not installed" << remedy;
    EXPECT_EQ(complaintsOf("fish", "panelctl.fish"), "");
}

TEST(DocumentationTest, WhatTheManualPagesReferToIsInstalledWithThePrograms)
{
    char folder[] = "/tmp/panel-companion-install.XXXXXX";
    ASSERT_TRUE(mkdtemp(folder));
    const std::string log = outputOf({"sh", "-c", std::string(INSTALL_COMMAND " ") + folder});
    for (const char* file : {"bin/panel-companion", "bin/panel-simulator", "bin/panelctl",
             "/panel-protocol.md", "man1/panel-companion.1", "man1/panel-simulator.1", "man1/panelctl.1"})
        EXPECT_THAT(log, HasSubstr(file));
    std::filesystem::remove_all(folder);
}

TEST(DocumentationTest, PanelctlLoadsNoGraphicalToolkit)
{
    const std::string libraries = outputOf({"ldd", PANELCTL});
    ASSERT_THAT(libraries, HasSubstr("libQt6Core"));
    for (const char* library : {"libQt6Gui", "libQt6Widgets", "libX11", "libGL"})
        EXPECT_THAT(libraries, ::testing::Not(HasSubstr(library)));
}

} // namespace companion::testing
