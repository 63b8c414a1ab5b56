#include "platform/curl/RequestCheck.h"

#include "platform/curl/UrlText.h"
#include "platform/Text.h"

#include <algorithm>

namespace companion {

namespace {

/// RFC 9110, section 5.6.2.
bool isToken(std::string_view text)
{
    constexpr std::string_view others = "!#$%&'*+-.^_`|~";
    return !text.empty() && std::all_of(text.begin(), text.end(), [&](char c) {
        const char lower = asciiLowerCase(c);
        return (lower >= 'a' && lower <= 'z') || (c >= '0' && c <= '9') || others.find(c) != others.npos;
    });
}

} // namespace

std::optional<std::string> faultOf(const HttpRequest& request)
{
    if (!isUrlText(request.url.text))
        return "the URL is not valid";
    if (!isToken(request.method))
        return "the method is not a word";
    for (const HttpHeader& header : request.headers) {
        if (!isToken(header.name))
            return "a header field's name is not a word";
        if (header.value.find_first_of(std::string_view("\r\n\0", 3)) != std::string::npos)
            return "the header field \"" + header.name + "\" holds a line break or a NUL";
    }
    return std::nullopt;
}

bool isSameFieldName(std::string_view a, std::string_view b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
        [](char x, char y) { return asciiLowerCase(x) == asciiLowerCase(y); });
}

} // namespace companion
