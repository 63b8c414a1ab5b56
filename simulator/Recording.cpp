#include "simulator/Recording.h"

#include "simulator/Text.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>
#include <utility>

namespace companion::simulator {

namespace {

constexpr std::string_view formatName = "panel-touches";
constexpr std::string_view formatVersion = "1";
constexpr std::uint64_t maxTimeMs = 86'400'000;
constexpr std::size_t maxLine =
    std::string_view("86400000 ").size() + 4 * maxDatagram; // every byte as "\\xff"

class RecordingParser {
public:
    std::variant<Gesture, std::string> parse(std::string_view text)
    {
        const auto read = [this](std::string_view line, int number) {
            return number == 1 ? readHeader(line) : readLine(line);
        };
        if (auto problem = readLines(text, read))
            return *problem;
        if (m_steps.empty())
            return "it holds no datagrams";
        return std::move(m_steps);
    }

private:
    using Problem = std::optional<std::string>;

    static Problem readHeader(std::string_view line)
    {
        const auto blank = std::min(line.find(' '), line.size());
        if (line.substr(0, blank) != formatName)
            return "this is no recording of touches: it begins with \"panel-touches 1\"";
        if (line.substr(std::min(blank + 1, line.size())) != formatVersion)
            return "only version 1 of recordings is known";
        return std::nullopt;
    }

    Problem readLine(std::string_view line)
    {
        if (line.size() > maxLine)
            return "a line has at most " + std::to_string(maxLine) + " bytes";
        if (line.empty() || line.starts_with('#'))
            return std::nullopt;
        const auto blank = std::min(line.find(' '), line.size());
        const auto time = parseCount(line.substr(0, blank), maxTimeMs);
        if (!time)
            return "a time is a whole number of milliseconds, at most " + std::to_string(maxTimeMs);
        if (*time < m_time)
            return "the time is before that of the datagram above";
        return addDatagram(*time, line.substr(std::min(blank + 1, line.size())));
    }

    Problem addDatagram(std::uint64_t time, std::string_view escaped)
    {
        std::string bytes;
        if (auto problem = unescape(escaped, bytes))
            return problem;
        if (bytes.size() > maxDatagram)
            return "a datagram holds at most " + std::to_string(maxDatagram) + " bytes";
        // The first one is sent at once, even if the beginning of the recording was cut off.
        const auto pause = m_steps.empty() ? 0 : time - m_time;
        m_steps.push_back({/*isTouch=*/false, std::move(bytes), std::chrono::milliseconds(pause)});
        m_time = time;
        return std::nullopt;
    }

    static Problem unescape(std::string_view text, std::string& bytes)
    {
        for (std::size_t i = 0; i < text.size(); ++i) {
            if (text[i] < 0x20 || text[i] > 0x7E)
                return "a byte that cannot be printed is written as \\x and two hexadecimal digits";
            if (text[i] != '\\') {
                bytes.push_back(text[i]);
                continue;
            }
            const auto escape = readEscape(text.substr(i + 1));
            if (!escape)
                return R"(after a backslash comes another one, or x and two hexadecimal digits)";
            bytes.push_back(escape->first);
            i += escape->second;
        }
        return std::nullopt;
    }

    /// The byte, and the length of its escape after the backslash.
    static std::optional<std::pair<char, std::size_t>> readEscape(std::string_view text)
    {
        if (text.starts_with('\\'))
            return std::pair('\\', 1);
        if (!text.starts_with('x') || text.size() < 3)
            return std::nullopt;
        unsigned char byte = 0;
        const char* const end = text.data() + 3;
        const auto [stop, error] = std::from_chars(text.data() + 1, end, byte, 16);
        if (error != std::errc() || stop != end)
            return std::nullopt;
        return std::pair(static_cast<char>(byte), 3);
    }

    Gesture m_steps;
    std::uint64_t m_time = 0;
};

/// Reads little more than a recording may have, since some files have no end. Returns false, with `errno`, on failure.
bool readFile(const std::string& name, std::string& text)
{
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(name.c_str(), "rbe"), &std::fclose);
    if (!file)
        return false;
    std::array<char, 65536> buffer{};
    std::size_t count = 1;
    while (count > 0 && text.size() <= maxRecordingFile) {
        count = std::fread(buffer.data(), 1, buffer.size(), file.get());
        text.append(buffer.data(), count);
    }
    return std::ferror(file.get()) == 0;
}

} // namespace

std::variant<Gesture, std::string> parseRecording(std::string_view text)
{
    return RecordingParser().parse(text);
}

std::variant<Gesture, std::string> readRecording(const std::string& file)
{
    std::string text;
    if (!readFile(file, text))
        return file + ": " + std::strerror(errno);
    if (text.size() > maxRecordingFile)
        return file + ": a recording has at most " + std::to_string(maxRecordingFile) + " bytes";
    auto recording = parseRecording(text);
    if (const auto* problem = std::get_if<std::string>(&recording))
        return file + ": " + *problem;
    return recording;
}

} // namespace companion::simulator
