#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace companion {

enum class FileCategory { image, video, document };

/// The extensions of each category, compared letter by letter, case included.
struct FileTypeLists {
    std::vector<std::string> imageFileTypes;
    std::vector<std::string> videoFileTypes;
    std::vector<std::string> documentsFileTypes;
};

/// The extensions that the panel sorts files by.
FileTypeLists panelFileTypes();

/// The extensions that the open panel offers.
std::vector<std::string> openPanelFileTypes();

/// The part of `fileName` after its last dot; all of it when there is none, "" when it ends in one.
std::string fileExtension(std::string_view fileName);

std::optional<FileCategory> fileCategory(const std::string& extension, const FileTypeLists& lists);

/// For example "image/png", and "(null)/txt" for a file of no category, as the panel expects it.
std::string fileTypeText(std::optional<FileCategory> category, const std::string& extension);

} // namespace companion
