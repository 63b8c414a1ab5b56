#include "touchback/Number.h"

#include <cmath>
#include <cstdlib>
#include <gtest/gtest.h>
#include <random>
#include <string>

namespace companion::testing {

TEST(NumberTest, WholeAndDecimalNumbersAreTaken)
{
    EXPECT_EQ(parseNumber("0"), 0.0);
    EXPECT_EQ(parseNumber("32767"), 32767.0);
    EXPECT_EQ(parseNumber("-41"), -41.0);
    EXPECT_EQ(parseNumber("007"), 7.0);
    EXPECT_EQ(parseNumber("16383.25"), 16383.25);
    EXPECT_EQ(parseNumber("-0.5"), -0.5);
    EXPECT_EQ(parseNumber("0.1"), 0.1);
}

TEST(NumberTest, NegativeZeroKeepsItsSign)
{
    ASSERT_EQ(parseNumber("-0"), 0.0);
    EXPECT_TRUE(std::signbit(*parseNumber("-0")));
    EXPECT_FALSE(std::signbit(*parseNumber("0")));
}

TEST(NumberTest, AnyOtherTextIsRefused)
{
    const char* const texts[] = {"", "-", ".", "-.", "--1", "+1", " 1", "1 ", "1\n", "\t1", "1 2", "1,5",
        "1.", "-1.", ".5", "-.5", "1..5", "1.2.3", "1.-2", "5-", "nan", "NaN", "-nan", "inf", "-inf",
        "infinity", "1e5", "1E5", "1e400", "1e", "0x10", "0X1p3", "10f", "1'000", "1/2", "1:2", "1_000",
        "abc", "12a", "a12", "\xD9\xA3", "\xEF\xBC\x91", "\u22121"};
    for (const char* text : texts)
        EXPECT_EQ(parseNumber(text), std::nullopt) << '"' << text << '"';
}

TEST(NumberTest, TextWithNulBehindTheDigitsIsRefused)
{
    EXPECT_EQ(parseNumber(std::string_view("12\0", 3)), std::nullopt);
}

TEST(NumberTest, TwoToThe63IsTakenWithBothSigns)
{
    EXPECT_EQ(parseNumber("9223372036854775808"), 9223372036854775808.0);
    EXPECT_EQ(parseNumber("-9223372036854775808"), -9223372036854775808.0);
}

TEST(NumberTest, FourHundredDigitsAreMoreThanADoubleHolds)
{
    EXPECT_EQ(parseNumber(std::string(400, '9')), std::nullopt);
    EXPECT_EQ(parseNumber("-" + std::string(400, '9')), std::nullopt);
    EXPECT_EQ(parseNumber("1" + std::string(309, '0')), std::nullopt);
    EXPECT_EQ(parseNumber("1" + std::string(308, '0')), 1e308);
}

TEST(NumberTest, NumberBelowTheSmallestDoubleIsZero)
{
    EXPECT_EQ(parseNumber("0." + std::string(400, '0') + "1"), 0.0);
    EXPECT_EQ(parseNumber("-000." + std::string(60000, '0') + "1"), 0.0);
}

TEST(NumberTest, SixtyThousandDigitsAreRead)
{
    EXPECT_EQ(parseNumber(std::string(60000, '0') + "7"), 7.0);
    EXPECT_EQ(parseNumber("0." + std::string(60000, '3')), 1.0 / 3);
}

TEST(NumberTest, FifteenAndSixteenDigitsAreRoundedCorrectly)
{
    EXPECT_EQ(parseNumber("999999999999999"), 999999999999999.0);
    EXPECT_EQ(parseNumber("9999999999999999"), 1e16);
    EXPECT_EQ(parseNumber("0.12345678901234"), 0.12345678901234);
    EXPECT_EQ(parseNumber("0.123456789012345"), 0.123456789012345);
    EXPECT_EQ(parseNumber("18446744073709551617"), 18446744073709551616.0);
}

TEST(NumberTest, DecimalsOfEveryLengthAreReadAsTheCLibraryReadsThem)
{
    std::mt19937_64 random(20240405);
    for (int round = 0; round < 200'000; ++round) {
        std::string digits = std::to_string(random());
        digits.resize(1 + random() % digits.size());
        const std::size_t point = random() % digits.size();
        const std::string text = point == 0 ? digits : digits.substr(0, point) + "." + digits.substr(point);
        ASSERT_EQ(parseNumber(text), std::strtod(text.c_str(), nullptr)) << text;
    }
}

} // namespace companion::testing
