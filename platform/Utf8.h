#pragma once

#include <string>
#include <string_view>

namespace companion {

/// Whether `text` is UTF-8 from end to end, strictly as in RFC 3629: no overlong forms, no surrogates, nothing
/// beyond U+10FFFF. Any thread; allocates nothing.
bool isValidUtf8(std::string_view text);

/// `text` with U+FFFD in place of what is no UTF-8: one for each byte that starts nothing, one for each sequence that
/// breaks off (the "maximal subpart" of the Unicode Standard, section 3.9, as in the WHATWG Encoding Standard).
/// Never fails. Any thread.
std::string lenientUtf8(std::string_view text);

} // namespace companion
