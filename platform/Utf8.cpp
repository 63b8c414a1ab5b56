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

/// Takes the ASCII bytes off the front, eight at a time as long as there are eight.
void skipAscii(std::string_view& text)
{
    constexpr std::uint64_t highBits = 0x8080808080808080;
    std::uint64_t block = 0;
    while (text.size() >= sizeof block) {
        std::memcpy(&block, text.data(), sizeof block);
        if ((block & highBits) != 0)
            break;
        text.remove_prefix(sizeof block);
    }
    while (!text.empty() && static_cast<unsigned char>(text.front()) < 0x80)
        text.remove_prefix(1);
}

} // namespace

bool isValidUtf8(std::string_view text)
{
    for (skipAscii(text); !text.empty(); skipAscii(text)) {
        const std::size_t length = sequenceLength(text);
        if (length == 0)
            return false;
        text.remove_prefix(length);
    }
    return true;
}

} // namespace companion
