#include "touchback/TouchMessage.h"

#include "platform/Text.h"

#include <algorithm>

namespace companion {

namespace {

/// Takes the text up to the next comma, and the comma, off the front of `record`; false when there is no comma.
bool takeField(std::string_view& record, std::string_view& field)
{
    // Fields are so short that this loop is faster than the text's own search.
    const auto comma = std::find(record.begin(), record.end(), ',');
    if (comma == record.end())
        return false;
    field = std::string_view(record.begin(), comma);
    record = std::string_view(comma + 1, record.end());
    return true;
}

} // namespace

std::optional<TouchMessage> parseTouchMessage(std::string_view datagram)
{
    TouchMessage message;
    if (!isValidUtf8(datagram))
        return message;

    std::string_view record = datagram.substr(0, datagram.find(';'));
    if (!takeField(record, message.event) || !takeField(record, message.xCoordinate)
        || !takeField(record, message.yCoordinate))
        return std::nullopt;
    message.timeStamp = record.substr(0, record.find(','));
    return message;
}

} // namespace companion
