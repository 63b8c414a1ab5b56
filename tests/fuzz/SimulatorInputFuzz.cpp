// What the simulated panel reads of its control interface and of uploads.
#include "platform/Text.h"
#include "simulator/BrowserSafety.h"
#include "simulator/Gesture.h"
#include "simulator/InstanceName.h"
#include "simulator/ReplyMode.h"
#include "simulator/StrokeOrder.h"
#include "simulator/UploadFile.h"
#include "tests/fuzz/Require.h"

using namespace companion;
using namespace companion::simulator;

namespace {

void checkGesture(std::string_view text)
{
    const auto read = parseGesture(text);
    const auto* gesture = std::get_if<Gesture>(&read);
    if (!gesture) {
        require(isValidUtf8(std::get<std::string>(read)));
        return;
    }
    require(!gesture->empty());
    for (const GestureStep& step : *gesture)
        require(step.pause.count() >= 0 && step.bytes.size() <= maxDatagram);
    StrokeOrder order;
    order.played("a", 0, *gesture, {});
    if (const auto lift = order.liftBefore(0))
        require(lift->isTouch && lift->bytes.starts_with("UP,") && lift->bytes.ends_with(','));
}

/// What describes a mode sets the same one.
void checkModes(std::string_view text)
{
    if (const auto mode = ReplyMode::parse(text)) {
        const auto again = ReplyMode::parse(mode->description);
        require(again && again->kind == mode->kind && again->number == mode->number
            && again->text == mode->text && again->delay == mode->delay);
    }
    if (const auto mode = UploadMode::parse(text)) {
        const auto again = UploadMode::parse(mode->description);
        require(again && again->kind == mode->kind && again->status == mode->status);
    }
}

void checkFileName(std::string_view offered)
{
    for (const unsigned number : {1U, 2U, 9999U}) {
        const std::string name = numberedFileName(safeFileName(offered), number);
        require(!name.empty() && name.size() <= 255 && name.front() != '.');
        require(isValidUtf8(name) && name.find_first_of(std::string_view("/\\\0\n", 4)) == std::string::npos);
    }
}

void checkInstanceName(const std::string& text)
{
    const std::size_t bar = std::min(text.find('|'), text.size());
    const InstanceName name{text.substr(0, bar), text.substr(std::min(bar + 1, text.size())), "0A00020F"};
    if (name.problem())
        return;
    require(name.text().size() <= InstanceName::maxBytes);
    require(isValidUtf8(name.text(12)));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    checkGesture(text);
    checkModes(text);
    checkFileName(text);
    checkInstanceName(text);
    if (const auto hex = hexAddress(text))
        require(hex->size() == 8);
    const std::size_t half = size / 2;
    foreignOrigin(text.substr(0, half), text.substr(half));
    pictureType(text);
    return 0;
}
