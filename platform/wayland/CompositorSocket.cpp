#include "platform/wayland/CompositorSocket.h"

#include <algorithm>
#include <cstdlib>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace companion {

std::string sessionSocketPath()
{
    const char* const name = std::getenv("WAYLAND_DISPLAY");
    const std::string path = name && *name ? name : "wayland-0";
    const char* const folder = std::getenv("XDG_RUNTIME_DIR");
    return path.front() == '/' || !folder ? path : std::string(folder) + "/" + path;
}

int connectToCompositor(const std::string& socketPath)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (socketPath.size() >= sizeof address.sun_path)
        return -1;
    std::copy(socketPath.begin(), socketPath.end(), address.sun_path);
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (fd >= 0 && connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0)
        return fd;
    if (fd >= 0)
        close(fd);
    return -1;
}

} // namespace companion
