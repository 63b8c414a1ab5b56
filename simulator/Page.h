#pragma once

#include "simulator/HttpServer.h"

#include <memory>
#include <string>

namespace companion::simulator {

class PanelState;

/// The panel as a page for browsers: "/", what belongs to it, and the pictures among the uploads.
class Page {
public:
    /// `uploads` is the folder that they are kept in; "" when they are not.
    Page(const PanelState& state, std::string uploads);

    static bool hasPath(const std::string& path);

    /// On the server's thread; for paths that it has.
    std::unique_ptr<Exchange> open(const Request& request) const;

private:
    Answer pictureAnswer(const std::string& storedName) const;

    const PanelState& m_state;
    const std::string m_uploads;
};

} // namespace companion::simulator
