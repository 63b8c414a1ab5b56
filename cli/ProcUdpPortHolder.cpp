#include "cli/SystemProbes.h"

#include <algorithm>
#include <charconv>
#include <fstream>
#include <set>
#include <sstream>
#include <system_error>

namespace companion::cli {

namespace {

namespace fs = std::filesystem;

template <typename Number> bool parseWhole(std::string_view text, Number& number, int base = 10)
{
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number, base);
    return result.ec == std::errc() && result.ptr == text.data() + text.size();
}

/// The files' names of the sockets at `port`, as links in /proc/PID/fd tell them: "socket:[12345]".
void addSockets(const fs::path& table, std::uint16_t port, std::set<std::string>& sockets)
{
    std::ifstream file(table);
    std::string line;
    std::getline(file, line); // the columns' names
    while (std::getline(file, line)) {
        std::istringstream columns(line);
        std::string column;
        std::string local;
        // "sl local_address rem_address st queues tr:tm retrnsmt uid timeout inode"
        columns >> column >> local;
        for (int skipped = 0; skipped < 7; ++skipped)
            columns >> column;
        std::string inode;
        columns >> inode;
        std::uint16_t number = 0;
        const auto colon = local.rfind(':');
        if (colon != std::string::npos && parseWhole(std::string_view(local).substr(colon + 1), number, 16)
            && number == port && !inode.empty())
            sockets.insert("socket:[" + inode + "]");
    }
}

bool holdsOneOf(const std::set<std::string>& sockets, const fs::path& process)
{
    std::error_code error;
    for (fs::directory_iterator file(process / "fd", error), end; !error && file != end;
         file.increment(error)) {
        std::error_code noLink;
        if (sockets.contains(fs::read_symlink(file->path(), noLink).string()))
            return true;
    }
    return false;
}

std::string programName(const fs::path& process)
{
    std::ifstream file(process / "comm");
    std::string name;
    std::getline(file, name);
    return name;
}

} // namespace

std::vector<PortHolder> udpPortHolders(std::uint16_t port, const fs::path& root)
{
    std::set<std::string> sockets;
    addSockets(root / "net/udp", port, sockets);
    addSockets(root / "net/udp6", port, sockets);
    std::vector<PortHolder> holders;
    if (sockets.empty())
        return holders;
    std::error_code error;
    for (fs::directory_iterator entry(root, error), end; !error && entry != end; entry.increment(error)) {
        int id = 0;
        if (parseWhole(entry->path().filename().string(), id) && holdsOneOf(sockets, entry->path()))
            holders.push_back({programName(entry->path()), id});
    }
    std::sort(holders.begin(), holders.end(),
        [](const PortHolder& a, const PortHolder& b) { return a.processId < b.processId; });
    return holders;
}

} // namespace companion::cli
