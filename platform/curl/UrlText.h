#pragma once

#include <string>

namespace companion {

/// Whether `text` is a URL as it stands, with a scheme, a host and nothing but the characters of RFC 3986: a blank,
/// a control character, a stray "%" or a letter beyond ASCII makes it none. Any thread.
bool isUrlText(const std::string& text);

} // namespace companion
