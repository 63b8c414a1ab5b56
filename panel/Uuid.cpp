#include "panel/Uuid.h"

#include <random>

namespace companion {

std::string uuidText(UuidBytes randomBytes)
{
    randomBytes[6] = static_cast<std::uint8_t>(0x40 | (randomBytes[6] & 0x0F)); // version 4
    randomBytes[8] = static_cast<std::uint8_t>(0x80 | (randomBytes[8] & 0x3F)); // the variant of RFC 9562
    std::string text;
    for (std::size_t index = 0; index < randomBytes.size(); ++index) {
        if (index == 4 || index == 6 || index == 8 || index == 10)
            text += '-';
        text += {"0123456789ABCDEF"[randomBytes[index] >> 4], "0123456789ABCDEF"[randomBytes[index] & 0xF]};
    }
    return text;
}

std::string makeUuid()
{
    std::random_device source;
    UuidBytes bytes;
    for (std::uint8_t& byte : bytes)
        byte = static_cast<std::uint8_t>(source());
    return uuidText(bytes);
}

} // namespace companion
