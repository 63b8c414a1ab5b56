#pragma once

#include "platform/Geometry.h"

#include <optional>

namespace companion {

/// The main screen. Main thread only.
class Screen {
public:
    virtual ~Screen() = default;

    /// Its size in points, the unit of synthesised events; nothing when there is no screen.
    virtual std::optional<Size> mainScreenSize() const = 0;
};

} // namespace companion
