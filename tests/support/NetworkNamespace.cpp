#include "tests/support/NetworkNamespace.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace companion::testing {

namespace {

std::string because(const std::string& what)
{
    return what + ": " + std::strerror(errno);
}

bool writeFile(const std::string& path, const std::string& text)
{
    std::ofstream file(path);
    file << text << std::flush;
    return file.good();
}

/// The order is the kernel's: see user_namespaces(7) on setgroups and gid_map.
bool becomeRootOfUserNamespace()
{
    const std::string user = std::to_string(geteuid());
    const std::string group = std::to_string(getegid());
    return unshare(CLONE_NEWUSER) == 0 && writeFile("/proc/self/setgroups", "deny")
        && writeFile("/proc/self/uid_map", "0 " + user + " 1")
        && writeFile("/proc/self/gid_map", "0 " + group + " 1");
}

bool bringLoopbackUp()
{
    const int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    ifreq request{};
    std::strcpy(request.ifr_name, "lo");
    request.ifr_flags = IFF_UP | IFF_LOOPBACK | IFF_RUNNING;
    const bool isUp = fd >= 0 && ioctl(fd, SIOCSIFFLAGS, &request) == 0;
    close(fd);
    return isUp;
}

} // namespace

std::optional<std::string> enterNetworkNamespace()
{
    if (geteuid() != 0 && !becomeRootOfUserNamespace())
        return because("no user namespace");
    if (unshare(CLONE_NEWNET) != 0)
        return because("no network namespace");
    if (!bringLoopbackUp())
        return because("the loopback interface stays down");
    return std::nullopt;
}

} // namespace companion::testing
