#pragma once

#include "cli/Json.h"
#include "cli/Output.h"

#include <string>
#include <vector>

namespace companion::cli {

/// One thing that `doctor` looked at.
struct Check {
    std::string name; ///< A few words: "network interface".
    Mark mark = Mark::ok;
    std::string found;
    std::string advice; ///< What to do; "" when there is nothing to be done.
};

/// "ok", "warn" or "fail".
std::string markText(Mark mark);

/// "network interface: eth0 has no IPv4 address - connect it to the network": all but the mark.
std::string checkLine(const Check& check);

JsonObject checkJson(const Check& check);

/// "8 checks: 6 ok, 1 warning, 1 failed".
std::string summaryText(const std::vector<Check>& checks);

} // namespace companion::cli
