#pragma once

#include "platform/FileUrl.h"

#include <optional>
#include <string>
#include <vector>

namespace companion {

enum class UserFolder { downloads };

/// The desktop's open panel. Main thread only.
class FileChooser {
public:
    virtual ~FileChooser() = default;

    /// Lets the user choose one file, never a folder, whose extension is one of `allowedFileTypes` ("png"), and
    /// starts in `startingFolder`. Returns when the panel is closed; nothing unless the user has confirmed.
    /// The main queue stands still meanwhile.
    virtual std::optional<FileUrl> runOpenPanel(
        const std::vector<std::string>& allowedFileTypes, UserFolder startingFolder) = 0;
};

} // namespace companion
