#include "platform/HttpSession.h"

namespace companion {

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
