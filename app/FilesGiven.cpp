#include "app/FilesGiven.h"

#include "platform/FileUrl.h"

#include <filesystem>

namespace companion {

std::vector<std::string> urlsOfFiles(const std::vector<std::string>& files)
{
    std::vector<std::string> urls;
    for (const std::string& file : files) {
        const bool isUrl = file.find("://") != std::string::npos && file.find('/') > file.find("://");
        std::error_code unknownFolder; // the path stays as it is then
        urls.push_back(
            isUrl ? file : FileUrl::fromPath(std::filesystem::absolute(file, unknownFolder).string()).text());
    }
    return urls;
}

} // namespace companion
