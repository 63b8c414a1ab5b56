#pragma once

#include <string>

namespace companion {

/// Application-modal alerts. Main thread only.
class Alerts {
public:
    virtual ~Alerts() = default;

    /// Shows `message` in bold, `informativeText` below it and one button "OK"; returns true when it was pressed,
    /// false when the program ends with the alert open: what was to follow the answer must not happen then.
    /// The main queue stands still meanwhile.
    virtual bool runModal(const std::string& message, const std::string& informativeText) = 0;
};

} // namespace companion
