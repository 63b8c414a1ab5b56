#include "platform/curl/UrlText.h"

#include <cstring>
#include <curl/curl.h>
#include <memory>
#include <string_view>

namespace companion {

namespace {

bool isHexDigit(char c)
{
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

bool isAsciiLetterOrDigit(char c)
{
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

/// RFC 3986, section 2: unreserved, reserved and percent-encoded characters.
bool hasUrlCharactersOnly(std::string_view text)
{
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '%') {
            if (i + 2 >= text.size() || !isHexDigit(text[i + 1]) || !isHexDigit(text[i + 2]))
                return false;
        } else if (c == '\0' || (!isAsciiLetterOrDigit(c) && !std::strchr("-._~:/?#[]@!$&'()*+,;=", c))) {
            return false;
        }
    }
    return true;
}

/// libcurl's parser takes "http:/host" and "http:///host" for "http://host".
bool hasTwoSlashesAfterScheme(std::string_view text)
{
    const std::size_t colon = text.find(':');
    return colon != std::string_view::npos && text.substr(colon, 3) == "://"
        && text.substr(colon + 3, 1) != "/";
}

} // namespace

bool isUrlText(const std::string& text)
{
    if (!hasUrlCharactersOnly(text) || !hasTwoSlashesAfterScheme(text))
        return false;
    const std::unique_ptr<CURLU, decltype(&curl_url_cleanup)> url(curl_url(), &curl_url_cleanup);
    return url && curl_url_set(url.get(), CURLUPART_URL, text.c_str(), 0) == CURLUE_OK;
}

} // namespace companion
