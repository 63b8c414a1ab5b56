#include "cli/Check.h"

#include <algorithm>

namespace companion::cli {

namespace {

std::size_t countOf(const std::vector<Check>& checks, Mark mark)
{
    return static_cast<std::size_t>(
        std::count_if(checks.begin(), checks.end(), [&](const Check& check) { return check.mark == mark; }));
}

} // namespace

std::string markText(Mark mark)
{
    switch (mark) {
    case Mark::ok:
        return "ok";
    case Mark::warn:
        return "warn";
    case Mark::fail:
        return "fail";
    }
    return "";
}

std::string checkLine(const Check& check)
{
    return check.name + ": " + check.found + (check.advice.empty() ? "" : " - " + check.advice);
}

JsonObject checkJson(const Check& check)
{
    JsonObject json;
    json.add("check", check.name).add("mark", markText(check.mark)).add("found", check.found);
    return check.advice.empty() ? json.addNull("advice") : json.add("advice", check.advice);
}

std::string summaryText(const std::vector<Check>& checks)
{
    const std::size_t warnings = countOf(checks, Mark::warn);
    return std::to_string(checks.size()) + " checks: " + std::to_string(countOf(checks, Mark::ok)) + " ok, "
        + std::to_string(warnings) + (warnings == 1 ? " warning, " : " warnings, ")
        + std::to_string(countOf(checks, Mark::fail)) + " failed";
}

} // namespace companion::cli
