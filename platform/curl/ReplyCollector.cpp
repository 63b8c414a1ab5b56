#include "platform/curl/ReplyCollector.h"

#include <charconv>

namespace companion {

namespace {

std::string_view trimmed(std::string_view text)
{
    constexpr std::string_view blanks = " \t\r\n";
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

} // namespace

bool ReplyCollector::takeHeaderLine(std::string_view line)
{
    if (hasFinalHeaders())
        return true;
    m_headerBytes += line.size();
    if (m_headerBytes > maximumHeaders)
        return false;
    if (line.starts_with("HTTP/") && (m_statusCode == 0 || m_isComplete))
        takeStatusLine(line);
    else if (trimmed(line).empty())
        m_isComplete = true;
    else
        takeField(line);
    return true;
}

bool ReplyCollector::takeBody(std::string_view piece)
{
    if (piece.size() > maximumBody - m_body.size())
        return false;
    m_body.append(piece);
    return true;
}

/// "HTTP/1.1 200 OK" (RFC 9112, section 4).
void ReplyCollector::takeStatusLine(std::string_view line)
{
    m_headers.clear();
    m_isComplete = false;
    m_statusCode = 0;
    const std::size_t blank = line.find(' ');
    if (blank == std::string_view::npos)
        return;
    const std::string_view code = trimmed(line.substr(blank));
    std::from_chars(code.data(), code.data() + code.size(), m_statusCode);
}

void ReplyCollector::takeField(std::string_view line)
{
    const bool continuesLast = line.front() == ' ' || line.front() == '\t'; // RFC 9112, section 5.2
    if (continuesLast && !m_headers.empty()) {
        m_headers.back().value += ' ';
        m_headers.back().value += trimmed(line);
        return;
    }
    const std::size_t colon = line.find(':');
    if (colon == std::string_view::npos)
        return;
    m_headers.push_back(
        {std::string(trimmed(line.substr(0, colon))), std::string(trimmed(line.substr(colon + 1)))});
}

} // namespace companion
