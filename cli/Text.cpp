#include "cli/Text.h"

#include <algorithm>
#include <array>

namespace companion::cli {

namespace {

constexpr std::size_t smallestBar = 10;
constexpr std::size_t longestBar = 50;

std::string percent(double share)
{
    const std::string number = std::to_string(static_cast<int>(share * 100));
    return std::string(3 - std::min<std::size_t>(3, number.size()), ' ') + number + " %";
}

std::string bar(double share, std::size_t length)
{
    const auto filled = static_cast<std::size_t>(share * static_cast<double>(length));
    std::string text(filled, '=');
    if (filled < length)
        text += '>';
    text.resize(length, ' ');
    return "[" + text + "] ";
}

} // namespace

std::string secondsText(std::chrono::milliseconds time)
{
    std::string text = std::to_string(time.count() / 1000);
    std::string decimals = std::to_string(1000 + time.count() % 1000).substr(1);
    while (!decimals.empty() && decimals.back() == '0')
        decimals.pop_back();
    return text + (decimals.empty() ? "" : "." + decimals) + " s";
}

std::string byteText(std::uint64_t bytes)
{
    if (bytes < 1000)
        return std::to_string(bytes) + (bytes == 1 ? " byte" : " bytes");
    constexpr std::array units{" kB", " MB", " GB", " TB"};
    std::uint64_t tenths = bytes / 100;
    std::size_t unit = 0;
    for (; tenths >= 10'000 && unit + 1 < units.size(); ++unit)
        tenths /= 1000;
    return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10) + units[unit];
}

std::string progressBar(std::uint64_t sent, std::uint64_t total, std::size_t width)
{
    const double share =
        total == 0 ? 1 : std::min(1.0, static_cast<double>(sent) / static_cast<double>(total));
    const std::string numbers = percent(share) + "  " + byteText(sent) + " of " + byteText(total);
    if (width < numbers.size() + smallestBar + 3)
        return numbers.substr(0, width);
    return bar(share, std::min(longestBar, width - numbers.size() - 3)) + numbers;
}

} // namespace companion::cli
