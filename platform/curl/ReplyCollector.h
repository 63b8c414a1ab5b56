#pragma once

#include "platform/HttpSession.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace companion {

/// Puts together one HTTP reply from header lines and pieces of body, in bounded memory.
///
/// Interim responses (1xx) come before the final one and are forgotten; trailer fields are left out. A 101 is final:
/// after it the connection would speak another protocol (RFC 9110, section 15.2.2), for which nobody here has asked.
class ReplyCollector {
public:
    static constexpr std::size_t maximumBody = 16 << 20;
    static constexpr std::size_t maximumHeaders = 256 << 10;

    /// One line with its line end, the empty one that ends the header section included. False when the fields are
    /// more than `maximumHeaders` bytes.
    bool takeHeaderLine(std::string_view line);

    /// False when the body would be more than `maximumBody` bytes.
    bool takeBody(std::string_view piece);

    /// Whether the final response's header section came to its end.
    bool hasFinalHeaders() const { return isSwitchingProtocols() || (m_isComplete && m_statusCode >= 200); }

    /// Whether the final response is a 101.
    bool isSwitchingProtocols() const { return m_isComplete && m_statusCode == 101; }

    int statusCode() const { return m_statusCode; }
    const std::vector<HttpHeader>& headers() const { return m_headers; }
    const std::string& body() const { return m_body; }
    std::string takeBodyOut() { return std::move(m_body); }

private:
    void takeStatusLine(std::string_view line);
    void takeField(std::string_view line);

    int m_statusCode = 0;
    bool m_isComplete = false;
    std::size_t m_headerBytes = 0;
    std::vector<HttpHeader> m_headers;
    std::string m_body;
};

} // namespace companion
