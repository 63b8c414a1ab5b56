#include "simulator/Gesture.h"

#include "platform/Text.h"
#include "simulator/Text.h"

#include <charconv>
#include <optional>
#include <utility>

namespace companion::simulator {

namespace {

constexpr std::uint64_t maxPauseMs = 60'000;
constexpr std::size_t maxSteps = 200'000; // half an hour at 110 touches a second

class GestureParser {
public:
    std::variant<Gesture, std::string> parse(std::string_view text)
    {
        if (auto problem = readLines(text, [this](std::string_view line, int) { return readLine(line); }))
            return *problem;
        if (m_steps.empty())
            return "no touches";
        return std::move(m_steps);
    }

private:
    using Problem = std::optional<std::string>;

    Problem readLine(std::string_view line)
    {
        const auto parts = words(line);
        if (parts.empty() || parts[0].starts_with('#'))
            return std::nullopt;
        if (parts[0] == "DOWN" || parts[0] == "MOVE" || parts[0] == "UP")
            return readTouch(parts);
        if (parts[0] == "PAUSE")
            return parts.size() == 2 ? addPause(parts[1]) : Problem("\"PAUSE ms\" is expected");
        if (line == "RAW" || line.starts_with("RAW "))
            return addDatagram(std::string(line.substr(std::min<std::size_t>(4, line.size()))));
        if (parts[0] == "HEX")
            return readHex(parts);
        return "unknown word \"" + printable(parts[0].substr(0, 20)) + "\"";
    }

    Problem readTouch(const std::vector<std::string_view>& parts)
    {
        if (parts.size() < 3 || parts.size() > 4)
            return std::string(parts[0]) + " takes x, y and perhaps a pause";
        if (!isDecimalNumber(parts[1]) || !isDecimalNumber(parts[2]))
            return "x and y must be decimal numbers";
        if (parts.size() == 4)
            if (auto problem = addPause(parts[3]))
                return problem;
        std::string record;
        for (std::size_t i = 0; i < 3; ++i)
            record.append(parts[i]).append(",");
        return addStep(/*isTouch=*/true, std::move(record));
    }

    Problem readHex(const std::vector<std::string_view>& parts)
    {
        std::string digits;
        for (std::size_t i = 1; i < parts.size(); ++i)
            digits.append(parts[i]);
        if (digits.size() % 2 != 0)
            return "HEX takes two digits for each byte";
        std::string bytes;
        for (std::size_t i = 0; i < digits.size(); i += 2) {
            unsigned char byte = 0;
            const char* const end = digits.data() + i + 2;
            if (std::from_chars(digits.data() + i, end, byte, 16).ptr != end)
                return "HEX takes hexadecimal digits";
            bytes.push_back(static_cast<char>(byte));
        }
        return addDatagram(std::move(bytes));
    }

    Problem addPause(std::string_view text)
    {
        const auto pause = parseCount(text, maxPauseMs);
        if (!pause)
            return "a pause is a whole number of milliseconds, at most " + std::to_string(maxPauseMs);
        m_pause += std::chrono::milliseconds(*pause);
        return std::nullopt;
    }

    Problem addDatagram(std::string bytes) { return addStep(/*isTouch=*/false, std::move(bytes)); }

    Problem addStep(bool isTouch, std::string bytes)
    {
        if (bytes.size() > maxDatagram)
            return "a datagram holds at most " + std::to_string(maxDatagram) + " bytes";
        if (m_steps.size() == maxSteps)
            return "a gesture has at most " + std::to_string(maxSteps) + " touches";
        m_steps.push_back({isTouch, std::move(bytes), std::exchange(m_pause, {})});
        return std::nullopt;
    }

    Gesture m_steps;
    std::chrono::milliseconds m_pause{0};
};

} // namespace

std::variant<Gesture, std::string> parseGesture(std::string_view text)
{
    return GestureParser().parse(text);
}

} // namespace companion::simulator
