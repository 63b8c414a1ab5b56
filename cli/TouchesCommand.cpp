#include "cli/TouchesCommand.h"

#include "cli/Text.h"
#include "touchback/Number.h"
#include "touchback/TouchMessage.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

namespace companion::cli {

namespace {

constexpr std::chrono::seconds timeToSearchForPanel{5};

double millisecondsBetween(
    std::chrono::steady_clock::time_point first, std::chrono::steady_clock::time_point now)
{
    return std::chrono::duration<double, std::milli>(now - first).count();
}

/// The number where it is one, else the text that came.
Json coordinateJson(std::string_view text)
{
    const auto number = parseNumber(text);
    return number ? jsonNumber(*number) : Json(text);
}

std::string touchJson(double milliseconds, std::string_view datagram, const UdpSender& from)
{
    Json json = {{"ms", jsonNumber(milliseconds)}, {"from", from.host}};
    const auto message = parseTouchMessage(datagram);
    if (!message || message->event.empty()) {
        json["malformed"] = recordedText(datagram);
    } else {
        json["event"] = message->event;
        json["x"] = coordinateJson(message->xCoordinate);
        json["y"] = coordinateJson(message->yCoordinate);
        json["timeStamp"] = message->timeStamp;
    }
    return jsonText(json);
}

/// "    16.204 ms  MOVE,16400,16390,1700000000016;  192.168.1.20"
std::string touchLine(double milliseconds, std::string_view datagram, const UdpSender& from)
{
    std::array<char, 32> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), milliseconds,
        std::chars_format::fixed, /*precision=*/3);
    const std::string time(digits.data(), end.ptr);
    constexpr std::size_t width = 10;
    return std::string(width - std::min(width, time.size()), ' ') + time + " ms  " + recordedText(datagram)
        + "  " + from.host;
}

} // namespace

std::string whyNoTouchesCanBeHeard(const std::string& error, const Probes& probes)
{
    const std::string port = "UDP port " + std::to_string(touchPort);
    if (!saysPortIsTaken(error))
        return port + ": " + error;
    return port + " is held by " + holdersText(probes.udpPortHolders(touchPort));
}

TouchesCommand::TouchesCommand(const Tools& tools, Request request)
    : m_tools(tools)
    , m_request(std::move(request))
    , m_finder(tools.search, m_request.choice, m_request.time.value_or(timeToSearchForPanel))
{
}

void TouchesCommand::start(Finished finished)
{
    m_finished = std::move(finished);
    if (m_request.choice.isMade())
        m_finder.find([this](const PanelFinder::Found& found) { begin(found); });
    else
        begin({});
}

void TouchesCommand::begin(const PanelFinder::Found& found)
{
    if (!found.whyNot.empty()) {
        finish({ExitStatus::noPanel, found.whyNot, {}});
        return;
    }
    m_onlyFrom = found.address;
    if (const auto failure = listen()) {
        finish(*failure);
        return;
    }
    // Not before the port is ours: an earlier recording is replaced only by one that can begin.
    if (const auto failure = openRecording()) {
        finish(*failure);
        return;
    }
    if (m_request.time)
        m_tools.search.mainQueue.after(*m_request.time, [this] { timeOut(); });
    m_tools.output.complain("listening for touches on UDP port " + std::to_string(touchPort));
}

std::optional<Result> TouchesCommand::openRecording()
{
    if (!m_request.recording)
        return std::nullopt;
    m_recordingFile.open(*m_request.recording, std::ios::binary | std::ios::trunc);
    if (m_recordingFile)
        m_recording.emplace(m_recordingFile, m_request.recordingComment, m_request.mostRecordedBytes);
    return m_recordingFile.flush() ? std::nullopt : std::optional(recordingFailure());
}

std::optional<Result> TouchesCommand::listen()
{
    m_socket = m_tools.sockets.makeSocket(*this, "client udp socket");
    auto error = m_socket->bindToPort(touchPort);
    if (!error)
        error = m_socket->beginReceiving();
    if (!error)
        return std::nullopt;
    return Result{ExitStatus::network, whyNoTouchesCanBeHeard(*error, m_tools.search.probes), {}};
}

void TouchesCommand::udpSocketDidReceiveData(
    AsyncUdpSocket& /*socket*/, std::string_view data, const UdpSender& from)
{
    if (!m_finished || (m_onlyFrom && *m_onlyFrom != from.host))
        return;
    m_statistics.take(data, from.receivedAt);
    printTouch(data, from);
    if (m_recording)
        record(data, from);
}

void TouchesCommand::printTouch(std::string_view datagram, const UdpSender& from)
{
    if (!m_first)
        m_first = from.receivedAt;
    const double milliseconds = millisecondsBetween(*m_first, from.receivedAt);
    m_tools.output.print(
        m_request.isJson ? touchJson(milliseconds, datagram, from) : touchLine(milliseconds, datagram, from));
}

void TouchesCommand::record(std::string_view datagram, const UdpSender& from)
{
    const bool wasFull = m_recording->isFull();
    m_recording->take(datagram, from.receivedAt);
    if (m_recording->isFull() && !wasFull)
        m_tools.output.complain("the recording has reached its --max-size: no more touches are written to "
            + *m_request.recording);
    if (!m_recordingFile)
        finish(recordingFailure());
}

Interruption TouchesCommand::interrupt()
{
    end();
    return Interruption::endWithResult;
}

void TouchesCommand::timeOut()
{
    if (m_statistics.count() == 0)
        finish({ExitStatus::network,
            "no touches within " + secondsText(*m_request.time)
                + ": is touchback on, and does the firewall let UDP port " + std::to_string(touchPort)
                + " in?",
            m_statistics.json()});
    else
        end();
}

void TouchesCommand::end()
{
    finish({ExitStatus::done, m_statistics.text(), m_statistics.json()});
}

void TouchesCommand::finish(Result result)
{
    if (!m_finished)
        return;
    if (m_socket)
        m_socket->close();
    std::exchange(m_finished, nullptr)(std::move(result));
}

Result TouchesCommand::recordingFailure() const
{
    return {ExitStatus::badUsage, "cannot write " + *m_request.recording, m_statistics.json()};
}

} // namespace companion::cli
