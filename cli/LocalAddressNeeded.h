#pragma once

#include "cli/Result.h"
#include "panel/PanelService.h"

#include <optional>
#include <string>

namespace companion::cli {

/// Why a panel at `panelAddress` cannot be told where this computer is; nothing when it can. The request classes are
/// silent about it.
std::optional<Result> lackOfLocalAddress(const PanelRequestHost& host, const std::string& panelAddress);

} // namespace companion::cli
