#pragma once

#include <string>

namespace companion {

/// Application-modal alerts. Main thread only.
class Alerts {
public:
    virtual ~Alerts() = default;

    /// Shows `message` in bold, `informativeText` below it and one button "OK"; returns when it was pressed.
    /// The main queue stands still meanwhile.
    virtual void runModal(const std::string& message, const std::string& informativeText) = 0;
};

} // namespace companion
