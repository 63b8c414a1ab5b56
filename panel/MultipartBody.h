#pragma once

#include "platform/FileReader.h"
#include "platform/HttpSession.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace companion {

/// Names and values in the order in which they are sent.
using TextFields = std::vector<std::pair<std::string, std::string>>;

/// Appends the text; appends nothing when it is not UTF-8.
void appendString(std::string& bytes, std::string_view text);

/// A "multipart/form-data" body (RFC 7578) with the text fields and one file. Names and content type are inserted as
/// they stand, quotes included. The file's bytes are a piece of their own, shared and never copied. Any thread.
HttpBody makeMultipartBody(const TextFields& textFields, const FileBytes& fileBytes,
    std::string_view fieldName, std::string_view fileName, std::string_view boundary,
    std::string_view contentType);

} // namespace companion
