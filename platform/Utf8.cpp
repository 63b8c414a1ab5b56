#include "platform/Utf8.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

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

/// The length of the sequence of two bytes and more that `text` starts with, 0 when it is none.
std::size_t sequenceLength(std::string_view text)
{
    const auto byteAt = [text](std::size_t index) { return static_cast<unsigned char>(text[index]); };
    const SequenceForm form = formAfter(byteAt(0));
    if (form.length == 0 || text.size() < form.length)
        return 0;
    if (!isBetween(byteAt(1), form.secondFirst, form.secondLast))
        return 0;
    for (std::size_t index = 2; index < form.length; ++index) {
        if (!isBetween(byteAt(index), 0x80, 0xBF))
            return 0;
    }
    return form.length;
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
        const std::size_t length = sequenceLength({position, static_cast<std::size_t>(end - position)});
        if (length == 0)
            return false;
        position = skipAscii(position + length, end);
    }
    return true;
}

} // namespace companion
