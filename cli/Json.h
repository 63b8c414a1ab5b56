#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace companion::cli {

/// `text` as a JSON string (RFC 8259) with its quotation marks; what is no UTF-8 becomes U+FFFD.
std::string jsonText(std::string_view text);

/// A number as short as it can be told; "null" for one that JSON has no word for.
std::string jsonNumber(double number);

/// `values` are JSON already.
std::string jsonArray(const std::vector<std::string>& values);

/// Puts a JSON object together on one line, members in the order in which they are added.
class JsonObject {
public:
    JsonObject& add(std::string_view name, std::string_view text) { return addJson(name, jsonText(text)); }
    JsonObject& addNumber(std::string_view name, double number) { return addJson(name, jsonNumber(number)); }
    JsonObject& addFlag(std::string_view name, bool flag) { return addJson(name, flag ? "true" : "false"); }
    JsonObject& addNull(std::string_view name) { return addJson(name, "null"); }

    /// `json` is JSON already.
    JsonObject& addJson(std::string_view name, std::string_view json);

    /// The members of `other` behind these.
    JsonObject& addMembers(const JsonObject& other);

    std::string text() const { return "{" + m_members + "}"; }

private:
    std::string m_members;
};

} // namespace companion::cli
