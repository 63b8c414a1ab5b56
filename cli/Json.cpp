#include "cli/Json.h"

#include <cmath>

namespace companion::cli {

Json jsonNumber(double number)
{
    constexpr double exactIntegers = 1e15;
    const bool isWhole = std::abs(number) < exactIntegers && std::trunc(number) == number;
    return isWhole ? Json(static_cast<std::int64_t>(number)) : Json(number);
}

std::string jsonText(const Json& json)
{
    const std::string text =
        json.dump(/*indent=*/-1, ' ', /*ensure_ascii=*/false, Json::error_handler_t::replace);
    std::string escaped;
    for (const char c : text) {
        if (c == '\x7f') // no control character to JSON, but to a terminal
            escaped += "\\u007f";
        else
            escaped += c;
    }
    return escaped;
}

} // namespace companion::cli
