#include "cli/SystemProbes.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>

namespace companion::cli {

std::string whyNotReadable(const std::string& path)
{
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    if (error)
        return error.message();
    if (!std::filesystem::is_regular_file(status))
        return std::filesystem::is_directory(status) ? "it is a folder" : "it is no regular file";
    std::FILE* file = std::fopen(path.c_str(), "rb");
    if (!file)
        return std::strerror(errno);
    std::fclose(file);
    return "it cannot be read whole into memory";
}

FirewallProfiles firewallProfiles()
{
    // Packages install it together with firewalld's.
    std::error_code ignored;
    return std::filesystem::exists("/etc/ufw/applications.d/panel-companion", ignored)
        ? FirewallProfiles::installed
        : FirewallProfiles::none;
}

std::string currentTimeText()
{
    const std::time_t now = std::time(nullptr);
    char text[32] = "";
    std::tm parts{};
    std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S UTC", gmtime_r(&now, &parts));
    return text;
}

} // namespace companion::cli
