#include "cli/Options.h"

#include <gtest/gtest.h>

namespace companion::cli::testing {

using namespace std::chrono_literals;

static Options optionsOf(const std::vector<std::string>& arguments)
{
    const ParsedOptions parsed = parseOptions(arguments);
    if (const auto* badUsage = std::get_if<BadUsage>(&parsed))
        ADD_FAILURE() << badUsage->message;
    return std::holds_alternative<Options>(parsed) ? std::get<Options>(parsed) : Options{};
}

static std::string complaintAbout(const std::vector<std::string>& arguments)
{
    const ParsedOptions parsed = parseOptions(arguments);
    const auto* badUsage = std::get_if<BadUsage>(&parsed);
    return badUsage ? badUsage->message : "none";
}

TEST(PanelctlOptionsTest, EveryCommandIsKnown)
{
    EXPECT_EQ(optionsOf({"discover"}).command, CommandName::discover);
    EXPECT_EQ(optionsOf({"ping", "--panel", "Room"}).command, CommandName::ping);
    EXPECT_EQ(optionsOf({"touchback", "off", "--panel", "Room"}).command, CommandName::touchback);
    EXPECT_EQ(optionsOf({"trigger", "--panel", "Room"}).command, CommandName::trigger);
    EXPECT_EQ(optionsOf({"upload", "a.png", "--panel", "Room"}).command, CommandName::upload);
    EXPECT_EQ(optionsOf({"touches"}).command, CommandName::touches);
    EXPECT_EQ(optionsOf({"doctor"}).command, CommandName::doctor);
}

TEST(PanelctlOptionsTest, CommonOptionsStandAnywhereAndJoinedOrNot)
{
    const Options options = optionsOf({"--json", "--panel-address=192.168.1.20", "ping", "--interface",
        "eth7", "--timeout=2.5", "--verbose"});
    EXPECT_TRUE(options.isJson);
    EXPECT_TRUE(options.isVerbose);
    EXPECT_EQ(options.panelAddress, "192.168.1.20");
    EXPECT_EQ(options.interfaceName, "eth7");
    EXPECT_EQ(options.timeout, 2500ms);
    EXPECT_EQ(optionsOf({"ping", "--panel", "Room=204"}).panelName, "Room=204");
    EXPECT_EQ(optionsOf({"ping", "--panel=Room=204"}).panelName, "Room=204");
}

TEST(PanelctlOptionsTest, OptionsOfCommandsReachThem)
{
    EXPECT_EQ(optionsOf({"discover"}).searchTime, 5s);
    EXPECT_EQ(optionsOf({"discover", "--seconds", "0.25"}).searchTime, 250ms);
    EXPECT_TRUE(optionsOf({"touchback", "on", "--hdmi", "--panel", "R"}).isHDMI);
    EXPECT_TRUE(optionsOf({"touchback", "on", "--panel", "R"}).switchesOn);
    EXPECT_FALSE(optionsOf({"touchback", "off", "--panel", "R"}).switchesOn);
    EXPECT_EQ(optionsOf({"touches", "--record", "r.txt"}).recording, "r.txt");
    EXPECT_EQ(optionsOf({"touches"}).mostRecordedBytes, 104'857'600U);
    EXPECT_EQ(optionsOf({"touches", "--max-size", "0.5"}).mostRecordedBytes, 524'288U);
    EXPECT_TRUE(optionsOf({"doctor", "--touches"}).awaitsTouches);
    EXPECT_EQ(optionsOf({"upload", "--panel", "R", "--", "--odd name"}).file, "--odd name");
    EXPECT_EQ(optionsOf({"upload", "--panel", "R", "-"}).file, "-");
}

TEST(PanelctlOptionsTest, WhatDoesNotFitIsOneLine)
{
    EXPECT_EQ(complaintAbout({}), "no command");
    EXPECT_EQ(complaintAbout({"pong"}), "unknown command 'pong'");
    EXPECT_EQ(complaintAbout({"ping", "--panle", "R"}), "unknown option '--panle'");
    EXPECT_EQ(complaintAbout({"ping", "-p"}), "unknown option '-p'");
    EXPECT_EQ(complaintAbout({"ping", "--hdmi", "--panel", "R"}), "ping takes no --hdmi");
    EXPECT_EQ(complaintAbout({"ping", "--seconds", "3", "--panel", "R"}), "ping takes no --seconds");
    EXPECT_EQ(complaintAbout({"discover", "--json=yes"}), "--json takes no value");
    EXPECT_EQ(complaintAbout({"discover", "--seconds"}), "--seconds needs a value");
    EXPECT_EQ(complaintAbout({"discover", "--panel="}), "--panel needs a value");
    EXPECT_EQ(complaintAbout({"discover", "more"}), "unexpected argument 'more'");
    EXPECT_EQ(complaintAbout({"upload", "a", "b", "--panel", "R"}), "unexpected argument 'b'");
    EXPECT_EQ(complaintAbout({"upload", "--panel", "R"}), "upload needs FILE");
    EXPECT_EQ(complaintAbout({"touchback", "--panel", "R"}), "touchback needs on|off");
    EXPECT_EQ(complaintAbout({"touchback", "ON", "--panel", "R"}), "touchback needs on or off, not 'ON'");
}

TEST(PanelctlOptionsTest, RequestsNeedOnePanelAndOneOnly)
{
    for (const auto& command : std::vector<std::vector<std::string>>{
             {"ping"}, {"touchback", "on"}, {"trigger"}, {"upload", "a.png"}})
        EXPECT_EQ(complaintAbout(command), command.front() + " needs --panel-address or --panel");
    EXPECT_EQ(complaintAbout({"ping", "--panel", "R", "--panel-address", "10.0.0.1"}),
        "--panel-address and --panel exclude each other");
}

TEST(PanelctlOptionsTest, SecondsAreAPositiveNumberUpToADay)
{
    EXPECT_EQ(optionsOf({"discover", "--seconds", "0.001"}).searchTime, 1ms);
    EXPECT_EQ(optionsOf({"discover", "--seconds", "86400"}).searchTime, 24h);
    for (const char* text : {"0", "0.0009", "86400.1", "-1", "1e3", "nan", "5s", " 5", "0x5"})
        EXPECT_EQ(complaintAbout({"discover", "--seconds", text}),
            std::string("--seconds needs a number of seconds from 0.001 to 86400, not '") + text + "'");
    EXPECT_EQ(complaintAbout({"doctor", "--timeout", "x"}),
        "--timeout needs a number of seconds from 0.001 to 86400, not 'x'");
}

TEST(PanelctlOptionsTest, LargestRecordingIsUpToAMillionMiB)
{
    EXPECT_EQ(optionsOf({"touches", "--max-size", "0.001"}).mostRecordedBytes, 1049U);
    EXPECT_EQ(optionsOf({"touches", "--max-size", "1000000"}).mostRecordedBytes, 1'048'576'000'000U);
    for (const char* text : {"0", "0.0009", "1000000.1", "-1", "1G"})
        EXPECT_EQ(complaintAbout({"touches", "--max-size", text}),
            std::string("--max-size needs a number of MiB from 0.001 to 1000000, not '") + text + "'");
}

TEST(PanelctlOptionsTest, AddressIsFourNumbersUpTo255)
{
    for (const char* text : {"0.0.0.0", "192.168.1.20", "255.255.255.255"})
        EXPECT_TRUE(isIPv4Text(text)) << text;
    for (const char* text : {"", "1.2.3", "1.2.3.4.5", "1.2.3.256", "1.2.3.04", "1.2.3.", ".1.2.3", "1..2.3",
             "1.2.3.4 ", " 1.2.3.4", "-1.2.3.4", "a.b.c.d", "1.2.3.0004", "::1", "panel"})
        EXPECT_FALSE(isIPv4Text(text)) << text;
    EXPECT_EQ(complaintAbout({"ping", "--panel-address", "panel"}),
        "--panel-address needs an IPv4 address such as 192.168.1.20, not 'panel'");
}

TEST(PanelctlOptionsTest, HelpAndVersionComeBeforeWhatIsMissing)
{
    EXPECT_TRUE(std::holds_alternative<HelpWanted>(parseOptions({"--help"})));
    EXPECT_TRUE(std::holds_alternative<HelpWanted>(parseOptions({"-h"})));
    EXPECT_EQ(std::get<HelpWanted>(parseOptions({"upload", "--help"})).command, CommandName::upload);
    EXPECT_TRUE(std::holds_alternative<VersionWanted>(parseOptions({"ping", "--version"})));
    EXPECT_EQ(complaintAbout({"--help", "--no-such"}), "unknown option '--no-such'");
}

TEST(PanelctlOptionsTest, HelpOfACommandHasItsOptionsAndNoOthers)
{
    EXPECT_NE(helpText(CommandName::touches).find("--record FILE"), std::string::npos);
    EXPECT_EQ(helpText(CommandName::touches).find("--hdmi"), std::string::npos);
    EXPECT_NE(helpText(CommandName::touches).find("--json"), std::string::npos);
    EXPECT_EQ(helpText(CommandName::upload).find("Usage: panelctl upload FILE [OPTION]...\n"), 0U);
}

} // namespace companion::cli::testing
