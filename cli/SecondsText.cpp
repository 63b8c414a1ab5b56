#include "cli/SecondsText.h"

namespace companion::cli {

std::string secondsText(std::chrono::milliseconds time)
{
    std::string text = std::to_string(time.count() / 1000);
    std::string decimals = std::to_string(1000 + time.count() % 1000).substr(1);
    while (!decimals.empty() && decimals.back() == '0')
        decimals.pop_back();
    return text + (decimals.empty() ? "" : "." + decimals) + " s";
}

} // namespace companion::cli
