#pragma once

#include <optional>
#include <string>

namespace companion {

/// The panel paired last. Main thread only.
struct PairedPanel {
    std::optional<std::string> ipAddress; ///< Absent while no panel is paired; the other two stay.
    std::optional<std::string> name;
    std::optional<std::string> hex;
    bool isFileUploadEnabled = false; ///< Decided at a pick and when the touch switch is turned off.
};

} // namespace companion
