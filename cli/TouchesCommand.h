#pragma once

#include "cli/Command.h"
#include "cli/PanelFinder.h"
#include "cli/Probes.h"
#include "cli/TouchRecording.h"
#include "cli/TouchStatistics.h"
#include "platform/AsyncUdpSocket.h"

#include <fstream>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace companion::cli {

/// The UDP port that panels send touches to.
constexpr std::uint16_t touchPort = 41863;

/// "UDP port 41863 is held by socat (process 123)", or the system's words for another failure to listen there.
std::string whyNoTouchesCanBeHeard(const std::string& error, const Probes& probes);

/// `touches`: prints what arrives, keeps it in a file where that is wanted, and ends with a summary. Main thread only.
class TouchesCommand : public Command, private AsyncUdpSocketDelegate {
public:
    struct Tools {
        PanelSearch search;
        AsyncUdpSocketFactory& sockets;
        Output& output;
    };

    struct Request {
        PanelChoice choice = {}; ///< Only touches from this panel count.
        std::optional<std::chrono::milliseconds> time = std::nullopt;
        /// A file to write; one that is there is replaced.
        std::optional<std::string> recording = std::nullopt;
        std::string recordingComment = "";
        std::uint64_t mostRecordedBytes = defaultMostRecordedBytes;
        bool isJson = false;
    };

    TouchesCommand(const Tools& tools, Request request);

    void start(Finished finished) override;
    Interruption interrupt() override;

private:
    void udpSocketDidReceiveData(
        AsyncUdpSocket& socket, std::string_view data, const UdpSender& from) override;
    std::optional<Result> openRecording();
    std::optional<Result> listen();
    void begin(const PanelFinder::Found& found);
    void printTouch(std::string_view datagram, const UdpSender& from);
    void record(std::string_view datagram, const UdpSender& from);
    void timeOut();
    void end();
    void finish(Result result);
    Result recordingFailure() const;

    Tools m_tools;
    Request m_request;
    PanelFinder m_finder;
    Finished m_finished;
    std::optional<std::string> m_onlyFrom;
    std::ofstream m_recordingFile;
    std::optional<TouchRecording> m_recording;
    TouchStatistics m_statistics;
    std::optional<std::chrono::steady_clock::time_point> m_first;
    std::unique_ptr<AsyncUdpSocket> m_socket;
};

} // namespace companion::cli
