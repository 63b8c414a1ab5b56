#include "simulator/Text.h"

#include "platform/Text.h"

#include <charconv>

namespace companion::simulator {

namespace {

constexpr std::string_view digits = "0123456789";

bool isControl(char byte)
{
    return static_cast<unsigned char>(byte) < 0x20 || byte == 0x7F;
}

/// U+0080 to U+009F are C2 80 to C2 9F in UTF-8; a terminal takes some of them for the start of a command.
bool beginsC1Control(std::string_view text)
{
    return text.size() >= 2 && text[0] == '\xC2' && static_cast<unsigned char>(text[1]) < 0xA0;
}

bool isDigits(std::string_view text)
{
    return !text.empty() && text.find_first_not_of(digits) == std::string_view::npos;
}

} // namespace

std::string replaceControls(std::string_view text)
{
    const bool isText = isValidUtf8(text);
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isOfTwoBytes = isText && beginsC1Control(text.substr(i));
        if (isOfTwoBytes || isControl(text[i]) || (!isText && static_cast<unsigned char>(text[i]) >= 0x80))
            result += '?';
        else
            result += text[i];
        i += isOfTwoBytes;
    }
    return result;
}

std::optional<std::string> readLines(std::string_view text, const LineReader& read)
{
    int number = 0;
    do {
        const auto end = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, end);
        if (line.ends_with('\r'))
            line.remove_suffix(1);
        if (const auto problem = read(line, ++number))
            return "line " + std::to_string(number) + ": " + *problem;
        text.remove_prefix(std::min(end + 1, text.size()));
    } while (!text.empty());
    return std::nullopt;
}

std::vector<std::string_view> words(std::string_view text)
{
    constexpr std::string_view blanks = " \t";
    std::vector<std::string_view> result;
    for (auto start = text.find_first_not_of(blanks); start != std::string_view::npos;) {
        const auto end = std::min(text.find_first_of(blanks, start), text.size());
        result.push_back(text.substr(start, end - start));
        start = text.find_first_not_of(blanks, end);
    }
    return result;
}

bool isDecimalNumber(std::string_view text)
{
    if (text.substr(0, 1) == "-")
        text.remove_prefix(1);
    const auto point = text.find('.');
    if (point == std::string_view::npos)
        return isDigits(text);
    return isDigits(text.substr(0, point)) && isDigits(text.substr(point + 1));
}

std::optional<std::uint64_t> parseCount(std::string_view text, std::uint64_t maximum)
{
    std::uint64_t value = 0;
    if (!isDigits(text) || std::from_chars(text.data(), text.data() + text.size(), value).ec != std::errc())
        return std::nullopt;
    return value <= maximum ? std::optional(value) : std::nullopt;
}

} // namespace companion::simulator
