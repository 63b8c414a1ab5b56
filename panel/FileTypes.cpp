#include "panel/FileTypes.h"

#include <algorithm>

namespace companion {

namespace {

bool contains(const std::vector<std::string>& extensions, const std::string& extension)
{
    return std::find(extensions.begin(), extensions.end(), extension) != extensions.end();
}

std::string categoryWord(std::optional<FileCategory> category)
{
    if (!category)
        return "(null)";
    switch (*category) {
    case FileCategory::image:
        return "image";
    case FileCategory::video:
        return "video";
    case FileCategory::document:
        return "document";
    }
    return "(null)";
}

} // namespace

FileTypeLists panelFileTypes()
{
    return {
        .imageFileTypes = {"png", "jpg", "jpeg", "psd", "svg", "gof"},
        .videoFileTypes = {"mp3", "mov", "mp4"},
        .documentsFileTypes = {"doc", "docx", "ppt", "pptx", "pdf", "key", "pps", "xls", "xlsx"},
    };
}

std::vector<std::string> openPanelFileTypes()
{
    return {"png", "jpg", "jpeg", "psd", "svg", "gof", "mp3", "mov", "mp4", "doc", "docx", "ppt", "pptx",
        "pdf", "key", "pps", "xls", "xlsx"};
}

std::string fileExtension(std::string_view fileName)
{
    const std::size_t dot = fileName.rfind('.');
    return std::string(dot == std::string_view::npos ? fileName : fileName.substr(dot + 1));
}

std::optional<FileCategory> fileCategory(const std::string& extension, const FileTypeLists& lists)
{
    if (contains(lists.imageFileTypes, extension))
        return FileCategory::image;
    if (contains(lists.videoFileTypes, extension))
        return FileCategory::video;
    if (contains(lists.documentsFileTypes, extension))
        return FileCategory::document;
    return std::nullopt;
}

std::string fileTypeText(std::optional<FileCategory> category, const std::string& extension)
{
    return categoryWord(category) + "/" + extension;
}

} // namespace companion
