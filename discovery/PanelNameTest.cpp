#include "discovery/PanelName.h"

#include <gmock/gmock.h>

namespace companion::testing {

namespace {

using ::testing::ElementsAre;
using ::testing::Optional;

std::string addressOf(std::string_view hex)
{
    const auto pieces = hexArrayFromString(hex);
    return pieces ? formattedStringFromAddressComponents(*pieces) : "none";
}

} // namespace

TEST(PanelName, HexValueReadsAsTheFormattedScanDoes)
{
    const struct {
        std::string_view text;
        std::uint32_t value;
    } cases[] = {{"0A", 10}, {"ff", 255}, {"FF", 255}, {"aB", 171}, {"7z", 7}, {"zz", 0}, {"0G", 0},
        {"G0", 0}, {"", 0}, {"-1", 4294967295}, {"-f", 4294967281}, {"-0", 0}, {"- ", 0}, {"--", 0},
        {"+7", 7}, {"+-", 0}, {" 9", 9}, {"\t9", 9}, {"\v9", 9}, {"  ", 0}, {"9 ", 9}, {"0x", 0}, {"0X", 0},
        {"x1", 0}, {"0x1F", 31}, {"0XfG", 15}, {"-0x10", 4294967280}, {"0x0x1", 0}, {"FFFFFFFF", 4294967295},
        {"123456789", 0x23456789}};
    for (const auto& [text, value] : cases)
        EXPECT_EQ(hexValue(text), value) << '"' << text << '"';
}

TEST(PanelName, HexValueStopsAtAByteThatIsNoCharacter)
{
    EXPECT_EQ(hexValue("7\xFF"), 7u);
    EXPECT_EQ(hexValue("\xC2\xA0"
                       "7"),
        0u);
    EXPECT_EQ(hexValue(std::string_view("7\0"
                                        "7",
                  3)),
        7u);
}

TEST(PanelName, AnAddressIsFourPiecesOfTwoCharacters)
{
    EXPECT_THAT(hexArrayFromString("0A00020F"), Optional(ElementsAre("0A", "00", "02", "0F")));
    EXPECT_THAT(hexArrayFromString("0A00020F99"), Optional(ElementsAre("0A", "00", "02", "0F")));
    EXPECT_EQ(hexArrayFromString("0A00020"), std::nullopt);
    EXPECT_EQ(hexArrayFromString(""), std::nullopt);
}

TEST(PanelName, CharactersAreCountedNotBytes)
{
    EXPECT_THAT(hexArrayFromString("äö0Aß€02"), Optional(ElementsAre("äö", "0A", "ß€", "02")));
    EXPECT_EQ(hexArrayFromString("ääää"), std::nullopt) << "8 bytes, 4 characters";
}

TEST(PanelName, ACharacterBeyondTheBasicPlaneCountsTwo)
{
    EXPECT_THAT(hexArrayFromString("0A😀020F"), Optional(ElementsAre("0A", "😀", "02", "0F")));
    EXPECT_THAT(hexArrayFromString("0😀A020F"), Optional(ElementsAre("0😀", "\uFFFDA", "02", "0F")));
    EXPECT_THAT(hexArrayFromString("0A00020😀"), Optional(ElementsAre("0A", "00", "02", "0😀")));
    EXPECT_THAT(hexArrayFromString("😀😀😀😀"), Optional(ElementsAre("😀", "😀", "😀", "😀")));
    EXPECT_EQ(hexArrayFromString("0A000😀"), std::nullopt) << "7 characters";
    EXPECT_EQ(addressOf("0😀A020F"), "0.0.2.15");
}

TEST(PanelName, BytesThatAreNotUtf8CountOneEach)
{
    EXPECT_THAT(hexArrayFromString("\xFF\xC3"
                                   "0A\xE2\x82"
                                   "02"),
        Optional(ElementsAre("\xFF\xC3", "0A", "\xE2\x82", "02")));
    EXPECT_THAT(hexArrayFromString("0A0002\x80\xF0"), Optional(ElementsAre("0A", "00", "02", "\x80\xF0")));
}

TEST(PanelName, TheFirstAndLastCharactersOfEachLengthAreWhole)
{
    for (const std::string character : {"\xC2\x80", "\xDF\xBF", "\xE0\xA0\x80", "\xEF\xBF\xBD"}) {
        EXPECT_EQ(hexArrayFromString("0A0002" + character), std::nullopt) << character;
        EXPECT_THAT(hexArrayFromString(character + "A0002FF"),
            Optional(ElementsAre(character + "A", "00", "02", "FF")))
            << character;
    }
    for (const std::string character : {"\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF"}) {
        EXPECT_EQ(hexArrayFromString("0A000" + character), std::nullopt) << character;
        EXPECT_THAT(
            hexArrayFromString(character + "0002FF"), Optional(ElementsAre(character, "00", "02", "FF")))
            << character;
    }
    EXPECT_THAT(hexArrayFromString("0A0002\xC3\xC3"), Optional(ElementsAre("0A", "00", "02", "\xC3\xC3")));
}

TEST(PanelName, ASequenceLongerThanNeededIsNoCharacter)
{
    EXPECT_THAT(hexArrayFromString("0A0002\xC0\x80"), Optional(ElementsAre("0A", "00", "02", "\xC0\x80")));
    EXPECT_EQ(hexArrayFromString("0A0002\xC2\x80"), std::nullopt) << "7 characters";
}

TEST(PanelName, AnAddressBecomesDottedDecimals)
{
    EXPECT_EQ(addressOf("0A00020F"), "10.0.2.15");
    EXPECT_EQ(addressOf("0a00020f"), "10.0.2.15");
    EXPECT_EQ(addressOf("C0A80105"), "192.168.1.5");
    EXPECT_EQ(addressOf("FFFFFFFF"), "255.255.255.255");
    EXPECT_EQ(addressOf("0A00020G"), "10.0.2.0");
    EXPECT_EQ(addressOf("zz7z-1+f"), "0.7.-1.15");
    EXPECT_EQ(addressOf(" 1 2 3 4"), "1.2.3.4");
    EXPECT_EQ(addressOf("0x0X1x2x"), "0.0.1.2");
    EXPECT_EQ(addressOf("äöüß0102"), "0.0.1.2");
}

TEST(PanelName, AServiceNameIsSplitOnEveryBar)
{
    EXPECT_THAT(parsePanelName("Meridian 65|Room 204|0A00020F"),
        Optional(PanelName{"Meridian 65", "Room 204", "0A00020F", "10.0.2.15"}));
    EXPECT_THAT(parsePanelName("Tandem|Büro|0A00020F99|more|"),
        Optional(PanelName{"Tandem", "Büro", "0A00020F99", "10.0.2.15"}));
    EXPECT_THAT(parsePanelName("||0A00020F"), Optional(PanelName{"", "", "0A00020F", "10.0.2.15"}));
}

TEST(PanelName, TooFewComponentsOrCharactersAreNoPanel)
{
    for (const std::string_view name :
        {"", "|", "||", "Meridian", "Meridian|Hall", "Meridian|Hall|", "Meridian|Hall|0A0002",
            "Meridian|Hall|0A00020", "Meridian|Hall||0A00020F", "Meridian\xFF|\xC3|\x80"})
        EXPECT_EQ(parsePanelName(name), std::nullopt) << name;
}

TEST(PanelName, ThreeModelsAreSupportedAndLetterCaseCounts)
{
    for (const std::string_view model :
        {"Meridian", "Meridian-75", "The Halcyon-X of us", "Tandem", "\xFFTandem"})
        EXPECT_TRUE(namesSupportedModel(model)) << model;
    for (const std::string_view model :
        {"", "ProjectorX", "meridian", "HALCYON-X", "Halcyon X", "Tande", "TANDEM"})
        EXPECT_FALSE(namesSupportedModel(model)) << model;
}

TEST(PanelName, InAnyCaseOnlyTheLettersCount)
{
    for (const std::string_view model : {"Meridian", "MERIDIAN 65", "my halcyon-x", "tAnDeM"})
        EXPECT_TRUE(namesSupportedModelInAnyCase(model)) << model;
    for (const std::string_view model : {"", "ProjectorX", "HALCYON_X", "halcyon\rx", "Tande"})
        EXPECT_FALSE(namesSupportedModelInAnyCase(model)) << model;
}

} // namespace companion::testing
