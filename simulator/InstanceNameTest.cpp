#include "simulator/InstanceName.h"

#include <gtest/gtest.h>

namespace companion::simulator {
namespace {

std::string problemOf(const std::string& model, const std::string& name)
{
    return (InstanceName{model, name, "0A00020F"}.problem()).value_or("none");
}

TEST(InstanceNameTest, AddressIsEightUpperCaseDigitsFirstOctetFirst)
{
    EXPECT_EQ(hexAddress("10.0.2.15"), "0A00020F");
    EXPECT_EQ(hexAddress("192.168.171.254"), "C0A8ABFE");
}

TEST(InstanceNameTest, OnlyFourDecimalOctetsAreAnAddress)
{
    for (const char* text : {"", "1.2.3", "1.2.3.256", "1.2.3.4 ", "::1", "localhost", "1.2.3.4.5"})
        EXPECT_FALSE(hexAddress(text)) << text;
}

TEST(InstanceNameTest, ModelNameAndAddressAreJoinedByBars)
{
    EXPECT_EQ((InstanceName{"Meridian 65", "Room 204", "0A00020F"}.text()), "Meridian 65|Room 204|0A00020F");
}

TEST(InstanceNameTest, SixtyThreeBytesFitAndSixtyFourDoNot)
{
    EXPECT_EQ(problemOf("Tandem", std::string(63 - 16, 'n')), "none");
    EXPECT_EQ(problemOf("Tandem", std::string(64 - 16, 'n')),
        "model and name are 1 bytes too long to be announced");
}

TEST(InstanceNameTest, PartsAreTextWithoutBars)
{
    EXPECT_EQ(problemOf("Tan|dem", "A"), "the model must not contain \"|\"");
    EXPECT_EQ(problemOf("Tandem", "A|B"), "the name must not contain \"|\"");
    EXPECT_EQ(problemOf("Tandem", ""), "the name is empty");
    EXPECT_EQ(problemOf("Tandem", "a\nb"), "the name must be UTF-8 without control characters");
    EXPECT_EQ(problemOf("Tandem", "\xFF"), "the name must be UTF-8 without control characters");
    EXPECT_EQ(problemOf("Tandem", "Größe"), "none");
}

TEST(InstanceNameTest, NameThatIsTakenIsNumberedInItsNamePart)
{
    EXPECT_EQ((InstanceName{"Tandem", "Room", "0A00020F"}.text(2)), "Tandem|Room (2)|0A00020F");
}

TEST(InstanceNameTest, NumberedNameIsShortenedBetweenCharacters)
{
    const std::string longest = std::string(63 - 16 - 2, 'n') + "ö";
    const std::string text = (InstanceName{"Tandem", longest, "0A00020F"}.text(10));
    EXPECT_EQ(text, "Tandem|" + std::string(63 - 16 - 5, 'n') + " (10)|0A00020F");

    std::string umlauts = "nn"; // 42 bytes of 43 are used: one more would be half a letter
    for (int i = 0; i < 20; ++i)
        umlauts += "ö";
    EXPECT_EQ(
        (InstanceName{"Tandem", umlauts + "öö", "0A00020F"}.text(2)), "Tandem|" + umlauts + " (2)|0A00020F");
}

} // namespace
} // namespace companion::simulator
