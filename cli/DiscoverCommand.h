#pragma once

#include "cli/Command.h"
#include "cli/PanelFinder.h"

namespace companion::cli {

/// `discover`: tells each panel as it is found. Main thread only.
class DiscoverCommand : public Command {
public:
    struct Request {
        PanelChoice choice; ///< With one made, the first panel that it means ends the search.
        std::chrono::milliseconds time;
        bool isJson = false;
    };

    DiscoverCommand(PanelSearch search, Output& output, Request request);

    void start(Finished finished) override;
    Interruption interrupt() override; ///< With what was found so far.

private:
    void panelFound(const PanelName& panel);
    void end();
    Result result() const;

    PanelSearch m_search;
    Output& m_output;
    Request m_request;
    Finished m_finished;
    bool m_isInterrupted = false;
    PanelBrowse m_browse;
};

} // namespace companion::cli
