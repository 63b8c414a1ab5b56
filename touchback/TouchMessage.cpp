#include "touchback/TouchMessage.h"

#include "platform/Utf8.h"

namespace companion {

namespace {

/// Takes the text up to the next comma, and the comma, off the front; nothing when there is no comma.
std::optional<std::string_view> takeField(std::string_view& record)
{
    const std::size_t comma = record.find(',');
    if (comma == std::string_view::npos)
        return std::nullopt;
    const std::string_view field = record.substr(0, comma);
    record.remove_prefix(comma + 1);
    return field;
}

} // namespace

std::optional<TouchMessage> parseTouchMessage(std::string_view datagram)
{
    if (!isValidUtf8(datagram))
        return TouchMessage{};

    std::string_view record = datagram.substr(0, datagram.find(';'));
    const auto event = takeField(record);
    const auto x = takeField(record);
    const auto y = takeField(record);
    if (!event || !x || !y)
        return std::nullopt;
    return TouchMessage{*event, *x, *y, record.substr(0, record.find(','))};
}

} // namespace companion
