#include "platform/Utf8.h"

#include <cstddef>
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

} // namespace companion
