#include "simulator/BrowserSafety.h"

#include "platform/Text.h"

#include <arpa/inet.h>

namespace companion::simulator {

namespace {

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
    const std::string where = asciiLowerCase(host.value_or(""));
    if (!isLocalName(where.substr(0, where.find(':'))))
        return "open the panel by its address, not by a name of the Internet";
    if (origin && asciiLowerCase(*origin) != "http://" + where)
        return "only the panel's own page may ask for this";
    return std::nullopt;
}

std::string_view pictureType(std::string_view firstBytes)
{
    if (firstBytes.starts_with("\x89PNG\r\n\x1A\n"))
        return "image/png";
    if (firstBytes.starts_with("\xFF\xD8\xFF"))
        return "image/jpeg";
    if (firstBytes.starts_with("GIF87a") || firstBytes.starts_with("GIF89a"))
        return "image/gif";
    if (firstBytes.starts_with("RIFF")
        && firstBytes.substr(8 < firstBytes.size() ? 8 : firstBytes.size()).starts_with("WEBP"))
        return "image/webp";
    // "BM" alone begins many a text; a bitmap goes on with its size and four bytes that are zero.
    if (firstBytes.starts_with("BM") && firstBytes.size() >= 10
        && firstBytes.substr(6, 4) == std::string_view("\0\0\0\0", 4))
        return "image/bmp";
    return "";
}

} // namespace companion::simulator
