#include "app/Options.h"

#include <gtest/gtest.h>

namespace companion::testing {

namespace {

Options options(const std::vector<std::string>& arguments)
{
    const ParsedOptions parsed = parseOptions(arguments);
    const Options* options = std::get_if<Options>(&parsed);
    EXPECT_TRUE(options);
    return options ? *options : Options{};
}

std::string complaint(const std::vector<std::string>& arguments)
{
    const ParsedOptions parsed = parseOptions(arguments);
    const BadUsage* badUsage = std::get_if<BadUsage>(&parsed);
    return badUsage ? badUsage->message : "";
}

} // namespace

TEST(OptionsTest, NoArgumentsLeaveEverythingToTheRules)
{
    const Options none = options({});
    EXPECT_FALSE(none.interfaceName);
    EXPECT_FALSE(none.screenName);
    EXPECT_TRUE(none.panels.empty());
    EXPECT_EQ(none.touchFrom, TouchSource::any);
    EXPECT_FALSE(none.hasNoRestart);
    EXPECT_FALSE(none.remembersScreenAccess);
    EXPECT_FALSE(none.isNewInstance);
    EXPECT_FALSE(none.hasOptions);
    EXPECT_TRUE(none.files.empty());
}

TEST(OptionsTest, ScreenAccessIsRememberedOnRequest)
{
    EXPECT_TRUE(options({"--remember-screen-access"}).remembersScreenAccess);
}

TEST(OptionsTest, ValuesComeBehindABlankOrAnEqualsSign)
{
    const Options both = options({"--interface", "en0", "--screen=HDMI-1", "--touch-from=panel"});
    EXPECT_EQ(both.interfaceName, "en0");
    EXPECT_EQ(both.screenName, "HDMI-1");
    EXPECT_EQ(both.touchFrom, TouchSource::panel);
}

TEST(OptionsTest, NoRestartIsAFlag)
{
    EXPECT_TRUE(options({"--no-restart"}).hasNoRestart);
}

TEST(OptionsTest, SeveralPanelsAreKeptInOrder)
{
    const Options two =
        options({"--panel", "Meridian 65|Room 204|0A00020F", "--panel", "Tandem|A=B|c0a80105"});
    EXPECT_EQ(two.panels, (std::vector<std::string>{"Meridian 65|Room 204|0A00020F", "Tandem|A=B|c0a80105"}));
}

TEST(OptionsTest, PanelTextThatIsNotThreePartsWithEightHexadecimalDigitsIsBadUsage)
{
    for (const char* text : {"Meridian", "Meridian|Hall", "Meridian|Hall|0A00020", "Meridian|Hall|0A00020F9",
             "Meridian|Hall|0A00020G", "Meridian|Hall|0A00020F|", "Meridian|Hall|"})
        EXPECT_NE(complaint({"--panel", text}).find(text), std::string::npos) << text;
}

TEST(OptionsTest, WhatIsNoOptionIsAFile)
{
    const Options files = options({"a.png", "--", "--b.pdf"});
    EXPECT_EQ(files.files, (std::vector<std::string>{"a.png", "--b.pdf"}));
    EXPECT_FALSE(files.hasOptions);
    const Options both = options({"--new-instance", "a.png"});
    EXPECT_EQ(both.files, std::vector<std::string>{"a.png"});
    EXPECT_TRUE(both.isNewInstance);
    EXPECT_TRUE(both.hasOptions);
}

TEST(OptionsTest, BadUsageIsOneLineThatNamesTheArgument)
{
    EXPECT_EQ(complaint({"--colour"}), "unknown option '--colour'");
    EXPECT_EQ(complaint({"--interface"}), "--interface needs a value");
    EXPECT_EQ(complaint({"--screen="}), "--screen needs a value");
    EXPECT_EQ(complaint({"--touch-from", "everyone"}), "--touch-from takes 'any' or 'panel', not 'everyone'");
}

TEST(OptionsTest, HelpAndVersionWinOverWhatFollowsThem)
{
    EXPECT_TRUE(std::holds_alternative<HelpWanted>(parseOptions({"--help", "--nonsense"})));
    EXPECT_TRUE(std::holds_alternative<VersionWanted>(parseOptions({"--version"})));
}

} // namespace companion::testing
