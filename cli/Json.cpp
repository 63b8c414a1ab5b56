#include "cli/Json.h"

#include "platform/Text.h"

#include <array>
#include <charconv>
#include <cmath>

namespace companion::cli {

namespace {

std::string jsonEscape(unsigned char c)
{
    constexpr std::string_view digits = "0123456789abcdef";
    if (c == '\n')
        return "\\n";
    if (c == '\t')
        return "\\t";
    return std::string("\\u00") + digits[c >> 4] + digits[c & 15];
}

} // namespace

std::string jsonText(std::string_view text)
{
    std::string quoted = "\"";
    for (const char c : lenientUtf8(text)) {
        if (c == '"' || c == '\\')
            quoted += '\\';
        // DEL is no control character to JSON, but it is to a terminal.
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F)
            quoted += jsonEscape(static_cast<unsigned char>(c));
        else
            quoted += c;
    }
    return quoted + "\"";
}

std::string jsonNumber(double number)
{
    if (!std::isfinite(number))
        return "null";
    std::array<char, 32> digits{};
    const double magnitude = std::abs(number);
    const bool isHandy = magnitude == 0 || (magnitude >= 1e-6 && magnitude < 1e15);
    const auto format = isHandy ? std::chars_format::fixed : std::chars_format::scientific;
    const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), number, format);
    return {digits.data(), result.ptr};
}

std::string jsonArray(const std::vector<std::string>& values)
{
    std::string text = "[";
    const char* separator = "";
    for (const std::string& value : values) {
        text += separator + value;
        separator = ",";
    }
    return text + "]";
}

JsonObject& JsonObject::addJson(std::string_view name, std::string_view json)
{
    if (!m_members.empty())
        m_members += ',';
    m_members += jsonText(name) + ":";
    m_members += json;
    return *this;
}

JsonObject& JsonObject::addMembers(const JsonObject& other)
{
    if (!m_members.empty() && !other.m_members.empty())
        m_members += ',';
    m_members += other.m_members;
    return *this;
}

} // namespace companion::cli
