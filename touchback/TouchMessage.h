#pragma once

#include <optional>
#include <string_view>

namespace companion {

/// One touch on the panel, as the texts that came: views into the datagram, valid as long as it is.
struct TouchMessage {
    std::string_view event; ///< "DOWN", "MOVE" or "UP" from a panel that behaves.
    std::string_view xCoordinate;
    std::string_view yCoordinate;
    std::string_view timeStamp;

    bool operator==(const TouchMessage&) const = default;
};

/// Cuts a datagram "EVENT,x,y,time" into its fields: ";" ends the record, and what follows it is left alone, as
/// are fields after the fourth. Nothing is trimmed. Nothing when there are fewer than four fields; four empty
/// fields when the datagram is not UTF-8, before or after the ";". Any thread; allocates nothing.
std::optional<TouchMessage> parseTouchMessage(std::string_view datagram);

} // namespace companion
