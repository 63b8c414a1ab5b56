#pragma once

#include "simulator/HttpServer.h"

#include <string>

namespace companion::simulator {

class PanelState;

/// Answers with the panel's page, what belongs to it, or a picture among the uploads in the folder `uploads`; for all
/// other paths the status is 404.
Answer pageAnswer(const Request& request, const PanelState& state, const std::string& uploads);

} // namespace companion::simulator
