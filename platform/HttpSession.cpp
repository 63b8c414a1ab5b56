#include "platform/HttpSession.h"

#include <algorithm>
#include <charconv>
#include <string_view>

namespace companion {

namespace {

constexpr std::string_view scheme = "http://";

bool isOneOf(std::string_view characters, char c)
{
    return characters.find(c) != std::string_view::npos;
}

bool isHexDigit(char c)
{
    return isOneOf("0123456789ABCDEFabcdef", c);
}

/// RFC 3986, section 2.3.
bool isUnreserved(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || isOneOf("-._~", c);
}

/// RFC 3986, section 2: unreserved, reserved and percent-encoded characters.
bool hasUrlCharactersOnly(std::string_view text)
{
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%') {
            if (i + 2 >= text.size() || !isHexDigit(text[i + 1]) || !isHexDigit(text[i + 2]))
                return false;
        } else if (!isUnreserved(text[i]) && !isOneOf(":/?#[]@!$&'()*+,;=", text[i])) {
            return false;
        }
    }
    return true;
}

bool isPort(std::string_view text)
{
    std::uint16_t port = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
    return error == std::errc() && end == text.data() + text.size();
}

/// A host name or IPv4 address, with or without a port.
bool isAuthority(std::string_view text)
{
    const std::size_t colon = text.find(':');
    const std::string_view host = text.substr(0, colon);
    return !host.empty() && std::all_of(host.begin(), host.end(), isUnreserved)
        && (colon == std::string_view::npos || isPort(text.substr(colon + 1)));
}

} // namespace

std::optional<Url> urlFromText(const std::string& text)
{
    if (!text.starts_with(scheme) || !hasUrlCharactersOnly(text))
        return std::nullopt;
    const std::string_view rest = std::string_view(text).substr(scheme.size());
    if (!isAuthority(rest.substr(0, rest.find_first_of("/?#"))))
        return std::nullopt;
    return Url{text};
}

std::string UrlResponse::description() const
{
    std::string text = "<Response " + url.text + ">";
    if (!statusCode)
        return text;
    text += " { Status Code: " + std::to_string(*statusCode) + ", Headers {";
    const char* separator = " ";
    for (const HttpHeader& header : headers) {
        text += separator + header.name + " = \"" + header.value + "\"";
        separator = "; ";
    }
    return text + " } }";
}

} // namespace companion
