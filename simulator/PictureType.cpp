#include "simulator/PictureType.h"

namespace companion::simulator {

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
