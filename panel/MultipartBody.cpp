#include "panel/MultipartBody.h"

#include "platform/Text.h"

#include <initializer_list>

namespace companion {

namespace {

void appendStrings(std::string& bytes, std::initializer_list<std::string_view> texts)
{
    for (const std::string_view text : texts)
        appendString(bytes, text);
}

} // namespace

void appendString(std::string& bytes, std::string_view text)
{
    if (isValidUtf8(text))
        bytes += text;
}

HttpBody makeMultipartBody(const TextFields& textFields, const FileBytes& fileBytes,
    std::string_view fieldName, std::string_view fileName, std::string_view boundary,
    std::string_view contentType)
{
    std::string head;
    for (const auto& [name, value] : textFields) {
        appendStrings(head, {"--", boundary, "\r\n"});
        appendStrings(head, {"Content-Disposition: form-data; name=\"", name, "\"\r\n\r\n", value, "\r\n"});
    }
    appendStrings(head, {"--", boundary, "\r\n"});
    appendStrings(
        head, {"Content-Disposition: form-data; name=\"", fieldName, "\"; filename=\"", fileName, "\"\r\n"});
    appendStrings(head, {"Content-Type: ", contentType, "\r\n\r\n"});

    std::string tail;
    appendStrings(tail, {"\r\n--", boundary, "--\r\n"});
    return {sharedBytes(std::move(head)), fileBytes, sharedBytes(std::move(tail))};
}

} // namespace companion
