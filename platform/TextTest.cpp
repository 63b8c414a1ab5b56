#include "platform/Text.h"

#include <gtest/gtest.h>
#include <string>

using namespace std::string_literals;

namespace companion::testing {

namespace {

/// Every code point as UTF-8, by the arithmetic of RFC 3629 rather than by its table of ranges.
std::string encoded(char32_t codePoint)
{
    const auto continuation = [codePoint](int shift) {
        return static_cast<char>(0x80 | ((codePoint >> shift) & 0x3F));
    };
    if (codePoint < 0x80)
        return {static_cast<char>(codePoint)};
    if (codePoint < 0x800)
        return {static_cast<char>(0xC0 | (codePoint >> 6)), continuation(0)};
    if (codePoint < 0x10000)
        return {static_cast<char>(0xE0 | (codePoint >> 12)), continuation(6), continuation(0)};
    return {static_cast<char>(0xF0 | (codePoint >> 18)), continuation(12), continuation(6), continuation(0)};
}

bool isSurrogate(char32_t codePoint)
{
    return codePoint >= 0xD800 && codePoint <= 0xDFFF;
}

} // namespace

TEST(ValidUtf8Test, EveryCodePointUpTo10FFFFIsValidExceptSurrogates)
{
    for (char32_t codePoint = 0; codePoint <= 0x10FFFF; ++codePoint)
        ASSERT_EQ(isValidUtf8(encoded(codePoint)), !isSurrogate(codePoint))
            << static_cast<unsigned>(codePoint);
    EXPECT_FALSE(isValidUtf8(encoded(0x110000)));
    EXPECT_FALSE(isValidUtf8(encoded(0x13FFFF)));
}

TEST(ValidUtf8Test, OverlongFormsAreNotValid)
{
    EXPECT_FALSE(isValidUtf8("\xC0\x80"));
    EXPECT_FALSE(isValidUtf8("\xC1\xBF"));
    EXPECT_FALSE(isValidUtf8("\xE0\x80\x80"));
    EXPECT_FALSE(isValidUtf8("\xE0\x9F\xBF"));
    EXPECT_FALSE(isValidUtf8("\xF0\x80\x80\x80"));
    EXPECT_FALSE(isValidUtf8("\xF0\x8F\xBF\xBF"));
}

TEST(ValidUtf8Test, BytesThatStartNoSequenceAreNotValid)
{
    for (int lead = 0x80; lead <= 0xFF; ++lead) {
        const bool startsSequence = lead >= 0xC2 && lead <= 0xF4;
        if (!startsSequence) {
            EXPECT_FALSE(isValidUtf8(static_cast<char>(lead) + "\x90\x90\x90"s)) << lead;
        }
    }
}

TEST(ValidUtf8Test, SequencesCutOffAreNotValid)
{
    for (const std::string& whole : {"\xC3\xA9"s, "\xE2\x82\xAC"s, "\xF0\x9F\x98\x80"s}) {
        for (std::size_t length = 1; length < whole.size(); ++length) {
            EXPECT_FALSE(isValidUtf8(whole.substr(0, length)));
            EXPECT_FALSE(isValidUtf8(whole.substr(0, length) + "x"));
            EXPECT_FALSE(isValidUtf8(whole.substr(0, length) + "\xC3\xA9"));
        }
    }
}

TEST(ValidUtf8Test, SequenceIsNotCompletedByWhatLiesBehindTheText)
{
    EXPECT_FALSE(isValidUtf8(std::string_view("\xC3\xA9", 1)));
    EXPECT_FALSE(isValidUtf8(std::string_view("\xE2\x82\xAC", 2)));
    EXPECT_FALSE(isValidUtf8(std::string_view("\xF0\x9F\x98\x80", 3)));
}

TEST(ValidUtf8Test, OnlyBytesFrom80ToBFContinueASequence)
{
    const std::string whole = "\xF1\x88\x99\xAA";
    for (std::size_t position = 1; position < whole.size(); ++position) {
        for (int byte = 0; byte <= 0xFF; ++byte) {
            std::string text = whole;
            text[position] = static_cast<char>(byte);
            EXPECT_EQ(isValidUtf8(text), byte >= 0x80 && byte <= 0xBF) << position << ' ' << byte;
        }
    }
}

TEST(ValidUtf8Test, TextWithNulAndNoTextAreValid)
{
    EXPECT_TRUE(isValidUtf8(""));
    EXPECT_TRUE(isValidUtf8({}));
    EXPECT_TRUE(isValidUtf8("MOVE\0,1"s));
}

TEST(ValidUtf8Test, OneBadByteIsSeenAtEveryPositionOfALongText)
{
    for (std::size_t length = 1; length <= 40; ++length) {
        const std::string good(length, 'a');
        ASSERT_TRUE(isValidUtf8(good));
        for (std::size_t position = 0; position < length; ++position) {
            std::string bad = good;
            bad[position] = '\xFF';
            ASSERT_FALSE(isValidUtf8(bad)) << position << " of " << length;
        }
    }
}

TEST(ValidUtf8Test, ManyByteSequencesAreSeenAtEveryPositionOfALongText)
{
    for (std::size_t position = 0; position <= 20; ++position) {
        const std::string before(position, 'a');
        EXPECT_TRUE(isValidUtf8(before + "\xE2\x82\xAC" + "0123456789")) << position;
        EXPECT_FALSE(isValidUtf8(before + "\xED\xA0\x80" + "0123456789")) << position;
        EXPECT_FALSE(isValidUtf8(before + "\xE2\x82")) << position;
    }
}

TEST(LenientUtf8Test, ValidTextStaysAsItIs)
{
    for (const std::string& text : {""s, "CAST_STARTED"s, "a\0b"s,
             "Gr\xC3\xBC\xC3\x9F"
             "e"s,
             "12345678\xE2\x82\xAC 12345678 \xF0\x9F\x98\x80"s, "\xEF\xBF\xBD"s, "\xF4\x8F\xBF\xBF"s})
        EXPECT_EQ(lenientUtf8(text), text);
}

/// "?" stands for U+FFFD.
static std::string withQuestionMarks(const std::string& text)
{
    std::string decoded = lenientUtf8(text);
    EXPECT_TRUE(isValidUtf8(decoded));
    const std::string replacementCharacter = "\xEF\xBF\xBD";
    for (auto at = decoded.find(replacementCharacter); at != std::string::npos;
         at = decoded.find(replacementCharacter))
        decoded.replace(at, replacementCharacter.size(), "?");
    return decoded;
}

TEST(LenientUtf8Test, ByteThatStartsNothingIsReplacedByItself)
{
    EXPECT_EQ(withQuestionMarks("a\x80z"), "a?z");
    EXPECT_EQ(withQuestionMarks("\xBF\xBF"), "??");
    EXPECT_EQ(withQuestionMarks("\xC0\xAF"), "??");
    EXPECT_EQ(withQuestionMarks("\xC1\xBF"), "??");
    EXPECT_EQ(withQuestionMarks("\xF5\x80\x80\x80"), "????");
    EXPECT_EQ(withQuestionMarks("\xFE\xFF"), "??");
}

TEST(LenientUtf8Test, SequenceThatBreaksOffIsReplacedOnce)
{
    EXPECT_EQ(withQuestionMarks("\xC3"), "?");
    EXPECT_EQ(withQuestionMarks("\xC3z"), "?z");
    EXPECT_EQ(withQuestionMarks("\xE2\x82"), "?");
    EXPECT_EQ(withQuestionMarks("\xE2\x82z"), "?z");
    EXPECT_EQ(withQuestionMarks("\xF0\x9F\x98"), "?");
    EXPECT_EQ(withQuestionMarks("\xF0\x9F\x98z\xF0\x9F"
                                "z"),
        "?z?z");
    EXPECT_EQ(withQuestionMarks("\xE2\xE2\x82"), "??");
}

TEST(LenientUtf8Test, OverlongFormsSurrogatesAndBeyond10FFFFAreReplacedByteByByte)
{
    EXPECT_EQ(withQuestionMarks("\xE0\x80\xAF"), "???");
    EXPECT_EQ(withQuestionMarks("\xE0\x9F\xBF"), "???");
    EXPECT_EQ(withQuestionMarks("\xED\xA0\x80"), "???");
    EXPECT_EQ(withQuestionMarks("\xF0\x80\x80\xAF"), "????");
    EXPECT_EQ(withQuestionMarks("\xF0\x8F\xBF\xBF"), "????");
    EXPECT_EQ(withQuestionMarks("\xF4\x90\x80\x80"), "????");
}

/// The example of the Unicode Standard, table 3-11.
TEST(LenientUtf8Test, TruncatedSequencesInARowAreReplacedOnceEach)
{
    EXPECT_EQ(withQuestionMarks("\xE1\x80\xE2\xF0\x91\x92\xF1\xBF\x41"), "????A");
    EXPECT_EQ(withQuestionMarks("\x61\xF1\x80\x80\xE1\x80\xC2\x62\x80\x63\x80\xBF\x64"), "a???b?c??d");
}

TEST(CutAtCharacterTest, PrefixEndsBeforeTheCharacterThatDoesNotFit)
{
    EXPECT_EQ(cutAtCharacter("12345", 5), "12345");
    EXPECT_EQ(cutAtCharacter("12345", 4), "1234");
    EXPECT_EQ(cutAtCharacter("1234\xE2\x82\xAC", 7), "1234\xE2\x82\xAC");
    EXPECT_EQ(cutAtCharacter("1234\xE2\x82\xAC", 6), "1234");
    EXPECT_EQ(cutAtCharacter("1234\xE2\x82\xAC", 5), "1234");
    EXPECT_EQ(cutAtCharacter("1234\xE2\x82\xAC", 4), "1234");
    EXPECT_EQ(cutAtCharacter(std::string(100, '\x80'), 40), "");
    EXPECT_EQ(cutAtCharacter("", 0), "");
}

TEST(PrintableTest, OrdinaryTextAndTabsAreUnchanged)
{
    EXPECT_EQ(printable(""), "");
    EXPECT_EQ(printable("Paired\tto Größe 東京 \U0001F600 ~"), "Paired\tto Größe 東京 \U0001F600 ~");
}

TEST(PrintableTest, ControlCharactersAreEscaped)
{
    EXPECT_EQ(printable("one\ntwo\r\nthree"), "one\\ntwo\\r\\nthree");
    EXPECT_EQ(printable("\x1b[2J\x7f"), "\\x1b[2J\\x7f");
    EXPECT_EQ(printable("a\0b\x1f \b"s), "a\\x00b\\x1f \\x08");
}

TEST(PrintableTest, C1ControlCharactersFrom80To9FAreEscaped)
{
    EXPECT_EQ(printable("\u0080|\u009b2J|\u009f|\u00a0|\u00df"), "\\x80|\\x9b2J|\\x9f|\u00a0|\u00df");
}

TEST(PrintableTest, BidirectionalControlCharactersAreEscapedAndTheirNeighboursAreNot)
{
    EXPECT_EQ(printable("\u061b\u061c\u061d"), "\u061b\\u061c\u061d");
    EXPECT_EQ(printable("\u200d\u200e\u200f\u2010"), "\u200d\\u200e\\u200f\u2010");
    EXPECT_EQ(printable("\u2029\u202a\u202b\u202c\u202d\u202e\u202f"),
        "\u2029\\u202a\\u202b\\u202c\\u202d\\u202e\u202f");
    EXPECT_EQ(printable("\u2065\u2066\u2067\u2068\u2069\u206a"), "\u2065\\u2066\\u2067\\u2068\\u2069\u206a");
}

TEST(PrintableTest, BytesThatAreNotUtf8AreEscapedOneByOne)
{
    EXPECT_EQ(printable("a\xE9z\x9b"), "a\\xe9z\\x9b");
    EXPECT_EQ(printable("\xE2\x82|\xC2"), "\\xe2\\x82|\\xc2");
    EXPECT_EQ(printable("\xED\xA0\x80"), "\\xed\\xa0\\x80");
}

TEST(PrintableTest, TextOf40BytesIsWholeAndOneOf41IsCut)
{
    const std::string whole(40, 'x');
    EXPECT_EQ(printable(whole, 40), whole);
    EXPECT_EQ(printable(whole + "y", 40), whole + "...");
    EXPECT_EQ(printable(std::string(39, 'x') + "東", 40), std::string(39, 'x') + "...");
    EXPECT_EQ(printable(std::string(40, '\n'), 40).size(), 80U)
        << "the limit is that of the text, not of its escapes";
}

TEST(AsciiLowerCaseTest, OnlyTheLettersAToZChange)
{
    EXPECT_EQ(asciiLowerCase("@AZ[`az{09\xC3\x84"), "@az[`az{09\xC3\x84");
    EXPECT_EQ(asciiLowerCase('Q'), 'q');
}

} // namespace companion::testing
