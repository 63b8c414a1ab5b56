#include "cli/TouchRecording.h"

namespace companion::cli {

namespace {

constexpr std::chrono::milliseconds lastMoment{86'400'000};

} // namespace

TouchRecording::TouchRecording(std::ostream& target, std::string_view comment, std::uint64_t mostBytes)
    : m_target(target)
    , m_mostBytes(mostBytes)
{
    const std::string head = "panel-touches 1\n# " + recordedText(comment) + '\n';
    m_target << head;
    m_bytes = head.size();
}

void TouchRecording::take(std::string_view datagram, TimePoint now)
{
    if (m_isEmpty)
        m_first = now;
    m_isEmpty = false;
    const auto time = std::chrono::duration_cast<std::chrono::milliseconds>(now - m_first);
    const std::string line = std::to_string(time.count()) + ' ' + recordedText(datagram) + '\n';
    m_isFull |= m_bytes + line.size() > m_mostBytes;
    if (m_isFull || time > lastMoment)
        return;
    m_bytes += line.size();
    m_target << line << std::flush; // at once, so that a crash leaves all that came before
}

std::string recordedText(std::string_view datagram)
{
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (const char c : datagram) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '\\')
            text += "\\\\";
        else if (byte >= 0x20 && byte <= 0x7E)
            text += c;
        else
            text += std::string("\\x") + digits[byte >> 4] + digits[byte & 15];
    }
    return text;
}

} // namespace companion::cli
