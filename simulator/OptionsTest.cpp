#include "simulator/Options.h"

#include <gtest/gtest.h>

namespace companion::simulator {
namespace {

Options parsed(const std::vector<std::string>& arguments)
{
    auto result = parseOptions(arguments);
    EXPECT_TRUE(std::holds_alternative<Options>(result)) << std::get<std::string>(result);
    return std::get<Options>(result);
}

std::string optionProblem(const std::vector<std::string>& arguments)
{
    const auto result = parseOptions(arguments);
    return std::holds_alternative<std::string>(result) ? std::get<std::string>(result) : "none";
}

TEST(OptionsTest, DefaultsAreTheUsualPorts)
{
    const Options defaults = parsed({});
    EXPECT_EQ(defaults.model, "Meridian 65");
    EXPECT_EQ(defaults.name, "Simulated panel");
    EXPECT_EQ(defaults.address, "");
    EXPECT_EQ(defaults.servicePort, 5000);
    EXPECT_EQ(defaults.uploadPort, 5505);
    EXPECT_EQ(defaults.touchPort, 41863);
    EXPECT_FALSE(defaults.noAnnounce);
}

TEST(OptionsTest, ValuesFollowABlankOrAnEqualsSign)
{
    const Options given =
        parsed({"--model", "Tandem", "--name=A=B", "--address", "127.0.0.2", "--service-port=0",
            "--upload-port", "65535", "--touch-port", "1", "--uploads", "/tmp/x", "--no-announce"});
    EXPECT_EQ(given.model, "Tandem");
    EXPECT_EQ(given.name, "A=B");
    EXPECT_EQ(given.address, "127.0.0.2");
    EXPECT_EQ(given.servicePort, 0);
    EXPECT_EQ(given.uploadPort, 65535);
    EXPECT_EQ(given.touchPort, 1);
    EXPECT_EQ(given.uploads, "/tmp/x");
    EXPECT_TRUE(given.noAnnounce);
}

TEST(OptionsTest, PortsAreNumbersUpTo65535)
{
    for (const char* text : {"65536", "-1", "5000x", "0x10", " 1"})
        EXPECT_EQ(optionProblem({"--service-port", text}), "--service-port needs a number from 0 to 65535")
            << text;
    EXPECT_EQ(optionProblem({"--touch-port", "0"}), "--touch-port needs a number from 1 to 65535");
}

TEST(OptionsTest, AddressIsThatOfAHost)
{
    for (const char* text : {"0.0.0.0", "255.255.255.255", "224.0.0.251", "localhost", "::1", "1.2.3"})
        EXPECT_EQ(optionProblem({"--address", text}),
            "--address needs the IPv4 address of a host, such as 192.168.1.20")
            << text;
}

TEST(OptionsTest, UnknownAndIncompleteArgumentsAreReportedInOneLine)
{
    EXPECT_EQ(optionProblem({"--modle", "x"}), "unknown option '--modle'");
    EXPECT_EQ(optionProblem({"panel\n"}), "unknown argument 'panel\\n'");
    EXPECT_EQ(optionProblem({"--model"}), "--model needs a value");
    EXPECT_EQ(optionProblem({"--uploads", ""}), "--uploads needs a value");
    EXPECT_EQ(optionProblem({"--no-announce=yes"}), "--no-announce takes no value");
    EXPECT_EQ(optionProblem({"--name", "A|B"}), "the name must not contain \"|\"");
}

TEST(OptionsTest, HelpAndVersionNeedNoUsableName)
{
    EXPECT_TRUE(parsed({"--name", "A|B", "--help"}).wantsHelp);
    EXPECT_TRUE(parsed({"--name", "A|B", "--version"}).wantsVersion);
}

} // namespace
} // namespace companion::simulator
