#include "platform/posix/HarmlessLine.h"

namespace companion {

namespace {

std::string_view cutAtCharacter(std::string_view text, std::size_t longest)
{
    const auto isContinuation = [](char c) { return (static_cast<unsigned char>(c) & 0xc0U) == 0x80; };
    while (longest > 0 && isContinuation(text[longest]))
        --longest;
    return text.substr(0, longest);
}

bool isControl(unsigned char c)
{
    return (c < 0x20 && c != '\t') || c == 0x7f;
}

/// U+0080 to U+009F are the bytes C2 80 to C2 9F.
bool isC1Control(std::string_view text, std::size_t at)
{
    if (static_cast<unsigned char>(text[at]) != 0xc2 || at + 1 == text.size())
        return false;
    const auto next = static_cast<unsigned char>(text[at + 1]);
    return next >= 0x80 && next <= 0x9f;
}

void appendSpelledOut(std::string& text, unsigned char c)
{
    constexpr std::string_view digits = "0123456789abcdef";
    if (c == '\n') {
        text += "\\n";
    } else if (c == '\r') {
        text += "\\r";
    } else {
        text += "\\x";
        text += digits[c / 16];
        text += digits[c % 16];
    }
}

} // namespace

std::string harmlessLine(std::string_view line, std::size_t longest)
{
    const bool isTooLong = line.size() > longest;
    if (isTooLong)
        line = cutAtCharacter(line, longest);
    std::string text;
    text.reserve(line.size() + 3);
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (isControl(static_cast<unsigned char>(line[i])))
            appendSpelledOut(text, static_cast<unsigned char>(line[i]));
        else if (isC1Control(line, i))
            appendSpelledOut(text, static_cast<unsigned char>(line[++i]));
        else
            text += line[i];
    }
    if (isTooLong)
        text += "...";
    return text;
}

} // namespace companion
