#pragma once

#include "cli/Command.h"
#include "cli/ObservedHttpSession.h"
#include "cli/PanelFinder.h"

#include <memory>
#include <optional>
#include <string>

namespace companion::cli {

/// The dependencies of a command that sends one request; all of them outlive the command.
struct PanelRequestTools {
    PanelSearch search;
    ObservedHttpSession& httpSession;
};

/// Which panel a request goes to, and how long it may take.
struct PanelRequestOptions {
    PanelChoice choice;
    std::optional<std::chrono::milliseconds> timeout; ///< Also for finding the panel.
};

/// A command that sends one request to a panel: finds the panel, sends, and makes a result of the outcome that it
/// observes. Main thread only.
class PanelRequestCommand : public Command {
public:
    PanelRequestCommand(PanelRequestTools tools, PanelRequestOptions options);

    void start(Finished finished) final;

protected:
    /// Sends one request to `address`, or tells why it cannot.
    virtual std::optional<Result> send(const std::string& address) = 0;

    /// The result for an answer of the panel.
    virtual Result resultOfAnswer(int status, const std::string& body) = 0;

    /// Whether the time-out limits the whole request, not only its idle time.
    virtual bool isShort() const { return true; }

    const std::string& address() const { return m_address; }

    /// An answer, cut to fit on a line.
    static std::string excerpt(const std::string& body);

    /// A refusal for an answer whose status is not 200.
    Result refusalByStatus(int status, const std::string& body) const;

private:
    void sendTo(const std::string& address);
    void setDeadline();
    void finish(Result result);
    Result resultOf(const Outcome& outcome);
    Result networkFailure(const std::string& why) const;

    PanelRequestTools m_tools;
    PanelRequestOptions m_options;
    PanelFinder m_finder;
    Finished m_finished;
    std::string m_address;
};

} // namespace companion::cli
