// Recordings of touches: any text as a recording, and any datagrams through a recording and back.
#include "cli/TouchRecording.h"
#include "simulator/Recording.h"
#include "tests/fuzz/Require.h"

#include <algorithm>
#include <sstream>

using namespace companion;
using simulator::Gesture;

namespace {

/// A datagram for each line of the input, one every 7 ms.
void checkRoundTrip(std::string_view input)
{
    std::ostringstream text;
    cli::TouchRecording recording(text, input.substr(0, input.find('\n')));
    std::vector<std::string> datagrams;
    cli::TouchRecording::TimePoint now{};
    for (std::string_view rest = input; !rest.empty(); now += std::chrono::milliseconds(7)) {
        const std::size_t length = std::min(rest.find('\n'), rest.size());
        datagrams.emplace_back(rest.substr(0, length));
        recording.take(datagrams.back(), now);
        rest.remove_prefix(std::min(length + 1, rest.size()));
    }
    const auto read = simulator::parseRecording(text.str());
    if (datagrams.empty())
        return require(std::holds_alternative<std::string>(read));
    const auto& steps = std::get<Gesture>(read);
    require(steps.size() == datagrams.size());
    for (std::size_t i = 0; i < steps.size(); ++i) {
        require(!steps[i].isTouch && steps[i].bytes == datagrams[i]);
        require(steps[i].pause.count() == (i == 0 ? 0 : 7));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size)
{
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const auto read = simulator::parseRecording(input);
    if (const auto* steps = std::get_if<Gesture>(&read)) {
        require(!steps->empty() && steps->front().pause.count() == 0);
        for (const auto& step : *steps)
            require(step.pause.count() >= 0 && step.bytes.size() <= simulator::maxDatagram);
    } else {
        require(std::get<std::string>(read).find('\n') == std::string::npos);
    }
    checkRoundTrip(input);
    return 0;
}
