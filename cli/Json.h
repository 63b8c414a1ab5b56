#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace companion::cli {

/// Members keep the order in which they are added.
using Json = nlohmann::ordered_json;

/// A whole number without a decimal point; null for one that JSON has no word for.
Json jsonNumber(double number);

/// On one line, safe to show on a terminal; U+FFFD stands for what is not UTF-8. Never fails.
std::string jsonText(const Json& json);

} // namespace companion::cli
