#include "simulator/RequestOrigin.h"

#include <algorithm>
#include <arpa/inet.h>
#include <string_view>

namespace companion::simulator {

namespace {

std::string lowerCase(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
        [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return text;
}

/// An address, a name without a dot, or one of multicast DNS (RFC 6762): only the local network gives these.
bool isLocalName(const std::string& name)
{
    in_addr address{};
    return inet_pton(AF_INET, name.c_str(), &address) == 1 || name.find('.') == std::string::npos
        || name.ends_with(".local") || name.ends_with(".localhost");
}

} // namespace

std::optional<std::string> foreignOrigin(
    const std::optional<std::string>& host, const std::optional<std::string>& origin)
{
    const std::string where = lowerCase(host.value_or(""));
    if (!isLocalName(where.substr(0, where.find(':'))))
        return "open the panel by its address, not by a name of the Internet";
    if (origin && lowerCase(*origin) != "http://" + where)
        return "only the panel's own page may ask for this";
    return std::nullopt;
}

} // namespace companion::simulator
