#pragma once

#include "platform/HttpSession.h"

#include <optional>
#include <string>
#include <string_view>

namespace companion {

/// What makes the request one that cannot be put on the wire as it stands, or nothing: a method or a field name
/// that is no token, a field value with a line break or a NUL in it (it would become fields of its own).
std::optional<std::string> faultOf(const HttpRequest& request);

/// Field names differ in more than case.
bool isSameFieldName(std::string_view a, std::string_view b);

} // namespace companion
