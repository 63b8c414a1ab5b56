#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace companion {

/// The 122 bits that are chosen at random, and six more that are not looked at.
using UuidBytes = std::array<std::uint8_t, 16>;

/// The version 4 UUID of RFC 9562, section 5.4, with these random bits: 36 characters in upper case. Any thread.
std::string uuidText(UuidBytes randomBytes);

/// A new one from the system's random numbers.
std::string makeUuid();

} // namespace companion
