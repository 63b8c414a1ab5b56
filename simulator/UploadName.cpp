#include "simulator/UploadName.h"

#include "platform/Text.h"
#include "simulator/Text.h"

#include <utility>

namespace companion::simulator {

namespace {

constexpr std::size_t maxBytes = 200;
constexpr std::size_t maxExtensionBytes = 20;

/// Stem, and extension with its "."; what is too long to be an extension belongs to the stem.
std::pair<std::string, std::string> split(const std::string& name)
{
    const auto dot = name.rfind('.');
    if (dot == std::string::npos || dot == 0 || name.size() - dot > maxExtensionBytes)
        return {name, ""};
    return {name.substr(0, dot), name.substr(dot)};
}

} // namespace

std::string safeFileName(std::string_view offered)
{
    if (const auto separator = offered.find_last_of("/\\"); separator != std::string_view::npos)
        offered.remove_prefix(separator + 1);
    std::string name = replaceControls(offered);
    if (name.empty())
        return "upload";
    if (name.front() == '.')
        name.insert(0, "_");
    const auto [stem, extension] = split(name);
    return std::string(cutAtCharacter(stem, maxBytes - extension.size())) + extension;
}

std::string numberedFileName(const std::string& name, unsigned number)
{
    if (number <= 1)
        return name;
    const auto [stem, extension] = split(name);
    return stem + " (" + std::to_string(number) + ")" + extension;
}

} // namespace companion::simulator
