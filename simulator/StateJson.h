#pragma once

#include "simulator/PanelState.h"

#include <string>

namespace companion::simulator {

/// The snapshot as an indented JSON object, UTF-8, with a line end.
std::string stateJson(const PanelSnapshot& state);

} // namespace companion::simulator
