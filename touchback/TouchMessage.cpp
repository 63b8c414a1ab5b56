#include "touchback/TouchMessage.h"

#include "platform/Utf8.h"

namespace companion {

namespace {

/// Takes the text up to the next comma, and the comma, off the front of `record`; false when there is no comma.
/// Fields are so short that a loop is faster than a library search.
bool takeField(std::string_view& record, std::string_view& field)
{
    for (std::size_t index = 0; index < record.size(); ++index) {
        if (record[index] == ',') {
            field = record.substr(0, index);
            record.remove_prefix(index + 1);
            return true;
        }
    }
    return false;
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
