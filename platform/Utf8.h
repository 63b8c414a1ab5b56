#pragma once

#include <string_view>

namespace companion {

/// Whether `text` is UTF-8 from end to end, strictly as in RFC 3629: no overlong forms, no surrogates, nothing
/// beyond U+10FFFF. Any thread; allocates nothing.
bool isValidUtf8(std::string_view text);

} // namespace companion
