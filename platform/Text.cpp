#include "platform/Text.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <utility>

namespace companion {

namespace {

bool isBetween(unsigned char byte, unsigned char first, unsigned char last)
{
    return byte >= first && byte <= last;
}

/// What may follow a lead byte: how many bytes in all, and the narrowed range of the second one.
struct SequenceForm {
    std::size_t length = 0; ///< 0 for a byte that starts no sequence.
    unsigned char secondFirst = 0x80;
    unsigned char secondLast = 0xBF;
};

/// The rows of the syntax of RFC 3629, section 4, for sequences of two bytes and more.
SequenceForm formAfter(unsigned char lead)
{
    if (isBetween(lead, 0xC2, 0xDF))
        return {2};
    if (isBetween(lead, 0xE0, 0xEF))
        return {3, static_cast<unsigned char>(lead == 0xE0 ? 0xA0 : 0x80),
            static_cast<unsigned char>(lead == 0xED ? 0x9F : 0xBF)};
    if (isBetween(lead, 0xF0, 0xF4))
        return {4, static_cast<unsigned char>(lead == 0xF0 ? 0x90 : 0x80),
            static_cast<unsigned char>(lead == 0xF4 ? 0x8F : 0xBF)};
    return {};
}

/// What a text starts with that is not ASCII.
struct Sequence {
    std::size_t length = 1; ///< As far as it is well-formed; a byte that starts nothing counts as well.
    bool isComplete = false;
};

Sequence sequenceAtStart(std::string_view text)
{
    const auto byteAt = [text](std::size_t index) { return static_cast<unsigned char>(text[index]); };
    const SequenceForm form = formAfter(byteAt(0));
    std::size_t length = 1;
    while (length < form.length && length < text.size()) {
        const bool fits = length == 1 ? isBetween(byteAt(1), form.secondFirst, form.secondLast)
                                      : isBetween(byteAt(length), 0x80, 0xBF);
        if (!fits)
            break;
        ++length;
    }
    return {length, length == form.length};
}

bool isAsciiBlock(const char* bytes)
{
    std::uint64_t block = 0;
    std::memcpy(&block, bytes, sizeof block);
    return (block & 0x8080808080808080) == 0;
}

/// The first byte from `begin` on that is not ASCII; eight are looked at together as long as there are eight.
const char* skipAscii(const char* begin, const char* end)
{
    while (end - begin >= 8 && isAsciiBlock(begin))
        begin += 8;
    while (begin != end && static_cast<unsigned char>(*begin) < 0x80)
        ++begin;
    return begin;
}

/// A well-formed sequence, or the one byte that starts none.
std::string_view takeCharacter(std::string_view& text)
{
    const bool isAscii = static_cast<unsigned char>(text.front()) < 0x80;
    const Sequence sequence = isAscii ? Sequence{1, true} : sequenceAtStart(text);
    const std::string_view character = text.substr(0, sequence.isComplete ? sequence.length : 1);
    text.remove_prefix(character.size());
    return character;
}

char32_t codePointOf(std::string_view wellFormedSequence)
{
    constexpr std::array<unsigned char, 5> leadBits{0, 0x7F, 0x1F, 0x0F, 0x07};
    char32_t codePoint =
        static_cast<unsigned char>(wellFormedSequence.front()) & leadBits[wellFormedSequence.size()];
    for (const char c : wellFormedSequence.substr(1))
        codePoint = codePoint << 6 | (static_cast<unsigned char>(c) & 0x3F);
    return codePoint;
}

bool isControl(char32_t c)
{
    return (c < 0x20 && c != '\t') || (c >= 0x7F && c <= 0x9F);
}

bool isBidirectionalControl(char32_t c)
{
    return c == 0x061C || c == 0x200E || c == 0x200F || (c >= 0x202A && c <= 0x202E)
        || (c >= 0x2066 && c <= 0x2069);
}

std::string escaped(char32_t c)
{
    if (c == '\n')
        return "\\n";
    if (c == '\r')
        return "\\r";
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text = c < 0x100 ? "\\x" : "\\u";
    for (int shift = c < 0x100 ? 4 : 12; shift >= 0; shift -= 4)
        text += digits[(c >> shift) & 0xF];
    return text;
}

void appendPrintable(std::string& text, std::string_view character)
{
    const auto first = static_cast<unsigned char>(character.front());
    const bool isLoneByte = character.size() == 1 && first >= 0x80;
    const char32_t codePoint = isLoneByte ? first : codePointOf(character);
    if (isLoneByte || isControl(codePoint) || isBidirectionalControl(codePoint))
        text += escaped(codePoint);
    else
        text += character;
}

} // namespace

bool isValidUtf8(std::string_view text)
{
    const char* const end = text.data() + text.size();
    const char* position = skipAscii(text.data(), end);
    while (position != end) {
        const Sequence sequence = sequenceAtStart({position, static_cast<std::size_t>(end - position)});
        if (!sequence.isComplete)
            return false;
        position = skipAscii(position + sequence.length, end);
    }
    return true;
}

std::string lenientUtf8(std::string_view text)
{
    constexpr std::string_view replacementCharacter = "\xEF\xBF\xBD";
    const char* const end = text.data() + text.size();
    std::string decoded;
    const char* position = text.data();
    while (position != end) {
        const char* const ascii = std::exchange(position, skipAscii(position, end));
        decoded.append(ascii, position);
        if (position == end)
            break;
        const Sequence sequence = sequenceAtStart({position, static_cast<std::size_t>(end - position)});
        decoded += sequence.isComplete ? std::string_view(position, sequence.length) : replacementCharacter;
        position += sequence.length;
    }
    return decoded;
}

std::string_view cutAtCharacter(std::string_view text, std::size_t maxBytes)
{
    if (text.size() <= maxBytes)
        return text;
    while (maxBytes > 0 && isBetween(static_cast<unsigned char>(text[maxBytes]), 0x80, 0xBF))
        --maxBytes;
    return text.substr(0, maxBytes);
}

std::string printable(std::string_view text, std::size_t maxBytes)
{
    std::string result;
    std::string_view left = cutAtCharacter(text, maxBytes);
    const bool isCut = left.size() < text.size();
    while (!left.empty())
        appendPrintable(result, takeCharacter(left));
    return isCut ? result + "..." : result;
}

std::string asciiLowerCase(std::string_view text)
{
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(), [](char c) { return asciiLowerCase(c); });
    return result;
}

} // namespace companion
