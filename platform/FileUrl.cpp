#include "platform/FileUrl.h"

#include "platform/Text.h"

#include <string_view>
#include <utility>

namespace companion {

namespace {

constexpr std::string_view hexDigits = "0123456789ABCDEF";

int hexValue(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    const char lower = asciiLowerCase(c);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

/// The byte that a percent sign and two hexadecimal digits at the front of `text` stand for, -1 for none.
int encodedByte(std::string_view text)
{
    if (text.size() < 3)
        return -1;
    const int high = hexValue(text[1]);
    const int low = hexValue(text[2]);
    return high < 0 || low < 0 ? -1 : high * 16 + low;
}

std::optional<std::string> percentDecoded(std::string_view text)
{
    std::string decoded;
    while (!text.empty()) {
        const bool isEncoded = text.front() == '%';
        const int byte = isEncoded ? encodedByte(text) : static_cast<unsigned char>(text.front());
        if (byte <= 0) // no file name holds a NUL
            return std::nullopt;
        decoded += static_cast<char>(byte);
        text.remove_prefix(isEncoded ? 3 : 1);
    }
    return decoded;
}

/// Whether the byte stands for itself in a path: the "pchar" of RFC 3986, and the slash.
bool isPlainInPath(char c)
{
    const char lower = asciiLowerCase(c);
    return (lower >= 'a' && lower <= 'z') || (c >= '0' && c <= '9')
        || std::string_view("/-._~!$&'()*+,;=:@").find(c) != std::string_view::npos;
}

std::string percentEncoded(std::string_view path)
{
    std::string encoded;
    for (const char c : path) {
        if (isPlainInPath(c)) {
            encoded += c;
            continue;
        }
        const auto byte = static_cast<unsigned char>(c);
        encoded += {'%', hexDigits[byte >> 4], hexDigits[byte & 0xF]};
    }
    return encoded;
}

/// What follows "file:", without query and fragment.
std::optional<std::string_view> hierarchicalPart(std::string_view text)
{
    constexpr std::string_view scheme = "file:";
    if (asciiLowerCase(text.substr(0, scheme.size())) != scheme)
        return std::nullopt;
    text.remove_prefix(scheme.size());
    return text.substr(0, text.find_first_of("?#"));
}

/// Removes a host that is this computer; any other one stays, so that no absolute path follows.
std::string_view withoutHost(std::string_view part)
{
    if (!part.starts_with("//"))
        return part;
    const std::string_view hostAndPath = part.substr(2);
    const std::string_view host = hostAndPath.substr(0, hostAndPath.find('/'));
    return host.empty() || asciiLowerCase(host) == "localhost" ? hostAndPath.substr(host.size())
                                                               : hostAndPath;
}

} // namespace

FileUrl::FileUrl(std::string text, std::string path)
    : m_text(std::move(text))
    , m_path(std::move(path))
{
}

std::optional<FileUrl> FileUrl::fromText(const std::string& text)
{
    const std::optional<std::string_view> part = hierarchicalPart(text);
    if (!part)
        return std::nullopt;
    const std::string_view encodedPath = withoutHost(*part);
    std::optional<std::string> path = percentDecoded(encodedPath);
    if (!encodedPath.starts_with('/') || !path)
        return std::nullopt;
    return FileUrl(text, std::move(*path));
}

FileUrl FileUrl::fromPath(const std::string& path)
{
    return {"file://" + percentEncoded(path), path};
}

std::string FileUrl::lastPathComponent() const
{
    const std::size_t end = m_path.find_last_not_of('/');
    if (end == std::string::npos)
        return "/";
    const std::size_t slash = m_path.rfind('/', end);
    return lenientUtf8(std::string_view(m_path).substr(slash + 1, end - slash));
}

} // namespace companion
